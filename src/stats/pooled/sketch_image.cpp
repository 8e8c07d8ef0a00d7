// SPDX-License-Identifier: Apache-2.0
// The saved form of a quantile sketch: "TMKQSKCH", version, NaN policy, epsilon, columns; of each variable
// its counts and extremes, and its levels with their values in order; hash.
#include <algorithm>
#include <cmath>

#include "stats/pooled/image.hpp"
#include "stats/pooled/sketch.hpp"

namespace tmk::stats::pooled {

namespace {

using level = sketch_level<double>;

constexpr image_kind kind{name_word("TMKQSKCH"), 1};
constexpr uint64_t variable_words = 9, level_words = 3;

// What comes before the levels, to be read or written.
template <class Sketch, class Visitor>
void visit_counts(Sketch& s, Visitor& visit) {
  for (auto* word : {&s.count, &s.counted_over, &s.counted_under, &s.block}) visit(*word);
  for (auto* word : {&s.stage, &s.merged}) visit(*word);
  visit(s.minimum);
  visit(s.maximum);
}

// Counts are bounded so that their products do not overflow.
bool possible_counts(const sketch<double>& s) {
  const auto counts = [](int64_t n) { return n >= 0 && n <= most_values; };
  return counts(s.count) && counts(s.counted_over) && counts(s.counted_under) && counts(s.block) &&
         s.stage >= 0 && s.stage < most_levels && (s.merged == 0 || s.merged == 1) && s.minimum <= s.maximum;
}

// The values are numbers in order, and their total weight is the count up to the error that was counted.
bool possible_levels(const sketch<double>& s) {
  int64_t weight = 0;
  for (int32_t h = 0; h < s.level_count; ++h) {
    const level& l = s.levels[h];
    if (l.count > 2 * most_values >> h || l.thinnings < 0 || l.thinnings > most_values) return false;
    weight += l.weight * l.count;
    if (weight > 4 * most_values) return false;
    const auto bad = [](double a, double b) { return !(a <= b); };
    if (l.count == 1 && std::isnan(l.values[0])) return false;
    if (std::adjacent_find(l.values, l.values + l.count, bad) != l.values + l.count) return false;
    if (h > 0 && l.count > 0 && (l.values[0] < s.minimum || l.values[l.count - 1] > s.maximum)) return false;
  }
  const int64_t raw = s.level_count == 0 ? 0 : s.levels[0].count;
  return raw <= s.count && (raw == 0 || raw < s.block) && weight - s.counted_over <= s.count &&
         s.count <= weight + s.counted_under && (s.count == 0 || s.level_count > 0);
}

// Levels above the last one in use differ between sketches of one state, and are not saved.
int32_t used_levels(const sketch<double>& s) {
  int32_t used = s.level_count;
  while (used > 0 && s.levels[used - 1].count == 0 && s.levels[used - 1].thinnings == 0) --used;
  return used;
}

const auto write_content = [](const TmkSSSketch& s, auto& write) {
  write(static_cast<uint32_t>(s.nan_policy));
  write(s.epsilon);
  write(static_cast<uint64_t>(s.variables.size()));
  for (const variable_sketch& v : s.variables) {
    const sketch<double>& values = v.values;
    const int32_t used = used_levels(values);
    write(static_cast<uint64_t>(v.has_nan));
    visit_counts(values, write);
    write(static_cast<uint64_t>(used));
    for (int32_t h = 0; h < used; ++h) {
      const level& l = values.levels[h];
      write(static_cast<uint64_t>(l.count));
      write(static_cast<uint64_t>(l.keep_first));
      write(l.thinnings);
      for (int32_t i = 0; i < l.count; ++i) write(l.values[i]);
    }
  }
};

[[noreturn]] void refuse_content() { throw failed{TMK_SS_IMPOSSIBLE_IMAGE}; }

void require_words(const image_reader& read, uint64_t count) {
  if (!read.holds(count)) throw failed{TMK_SS_BAD_IMAGE_SIZE};
}

void read_levels(image_reader& read, sketch<double>& s, uint64_t count) {
  for (uint64_t h = 0; h < count; ++h) {
    require_words(read, level_words);
    const auto values = read.next<uint64_t>(), keep_first = read.next<uint64_t>();
    const auto thinnings = read.next<int64_t>();
    // Checked before memory is allocated: the image has so many values.
    if (values > INT32_MAX || !read.holds(values) || keep_first > 1) refuse_content();
    if (!reserve_level(s, static_cast<int32_t>(h), static_cast<int64_t>(values))) throw std::bad_alloc();
    level& l = s.levels[h];
    for (uint64_t i = 0; i < values; ++i) read(l.values[i]);
    l.count = static_cast<int32_t>(values);
    l.keep_first = static_cast<int32_t>(keep_first);
    l.thinnings = thinnings;
  }
  if (s.level_count > 0 && !reserve_workspace(s, s.levels[0].count / 2 + 1)) throw std::bad_alloc();
}

void read_variable(image_reader& read, variable_sketch& v) {
  require_words(read, variable_words);
  const auto has_nan = read.next<uint64_t>();
  visit_counts(v.values, read);
  const auto levels = read.next<uint64_t>();
  if (has_nan > 1 || levels >= most_levels - 1 || !possible_counts(v.values)) refuse_content();
  v.has_nan = has_nan == 1;
  read_levels(read, v.values, levels);
  v.values.sorted = 1;
  if (!possible_levels(v.values)) refuse_content();
}

TmkSSSketch read_content(image_reader& read) {
  if (read.bytes.size() < sizeof(uint32_t) + 2 * sizeof(uint64_t)) throw failed{TMK_SS_BAD_IMAGE_SIZE};
  const auto policy = static_cast<int32_t>(read.next<uint32_t>());
  const auto epsilon = read.next<double>();
  const auto columns = read.next<uint64_t>();
  if (!is_nan_policy(policy) || !is_epsilon(epsilon) || columns < 1 ||
      columns > read.bytes.size() / (8 * variable_words))
    refuse_content();
  TmkSSSketch s{epsilon, policy, std::vector<variable_sketch>(static_cast<size_t>(columns))};
  for (variable_sketch& v : s.variables) read_variable(read, v);
  if (!read.bytes.empty()) throw failed{TMK_SS_BAD_IMAGE_SIZE};
  return s;
}

}  // namespace

}  // namespace tmk::stats::pooled

using namespace tmk::stats::pooled;

int64_t tmk_ss_pooled_sketch_image_size(const TmkSSSketch* sketch) {
  return image_size(sketch, write_content);
}

int32_t tmk_ss_pooled_sketch_save(TmkSSSketch* sketch, void* image, int64_t size) {
  if (sketch != nullptr)
    for (variable_sketch& v : sketch->variables) tmk::stats::sort_block(v.values);
  return save_image<TmkSSSketch>(sketch, kind, image, size, write_content);
}

int32_t tmk_ss_pooled_sketch_load(TmkSSSketch** sketch, const void* image, int64_t size) {
  return load_image(sketch, kind, image, size, read_content);
}
