// SPDX-License-Identifier: Apache-2.0
// Sums, products and quotients, rounded once by the processor. To the slow path go the results that may carry
// a status: infinities and NaNs, and for products and quotients those below the normal numbers. An exact zero
// carries none and stays fast: masks and sparse data are full of them.
#include "vector/arithmetic/exact.hpp"

TMK_TIER_OPEN
namespace {

// `flagged` says which results are looked at again, `patch` which of them are for the slow path.
template <class Real>
struct sum : memory_bound<Real> {
  using value = batch<Real>;
  static value fast(const value& x, const value& y) { return x + y; }
  static lane_mask<Real> flagged(const value&, const value&, const value& r) { return not_finite(r); }
  static lane_mask<Real> patch(const value& x, const value& y, value& r) {
    return without_special_arguments(x, y, r);
  }
};

template <class Real>
struct difference : sum<Real> {
  using value = batch<Real>;
  static value fast(const value& x, const value& y) { return x - y; }
};

// x - y where that is positive, else 0.
template <class Real>
struct positive_difference : sum<Real> {
  using value = batch<Real>;
  static value fast(const value& x, const value& y) { return xsimd::select(x <= y, value(Real(0)), x - y); }
};

template <class Real>
struct product : memory_bound<Real> {
  using value = batch<Real>;
  static value fast(const value& x, const value& y) { return x * y; }
  static lane_mask<Real> flagged(const value&, const value&, const value& r) { return not_normal(r); }
  static lane_mask<Real> patch(const value& x, const value& y, value& r) {
    const value zero(Real(0));
    const auto rest = without_special_arguments(x, y, r);
    return rest & (not_finite(r) | ((x != zero) & (y != zero)));
  }
};

template <class Real>
struct square : memory_bound<Real> {
  using value = batch<Real>;
  static value fast(const value& x) { return x * x; }
  static lane_mask<Real> flagged(const value&, const value& r) { return not_normal(r); }
  static lane_mask<Real> patch(const value& x, value& r) {
    return without_special_arguments(x, x, r) & (x != value(Real(0)));
  }
};

template <class Real>
struct quotient : memory_bound<Real> {
  using value = batch<Real>;
  static value fast(const value& x, const value& y) { return x / y; }
  static lane_mask<Real> flagged(const value&, const value&, const value& r) { return not_normal(r); }
  static lane_mask<Real> patch(const value& x, const value& y, value& r) {
    const value zero(Real(0));
    return without_special_arguments(x, y, r) & ((x != zero) | (y == zero));
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Add, binary, HHH, sum)
TMK_REAL_KERNELS(Sub, binary, HHH, difference)
TMK_REAL_KERNELS(Fdim, binary, HHH, positive_difference)
TMK_REAL_KERNELS(Mul, binary, HHH, product)
TMK_REAL_KERNELS(Sqr, unary, HHH, square)
TMK_REAL_KERNELS(Div, binary, LHE, quotient)
