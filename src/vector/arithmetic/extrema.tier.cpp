// SPDX-License-Identifier: Apache-2.0
// The larger and the smaller of two, by value or by magnitude. A NaN loses against a number, and +0 is above
// -0.
#include "vector/arithmetic/exact.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct extremum : exact<Real> {
  using value = batch<Real>;
  static constexpr bool nan_in_nan_out = false;

  // `right` says where y is the answer; equal numbers differ in sign at most, and `equal` is theirs.
  static value choose(const value& x, const value& y, const lane_mask<Real>& right, const value& equal) {
    const value chosen = xsimd::select(x == y, equal, xsimd::select(right | xsimd::isnan(x), y, x));
    return xsimd::select(xsimd::isnan(chosen), chosen + chosen, chosen);  // two NaNs: quieted
  }
  static value larger(const value& x, const value& y) { return choose(x, y, x < y, x & y); }
  static value smaller(const value& x, const value& y) { return choose(x, y, x > y, x | y); }
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

template <class Real>
struct larger_magnitude : extremum<Real> {
  using value = batch<Real>;
  static value fast(const value& x, const value& y) {
    const value either = extremum<Real>::larger(x, y);
    const value a = xsimd::abs(x), b = xsimd::abs(y);
    return xsimd::select(a > b, x, xsimd::select(a < b, y, either));
  }
};

template <class Real>
struct smaller_magnitude : extremum<Real> {
  using value = batch<Real>;
  static value fast(const value& x, const value& y) {
    const value either = extremum<Real>::smaller(x, y);
    const value a = xsimd::abs(x), b = xsimd::abs(y);
    return xsimd::select(a < b, x, xsimd::select(a > b, y, either));
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Fmax, binary, HHH, maximum)
TMK_REAL_KERNELS(Fmin, binary, HHH, minimum)
TMK_REAL_KERNELS(MaxMag, binary, HHH, larger_magnitude)
TMK_REAL_KERNELS(MinMag, binary, HHH, smaller_magnitude)
