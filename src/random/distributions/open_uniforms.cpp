// SPDX-License-Identifier: Apache-2.0
// Elements of every generator as uniforms of an open interval, and as integers of a range.
#include "random/distributions/open_uniforms.hpp"

#include <algorithm>
#include <cmath>

#include "random/core/registry.hpp"
#include "random/distributions/candidates.hpp"
#include "random/distributions/precision.hpp"
#include "random/generators/scale.hpp"

namespace {
using namespace tmk::rng;

// How the elements of a generator are random. A point of a digital sequence has one element per coordinate,
// so that no second one may be drawn for the lower digits of a coordinate.
enum class carrier {
  digit,       // words least to least + base - 1
  coordinate,  // words of 32 bits, one per uniform
  fraction,    // the generator's own uniforms hold about 53 bits, or nothing else is known of it
};

struct element_rule {
  VtsInitStream owner;
  carrier kind;
  double base, least;
};

constexpr element_rule rules[] = {
    {__vtsBRngMCG31M1InitStream, carrier::digit, 0x1p31 - 2, 1},
    {__vtsBRngR250InitStream, carrier::digit, 0x1p32, 0},
    {__vtsBRngMRG32K3AInitStream, carrier::digit, 0x1p32 - 209, 0},
    {__vtsBRngSobolInitStream, carrier::coordinate, 0x1p32, 0},
    {__vtsBRngNiederrInitStream, carrier::coordinate, 0x1p32, 0},
    {__vtsBRngMT19937InitStream, carrier::digit, 0x1p32, 0},
    {__vtsBRngMT2203InitStream, carrier::digit, 0x1p32, 0},
    {__vtsBRngiAbstractInitStream, carrier::digit, 0x1p32, 0},
    {__vtsBRngSFMT19937InitStream, carrier::digit, 0x1p32, 0},
    {__vtsBRngTRNGInitStream, carrier::digit, 0x1p32, 0},
    {__vtsBRngARS5InitStream, carrier::digit, 0x1p32, 0},
    {__vtsBRngPHILOX4X32X10InitStream, carrier::digit, 0x1p32, 0},
};

element_rule rule_of(VtsStreamHandle stream) {
  const VtsInitStream owner = record_of(stream).initStream;
  for (const element_rule& rule : rules)
    if (rule.owner == owner) return rule;
  return {owner, carrier::fraction, 0, 0};
}

template <class Real>
struct ends_within {
  Real low, high;
  ends_within(Real a, Real b)
      : low(std::max(std::nextafter(a, b), static_cast<Real>(a + (double{b} - a) * 0x1p-54))),
        high(std::nextafter(b, a)) {}
};

int32_t draw_words(VtsStreamHandle stream, int32_t n, void* r) {
  return _vtsiRngUniformBits(0, stream, n, r);
}

int32_t draw_pairs(const element_rule& rule, VtsStreamHandle stream, int32_t n, double* r, double a,
                   double b) {
  const double k = (b - a) / rule.base, k_lower = k / rule.base;
  const ends_within ends(a, b);
  const pair_scale scale = {k,        a - rule.least * k, k_lower, (0.5 - rule.least) * k_lower,
                            ends.low, ends.high};
  return in_blocks(n, r, [=](int32_t count, double* block) {
    const int32_t status = draw_words(stream, 2 * count, block);
    if (status >= 0) bit_kernels_now().pairs_to_doubles(count, block, scale);
    return status;
  });
}

// One word each: scaled in double, for singles rounded once more.
template <class Real>
int32_t draw_single_words(const element_rule& rule, VtsStreamHandle stream, int32_t n, Real* r, Real a,
                          Real b) {
  const double k = (double{b} - a) / rule.base;
  const double centre = a + (0.5 - rule.least) * k;
  const ends_within ends(a, b);
  return in_blocks(n, r, [=](int32_t count, Real* block) {
    uint32_t* const words = reinterpret_cast<uint32_t*>(block + count) - count;
    const int32_t status = draw_words(stream, count, words);
    if (status < 0) return status;
    scale_kernels_now<Real>().of_unsigned(count, words, block, k, centre);
    precision<Real>::steps().clamp(count, block, ends.low, ends.high);
    return status;
  });
}

template <class Real>
int32_t draw_fractions(VtsStreamHandle stream, int32_t n, Real* r, Real a, Real b) {
  const ends_within ends(a, b);
  return in_blocks(n, r, [=](int32_t count, Real* block) {
    const int32_t status = precision<Real>::uniform(0, stream, count, block, a, b);
    if (status >= 0) precision<Real>::steps().clamp(count, block, ends.low, ends.high);
    return status;
  });
}

template <class Real>
int32_t draw_by_rule(VtsStreamHandle stream, int32_t n, Real* r, Real a, Real b) {
  const element_rule rule = rule_of(stream);
  if (rule.kind == carrier::fraction) return draw_fractions(stream, n, r, a, b);
  if constexpr (sizeof(Real) == sizeof(double))
    if (rule.kind == carrier::digit) return draw_pairs(rule, stream, n, r, a, b);
  return draw_single_words(rule, stream, n, r, a, b);
}

// Values of a pair of words, low + floor(pair width / 2^64), and how many of the pairs have one.
int32_t values_of_words(int32_t n, const uint64_t* pairs, uint64_t width, int32_t low, int32_t* r) {
  if (width >> 32 == 0) return bit_kernels_now().bounded(n, pairs, static_cast<uint32_t>(width), low, r);
  for (int32_t i = 0; i < n; ++i) r[i] = static_cast<int32_t>(pairs[i] >> 32);
  return n;
}

// The same for two digits of another base: the base squared numbers are divided into equal runs, with a
// remainder that has no value.
int32_t values_of_digits(const element_rule& rule, int32_t n, const uint64_t* pairs, uint64_t width,
                         int32_t low, int32_t* r) {
  const auto base = static_cast<uint64_t>(rule.base), least = static_cast<uint64_t>(rule.least);
  const uint64_t run = base * base / width;
  int32_t kept = 0;
  for (int32_t i = 0; i < n; ++i) {
    const uint64_t number = ((pairs[i] >> 32) - least) * base + ((pairs[i] & 0xFFFFFFFF) - least);
    const uint64_t value = number / run;
    r[kept] = static_cast<int32_t>(low + static_cast<int64_t>(value));
    kept += value < width;
  }
  return kept;
}

// At most one pair in 2^30 has no value.
int32_t integers_of_pairs(const element_rule& rule, VtsStreamHandle stream, int32_t count, int32_t* r,
                          uint64_t width, int32_t low) {
  alignas(64) uint64_t pairs[distribution_block];
  const int32_t status = draw_words(stream, 2 * count, pairs);
  if (status < 0) return status;
  return rule.base == 0x1p32 ? values_of_words(count, pairs, width, low, r)
                             : values_of_digits(rule, count, pairs, width, low, r);
}

int32_t integers_of_uniforms(VtsStreamHandle stream, int32_t count, int32_t* r, uint64_t width, int32_t low) {
  alignas(64) double x[distribution_block];
  const int32_t status = draw_open(stream, count, +x, 0.0, 1.0);
  const auto value = [=](double u) {
    return static_cast<int32_t>(low + static_cast<int64_t>(u * static_cast<double>(width)));
  };
  if (status < 0) return status;
  std::transform(x, x + count, r, value);
  return count;
}

template <class Unit>
int32_t draw_units_by_rule(VtsStreamHandle stream, int32_t n, Unit* r) {
  const element_rule rule = rule_of(stream);
  if (rule.kind == carrier::digit && rule.base == 0x1p32)
    return draw_words(stream, n * static_cast<int32_t>(sizeof(Unit) / 4), r);
  alignas(64) double u[distribution_block];
  return in_blocks(n, r, [=, &u](int32_t count, Unit* block) {
    const int32_t status = draw_open(stream, count, +u, 0.0, 1.0);
    const auto unit = [](double x) {
      if constexpr (sizeof(Unit) == 8)
        return static_cast<Unit>(static_cast<int64_t>(x * 0x1p53)) << 11 | 1U << 10;
      else
        return static_cast<Unit>(static_cast<int64_t>(x * 0x1p32));
    };
    if (status >= 0) std::transform(u, u + count, block, unit);
    return status;
  });
}

}  // namespace

int32_t tmk::rng::draw_units(VtsStreamHandle stream, int32_t n, uint64_t* r) {
  return draw_units_by_rule(stream, n, r);
}
int32_t tmk::rng::draw_units(VtsStreamHandle stream, int32_t n, uint32_t* r) {
  return draw_units_by_rule(stream, n, r);
}
bool tmk::rng::gives_points(VtsStreamHandle stream) { return rule_of(stream).kind == carrier::coordinate; }

int32_t tmk::rng::draw_open(VtsStreamHandle stream, int32_t n, double* r, double a, double b) {
  return draw_by_rule(stream, n, r, a, b);
}
int32_t tmk::rng::draw_open(VtsStreamHandle stream, int32_t n, float* r, float a, float b) {
  return draw_by_rule(stream, n, r, a, b);
}

int32_t tmk::rng::integer_candidates(VtsStreamHandle stream, int32_t count, int32_t* r, int32_t low,
                                     int32_t high) {
  const element_rule rule = rule_of(stream);
  const auto width = static_cast<uint64_t>(int64_t{high} - low + 1);
  return candidates_in_blocks(count, r, [=](int32_t n, int32_t* block) {
    return rule.kind == carrier::digit ? integers_of_pairs(rule, stream, n, block, width, low)
                                       : integers_of_uniforms(stream, n, block, width, low);
  });
}

extern "C" {

int32_t tmk_vts_elements_of_uniform(VtsStreamHandle stream, int32_t bytes) {
  return bytes == sizeof(double) && rule_of(stream).kind == carrier::digit ? 2 : 1;
}

// Open uniforms of the unit interval stay within it; elsewhere the scaling may round to an end.
int32_t tmk_vtsdRngUniform(VtsStreamHandle stream, int32_t n, double* r, double a, double b) {
  return draw_open(stream, n, r, a, b);
}
int32_t tmk_vtssRngUniform(VtsStreamHandle stream, int32_t n, float* r, float a, float b) {
  return draw_open(stream, n, r, a, b);
}

int32_t tmk_vtsiRngUniform(VtsStreamHandle stream, int32_t n, int32_t* r, int32_t low, int32_t high) {
  return fill_with_accepted(n, r, [=](int32_t count, int32_t* block) {
    return integer_candidates(stream, count, block, low, high);
  });
}

int32_t tmk_vtsiRngBernoulli(VtsStreamHandle stream, int32_t n, int32_t* r, double p) {
  alignas(64) double x[distribution_block];
  return in_blocks(n, r, [=, &x](int32_t count, int32_t* block) {
    const int32_t status = draw_open(stream, count, +x, 0.0, 1.0);
    if (status >= 0) bit_kernels_now().doubles_below(count, x, p, block);
    return status;
  });
}
}
