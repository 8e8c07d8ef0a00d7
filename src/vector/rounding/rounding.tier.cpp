// SPDX-License-Identifier: Apache-2.0
// Numbers rounded to integers, and what is left of them. All are exact, and none has a status.
#include "vector/arithmetic/exact.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct floor : exact<Real> {
  static batch<Real> fast(const batch<Real>& x) { return round_down(x); }
};

template <class Real>
struct ceiling : exact<Real> {
  static batch<Real> fast(const batch<Real>& x) { return round_up(x); }
};

template <class Real>
struct truncation : exact<Real> {
  static batch<Real> fast(const batch<Real>& x) { return round_to_zero(x); }
};

// Halves away from zero: x and its integer part are less than 1 apart, so that their difference is exact.
template <class Real>
struct round_half_away : exact<Real> {
  static batch<Real> fast(const batch<Real>& x) {
    using value = batch<Real>;
    const value whole = round_to_zero(x);
    const value step =
        xsimd::select(xsimd::abs(x - whole) >= value(Real(0.5)), value(Real(1)), value(Real(0)));
    return whole + with_sign_of(step, x);
  }
};

// As the processor is set: in the caller's direction, its flush as found.
template <class Real>
struct rounding_as_set : exact<Real> {
  static constexpr auto sse = sse_control::masks_only;
  static batch<Real> fast(const batch<Real>& x) { return round_as_set(x); }
};

// x less its integer part, with the sign of x; of an infinity, zero.
template <class Real>
batch<Real> fraction_of(const batch<Real>& x, const batch<Real>& whole) {
  const batch<Real> rest = xsimd::select(xsimd::isinf(x), batch<Real>(Real(0)), x - whole);
  return with_sign_of(rest, x);
}

template <class Real>
struct fraction : exact<Real> {
  static batch<Real> fast(const batch<Real>& x) { return fraction_of(x, round_to_zero(x)); }
};

template <class Real>
struct whole_and_fraction : exact<Real> {
  static auto fast(const batch<Real>& x) {
    const batch<Real> whole = round_to_zero(x);
    return pack{whole, fraction_of(x, whole)};
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Floor, unary, HHH, tmk::floor)
TMK_REAL_KERNELS(Ceil, unary, HHH, ceiling)
TMK_REAL_KERNELS(Trunc, unary, HHH, truncation)
TMK_REAL_KERNELS(Round, unary, HHH, round_half_away)
TMK_REAL_KERNELS(Rint, unary, HHH, rounding_as_set)
TMK_REAL_KERNELS(NearbyInt, unary, HHH, rounding_as_set)
TMK_REAL_KERNELS(Frac, unary, HHH, fraction)
TMK_REAL_KERNELS(Modf, two_results, HHH, whole_and_fraction)
