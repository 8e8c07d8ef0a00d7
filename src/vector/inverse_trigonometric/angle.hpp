// SPDX-License-Identifier: Apache-2.0
// What the inverse trigonometric functions share: acute angles counted from the nearest axis, which make
// angles of vectors in the half plane above the x axis.
#pragma once

#include "vector/inverse_trigonometric/series_data.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/toolbox/rough_quotient.hpp"
#include "vector/toolbox/scaled_back.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
batch<Real> sign_of(const batch<Real>& x) {
  return x & batch<Real>(Real(-0.0));
}

// The j for which |j right angles + angle| is the angle of a vector (x, y), y >= 0, where `angle` is between
// the vector and the y axis if it is steep, or else the x axis, on the vector's side:
//   steep: right angle - angle, x > 0; right angle + angle, x < 0
//   flat:  angle, x > 0;               2 right angles - angle, x < 0
template <class Real>
batch<Real> right_angles(const lane_mask<Real>& steep, const batch<Real>& x) {
  using value = batch<Real>;
  const value side = value(Real(1)) | sign_of(x);
  return xsimd::select(steep, -side, side - value(Real(1)));
}

// base + angle unit as a pair, for |base| >= |angle unit| or base = 0, and a multiple of the last place of
// the unit's product with any angle that is not far below it.
template <angle_unit Unit, class Real>
batch_pair<Real> sum_in_unit(const batch<Real>& base, const batch<Real>& angle) {
  using constants = angles<Real, Unit>;
  if constexpr (Unit == angle_unit::radians) return fast_two_sum(base, angle);
  const batch<Real> unit(constants::unit);
  const auto product = two_prod(angle, unit);
  const auto sum = fast_two_sum(base, product.high);
  return {sum.high, sum.low + multiply_add(angle, batch<Real>(constants::unit_low), product.low)};
}

// Below, what products with 1/pi and cubes leave may be subnormal numbers, which take a hundred times as
// long.
template <class Real>
constexpr Real least_in_half_turns = sizeof(Real) == 4 ? Real(0x1p-40) : Real(0x1p-300);

template <class Real>
lane_mask<Real> is_tiny(const batch<Real>& x) {
  const batch<Real> size = xsimd::abs(x);
  return (size < batch<Real>(least_in_half_turns<Real>)) & (size != batch<Real>(Real(0)));
}

// x / pi for these.
template <class Real>
batch<Real> tiny_in_half_turns(const batch<Real>& x) {
  constexpr Real scale = sizeof(Real) == 4 ? Real(0x1p80) : Real(0x1p200);
  const auto pair =
      sum_in_unit<angle_unit::half_turns>(batch<Real>(Real(0)), scaled_up<scale>(xsimd::abs(x)));
  return scaled_back<scale>(pair.high, pair.low) | sign_of(x);
}

// Odd functions of at most |x|, from what they are of magnitudes not below `least`. Zero is its own answer,
// and so is all below where the slope is 1.
template <class Real, class F>
[[gnu::always_inline]] inline batch<Real> odd_contraction(const batch<Real>& x, const batch<Real>& least,
                                                          const F& of_positive) {
  const batch<Real> magnitude = xsimd::abs(x);
  return minimum_or_second(magnitude, of_positive(maximum_or_second(least, magnitude))) | sign_of(x);
}

// What formulas do not give: NaNs, which they may alter, and tiny results in half turns.
template <bool MayVanish, class Real>
void settle(const batch<Real>& x, batch<Real>& y) {
  if constexpr (MayVanish) {
    const auto vanishing = is_tiny(x);
    if (lane_bits<Real>(vanishing) != 0) y = xsimd::select(vanishing, tiny_in_half_turns(x), y);
  }
  pack<batch<Real>> result{y};
  answer_nans(pack<batch<Real>>{x}, result);
  y = result.first;
}

}  // namespace
TMK_TIER_CLOSE
