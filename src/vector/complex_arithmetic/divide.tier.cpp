// SPDX-License-Identifier: Apache-2.0
// (a + ib) / (c + id) = ((ac + bd) + i (bc - ad)) / (c^2 + d^2).
// Singles, HA: in double precision, where only the sum and the quotient are rounded. EP: plainly, and no
// element is looked at again.
#include "vector/complex_arithmetic/double_quotient.hpp"
#include "vector/complex_arithmetic/in_double.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// x conj(y) q
template <class Real>
complex_value<Real> plain_quotient(const complex_value<Real>& x, const complex_value<Real>& y,
                                   const batch<Real>& q) {
  return {multiply_add(x.re, y.re, x.im * y.im) * q, multiply_subtract(x.im, y.re, x.re * y.im) * q};
}

template <class Real>
struct coarse_quotient : description<Real> {
  using value = complex_value<Real>;
  static value fast(const value& x, const value& y) {
    const batch<Real> norm = plain_norm(y);
    if constexpr (sizeof(Real) == 4)
      return with_one_nan(plain_quotient(x, y, reciprocal_estimate(norm)));
    else
      return with_one_nan(plain_quotient(x, y, batch<Real>(Real(1)) / norm));
  }
  // Which of two NaNs an operation gives depends on the order in which the compiler puts them.
  static value with_one_nan(const value& r) {
    const batch<Real> nan(std::numeric_limits<Real>::quiet_NaN());
    return {xsimd::select(xsimd::isnan(r.re), nan, r.re), xsimd::select(xsimd::isnan(r.im), nan, r.im)};
  }
};

#if TMK_TIER_NUMBER(TMK_TIER) != 0
// Special arguments give no finite result.
struct single_quotient : description<float> {
  using value = complex_value<float>;
  static value fast(const value& x, const value& y) {
    return complex_in_double(
        [](const auto& u, const auto& v) { return plain_quotient(u, v, near_reciprocal(plain_norm(v))); }, x,
        y);
  }
  static lane_mask<float> flagged(const value&, const value&, const value& r) { return has_special(r); }
  static lane_mask<float> patch(const value& x, const value& y, value& r) {
    const auto silent = (has_zero(x) | has_zero(y)) & !(has_special(x) | has_special(y));
    return !(answer_special_divisors(x, y, r) | silent);
  }
  static int32_t rare(const tmk_complex8* a, const tmk_complex8* b, tmk_complex8* r) {
    const tmk_complex16 x = as_doubles(*a), y = as_doubles(*b);
    if (!is_finite(x) || !is_finite(y)) {
      *r = as_singles(special_quotient(x, y));
      return VTM_STATUS_OK;
    }
    *r = as_singles(scaled(plain_product(x, conjugate_of(y)), 1 / (y.re * y.re + y.im * y.im)));
    return has_infinity(*r) ? VTM_STATUS_OVERFLOW : VTM_STATUS_OK;
  }
};
template <class Real, level Level>
using quotient = std::conditional_t<Level == level::ep, coarse_quotient<Real>,
                                    std::conditional_t<sizeof(Real) == 4, single_quotient, double_quotient>>;
#else
template <class Real, level Level>
using quotient = std::conditional_t<Level == level::ep, coarse_quotient<Real>, double_quotient>;
#endif

}  // namespace
TMK_TIER_CLOSE

// Maximum errors of a part in ulp, by tmk-accuracy --samples 300000:
//   single HA (all tiers): 0.5000 at ((-0x1.4p-147, -0x1.5d18ccp-93), (-0x1.3ffffep+3, -0x1.b28p-138))
//   double HA (all tiers): 0.5000 at ((0x1.ffffffffffffbp-1, -0x1.5a5451fd045a6p+2),
//     (0x1.fffffffffffffp+1023, -0x1.faeaa25390aecp+2))
// At level EP squares of large and small divisors leave the format.
#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_KERNELS(c, Div, binary, PPE, quotient)
#else
TMK_KERNELS(c, Div, binary, HHE, quotient)
#endif
TMK_KERNELS(z, Div, binary, HHE, quotient)
