// SPDX-License-Identifier: Apache-2.0
// x^y = 2^(y log2 x) to 2^-29 in double and to 2^-11.7 in single arithmetic: for single precision through
// double, and for the levels of half the bits.
//   x = 2^k m,  m in [0.7, 1.42), r a reciprocal near m's cell, f = m r - 1:  log2 x = k - log2 r + f p(f)
//   2^z = 2^(k/N) 2^r,  |r| <= 1 / (2 N)
// Where y log2 x is near the ends of the format, or past them, the result is a NaN.
#pragma once

#include <limits>

#include "vector/power/pair_exp.hpp"
#include "vector/power/pair_log.hpp"
#include "vector/power/short_power_data.hpp"

TMK_TIER_OPEN
namespace {

// y where |z| < bound, else NaN.
template <class Real>
batch<Real> within(const batch<Real>& z, Real bound, const batch<Real>& y) {
  return xsimd::select(xsimd::abs(z) < batch<Real>(bound), y,
                       batch<Real>(std::numeric_limits<Real>::quiet_NaN()));
}

// log2 x, or log2(x 2^exponent).
template <class... Value>
f64 short_log2(const f64& x, const Value&... exponent) {
  using namespace short_power_data;
  constexpr bool few_cells = this_tier == 2;
  const auto [k, m, position] = split_at(x, few_cells ? few_lower_end : many_lower_end);
  f64 reciprocal, logarithm;
  if constexpr (few_cells) {
    const auto i = table_index<double, 16, 48>(position);
    reciprocal = lane_table<double, 16>(few_reciprocal)[i];
    logarithm = lane_table<double, 16>(few_logarithm)[i];
  } else {
    f64 column[2];
    row_of_128(many_rows, position, column);
    reciprocal = column[0];
    logarithm = column[1];
  }
  const f64 f = multiply_subtract(m, reciprocal, f64(1.0));
  const f64 p = few_cells ? polynomial(f, few_log2_series) : polynomial(f, many_log2_series);
  return multiply_add(f, p, (k + ... + exponent) + logarithm);
}

// 2^z = 2^(k/N) 2^r for normal results.
#if TMK_TIER_NUMBER(TMK_TIER) == 0
inline f64 short_exp2(const f64& z) {
  const f64 shifter(0x1.8p+45);
  const f64 shifted = z + shifter;
  const f64 r = z - (shifted - shifter);
  const i64 k = bits_as<int64_t>(shifted);
  const f64 power = fraction_power<7>(k).high;
  return scale_power<7>(power + power * (r * polynomial(r, short_power_data::exp2_series_128)), k, 0);
}
#else
// 2^(j/N) less j/N in the exponent field and below: adding k to the exponent gives 2^(k/N).
template <int N>
struct lowered_steps {
  double entry[N];
  constexpr lowered_steps() : entry{} {
    for (uint64_t j = 0; j < N; ++j)
      entry[j] = from_bits<double>(to_bits(short_power_data::sixteenth_powers[j * 16 / N]) - (j << 52) / N);
  }
};
template <int N>
constexpr lowered_steps<N> lowered_table;

template <int LogN>
f64 short_exp2_in_steps(const f64& z, const auto& series) {
  constexpr int n = 1 << LogN;
  const f64 shifter(0x1.8p+52 / n);
  const f64 shifted = z + shifter;
  const f64 r = z - (shifted - shifter);
  const auto j = table_index<double, n, 0>(bits_as<uint64_t>(shifted));
  const f64 power = raise_exponent<LogN>(lane_table<double, n>(lowered_table<n>.entry)[j], shifted);
  return multiply_add(power * r, polynomial(r, series), power);
}
inline f64 short_exp2(const f64& z) {
  if constexpr (this_tier == 2) return short_exp2_in_steps<4>(z, short_power_data::exp2_series_16);
  return short_exp2_in_steps<3>(z, short_power_data::exp2_series_8);
}
#endif

// x^y, or (x 2^exponent)^y, for positive normal x.
template <class... Value>
f64 short_power(double bound, const f64& x, const f64& y, const Value&... exponent) {
  const f64 z = y * short_log2(x, exponent...);
  return within(z, bound, short_exp2(z));
}

// The same in single arithmetic.
template <class... Value>
f32 short_power(float bound, const f32& x, const f32& y, const Value&... exponent) {
  using namespace short_power_data;
  const auto [k, m, position] = split_at(x, single_lower_end);
  const auto i = table_index<float, 8, 20>(position);
  const f32 f = multiply_subtract(m, lane_table<float, 8>(single_reciprocal)[i], f32(1.0f));
  const f32 log2 = multiply_add(f, polynomial(f, single_log2_series),
                                (k + ... + exponent) + lane_table<float, 8>(single_logarithm)[i]);
  const f32 z = y * log2;
  const f32 shifter(0x1.8p+23f);
  const f32 shifted = z + shifter;
  const f32 r = z - (shifted - shifter);
  const f32 power = multiply_add(r, polynomial(r, single_exp2_series), f32(1.0f));
  return within(z, bound, bits_as<float>(bits_as<int32_t>(power) + (bits_as<int32_t>(shifted) << 23)));
}

}  // namespace
TMK_TIER_CLOSE
