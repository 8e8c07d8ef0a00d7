// SPDX-License-Identifier: Apache-2.0
// The image of a quantile_sketch: "TMKQSKCH", version, NaN policy, epsilon, columns; of each variable its
// counts and extremes, and its levels with their values in order; hash.
#include <algorithm>
#include <cmath>

#include "api/call/check.hpp"
#include "api/stats/image.hpp"
#include "api/stats/sketch.hpp"

namespace tmk {

namespace {

using level = stats::sketch_level<double>;

constexpr char magic[] = {'T', 'M', 'K', 'Q', 'S', 'K', 'C', 'H'};
constexpr std::uint32_t version = 1;
constexpr std::uint64_t variable_words = 9, level_words = 3;

// What comes before the levels, for either of the two.
template <class Sketch, class Visitor>
void visit_counts(Sketch& s, Visitor& visit) {
  for (auto* word : {&s.count, &s.counted_over, &s.counted_under, &s.block}) visit(*word);
  for (auto* word : {&s.stage, &s.merged}) visit(*word);
  visit(s.minimum);
  visit(s.maximum);
}

// No number larger than the count of values can be makes its products overflow.
bool possible_counts(const stats::sketch<double>& s) {
  const auto counts = [](std::int64_t n) { return n >= 0 && n <= detail::most_values; };
  return counts(s.count) && counts(s.counted_over) && counts(s.counted_under) && counts(s.block) &&
         s.stage >= 0 && s.stage < stats::most_levels && (s.merged == 0 || s.merged == 1) &&
         s.minimum <= s.maximum;
}

// The values are numbers in order, and their weight is the count to within the error counted.
bool possible_levels(const stats::sketch<double>& s) {
  std::int64_t weight = 0;
  for (std::int32_t h = 0; h < s.level_count; ++h) {
    const level& l = s.levels[h];
    if (l.count > 2 * detail::most_values >> h || l.thinnings < 0 || l.thinnings > detail::most_values)
      return false;
    weight += l.weight * l.count;
    if (weight > 4 * detail::most_values) return false;
    const auto bad = [](double a, double b) { return !(a <= b); };
    if (l.count == 1 && std::isnan(l.values[0])) return false;
    if (std::adjacent_find(l.values, l.values + l.count, bad) != l.values + l.count) return false;
    if (h > 0 && l.count > 0 && (l.values[0] < s.minimum || l.values[l.count - 1] > s.maximum)) return false;
  }
  const std::int64_t raw = s.level_count == 0 ? 0 : s.levels[0].count;
  return raw <= s.count && (raw == 0 || raw < s.block) && weight - s.counted_over <= s.count &&
         s.count <= weight + s.counted_under && (s.count == 0 || s.level_count > 0);
}

void read_levels(detail::image_reader& read, stats::sketch<double>& s, std::uint64_t count) {
  for (std::uint64_t h = 0; h < count; ++h) {
    std::uint64_t values, keep_first;
    std::int64_t thinnings;
    if (!read.holds(level_words)) read.refuse("ends in a level");
    read(values);
    read(keep_first);
    read(thinnings);
    // Before memory is taken: as many values are there.
    if (values > INT32_MAX || !read.holds(values) || keep_first > 1) read.refuse("holds an impossible level");
    if (!stats::reserve_level(s, static_cast<std::int32_t>(h), static_cast<std::int64_t>(values)))
      throw std::bad_alloc();
    level& l = s.levels[h];
    for (std::uint64_t i = 0; i < values; ++i) read(l.values[i]);
    l.count = static_cast<std::int32_t>(values);
    l.keep_first = static_cast<std::int32_t>(keep_first);
    l.thinnings = thinnings;
  }
  if (s.level_count > 0 && !stats::reserve_workspace(s, s.levels[0].count / 2 + 1)) throw std::bad_alloc();
}

}  // namespace

std::vector<std::byte> quantile_sketch::to_bytes() const {
  state& s = here("quantile_sketch::to_bytes");
  detail::image_writer write;
  write.begin(magic, version);
  write(static_cast<std::uint32_t>(s.nan));
  write(s.epsilon);
  write(static_cast<std::uint64_t>(cols()));
  for (detail::variable_sketch& v : s.variables) {
    stats::sketch<double>& sketch = v.values;
    stats::sort_block(sketch);
    // Levels above the last one in use differ between sketches of one state.
    std::int32_t used = sketch.level_count;
    while (used > 0 && sketch.levels[used - 1].count == 0 && sketch.levels[used - 1].thinnings == 0) --used;
    write(static_cast<std::uint64_t>(v.has_nan));
    visit_counts(sketch, write);
    write(static_cast<std::uint64_t>(used));
    for (std::int32_t h = 0; h < used; ++h) {
      const level& l = sketch.levels[h];
      write(static_cast<std::uint64_t>(l.count));
      write(static_cast<std::uint64_t>(l.keep_first));
      write(l.thinnings);
      for (std::int32_t i = 0; i < l.count; ++i) write(l.values[i]);
    }
  }
  return write.finish();
}

quantile_sketch quantile_sketch::from_bytes(std::span<const std::byte> bytes) {
  detail::image_reader read{"quantile_sketch::from_bytes", bytes};
  read.begin(magic, version, "a quantile sketch");
  std::uint32_t policy;
  double epsilon;
  std::uint64_t cols;
  if (read.bytes.size() < sizeof policy + sizeof epsilon + sizeof cols) read.refuse("is too short");
  read(policy);
  read(epsilon);
  read(cols);
  if (policy > static_cast<std::uint32_t>(nan_policy::raise) || !(epsilon > 0 && epsilon <= 1) || cols < 1 ||
      !read.holds(variable_words) || cols > read.bytes.size() / (8 * variable_words))
    read.refuse("does not hold a quantile sketch");
  quantile_sketch result(static_cast<std::size_t>(cols), epsilon, static_cast<nan_policy>(policy));
  for (detail::variable_sketch& v : result.state_->variables) {
    std::uint64_t has_nan, levels;
    if (!read.holds(variable_words)) read.refuse("ends in a variable");
    read(has_nan);
    visit_counts(v.values, read);
    read(levels);
    if (has_nan > 1 || levels >= stats::most_levels - 1 || !possible_counts(v.values))
      read.refuse("holds an impossible variable");
    v.has_nan = has_nan == 1;
    read_levels(read, v.values, levels);
    v.values.sorted = 1;
    if (!possible_levels(v.values)) read.refuse("holds impossible levels");
  }
  if (!read.bytes.empty()) read.refuse("is longer than what it holds");
  return result;
}

}  // namespace tmk
