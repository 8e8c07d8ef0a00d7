// SPDX-License-Identifier: Apache-2.0
// sqrt(x^2 + y^2).
// HA: with s + s' = x^2 + y^2 as a pair and r = sqrt(s), r + (s - r^2 + s') / (2 r). The quotient is no more
// than the last place of r, so that 5 % of it are too little to matter.
// Squares beyond the format's range are left to a patch, which scales.
#pragma once

#include "vector/roots/estimates.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/toolbox/rough_quotient.hpp"
#include "vector/toolbox/scaled_back.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
struct hypotenuse : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;

  // sqrt(s) as a sum: near y = s e with V4's estimate e of 1 / sqrt(s), and r = 1 - e y,
  //   sqrt(s) = y (1 - r)^(-1/2) = y + y r (1/2 + 3 r / 8 + 5 r^2 / 16 + ...)
  // The processor's root takes longer in double precision, and in single than what EP needs.
  static constexpr bool estimates = this_tier == 2 && (Level == level::ep || (Level == level::la && !single));
  static batch_pair<Real> root(const value& s) {
    const value zero(Real(0));
    if constexpr (!estimates) return {xsimd::sqrt(s), zero};
    // Of zero, the estimate would be infinite.
    const value e = reciprocal_sqrt_estimate(maximum_or_second(s, value(std::numeric_limits<Real>::min())));
    const value y = s * e;
    if constexpr (single) return {y, zero};
    const value r = negative_multiply_add(e, y, value(Real(1)));
    if constexpr (Level == level::ep) return {y, y * r * value(Real(0.5))};
    return {y, y * r * polynomial(r, Real(0.5), Real(0.375), Real(0.3125))};
  }
  static batch_pair<Real> root_of_squares(const value& x, const value& y) {
    if constexpr (Level != level::ha) return root(multiply_add(x, x, y * y));
    const value a = xsimd::abs(x), b = xsimd::abs(y);
    // Of a NaN and a number, one of these is the NaN.
    const value larger = maximum_or_second(a, b), smaller = minimum_or_second(b, a);
    const auto square = two_prod(larger, larger), s = add_product(square.high, smaller, smaller);
    const value r = xsimd::sqrt(s.high), rest = residual(s.high, r, r) + (s.low + square.low);
    return {r, rest * rough_quotient<Real(0.5)>(r)};
  }
  static value sum(const batch_pair<Real>& root) { return root.high + root.low; }

  static value fast(const value& x, const value& y) { return sum(root_of_squares(x, y)); }

  // Results between these have squares, and residuals of squares, in the format.
  static constexpr Real least = single ? Real(0x1p-48) : Real(0x1p-480);
  static constexpr Real end = single ? Real(0x1p63) : Real(0x1p511);
  static lane_mask<Real> flagged(const value& x, const value& y, const value& r) {
    const auto outside_range =
        outside<Real, to_bits(least), to_bits(end)>(bits_as<typename tested<Real>::bits>(r));
    // The bits of both may be a NaN's, which differs from zero in no order.
    return outside_range & !((x | y) == value(Real(0)));
  }
  // What stays flagged exceeds the format, or nearly so.
  static lane_mask<Real> patch(const value& x, const value& y, value& r) {
    constexpr Real scale = single ? Real(0x1p104) : Real(0x1p600);
    const value infinity(std::numeric_limits<Real>::infinity());
    const value a = xsimd::abs(x), b = xsimd::abs(y), larger = maximum_or_second(a, b);
    const auto infinite = (a == infinity) | (b == infinity);
    pack<value> result{r};
    const auto nan = answer_nans(pack<value, value>{x, y}, result);
    const value quieted = xsimd::select(infinite, infinity, result.first);
    const auto known = nan | infinite;
    if (lane_bits<Real>(flagged(x, y, r) & !known) == 0) {
      r = quieted;
      return lane_mask<Real>(false);
    }
    const auto is_large = larger >= value(end / 2), is_small = larger < value(least);
    const auto small = root_of_squares(scaled_up<scale>(a), scaled_up<scale>(b));
    r = xsimd::select(is_small, scaled_back<scale>(small.high, small.low), r);
    if (lane_bits<Real>(is_large) != 0) {
      const value down(1 / scale), least(1 / scale);  // below, nothing next to a large number
      const auto large =
          root_of_squares(maximum_or_second(least, a) * down, maximum_or_second(least, b) * down);
      r = xsimd::select(is_large, sum(large) * value(scale), r);
    }
    r = xsimd::select(known, quieted, r);
    return (r > value(std::numeric_limits<Real>::max() * Real(0.998))) & !known;
  }
};

}  // namespace
TMK_TIER_CLOSE
