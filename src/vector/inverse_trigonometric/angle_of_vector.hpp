// SPDX-License-Identifier: Apache-2.0
// The angle of the vector (x, y) to the x axis.
#pragma once

#include "vector/inverse_trigonometric/arctangent.hpp"

TMK_TIER_OPEN
namespace {

// Vectors with parts in this range, or zero, have quotients whose residuals are normal numbers.
template <class Real>
struct vector_range {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr Real least = single ? Real(0x1p-55) : Real(0x1p-500);
  static constexpr Real end = single ? Real(0x1p55) : Real(0x1p500);

  // NaNs are outside.
  static lane_mask<Real> is_left_by(const value& y, const value& x) {
    const value height = xsimd::abs(y), width = xsimd::abs(x);
    const value n = minimum_or_second(width, height);
    const auto in_range = height + width < value(end);
    return (!in_range) | ((n < value(least)) & (n != value(Real(0))));
  }
};

// A vector scaled into that range by a power of two, but for a smaller part that stays below it: infinite
// parts become 1 and others, next to them, 0.
template <class Real>
struct scaled_vector {
  using value = batch<Real>;
  using range = vector_range<Real>;
  value y, x, log2_of_scale;
  lane_mask<Real> infinite;

  scaled_vector(const value& y_given, const value& x_given) {
    const value zero(Real(0)), one(Real(1)), infinity(std::numeric_limits<Real>::infinity());
    const value height = xsimd::abs(y_given), width = xsimd::abs(x_given);
    const value d = maximum_or_second(height, width);
    constexpr int up = range::single ? 96 : 600, down = range::single ? -80 : -600;
    const auto by_size = [&](const value& of_small, const value& of_usual, const value& of_large) {
      return xsimd::select(d < value(range::least), of_small,
                           xsimd::select(d < value(range::end), of_usual, of_large));
    };
    constexpr Real scale_up = range::single ? Real(0x1p96) : Real(0x1p600);
    constexpr Real scale_down = range::single ? Real(0x1p-80) : Real(0x1p-600);
    const value scale = by_size(value(scale_up), one, value(scale_down));
    log2_of_scale = by_size(value(Real(up)), zero, value(Real(down)));
    infinite = (height == infinity) | (width == infinity);
    const auto scaled = [&](const value& part, const value& size) {
      const value of_infinite = xsimd::select(size == infinity, one, zero);
      return xsimd::select(infinite, of_infinite, size * scale) | sign_of(part);
    };
    y = scaled(y_given, height), x = scaled(x_given, width);
  }

  // Where a quotient may vanish: next to the positive half of the x axis it is the angle.
  lane_mask<Real> has_vanishing_angle(const value& y_given) const {
    return (y_given != value(Real(0))) & (xsimd::abs(y) < value(range::least)) & (x > value(Real(0))) &
           !infinite;
  }
};

template <class Real, level Level, angle_unit Unit>
struct angle_of_vector : description<Real> {
  using value = batch<Real>;
  using range = vector_range<Real>;

  static value fast(const value& y, const value& x) {
    const value height = xsimd::abs(y), width = xsimd::abs(x);
    // Of a NaN and a number, one of these is the NaN. The larger one is positive: of zeros, the quotient is
    // 0.
    const value n = minimum_or_second(width, height);
    const value d = maximum_or_second(value(range::least), maximum_or_second(height, width));
    return arctangent<Real, Level, Unit>(n, d, right_angles(height > width, x)) | sign_of(y);
  }
  static lane_mask<Real> flagged(const value& y, const value& x, const value&) {
    return range::is_left_by(y, x);
  }
  // The slow path has the quotients that vanish.
  static lane_mask<Real> patch(const value& y, const value& x, value& r) {
    const pack<value, value> arguments{y, x};
    pack<value> quieted{r};
    const auto nan = answer_nans(arguments, quieted);
    if (lane_bits<Real>(flagged(y, x, r) & !nan) == 0) {
      r = quieted.first;
      return lane_mask<Real>(false);
    }
    const scaled_vector<Real> scaled(y, x);
    pack<value> result{fast(scaled.y, scaled.x)};
    answer_nans(arguments, result);
    r = result.first;
    return scaled.has_vanishing_angle(y) & !nan;
  }
};

}  // namespace
TMK_TIER_CLOSE
