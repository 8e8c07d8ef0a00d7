// SPDX-License-Identifier: Apache-2.0
// The larger and the smaller of two, by value or by magnitude. A NaN loses against a number, and +0 is above
// -0, as a number is above its opposite of the same magnitude.
#include "vector/arithmetic/exact.hpp"

TMK_TIER_OPEN
namespace {

// Numbered as V4's instruction has them.
enum class extreme { smaller, larger, smaller_magnitude, larger_magnitude };

// Of two numbers.
#if TMK_TIER_NUMBER(TMK_TIER) == 2
constexpr int sign_of_result = 4;
template <extreme Which>
f32 select(const f32& x, const f32& y) {
  return _mm512_range_ps(x, y, sign_of_result | static_cast<int>(Which));
}
template <extreme Which>
f64 select(const f64& x, const f64& y) {
  return _mm512_range_pd(x, y, sign_of_result | static_cast<int>(Which));
}
#else
// The processor's extrema return their second argument where the two are equal, as +0 and -0 are, so that
// both orders together settle the sign.
template <extreme Which, class Real>
xsimd::batch<Real> select(const xsimd::batch<Real>& x, const xsimd::batch<Real>& y) {
  if constexpr (Which == extreme::larger) return maximum_or_second(x, y) & maximum_or_second(y, x);
  if constexpr (Which == extreme::smaller) return minimum_or_second(x, y) | minimum_or_second(y, x);
  const auto a = xsimd::abs(x), b = xsimd::abs(y);
  if constexpr (Which == extreme::larger_magnitude)
    return xsimd::select(a > b, x, xsimd::select(a < b, y, x & y));
  else
    return xsimd::select(a < b, x, xsimd::select(a > b, y, x | y));
}
#endif

template <class Real, extreme Which>
struct extremum : exact<Real> {
  using value = batch<Real>;
  static value fast(const value& x, const value& y) { return select<Which>(x, y); }
  static lane_mask<Real> flagged(const value& x, const value& y, const value&) { return unordered(x, y); }
  static lane_mask<Real> patch(const value& x, const value& y, value& r) {
    const auto x_nan = xsimd::isnan(x), y_nan = xsimd::isnan(y);
    r = xsimd::select(x_nan, y, xsimd::select(y_nan, x, r));
    r = xsimd::select(x_nan & y_nan, r + r, r);
    return lane_mask<Real>(false);
  }
};

template <class Real>
using maximum = extremum<Real, extreme::larger>;
template <class Real>
using minimum = extremum<Real, extreme::smaller>;
template <class Real>
using larger_magnitude = extremum<Real, extreme::larger_magnitude>;
template <class Real>
using smaller_magnitude = extremum<Real, extreme::smaller_magnitude>;

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Fmax, binary, HHH, maximum)
TMK_REAL_KERNELS(Fmin, binary, HHH, minimum)
TMK_REAL_KERNELS(MaxMag, binary, HHH, larger_magnitude)
TMK_REAL_KERNELS(MinMag, binary, HHH, smaller_magnitude)
