// SPDX-License-Identifier: Apache-2.0
// Sums, products and quotients, rounded once by the processor. To the slow path go the results that may carry
// a status: infinities and NaNs, and for products and quotients those below the normal numbers. An exact zero
// carries none and stays fast: masks and sparse data are full of them.
#include <cmath>
#include <optional>
#include <utility>

#include "vector/arithmetic/exact.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/walk/by_flags.hpp"

TMK_TIER_OPEN
namespace {

// Whether x is a number, zero included.
template <class Real>
bool is_number(Real x) {
  return magnitude_bits(x) < format<Real>::infinity;
}

// The status of a product or quotient of numbers, rounded to r by the processor. Of a result below the normal
// numbers `exact` says whether it was rounded.
template <class Real, class Exact>
int32_t status_of(Real r, Exact exact) {
  constexpr auto smallest = typename format<Real>::bits{1} << format<Real>::fraction_bits;
  const auto magnitude = magnitude_bits(r);
  if (magnitude == format<Real>::infinity) return VTM_STATUS_OVERFLOW;
  return magnitude >= smallest || exact() ? VTM_STATUS_OK : VTM_STATUS_UNDERFLOW;
}

// Whether x y = r, of doubles |x y| < 4, one factor below 2^-510: scaled, no part of a product that does not
// vanish leaves the format.
template <class Real>
bool is_product(Real x, Real y, Real r) {
  if constexpr (sizeof(Real) == 4) {
    return static_cast<double>(x) * static_cast<double>(y) == static_cast<double>(r);
  } else {
    if (r == 0) return x == 0 || y == 0;
    if (std::abs(x) > std::abs(y)) std::swap(x, y);
    const auto p = two_prod(batch<Real>(x * 0x1p1000), batch<Real>(y));
    return p.high.get(0) == r * 0x1p1000 && p.low.get(0) == 0;
  }
}

// `flagged` says which results are looked at again, `patch` which of them are for the slow path.
template <class Real>
struct sum : memory_bound<Real> {
  using value = batch<Real>;
  static constexpr bool by_flags = true;
  static value in_order(const value& x, const value& y) { return add_in_order(x, y); }
  static value fast(const value& x, const value& y) { return x + y; }
  static lane_mask<Real> flagged(const value&, const value&, const value& r) { return not_finite(r); }
  static lane_mask<Real> patch(const value& x, const value& y, value& r) {
    return without_special_arguments(x, y, r);
  }
};

template <class Real>
struct difference : sum<Real> {
  using value = batch<Real>;
  static value in_order(const value& x, const value& y) { return x - y; }
  static value fast(const value& x, const value& y) { return x - y; }
};

// x - y where that is positive, else 0.
template <class Real>
struct positive_difference : sum<Real> {
  using value = batch<Real>;
  static constexpr bool by_flags = false;  // comparing a NaN raises one
  static value fast(const value& x, const value& y) { return xsimd::select(x <= y, value(Real(0)), x - y); }
};

template <class Real>
struct product : memory_bound<Real> {
  using value = batch<Real>;
  static constexpr bool by_flags = true;
  static value in_order(const value& x, const value& y) { return multiply_in_order(x, y); }
  static value fast(const value& x, const value& y) { return x * y; }
  static lane_mask<Real> flagged(const value&, const value&, const value& r) { return not_normal(r); }
  static lane_mask<Real> patch(const value& x, const value& y, value& r) {
    const value zero(Real(0));
    const auto rest = without_special_arguments(x, y, r);
    return rest & (not_finite(r) | ((x != zero) & (y != zero)));
  }
  static std::optional<int32_t> shortcut(const Real* a, const Real* b, Real* r) {
    if (!is_number(*a) || !is_number(*b) || subnormals_are_flushed()) return std::nullopt;
    *r = *a * *b;
    return status_of(*r, [=] { return is_product(*a, *b, *r); });
  }
};

template <class Real>
struct square : memory_bound<Real> {
  using value = batch<Real>;
  static constexpr bool by_flags = true;
  static value in_order(const value& x) { return x * x; }
  static value fast(const value& x) { return x * x; }
  static lane_mask<Real> flagged(const value&, const value& r) { return not_normal(r); }
  static lane_mask<Real> patch(const value& x, value& r) {
    return without_special_arguments(x, x, r) & (x != value(Real(0)));
  }
  static std::optional<int32_t> shortcut(const Real* a, Real* r) { return product<Real>::shortcut(a, a, r); }
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
  static std::optional<int32_t> shortcut(const Real* a, const Real* b, Real* r) {
    if (!is_number(*a) || !is_number(*b) || subnormals_are_flushed()) return std::nullopt;
    if (*b == 0) {
      if (*a == 0) return std::nullopt;
      *r = *a / *b;
      return VTM_STATUS_SINGULARITY;
    }
    *r = *a / *b;
    return status_of(*r, [=] {
      if constexpr (sizeof(Real) == 4)
        return is_product(*r, *b, *a);
      else
        return is_product(*r * Real(0x1p300), *b * Real(0x1p-300), *a);  // b may be too large to be split
    });
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
