// SPDX-License-Identifier: Apache-2.0
// The square root of x + i y, with the cut along the negative half of the x axis.
//   t = sqrt((|x| + |z|) / 2),   s = |y| / (2 t):   t + i s for x >= 0, s + i t for x < 0, the sign of y
// HA takes |z|, the sum and t as pairs. What rounding took from a root is below its last place, so that 5 %
// of it are too little to matter. Squares beyond the format's range are left to a patch, which scales. The
// caller's rounding direction and flush controls stay.
#include "vector/roots/estimates.hpp"
#include "vector/toolbox/near.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/toolbox/rough_quotient.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
struct complex_sqrt : description<Real> {
  using value = batch<Real>;
  using complex = complex_value<Real>;
  // V3 has too few registers for more of them at a time.
  static constexpr int group = (this_tier == 1 ? 2 : 4) * lanes<Real>;
  static constexpr bool single = sizeof(Real) == 4, exact = Level == level::ha;
  static constexpr auto controls = single ? control_class::c : control_class::b;
  static constexpr auto sse = sse_control::nearest;

  // The larger part of z has squares, and residuals of squares, in the format; the smaller one quotients.
  static constexpr Real least = single ? Real(0x1p-48) : Real(0x1p-480);
  static constexpr Real end = single ? Real(0x1p62) : Real(0x1p510);
  static constexpr Real least_of_smaller = single ? Real(0x1p-70) : Real(0x1p-700);
  using near = near_root<Real>;
  static constexpr Real least_root = single ? Real(0x1p-30) : Real(0x1p-300);

  // |z| as a pair.
  static batch_pair<Real> modulus(const value& larger, const value& smaller) {
    if constexpr (!exact) {
      const value square = multiply_add(larger, larger, smaller * smaller);
      return {this_tier == 2 ? near(square, least).root : xsimd::sqrt(square), value(Real(0))};
    } else {
      const auto square = two_prod(larger, larger), s = add_product(square.high, smaller, smaller);
      const batch_pair<Real> sum{s.high, s.low + square.low};
      if constexpr (this_tier == 2) return near(sum.high, least).pair(sum);
      const value root = xsimd::sqrt(sum.high), rest = residual(sum.high, root, root) + sum.low;
      return {root, rest * rough_quotient<Real(0.5)>(root)};
    }
  }
  static complex fast(const complex& z) {
    const value half(Real(0.5)), width = xsimd::abs(z.re), height = xsimd::abs(z.im);
    // Of a NaN and a number, one of these is the NaN.
    const auto length = modulus(maximum_or_second(width, height), minimum_or_second(height, width));
    value t, s;
    if constexpr (!exact) {
      const near root((width + length.high) * half, least_root);
      t = root.root;
      s = height * root.half_reciprocal;
      if constexpr (this_tier == 2)
        s = multiply_add(negative_multiply_add(t + t, s, height), root.half_reciprocal, s);
    } else {
      const auto sum = fast_two_sum(length.high, width);
      const batch_pair<Real> mean{sum.high * half, (sum.low + length.low) * half};
      const near root = near(mean.high, least_root).refined();
      const auto parts = root.pair(mean);
      const value twice = parts.high + parts.high, quotient = height * root.half_reciprocal;
      const value rest =
          negative_multiply_add(quotient, parts.low + parts.low, residual(height, quotient, twice));
      t = parts.high + parts.low;
      s = multiply_add(rest, root.half_reciprocal, quotient);
    }
    const auto left = (xsimd::bitofsign(z.re) | value(Real(1))) < value(Real(0));
    return {xsimd::select(left, s, t), xsimd::select(left, t, s) | (z.im & value(Real(-0.0)))};
  }

  static lane_mask<Real> flagged(const complex& z, const complex&) {
    const value zero(Real(0)), width = xsimd::abs(z.re), height = xsimd::abs(z.im);
    const value larger = maximum_or_second(width, height), smaller = minimum_or_second(height, width);
    const auto in_range = (larger < value(end)) & ((larger >= value(least)) | (larger == zero));
    return !(in_range & ((smaller >= value(least_of_smaller)) | (smaller == zero)));
  }
  // What stays flagged is infinite, or has a part next to nothing.
  static lane_mask<Real> patch(const complex& z, complex& r) {
    const value zero(Real(0)), one(Real(1)), infinity(std::numeric_limits<Real>::infinity());
    const value width = xsimd::abs(z.re), height = xsimd::abs(z.im), quiet = z.re + z.im;
    const auto infinite = (width == infinity) | (height == infinity);
    const auto nan = (xsimd::isnan(z.re) | xsimd::isnan(z.im)) & !infinite;
    lane_mask<Real> rare = flagged(z, r) & !nan;
    if (lane_bits<Real>(rare) != 0) {
      const value larger = maximum_or_second(width, height);
      const auto small = larger < value(least), large = larger >= value(end);
      constexpr Real up = single ? Real(0x1p52) : Real(0x1p300), down = single ? Real(0x1p40) : Real(0x1p280);
      const auto by_size = [&](Real of_small, Real of_large) {
        return xsimd::select(small, value(of_small), xsimd::select(large, value(of_large), one));
      };
      const value scale = by_size(up * up, 1 / (down * down)), back = by_size(1 / up, down);
      const complex scaled{z.re * scale, z.im * scale}, y = fast(scaled);
      r = {y.re * back, y.im * back};
      const value smaller = minimum_or_second(height, width);
      rare = rare & (infinite | ((smaller != zero) & (smaller * scale < value(least_of_smaller))));
    }
    r.re = xsimd::select(nan, quiet, r.re);
    r.im = xsimd::select(nan, quiet, r.im);
    return rare;
  }
};

}  // namespace
TMK_TIER_CLOSE

// Maximum errors of a part in ulp, by tmk-accuracy Sqrt --samples 65536 --search brief:
//   single LA (W7, V3): 2.675 at (-0x1.ef1e8p-6, 0x1.000afep+1)
//   single LA (V4): 2.527 at (-0x1.ef208p-6, 0x1.fff8dcp+0)
//   single HA (W7, V3): 0.5317 at (-0x1.efea54p-6, 0x1.fff974p+0)
//   single HA (V4): 0.5099 at (-0x1.ef2144p-6, 0x1.ffffbep+0)
//   double LA, HA, EP (W7, V3): 0.5264 at (-0x1.ffffffc3fd84ap-1, 0x1.fd7ae6a1d88a9p+2)
//   double LA, HA, EP (V4): 0.5402 at (0x1.14f4ad73088ep-64, -0x1.00021bdef8ab6p+0)
TMK_KERNELS(c, Sqrt, unary, LHL, complex_sqrt)
TMK_KERNELS(z, Sqrt, unary, HHH, complex_sqrt)
