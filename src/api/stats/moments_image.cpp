// SPDX-License-Identifier: Apache-2.0
// The image of an accumulator of moments: "TMKMOMTS", version, options (bit 0: cross-product, bits 1 and 2
// the policy for NaNs, bit 3: weights are counts), columns, sums, hash.
#include <algorithm>
#include <cmath>

#include "api/call/check.hpp"
#include "api/stats/blocks.hpp"
#include "api/stats/image.hpp"

namespace tmk {

namespace {

constexpr char magic[] = {'T', 'M', 'K', 'M', 'O', 'M', 'T', 'S'};
constexpr std::uint32_t version = 2;

std::uint32_t flags_of(const moments_options& options) {
  return static_cast<std::uint32_t>(options.cross_product) | static_cast<std::uint32_t>(options.nan) << 1 |
         static_cast<std::uint32_t>(options.weights_are_counts) << 3;
}

std::uint64_t words_of_sums(std::uint64_t cols, bool cross_product) {
  return 10 * cols + (cross_product ? 3 + 2 * cols + cols * (cols + 1) / 2 : 0);
}

// The sums in their order, for either of the two.
template <class Sums, class Visitor>
void visit_sums(Sums& sums, bool cross_product, Visitor& visit) {
  for (auto& v : sums.variables) {
    visit(v.n);
    for (auto* value : {&v.weight, &v.mean_weight, &v.shift, &v.offset, &v.c2, &v.c3, &v.c4, &v.min, &v.max})
      visit(*value);
  }
  if (!cross_product) return;
  visit(sums.joint.n);
  visit(sums.joint.weight);
  visit(sums.joint.mean_weight);
  for (auto* values : {&sums.joint.shift, &sums.joint.offset, &sums.joint.cross})
    for (auto& value : *values) visit(value);
}

// Up to rounding, the mean weight is at least W / n (Cauchy and Schwarz) and at most W.
template <class Sums>
bool possible_weights(const Sums& s, bool counts) {
  if (s.n == 0) return s.weight == 0 && s.mean_weight == 0;
  if (counts && (s.weight != static_cast<double>(s.n) || s.mean_weight != 1)) return false;
  constexpr double rounding = 1 + 1e-6;
  return s.n > 0 && s.n <= detail::most_values && std::isfinite(s.weight) && s.mean_weight > 0 &&
         s.mean_weight <= s.weight * rounding &&
         s.weight / static_cast<double>(s.n) <= s.mean_weight * rounding;
}

bool possible(const detail::moment_sums& sums, const moments_options& options) {
  for (const detail::variable_sums& v : sums.variables)
    if (!possible_weights(v, options.weights_are_counts) || v.c2 < 0 || v.c4 < 0 || v.min > v.max)
      return false;
  if (!options.cross_product) return true;
  const bool every_row = options.nan != nan_policy::omit;
  const std::int64_t n = sums.joint.n;
  for (std::size_t j = 0; j < sums.variables.size(); ++j) {
    const std::int64_t own = sums.variables[j].n;
    if (n > own || (every_row && n != own) || sums.joint.cross[j * (j + 3) / 2] < 0) return false;
  }
  return possible_weights(sums.joint, options.weights_are_counts);
}

}  // namespace

std::vector<std::byte> moments::to_bytes() const {
  if (cols() == 0) detail::refuse("moments::to_bytes", "cols", "0", "is 0: the accumulator was moved from");
  detail::image_writer write;
  write.bytes.reserve(static_cast<std::size_t>(32 + 8 * words_of_sums(cols(), options_.cross_product)));
  write.begin(magic, version);
  write(flags_of(options_));
  write(static_cast<std::uint64_t>(cols()));
  visit_sums(sums_, options_.cross_product, write);
  return write.finish();
}

moments moments::from_bytes(std::span<const std::byte> bytes) {
  detail::image_reader read{"moments::from_bytes", bytes};
  read.begin(magic, version, "moments");
  std::uint32_t flags;
  std::uint64_t cols;
  if (read.bytes.size() < sizeof flags + sizeof cols) read.refuse("is too short");
  read(flags);
  read(cols);
  const moments_options options{.cross_product = (flags & 1) != 0,
                                .nan = static_cast<nan_policy>(flags >> 1 & 3),
                                .weights_are_counts = (flags & 8) != 0};
  if (flags > 15 || options.nan > nan_policy::raise || cols < 1 ||
      cols > (options.cross_product ? detail::most_matrix_cols : std::size_t{INT32_MAX}))
    read.refuse("does not hold moments");
  // Before memory is taken: as many bytes as the columns need are there.
  const std::uint64_t words = words_of_sums(cols, options.cross_product);
  if (read.bytes.size() != 8 * words)
    read.refuse("holds " + std::to_string(read.bytes.size()) + " bytes of sums, want " +
                std::to_string(8 * words));
  moments result(static_cast<std::size_t>(cols), options);
  visit_sums(result.sums_, options.cross_product, read);
  if (!possible(result.sums_, options)) read.refuse("holds impossible sums");
  return result;
}

}  // namespace tmk
