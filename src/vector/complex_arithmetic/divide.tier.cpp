// SPDX-License-Identifier: Apache-2.0
// (a + ib) / (c + id) = ((ac + bd) + i (bc - ad)) / (c^2 + d^2).
// Doubles, HA: numerators n and denominator d as pairs (products.hpp); with q near 1 / d and y = n q,
// y + (n - y d) q, rounded once. Singles, HA: in double precision, where only the sum and the quotient are
// rounded. EP: plainly, and no element is looked at again.
#include "vector/complex_arithmetic/in_double.hpp"
#include "vector/complex_arithmetic/products.hpp"
#include "vector/complex_arithmetic/rare.hpp"
#include "vector/complex_arithmetic/scaling.hpp"
#include "vector/toolbox/near.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
batch<Real> plain_norm(const complex_value<Real>& z) {
  return multiply_add(z.re, z.re, z.im * z.im);
}

// x conj(y) q
template <class Real>
complex_value<Real> plain_quotient(const complex_value<Real>& x, const complex_value<Real>& y,
                                   const batch<Real>& q) {
  return {multiply_add(x.re, y.re, x.im * y.im) * q, multiply_subtract(x.im, y.re, x.re * y.im) * q};
}

// For patch(): NaNs, and zero divisors, which make infinities. Returns the lanes that these settle.
template <class Real>
lane_mask<Real> answer_special_divisors(const complex_value<Real>& x, const complex_value<Real>& y,
                                        complex_value<Real>& r) {
  const auto zero = is_zero(y), nan = answer_nan_arguments(x, y, r);
  const batch<Real> infinity(std::numeric_limits<Real>::infinity());
  const batch<Real> factor = infinity | (y.re & batch<Real>(Real(-0.0)));
  const batch<Real> answer(std::numeric_limits<Real>::quiet_NaN());
  const auto times_infinity = [&](const batch<Real>& part) {
    const auto undefined = (part == batch<Real>(Real(0))) | xsimd::isnan(part);
    return xsimd::select(undefined, answer, part * factor);
  };
  r = select(zero, {times_infinity(x.re), times_infinity(x.im)}, r);
  return zero | nan;
}

struct double_quotient : description<double> {
  using value = complex_value<double>;

  static f64 divided(const lowered<double>& n, const batch_pair<double>& d, const f64& q) {
    const f64 y = n.high * q;
    const f64 minus_rest = multiply_add(y, d.low, n.minus_low) - residual(n.high, y, d.high);
    return negative_multiply_add(minus_rest, q, y);
  }
  static value fast(const value& x, const value& y) {
    const auto norm = paired_norm(y);
    const f64 q = near_reciprocal(norm.high);
    const auto numerator = paired_product(x, conjugate_of(y));
    return {divided(numerator.re.normalized(), norm, q), divided(numerator.im.normalized(), norm, q)};
  }

#if TMK_TIER_NUMBER(TMK_TIER) == 0
  static lane_mask<double> flagged(const value& x, const value& y, const value&) {
    const auto bad = [](const f64& c) {
      return magnitude_outside<double, uint64_t{564} << 52, uint64_t{1494} << 52>(c);
    };
    return bad(x.re) | bad(x.im) | bad(y.re) | bad(y.im);
  }
#else
  // With a divisor within these bounds, a quotient that is not tiny has a numerator in double_product's
  // range.
  static lane_mask<double> divisor_outside(const value& y) {
    return magnitude_outside<double, to_bits(0x1p-300), to_bits(0x1p300)>(plain_norm(y));
  }
  static constexpr double least = 0x1p-560;
  static lane_mask<double> flagged(const value& x, const value& y, const value& r) {
    const auto divisor = divisor_outside(y), seen = divisor | has_outside<least>(r);
    if (lane_bits<double>(seen) == 0) return seen;
    return divisor | has_unsettled<least>(x, conjugate_of(y), r);
  }
  static lane_mask<double> patch(const value& x, const value& y, value& r) {
    const auto flags = flagged(x, y, r), open = flags & !answer_special_divisors(x, y, r);
    if (lane_bits<double>(open) == 0) return open;
    const auto u = into_window(x), v = into_window(y);
    const value quotient = fast(u.value, v.value);
    const auto back = out_of_window(quotient, u.inverse_root * v.root);
    const auto wrong = u.lost | v.lost | back.lost | flagged(u.value, v.value, quotient);
    r = select(open & !wrong, back.value, r);
    return open & wrong;
  }
#endif
  static int32_t rare(const tmk_complex16* a, const tmk_complex16* b, tmk_complex16* r) {
    return vzdiv_cout_rare(a, b, r);
  }
};

template <class Real>
struct coarse_quotient : description<Real> {
  using value = complex_value<Real>;
  static value fast(const value& x, const value& y) {
    const batch<Real> norm = plain_norm(y);
    if constexpr (sizeof(Real) == 4)
      return plain_quotient(x, y, reciprocal_estimate(norm));
    else
      return plain_quotient(x, y, batch<Real>(Real(1)) / norm);
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
