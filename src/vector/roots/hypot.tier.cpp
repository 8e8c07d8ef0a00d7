// SPDX-License-Identifier: Apache-2.0
// sqrt(x^2 + y^2).
// HA: with s + s' = x^2 + y^2 as a pair and r = sqrt(s), r + (s - r^2 + s') / (2 r). The quotient is no more
// than the last place of r, so that 5 % of it are too little to matter.
// Squares beyond the format's range are left to a patch, which scales.
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

  // sqrt(s), and what it lacks of sqrt(s + s_low), from V4's estimate of 1 / sqrt(s) where that is faster.
  static batch_pair<Real> root(const value& s, const value& s_low) {
    if constexpr (this_tier < 2) {
      const value r = xsimd::sqrt(s);
      if constexpr (Level == level::ha)
        return {r, (residual(s, r, r) + s_low) * rough_quotient<Real(0.5)>(r)};
      return {r, s_low};
    } else {
      // Of zero, the estimate would be infinite.
      const value estimate =
          reciprocal_sqrt_estimate(maximum_or_second(s, value(std::numeric_limits<Real>::min())));
      const value near = s * estimate, half(Real(0.5));
      if constexpr (Level == level::ep && single) return {near, s_low};
      const value e = negative_multiply_add(near, estimate, value(Real(1)));
      if constexpr (Level == level::ep || (Level == level::la && single)) return {near, near * half * e};
      const value more = near * e;
      if constexpr (Level == level::la)
        return {near, more * polynomial(e, Real(0.5), Real(0.375), Real(0.3125))};
      const value r = single ? multiply_add(more, half, near)
                             : multiply_add(more, polynomial(e, Real(0.5), Real(0.375), Real(0.3125)), near);
      return {r, (negative_multiply_add(r, r, s) + s_low) * (half * estimate)};
    }
  }
  static batch_pair<Real> root_of_squares(const value& x, const value& y) {
    if constexpr (Level == level::ha) {
      const value a = xsimd::abs(x), b = xsimd::abs(y);
      // Of a NaN and a number, one of these is the NaN.
      const value larger = maximum_or_second(a, b), smaller = minimum_or_second(b, a);
      const auto square = two_prod(larger, larger), sum = add_product(square.high, smaller, smaller);
      return root(sum.high, sum.low + square.low);
    } else {
      return root(multiply_add(x, x, y * y), value(Real(0)));
    }
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
    const auto is_large = larger >= value(end / 2), is_small = larger < value(least);
    const auto scaled = [&](Real factor) { return root_of_squares(a * value(factor), b * value(factor)); };
    const auto small = scaled(scale);
    r = xsimd::select(is_small, scaled_back<scale>(small.high, small.low), r);
    r = xsimd::select(is_large, sum(scaled(1 / scale)) * value(scale), r);
    pack<value> result{r};
    const auto nan = answer_nans(pack<value, value>{x, y}, result);
    r = xsimd::select(infinite, infinity, result.first);
    return (r > value(std::numeric_limits<Real>::max() * Real(0.998))) & (!infinite) & (!nan);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Hypot, binary, LHE, hypotenuse)
TMK_KERNELS(d, Hypot, binary, HHE, hypotenuse)
