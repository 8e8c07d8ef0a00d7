// SPDX-License-Identifier: Apache-2.0
// The arctangent of a quotient n / d, 0 <= n <= d, and its sum with right angles.
//   arctan(n / d) = arctan(c) + arctan(t),   t = (n - c d) / (d + c n),   c = k/8, k = 0..7, |t| < 0.079
//   arctan(t) = t + t^3 p(t^2)
// The numerator n - c d is exact. HA keeps what the denominator and the quotient lose; the tables' first
// words and the right angles have sums without error.
#pragma once

#include "vector/inverse_trigonometric/angle.hpp"

TMK_TIER_OPEN
namespace {

// 7.49 n / d to within half a percent, never more, from a quotient to within 5 %: the factor 0.9676 of that
// comes back squared. So k = 8, for which there is no entry, is not reached.
template <class Real>
batch<Real> cell_of(const batch<Real>& n, const batch<Real>& d) {
  using value = batch<Real>;
  constexpr Real factor(0.9676);
  const value rough = rough_quotient<factor>(d);
  const value fine = rough * negative_multiply_add(d, rough, value(2 * factor));
  constexpr Real shifter = Real(1.5) / std::numeric_limits<Real>::epsilon() / 8;
  return multiply_add(n, fine, value(shifter));
}

// |j right angles + arctan(n / d)|
template <class Real, level Level, angle_unit Unit>
batch<Real> arctangent(const batch<Real>& n, const batch<Real>& d, const batch<Real>& j) {
  using value = batch<Real>;
  using constants = angles<Real, Unit>;
  using series = arctangent_series<Real, Unit>;
  const value shifted = cell_of(n, d);
  constexpr Real shifter = Real(1.5) / std::numeric_limits<Real>::epsilon() / 8;
  const value c = shifted - value(shifter);
  const auto k = table_index<Real, 8, 0>(bits_as<typename format<Real>::bits>(shifted));
  if constexpr (Level == level::ha) {
    const lane_table<Real, 8> high(constants::arctan_high), low(constants::arctan_low);
    const auto divisor = add_product(d, c, n);
    const value numerator = residual(n, c, d), t = numerator / divisor.high;
    const value lost = negative_multiply_add(t, divisor.low, residual(numerator, t, divisor.high));
    const auto sum = sum_in_unit<Unit>(multiply_add(j, value(constants::right_high), high[k]), t);
    value rest = low.leading(k);
    if constexpr (constants::right_low != 0) rest = multiply_add(j, value(constants::right_low), rest);
    rest = multiply_add(lost, rough_quotient<constants::unit>(divisor.high), rest) + sum.low;
    const value z = t * t;
    return xsimd::abs(sum.high + multiply_add(t * z, polynomial(z, series::ha), rest));
  } else {
    const lane_table<Real, 8> table(constants::arctan);
    const value t = negative_multiply_add(c, d, n) / multiply_add(c, n, d), z = t * t;
    const value base = multiply_add(j, value(constants::right), table[k]);
    const value p = Level == level::la ? polynomial(z, series::ha) : polynomial(z, series::ep);
    if constexpr (Unit == angle_unit::radians) {
      return xsimd::abs(base + multiply_add(t * z, p, t));
    } else if constexpr (Level == level::ep) {
      return xsimd::abs(multiply_add(t, multiply_add(z, p, value(constants::unit)), base));
    } else {
      // Around c = 1/8 the table's rounding counts twice.
      const lane_table<Real, 8> low(constants::arctan_error);
      const value rest = multiply_add(t, value(constants::unit_low), low.leading(k));
      return xsimd::abs(multiply_add(t, value(constants::unit), base) + multiply_add(t * z, p, rest));
    }
  }
}

}  // namespace
TMK_TIER_CLOSE
