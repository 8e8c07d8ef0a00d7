// SPDX-License-Identifier: Apache-2.0
// Lanes of complex arguments that products and quotients look at again.
#pragma once

#include "vector/toolbox/lane_tests.hpp"
#include "vector/walk/elements.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
lane_mask<Real> has_special(const complex_value<Real>& z) {
  return not_finite(z.re) | not_finite(z.im);
}
template <class Real>
lane_mask<Real> has_nan(const complex_value<Real>& z) {
  return unordered(z.re, z.im);
}
template <class Real>
lane_mask<Real> has_infinity(const complex_value<Real>& z) {
  const batch<Real> infinity(std::numeric_limits<Real>::infinity());
  return (xsimd::abs(z.re) == infinity) | (xsimd::abs(z.im) == infinity);
}
template <class Real>
lane_mask<Real> has_zero(const complex_value<Real>& z) {
  const batch<Real> zero(Real(0));
  return (z.re == zero) | (z.im == zero);
}
template <class Real>
lane_mask<Real> is_zero(const complex_value<Real>& z) {
  const batch<Real> zero(Real(0));
  return (z.re == zero) & (z.im == zero);
}

template <class Real>
complex_value<Real> select(const lane_mask<Real>& m, const complex_value<Real>& x,
                           const complex_value<Real>& y) {
  return {xsimd::select(m, x.re, y.re), xsimd::select(m, x.im, y.im)};
}

// A NaN next to no infinity makes both parts NaNs, always the same one. Returns these lanes.
template <class Real>
lane_mask<Real> answer_nan_arguments(const complex_value<Real>& x, const complex_value<Real>& y,
                                     complex_value<Real>& r) {
  const lane_mask<Real> nan = (has_nan(x) | has_nan(y)) & !(has_infinity(x) | has_infinity(y));
  const batch<Real> answer(std::numeric_limits<Real>::quiet_NaN());
  r = select(nan, {answer, answer}, r);
  return nan;
}

// Parts of x y, or of x / conj(y), below Least or no numbers.
template <auto Least>
lane_mask<double> outside(const f64& part) {
  return magnitude_outside<double, to_bits(Least), format<double>::infinity>(part);
}
// Of these, the others than exact zeros, with a zero among the factors of either product.
template <auto Least>
lane_mask<double> has_unsettled(const complex_value<double>& x, const complex_value<double>& y,
                                const complex_value<double>& r) {
  const f64 zero(0.0);
  const auto a = x.re == zero, b = x.im == zero, c = y.re == zero, d = y.im == zero;
  const auto exact_re = (r.re == zero) & (a | c) & (b | d), exact_im = (r.im == zero) & (a | d) & (b | c);
  return (outside<Least>(r.re) & !exact_re) | (outside<Least>(r.im) & !exact_im);
}

}  // namespace
TMK_TIER_CLOSE
