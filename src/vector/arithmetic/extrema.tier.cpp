// SPDX-License-Identifier: Apache-2.0
// The larger and the smaller of two, by value or by magnitude. A NaN loses against a number, and +0 is above
// -0.
#include "vector/arithmetic/exact.hpp"

TMK_TIER_OPEN
namespace {

// The processor's extrema return their second argument where the two are equal, as +0 and -0 are, so that
// both orders together settle the sign. Lanes with a NaN are patched.
template <class Real>
struct extremum : exact<Real> {
  using value = batch<Real>;
  static value larger(const value& x, const value& y) {
    return maximum_or_second(x, y) & maximum_or_second(y, x);
  }
  static value smaller(const value& x, const value& y) {
    return minimum_or_second(x, y) | minimum_or_second(y, x);
  }
  static lane_mask<Real> flagged(const value& x, const value& y, const value&) { return unordered(x, y); }
  static lane_mask<Real> patch(const value& x, const value& y, value& r) {
    const auto x_nan = xsimd::isnan(x), y_nan = xsimd::isnan(y);
    r = xsimd::select(x_nan, y, xsimd::select(y_nan, x, r));
    r = xsimd::select(x_nan & y_nan, r + r, r);
    return lane_mask<Real>(false);
  }
};

template <class Real>
struct maximum : extremum<Real> {
  using value = batch<Real>;
  static value fast(const value& x, const value& y) { return extremum<Real>::larger(x, y); }
};

template <class Real>
struct minimum : extremum<Real> {
  using value = batch<Real>;
  static value fast(const value& x, const value& y) { return extremum<Real>::smaller(x, y); }
};

// Numbers of one magnitude differ in the sign alone, if at all.
template <class Real>
struct larger_magnitude : extremum<Real> {
  using value = batch<Real>;
  static value fast(const value& x, const value& y) {
    const value a = xsimd::abs(x), b = xsimd::abs(y);
    return xsimd::select(a > b, x, xsimd::select(a < b, y, x & y));
  }
};

template <class Real>
struct smaller_magnitude : extremum<Real> {
  using value = batch<Real>;
  static value fast(const value& x, const value& y) {
    const value a = xsimd::abs(x), b = xsimd::abs(y);
    return xsimd::select(a < b, x, xsimd::select(a > b, y, x | y));
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Fmax, binary, HHH, maximum)
TMK_REAL_KERNELS(Fmin, binary, HHH, minimum)
TMK_REAL_KERNELS(MaxMag, binary, HHH, larger_magnitude)
TMK_REAL_KERNELS(MinMag, binary, HHH, smaller_magnitude)
