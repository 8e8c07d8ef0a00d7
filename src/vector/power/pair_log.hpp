// SPDX-License-Identifier: Apache-2.0
// ln x of doubles as a pair, whose relative error stays below 2^-64: powers multiply it by up to 2^10.
//   x = 2^k m,  m in [0.7, 1.42), and r the reciprocal of m's cell, so short that f = m r - 1 is exact:
//   ln x = k ln 2 - ln r + f - f^2 / 2 + f^3 q(f)
// k ln 2 - ln r has an exact high part, to which f and -f^2 / 2 are added with what their sums lose. Around
// 1, k ln 2 - ln r is zero. Where registers hold the cells there are 32, |f| < 2^-5.5; else 128 rows in
// memory.
#pragma once

#include "simd/rows.hpp"
#include "vector/power/pair_log_data.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/toolbox/polynomial.hpp"

TMK_TIER_OPEN
namespace {

// x = 2^k m with m in [LowerEnd, 2 LowerEnd). `position` counts in units of x's last place from there; its
// leading fraction bits number the cell of m.
template <class Real>
struct mantissa_and_exponent {
  batch<Real> k, m;
  batch<typename format<Real>::bits> position;
};

// Positive normal x.
template <class Real>
mantissa_and_exponent<Real> split_at(const batch<Real>& x, Real lower_end) {
  using bits = typename format<Real>::bits;
  constexpr int fraction = format<Real>::fraction_bits;
  const auto position =
      bits_as<bits>(x) - batch<bits>(static_cast<bits>(to_bits(lower_end) - format<Real>::sign));
  const auto m = (position & batch<bits>((bits{1} << fraction) - 1)) + batch<bits>(to_bits(lower_end));
  // The exponent goes into the fraction of a power of two whose unit is 1.
  constexpr Real unit = fraction == 23 ? Real(0x1p23) : Real(0x1p52);
  constexpr Real zero = unit + Real(1 << (sizeof(Real) * 8 - fraction - 1));
  const auto k = (position >> fraction) | batch<bits>(to_bits(unit));
  return {bits_as<Real>(k) - batch<Real>(zero), bits_as<Real>(m), position};
}

// The columns of a table of 128 rows for each lane.
template <class Row, int Columns>
[[gnu::always_inline]] inline void row_of_128(const Row* rows, const u64& position, f64 (&column)[Columns]) {
  static_assert(sizeof(Row) == Columns * sizeof(double));
  uint32_t index[lanes<double>];
  store_lower_words(index, (position >> 45) & u64(127));
  load_columns<Columns>(&rows->reciprocal, reinterpret_cast<const int32_t*>(index), column);
}

// The leading 26 bits: products of two such numbers are exact.
inline f64 leading_half(const f64& x) {
  return bits_as<double>(bits_as<uint64_t>(x) & u64(0xFFFFFFFFF8000000));
}

struct log_cell_of_lanes {
  f64 reciprocal, high, low;
};
inline log_cell_of_lanes log_cell_at(const u64& position) {
  using namespace pair_log_data;
  if constexpr (this_tier == 2) {
    const auto i = table_index<double, 32, 47>(position);
    return {lane_table<double, 32>(reciprocal_32)[i], lane_table<double, 32>(high_32)[i],
            lane_table<double, 32>(low_32)[i]};
  } else {
    f64 column[4];
    row_of_128(cells_128, position, column);
    return {column[0], column[1], column[2]};
  }
}

// ln x, or ln(x 2^exponent), for positive normal x. The low part may reach 2^-12 of the high one.
template <class... Value>
batch_pair<double> pair_log(const f64& x, const Value&... exponent) {
  using namespace pair_log_data;
  constexpr bool few_cells = this_tier == 2;
  constexpr auto& series = []() -> auto& {
    if constexpr (few_cells)
      return series_32;
    else
      return series_128;
  }
  ();
  const auto [k0, m, position] = split_at(x, few_cells ? lower_end_32 : lower_end_128);
  const f64 k = (k0 + ... + exponent);
  const auto cell = log_cell_at(position);
  const f64 high = multiply_add(k, f64(ln2_high), cell.high);
  const f64 low = multiply_add(k, f64(ln2_low), cell.low);

  const f64 half(-0.5), one(1.0);
  f64 f, t, rest;
  batch_pair<double> sum;
  if constexpr (is_baseline) {
    const f64 mh = leading_half(m);
    f = (mh * cell.reciprocal - one) + (m - mh) * cell.reciprocal;
    sum = fast_two_sum(high, f);
    const f64 fh = leading_half(f);
    const auto less_square = fast_two_sum(sum.high, fh * fh * half);
    t = less_square.high;
    rest = (f - fh) * (half * (f + fh)) + less_square.low;
  } else {
    f = multiply_subtract(m, cell.reciprocal, one);
    sum = fast_two_sum(high, f);
    const f64 h = f * half;
    t = multiply_add(h, f, sum.high);
    rest = multiply_add(h, f, sum.high - t);
  }
  rest = rest + (sum.low + low);
  // The last words of powers above 10^300 are in those of the cubic term, where cells are wide.
  if constexpr (few_cells) {
    const f64 square = f * f;
    rest = multiply_add(square * square, polynomial<1>(f, series), rest);
    return {t, multiply_add(square * f, f64(series[0]), rest)};
  } else {
    return {t, multiply_add(f * f * f, polynomial(f, series), rest)};
  }
}

// x y as a pair, where the low part of x may reach 2^-12 of the high one; that of the product then does.
inline batch_pair<double> multiply_loose(const batch_pair<double>& x, const f64& y) {
  if constexpr (is_baseline) {
    const f64 xh = leading_half(x.high), yh = leading_half(y);
    const f64 xl = (x.high - xh) + x.low;
    return {xh * yh, xl * yh + (x.high + x.low) * (y - yh)};
  } else {
    const f64 product = x.high * y;
    return {product, multiply_add(x.low, y, multiply_subtract(x.high, y, product))};
  }
}

}  // namespace
TMK_TIER_CLOSE
