// SPDX-License-Identifier: Apache-2.0
// The arctangent of a quotient n / d, 0 <= n <= d, and its sum with right angles.
//   arctan(n / d) = arctan(c) + arctan(t),   t = (n - c d) / (d + c n),   c = k/8, k = 0..7, |t| < 0.079
//   arctan(t) = t + t^3 p(t^2)
// The numerator n - c d is exact. HA keeps what the denominator and the quotient lose; the tables' first
// words and the right angles have sums without error.
#pragma once

#include "vector/inverse_trigonometric/angle.hpp"
#include "vector/roots/estimates.hpp"

TMK_TIER_OPEN
namespace {

// Adding it rounds to eighths, and leaves their number in the lowest bits.
template <class Real>
constexpr Real cell_shifter = Real(0x1.8p-3) / std::numeric_limits<Real>::epsilon();

// 7.49 n / d to within half a percent, never more, from a quotient to within 5 %: the factor 0.9676 of that
// comes back squared. So k = 8, for which there is no entry, is not reached.
template <class Real>
batch<Real> cell_of(const batch<Real>& n, const batch<Real>& d) {
  using value = batch<Real>;
  constexpr Real factor(0.9676);
  const value rough = rough_quotient<factor>(d);
  const value fine = rough * negative_multiply_add(d, rough, value(2 * factor));
  return multiply_add(n, fine, value(cell_shifter<Real>));
}

// d + c n as a pair, for c n <= d, and n - c d, which is a number of the format. c has three bits: without
// fused operations its products with split numbers are exact.
template <class Real>
batch_pair<Real> short_product(const batch<Real>& c, const batch<Real>& x) {
  const auto parts = split(x);
  const batch<Real> product = c * x;
  return {product, (c * parts.high - product) + c * parts.low};
}
template <class Real>
batch_pair<Real> add_short_product(const batch<Real>& d, const batch<Real>& c, const batch<Real>& n) {
  if constexpr (!is_baseline) return add_product(d, c, n);
  const auto product = short_product(c, n);
  const auto sum = fast_two_sum(d, product.high);
  return {sum.high, sum.low + product.low};
}
template <class Real>
batch<Real> subtract_short_product(const batch<Real>& n, const batch<Real>& c, const batch<Real>& d) {
  if constexpr (!is_baseline) return negative_multiply_add(c, d, n);
  const auto product = short_product(c, d);
  return (n - product.high) - product.low;
}

// j right angles + arctan(n / d), in every level's own way.
template <class Real, angle_unit Unit>
struct arctangent_in_cells {
  using value = batch<Real>;
  using constants = angles<Real, Unit>;
  using series = arctangent_series<Real, Unit>;
  value n, d, j, c;
  typename lane_table<Real, 8>::index k;

  arctangent_in_cells(const value& n_given, const value& d_given, const value& j_given)
      : n(n_given), d(d_given), j(j_given) {
    const value shifted = cell_of(n, d);
    c = shifted - value(cell_shifter<Real>);
    k = table_index<Real, 8, 0>(bits_as<typename format<Real>::bits>(shifted));
  }

  // With second words of n and d, if given.
  struct second_words {
    value n, d;
  };
  template <class... SecondWords>
  value ha(const SecondWords&... low) const {
    const lane_table<Real, 8> high(constants::arctan_high), low_table(constants::arctan_low);
    const auto divisor = add_short_product(d, c, n);
    const value numerator = subtract_short_product(n, c, d), t = numerator / divisor.high;
    const value divisor_low = (divisor.low + ... + multiply_add(c, low.n, low.d));
    const value lost = (negative_multiply_add(t, divisor_low, residual(numerator, t, divisor.high)) + ... +
                        negative_multiply_add(c, low.d, low.n));
    const auto sum = sum_in_unit<Unit>(multiply_add(j, value(constants::right_high), high[k]), t);
    value rest = low_table.leading(k);
    if constexpr (constants::right_low != 0) rest = multiply_add(j, value(constants::right_low), rest);
    rest = multiply_add(lost, rough_quotient<constants::unit>(divisor.high), rest) + sum.low;
    const value z = t * t;
    return sum.high + multiply_add(t * z, polynomial(z, series::ha), rest);
  }

  value la() const {
    const value t = negative_multiply_add(c, d, n) / multiply_add(c, n, d), z = t * t;
    const value p = polynomial(z, series::ha);
    if constexpr (Unit == angle_unit::radians) return base() + multiply_add(t * z, p, t);
    // Around c = 1/8 the table's rounding counts twice. The first sum is to stay below the result for t > 0,
    // lest a power of two between them make its rounding count twice.
    const lane_table<Real, 8> low(constants::arctan_error);
    const value slope = multiply_add(z, p, value(constants::unit_rest));
    return multiply_add(t, value(constants::unit_below), base()) + multiply_add(t, slope, low.leading(k));
  }

  // The quotient from an estimate of the reciprocal, where the processor has one.
  value ep() const {
    const value numerator = negative_multiply_add(c, d, n), divisor = multiply_add(c, n, d);
    value t;
    if constexpr (this_tier == 2) {
      const value estimate = reciprocal_estimate(divisor), near = numerator * estimate;
      t = multiply_add(negative_multiply_add(near, divisor, numerator), estimate, near);
    } else {
      t = numerator / divisor;
    }
    const value z = t * t;
    return multiply_add(t, multiply_add(z, polynomial(z, series::ep), value(constants::unit)), base());
  }

 private:
  value base() const {
    return multiply_add(j, value(constants::right), lane_table<Real, 8>(constants::arctan)[k]);
  }
};

// The same from one polynomial for all quotients. In single precision it is shorter than what the cells take.
template <class Real, level Level, angle_unit Unit>
batch<Real> arctangent_at_once(const batch<Real>& n, const batch<Real>& d, const batch<Real>& j) {
  using value = batch<Real>;
  using constants = angles<Real, Unit>;
  using series = arctangent_series<Real, Unit>;
  if constexpr (Level == level::ep) {
    const value q = n * reciprocal_estimate(d);
    return multiply_add(q, polynomial(q * q, series::whole_ep), j * value(constants::right));
  } else {
    const value q = n / d, z = q * q, rest = j * value(constants::right_low);
    return (j * value(constants::right_high) + q) +
           multiply_add(q * z, polynomial(z, series::whole_la), rest);
  }
}

// |j right angles + arctan(n / d)|
template <class Real, level Level, angle_unit Unit>
batch<Real> arctangent(const batch<Real>& n, const batch<Real>& d, const batch<Real>& j) {
  // The roundings of a long polynomial are too many for HA, and with the product for LA in half turns.
  constexpr bool at_once = Level == level::ep || (Level == level::la && Unit == angle_unit::radians);
  if constexpr (at_once && sizeof(Real) == 4) {
    return xsimd::abs(arctangent_at_once<Real, Level, Unit>(n, d, j));
  } else {
    const arctangent_in_cells<Real, Unit> angle(n, d, j);
    if constexpr (Level == level::ha) return xsimd::abs(angle.ha());
    if constexpr (Level == level::la) return xsimd::abs(angle.la());
    return xsimd::abs(angle.ep());
  }
}

}  // namespace
TMK_TIER_CLOSE
