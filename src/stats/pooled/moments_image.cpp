// SPDX-License-Identifier: Apache-2.0
// The saved form of moments: "TMKMOMTS", version, options (bit 0: cross-product, bits 1 and 2: the policy for
// NaNs, bit 3: weights are counts), columns, sums, hash.
#include <cmath>

#include "stats/pooled/image.hpp"
#include "stats/pooled/sums.hpp"

namespace tmk::stats::pooled {

namespace {

constexpr image_kind kind{name_word("TMKMOMTS"), 2};

uint32_t flags_of(const TmkSSOptions& o) {
  return static_cast<uint32_t>(o.crossProduct != 0) | static_cast<uint32_t>(o.nanPolicy) << 1 |
         static_cast<uint32_t>(o.weightsAreCounts != 0) << 3;
}

TmkSSOptions options_of(uint32_t flags) {
  return {static_cast<int32_t>(flags & 1), static_cast<int32_t>(flags >> 1 & 3),
          static_cast<int32_t>(flags >> 3)};
}

uint64_t words_of_sums(uint64_t columns, bool cross_product) {
  return 10 * columns + (cross_product ? 3 + 2 * columns + columns * (columns + 1) / 2 : 0);
}

// The sums in their order, to be read or written.
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

const auto write_content = [](const TmkSSMoments& m, auto& write) {
  write(flags_of(m.options));
  write(static_cast<uint64_t>(m.sums.variables.size()));
  visit_sums(m.sums, m.options.crossProduct != 0, write);
};

// Up to rounding, the mean weight is at least W / n (Cauchy and Schwarz) and at most W.
template <class Sums>
bool possible_weights(const Sums& s, bool counts) {
  if (s.n == 0) return s.weight == 0 && s.mean_weight == 0;
  if (counts && (s.weight != static_cast<double>(s.n) || s.mean_weight != 1)) return false;
  constexpr double rounding = 1 + 1e-6;
  return s.n > 0 && s.n <= most_values && std::isfinite(s.weight) && s.mean_weight > 0 &&
         s.mean_weight <= s.weight * rounding &&
         s.weight / static_cast<double>(s.n) <= s.mean_weight * rounding;
}

bool possible(const moment_sums& sums, const TmkSSOptions& options) {
  const bool counts = options.weightsAreCounts != 0;
  for (const variable_sums& v : sums.variables)
    if (!possible_weights(v, counts) || v.c2 < 0 || v.c4 < 0 || v.min > v.max) return false;
  if (options.crossProduct == 0) return true;
  const bool every_row = options.nanPolicy != TMK_SS_NAN_OMIT;
  const int64_t n = sums.joint.n;
  for (size_t j = 0; j < sums.variables.size(); ++j) {
    const int64_t own = sums.variables[j].n;
    if (n > own || (every_row && n != own) || sums.joint.cross[j * (j + 3) / 2] < 0) return false;
  }
  return possible_weights(sums.joint, counts);
}

TmkSSMoments read_content(image_reader& read) {
  if (read.bytes.size() < sizeof(uint32_t) + sizeof(uint64_t)) throw failed{TMK_SS_BAD_IMAGE_SIZE};
  const auto flags = read.next<uint32_t>();
  const auto columns = read.next<uint64_t>();
  const TmkSSOptions options = options_of(flags);
  const bool cross_product = options.crossProduct != 0;
  const auto most = static_cast<uint64_t>(cross_product ? most_matrix_columns : INT32_MAX);
  if (flags > 15 || !is_nan_policy(options.nanPolicy) || columns < 1 || columns > most)
    throw failed{TMK_SS_IMPOSSIBLE_IMAGE};
  // Checked before memory is allocated: the image has the bytes that so many columns need.
  if (read.bytes.size() != 8 * words_of_sums(columns, cross_product)) throw failed{TMK_SS_BAD_IMAGE_SIZE};
  TmkSSMoments m{options, no_sums(static_cast<size_t>(columns), cross_product)};
  visit_sums(m.sums, cross_product, read);
  if (!possible(m.sums, options)) throw failed{TMK_SS_IMPOSSIBLE_IMAGE};
  return m;
}

}  // namespace

}  // namespace tmk::stats::pooled

using namespace tmk::stats::pooled;

int64_t tmk_ss_pooled_moments_image_size(const TmkSSMoments* moments) {
  return image_size(moments, write_content);
}

int32_t tmk_ss_pooled_moments_save(const TmkSSMoments* moments, void* image, int64_t size) {
  return save_image(moments, kind, image, size, write_content);
}

int32_t tmk_ss_pooled_moments_load(TmkSSMoments** moments, const void* image, int64_t size) {
  return load_image(moments, kind, image, size, read_content);
}
