// SPDX-License-Identifier: Apache-2.0
// Products of singles, HA: in double precision, where a c and b d are exact, so that each part is rounded to
// a double and to a single: 0.5 ulp and 2^-29 more.
#pragma once

#include "vector/complex_arithmetic/in_double.hpp"
#include "vector/complex_arithmetic/rare.hpp"
#include "vector/complex_arithmetic/special_lanes.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
complex_value<Real> plain_product(const complex_value<Real>& x, const complex_value<Real>& y) {
  return {multiply_subtract(x.re, y.re, x.im * y.im), multiply_add(x.im, y.re, x.re * y.im)};
}

// The products are exact in double: fused or not, the same bits.
inline complex_value<float> product_in_double(const complex_value<float>& x, const complex_value<float>& y) {
  return complex_in_double([](const auto& u, const auto& v) { return plain_product(u, v); }, x, y);
}

// Subnormal numbers are as the caller has set. Every finite element is computed by the same formula; but an
// overflow next to a zero is not reported.
struct single_product : description<float> {
  static constexpr auto controls = control_class::b;
  static constexpr auto sse = sse_control::nearest;
  using value = complex_value<float>;
  static value fast(const value& x, const value& y) { return product_in_double(x, y); }

#if TMK_TIER_NUMBER(TMK_TIER) == 0
  static lane_mask<float> zero_or_not_finite(const f32& x) {
    return magnitude_outside<float, 1u, format<float>::infinity>(x);
  }
  static lane_mask<float> flagged(const value& x, const value& y, const value& r) {
    return zero_or_not_finite(x.re) | zero_or_not_finite(x.im) | zero_or_not_finite(y.re) |
           zero_or_not_finite(y.im) | has_special(r);
  }
#else
  static lane_mask<float> flagged(const value&, const value&, const value& r) { return has_special(r); }
  static lane_mask<float> patch(const value& x, const value& y, value& r) {
    const auto nan = answer_nan_arguments(x, y, r);
    const auto silent = (has_zero(x) | has_zero(y)) & !(has_special(x) | has_special(y));
    return !(nan | silent);
  }
#endif
  static int32_t rare(const tmk_complex8* a, const tmk_complex8* b, tmk_complex8* r) {
    const int32_t status = _c_mul_ha_scalar(a, b, r);
    return is_ordinary(*a) && is_ordinary(*b) && has_infinity(*r) ? VTM_STATUS_OVERFLOW : status;
  }
};

}  // namespace
TMK_TIER_CLOSE
