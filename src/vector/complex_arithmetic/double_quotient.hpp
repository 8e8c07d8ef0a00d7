// SPDX-License-Identifier: Apache-2.0
// Quotients of doubles, HA: with the parts of a product by the conjugate and |y|^2 = d as pairs
// (products.hpp), q near 1 / d and r = n q for a part n,
//   r + (n - r d) q
// rounded once.
#pragma once

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
  static constexpr uint64_t first_exponent = 564, end_exponent = 1494;  // on the baseline

  static f64 divided(const lowered<double>& n, const batch_pair<double>& d, const f64& q) {
    const f64 r = n.high * q;
    const f64 minus_rest = multiply_add(r, d.low, n.minus_low) - residual(n.high, r, d.high);
    return negative_multiply_add(minus_rest, q, r);
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
      return magnitude_outside<double, first_exponent << 52, end_exponent << 52>(c);
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
    const auto divisor = divisor_outside(y), seen = divisor | outside<least>(r.re) | outside<least>(r.im);
    if (lane_bits<double>(seen) == 0) return seen;
    return divisor | has_unsettled<least>(x, conjugate_of(y), r);
  }
  static lane_mask<double> patch(const value& x, const value& y, value& r) {
    const auto flags = flagged(x, y, r), open = flags & !answer_special_divisors(x, y, r);
    const auto scaled = open & !(has_special(x) | has_special(y));
    if (lane_bits<double>(scaled) == 0) return open;
    const auto u = into_window(or_one(scaled, x)), v = into_window(or_one(scaled, y));
    const value quotient = fast(u.value, v.value);
    const auto back = out_of_window(quotient, u.inverse_root * v.root);
    const auto wrong = u.lost | v.lost | back.lost | flagged(u.value, v.value, quotient);
    r = select(scaled & !wrong, back.value, r);
    return open & !(scaled & !wrong);
  }
#endif
  // Zeros in the dividend do not hinder the formula.
  static bool is_served(const tmk_complex16& x, const tmk_complex16& y) {
    const auto serves = [](double c) {
      const auto exponent = magnitude_bits(c) >> format<double>::fraction_bits;
      return c == 0 || (exponent >= first_exponent && exponent < end_exponent);
    };
    return serves(x.re) && serves(x.im) && serves(y.re) && serves(y.im) && !has_zero(y);
  }
  static int32_t rare(const tmk_complex16* a, const tmk_complex16* b, tmk_complex16* r) {
    if (!is_baseline || !is_served(*a, *b)) return vzdiv_cout_rare(a, b, r);
    const value q = fast({f64(a->re), f64(a->im)}, {f64(b->re), f64(b->im)});
    *r = {q.re.get(0), q.im.get(0)};
    return VTM_STATUS_OK;
  }
};

}  // namespace
TMK_TIER_CLOSE
