// SPDX-License-Identifier: Apache-2.0
// The angle of the vector (x, y) to the x axis.
#pragma once

#include "vector/inverse_trigonometric/arctangent.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level, angle_unit Unit>
struct angle_of_vector : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  // Vectors with parts in this range, or zero, have quotients whose residuals are normal numbers.
  static constexpr Real least = single ? Real(0x1p-55) : Real(0x1p-500);
  static constexpr Real end = single ? Real(0x1p55) : Real(0x1p500);

  static value fast(const value& y, const value& x) {
    const value height = xsimd::abs(y), width = xsimd::abs(x);
    // Of a NaN and a number, one of these is the NaN. The larger one is positive: of zeros, the quotient is
    // 0.
    const value n = minimum_or_second(width, height);
    const value d = maximum_or_second(value(least), maximum_or_second(height, width));
    return arctangent<Real, Level, Unit>(n, d, right_angles(height > width, x)) | sign_of(y);
  }
  static lane_mask<Real> flagged(const value& y, const value& x, const value&) {
    const value height = xsimd::abs(y), width = xsimd::abs(x);
    const value n = minimum_or_second(width, height);
    const auto in_range = height + width < value(end);
    return (!in_range) | ((n < value(least)) & (n != value(Real(0))));
  }
  // Scales vectors into the range. Where the smaller part stays below it, it still matters next to the
  // positive half of the x axis: the slow path has the quotients that vanish.
  static lane_mask<Real> patch(const value& y, const value& x, value& r) {
    const pack<value, value> arguments{y, x};
    pack<value> quieted{r};
    const auto nan = answer_nans(arguments, quieted);
    if (lane_bits<Real>(flagged(y, x, r) & !nan) == 0) {
      r = quieted.first;
      return lane_mask<Real>(false);
    }
    const value zero(Real(0)), one(Real(1)), infinity(std::numeric_limits<Real>::infinity());
    const value height = xsimd::abs(y), width = xsimd::abs(x), d = maximum_or_second(height, width);
    constexpr Real up = single ? Real(0x1p96) : Real(0x1p600), down = single ? Real(0x1p-80) : Real(0x1p-600);
    const value scale =
        xsimd::select(d < value(least), value(up), xsimd::select(d < value(end), one, value(down)));
    const auto scaled = [&](const value& part, const value& size) {
      const value of_infinite = xsimd::select(size == infinity, one, zero);
      return xsimd::select(d == infinity, of_infinite, size * scale) | sign_of(part);
    };
    const value scaled_y = scaled(y, height), scaled_x = scaled(x, width);
    pack<value> result{fast(scaled_y, scaled_x)};
    answer_nans(arguments, result);
    r = result.first;
    return (height != zero) & (xsimd::abs(scaled_y) < value(least)) & (d != infinity) & (x > zero) & !nan;
  }
};

}  // namespace
TMK_TIER_CLOSE
