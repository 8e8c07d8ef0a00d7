// SPDX-License-Identifier: Apache-2.0
// ln z = ln|z| + i arg z, and log10 z = ln z / ln 10.
//   ln|z| = ln(x^2 + y^2) / 2, the sum of squares as a pair
// The logarithm of a pair and the arctangent are those of the real functions. Parts that are so large or so
// small that squares or quotients leave the format are scaled by a patch.
#include "vector/complex_logarithm/modulus.hpp"
#include "vector/inverse_trigonometric/angle_of_vector.hpp"
#include "vector/logarithm/log_of_pair.hpp"

TMK_TIER_OPEN
namespace {

enum class logarithm_base { e, ten };

template <class Real, level Level, logarithm_base Base>
struct complex_log : description<Real> {
  using value = batch<Real>;
  using complex = complex_value<Real>;
  using range = vector_range<Real>;
  // Squares have words that are subnormal numbers.
  static constexpr auto sse = is_baseline ? sse_control::by_mode : sse_control::exact;
  // V3 has too few registers for more of them at a time.
  static constexpr int group = (this_tier == 1 ? 2 : 4) * lanes<Real>;
  using number = std::conditional_t<sizeof(Real) == 4, tmk_complex8, tmk_complex16>;
  static constexpr auto unit = Base == logarithm_base::e ? angle_unit::radians : angle_unit::ln10_radians;
  // Where there are no fused products, singles go through double precision: a pair of them takes longer.
  static constexpr bool in_doubles = is_baseline && sizeof(Real) == 4;

  // log(larger^2 + smaller^2) + exponent log 2.
  template <class Wide, class... Value>
  static Wide log_of_squares(const Wide& larger, const Wide& smaller, const Value&... exponent) {
    if constexpr (Level == level::ha && !in_doubles) {
      const auto square = exact_sum_of_squares(larger, smaller);
      return log_of_words<level::ha>(square.high, square.low, exponent...);
    } else {
      const auto square = sum_of_squares(larger, smaller);
      return log_of_words<level::la>(square.high, square.low, exponent...);
    }
  }
  template <level By, class... Words>
  static auto log_of_words(const Words&... words) {
#if TMK_TIER_NUMBER(TMK_TIER) == 0
    return log_of_pair<By>(words...);
#else
    return log_of_pair < By, Base == logarithm_base::e ? log_base::e : log_base::ten > (words...);
#endif
  }
  template <class... Value>
  static complex log_of(const complex& z, const Value&... exponent) {
    const value height = xsimd::abs(z.im), width = xsimd::abs(z.re);
    // Of a NaN and a number, one of these is the NaN.
    const value smaller = minimum_or_second(width, height);
    const value larger = maximum_or_second(value(range::least), maximum_or_second(height, width));
    value log;
    if constexpr (in_doubles)
      log = in_double([](const auto&... v) { return log_of_squares(v...); }, larger, smaller, exponent...);
    else
      log = log_of_squares(larger, smaller, exponent...);
    const value angle = arctangent<Real, Level, unit>(smaller, larger, right_angles(height > width, z.re));
    return {log * value(Real(0.5)), angle | sign_of(z.im)};
  }

  static complex fast(const complex& z) { return log_of(z); }
  // A vector on an axis has an angle whatever its length.
  static lane_mask<Real> flagged(const complex& z, const complex&) {
    const value larger = xsimd::max(xsimd::abs(z.im), xsimd::abs(z.re));
    return range::is_left_by(z.im, z.re) | (larger < value(range::least));
  }
  // The slow path has angles that vanish, and 1 + i y where the square of y does.
  static lane_mask<Real> patch(const complex& z, complex& r) {
    const value zero(Real(0)), one(Real(1)), infinity(std::numeric_limits<Real>::infinity());
    const value height = xsimd::abs(z.im), width = xsimd::abs(z.re), quiet = z.re + z.im;
    const auto infinite = (height == infinity) | (width == infinity);
    const auto nan = xsimd::isnan(z.re) | xsimd::isnan(z.im);
    lane_mask<Real> rare(false);
    const auto left = flagged(z, r) & !(nan & !infinite);
    if (lane_bits<Real>(left) != 0) {
      const scaled_vector<Real> scaled(z.im, z.re);
      r = log_of({scaled.x, scaled.y}, scaled.log2_of_scale * value(Real(-2)));
      const auto is_zero = (height == zero) & (width == zero), on_circle = (height == one) | (width == one);
      rare = (is_zero | on_circle | scaled.has_vanishing_angle(z.im)) & left & !infinite;
    }
    r.re = xsimd::select(infinite, infinity, xsimd::select(nan, quiet, r.re));
    r.im = xsimd::select(nan, quiet, r.im);
    return rare;
  }
  // The logarithm of zero has an argument.
  static std::optional<int32_t> shortcut(const number* z, number* r) {
    if (magnitude_bits(z->re) != 0 || magnitude_bits(z->im) != 0) return {};
    const bool negative = (to_bits(z->re) & format<Real>::sign) != 0;
    constexpr Real straight = 2 * angles<Real, unit>::right;
    r->re = log_of_zero<Real>;
    r->im = from_bits<Real>(to_bits(negative ? straight : Real(0)) | (to_bits(z->im) & format<Real>::sign));
    return VTM_STATUS_SINGULARITY;
  }
};

template <class Real, level Level>
using complex_ln = complex_log<Real, Level, logarithm_base::e>;
template <class Real, level Level>
using complex_log10 = complex_log<Real, Level, logarithm_base::ten>;

}  // namespace
TMK_TIER_CLOSE

// Maximum errors of a part in ulp, by tmk-accuracy Ln --samples 65536 --search brief and Log10; on the unit
// circle LA and EP promise bits of the number:
//   Ln     single LA (W7): 1.740 at (0x1.07d014p+2, -0x1.083dbp-1)
//          single LA (V3, V4): 23.2 bits
//          single HA (all tiers): 0.5239 at (0x1.72392cp+15, 0x1.ffff44p+0)
//          single EP (W7, V3): 11.8 bits; (V4): 13.8 bits
//          double LA, HA (W7): 0.7484 at (0x1.fffffffffffffp-1, 0x1.a0f6046c72affp-27)
//          double LA, HA (V3, V4): 0.5383 at (0x1.f1d1173d3ddd7p+2, 0x1.c863fe06ac6f7p-2)
//          double EP (all tiers): 29.5 bits
//   Log10  single LA (V3, V4): 22.5 bits
//          single HA (V3, V4): 0.5276 at (0x1.000024p+0, 0x1.236a74p-16)
//          single EP (V3): 11.8 bits; (V4): 13.8 bits
//          double LA, HA (V3, V4): 0.5461 at (0x1.ff80a36d7a898p+0, 0x1.2640de5f2bee9p-4)
//          double EP (V3, V4): 29.5 bits
TMK_KERNELS(c, Ln, unary, LHE, complex_ln)
TMK_KERNELS(z, Ln, unary, HHE, complex_ln)
#if TMK_TIER_NUMBER(TMK_TIER) != 0
TMK_KERNELS(c, Log10, unary, LHE, complex_log10)
TMK_KERNELS(z, Log10, unary, HHE, complex_log10)
#endif
