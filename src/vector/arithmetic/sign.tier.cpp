// SPDX-License-Identifier: Apache-2.0
// |x| and the sign of another: bit operations, also on a NaN (IEEE 754-2019, 5.5.1); the conjugate.
#include "vector/arithmetic/exact.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct absolute_value : exact<Real> {
  static constexpr auto sse = sse_control::masks_only;
  static batch<Real> fast(const batch<Real>& x) { return xsimd::abs(x); }
};

template <class Real>
struct sign_transfer : exact<Real> {
  static constexpr auto sse = sse_control::masks_only;
  static batch<Real> fast(const batch<Real>& x, const batch<Real>& y) {
    return with_sign_of(xsimd::abs(x), y);
  }
};

template <class Real>
struct conjugate : exact<Real> {
  static constexpr auto sse = sse_control::masks_only;
  static complex_value<Real> fast(const complex_value<Real>& z) {
    return {z.re, z.im ^ batch<Real>(Real(-0.0))};
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Abs, unary, HHH, absolute_value)
TMK_REAL_KERNELS(CopySign, binary, HHH, sign_transfer)
TMK_KERNELS(c, Conj, unary, HHH, conjugate)
TMK_KERNELS(z, Conj, unary, HHH, conjugate)
