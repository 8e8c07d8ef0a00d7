// SPDX-License-Identifier: Apache-2.0
// Products and quotients of single elements that the fast formulas do not serve. Where operands are infinite,
// they keep an infinity or a zero that plain arithmetic would turn into NaNs (ISO C, annex G.5.1). Ordinary
// numbers too large or too small for pairs of doubles go to the functions in extended precision, which have
// the range.
#pragma once

#include <cmath>
#include <limits>

#include "platform/fp.hpp"
#include "tmk/abi/vtm.h"

extern "C" int32_t tmk_vtm_reference_zMul(const tmk_complex16* a, const tmk_complex16* b, tmk_complex16* r);
extern "C" int32_t tmk_vtm_reference_zDiv(const tmk_complex16* a, const tmk_complex16* b, tmk_complex16* r);

TMK_TIER_OPEN
namespace {

template <class Element>
bool has_infinity(const Element& z) {
  return std::isinf(z.re) || std::isinf(z.im);
}
template <class Element>
bool has_nan(const Element& z) {
  return std::isnan(z.re) || std::isnan(z.im);
}
template <class Element>
bool is_finite(const Element& z) {
  return std::isfinite(z.re) && std::isfinite(z.im);
}
template <class Element>
bool is_zero(const Element& z) {
  return z.re == 0 && z.im == 0;
}
template <class Element>
bool has_zero(const Element& z) {
  return z.re == 0 || z.im == 0;
}

// An overflow is reported only where no component was special.
inline bool is_ordinary(const tmk_complex8& z) { return is_finite(z) && !has_zero(z); }

template <class Element>
Element conjugate_of(const Element& z) {
  return {z.re, -z.im};
}

inline tmk_complex16 as_doubles(const tmk_complex8& z) { return {z.re, z.im}; }
inline tmk_complex8 as_singles(const tmk_complex16& z) {
  return {static_cast<float>(z.re), static_cast<float>(z.im)};
}

inline tmk_complex16 plain_product(const tmk_complex16& x, const tmk_complex16& y) {
  return {x.re * y.re - x.im * y.im, x.re * y.im + x.im * y.re};
}
inline tmk_complex16 scaled(const tmk_complex16& z, double s) { return {z.re * s, z.im * s}; }

// Infinite components become 1, the others 0, each with its sign.
inline tmk_complex16 boxed(const tmk_complex16& z) {
  const auto unit = [](double x) { return std::copysign(std::isinf(x) ? 1.0 : 0.0, x); };
  return {unit(z.re), unit(z.im)};
}

// The operand next to one with an infinity: its NaNs count as zeros.
inline tmk_complex16 without_nans(const tmk_complex16& z) {
  const auto known = [](double x) { return std::isnan(x) ? std::copysign(0.0, x) : x; };
  return {known(z.re), known(z.im)};
}

// What stays undefined: infinity times zero, or a NaN. Other numbers are no more than their signs.
inline tmk_complex16 with_units(const tmk_complex16& z, bool nan) {
  const auto unit = [nan](double x) {
    const bool stays = std::isnan(x) || (!nan && (x == 0 || std::isinf(x)));
    return stays ? x : std::copysign(1.0, x);
  };
  return {unit(z.re), unit(z.im)};
}

// x y, a component infinite or NaN.
inline tmk_complex16 special_product(const tmk_complex16& x, const tmk_complex16& y) {
  if ((has_infinity(x) || has_infinity(y)) && !is_zero(x) && !is_zero(y)) {
    const auto opened = [](const tmk_complex16& z) { return has_infinity(z) ? boxed(z) : without_nans(z); };
    return scaled(plain_product(opened(x), opened(y)), std::numeric_limits<double>::infinity());
  }
  const bool nan = has_nan(x) || has_nan(y);
  return plain_product(with_units(x, nan), with_units(y, nan));
}

// x / y, a component infinite or NaN and y not zero.
inline tmk_complex16 special_quotient(const tmk_complex16& x, const tmk_complex16& y) {
  if (has_infinity(x) && is_finite(y))
    return scaled(plain_product(boxed(x), conjugate_of(y)), std::numeric_limits<double>::infinity());
  if (is_finite(x) && has_infinity(y)) return scaled(plain_product(x, conjugate_of(boxed(y))), 0.0);
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  return {nan, nan};
}

// Products of singles are exact in double, so that a double's rounding and the last one are all.
inline int32_t vcmul_cout_rare(const tmk_complex8* a, const tmk_complex8* b, tmk_complex8* r) {
  const tmk_complex16 x = as_doubles(*a), y = as_doubles(*b);
  *r = as_singles(is_finite(x) && is_finite(y) ? plain_product(x, y) : special_product(x, y));
  return VTM_STATUS_OK;
}
inline int32_t vcmulbyconj_cout_rare(const tmk_complex8* a, const tmk_complex8* b, tmk_complex8* r) {
  const tmk_complex8 y = conjugate_of(*b);
  return vcmul_cout_rare(a, &y, r);
}

// The same where a component is zero, infinite or NaN; the conversion quiets a NaN.
inline int32_t _c_mul_ha_scalar(const tmk_complex8* a, const tmk_complex8* b, tmk_complex8* r) {
  return vcmul_cout_rare(a, b, r);
}

// Next to a zero each part is one product, rounded once.
inline int32_t vzmul_cout_rare(const tmk_complex16* a, const tmk_complex16* b, tmk_complex16* r) {
  if (!is_finite(*a) || !is_finite(*b)) {
    *r = special_product(*a, *b);
    return VTM_STATUS_OK;
  }
  if (!has_zero(*a) && !has_zero(*b)) return tmk_vtm_reference_zMul(a, b, r);
  *r = plain_product(*a, *b);
  return has_infinity(*r) ? VTM_STATUS_OVERFLOW : VTM_STATUS_OK;
}
inline int32_t vzmulbyconj_cout_rare(const tmk_complex16* a, const tmk_complex16* b, tmk_complex16* r) {
  const tmk_complex16 y = conjugate_of(*b);
  return vzmul_cout_rare(a, &y, r);
}

// x / y for y = c or y = i d: one division a part. A zero keeps the sign that the plain formula gives it.
inline tmk_complex16 quotient_by_axis(const tmk_complex16& x, const tmk_complex16& y) {
  const tmk_complex16 plain = plain_product(x, conjugate_of(y));
  const tmk_complex16 q =
      y.re == 0 ? tmk_complex16{x.im / y.im, -x.re / y.im} : tmk_complex16{x.re / y.re, x.im / y.re};
  const double first = y.re == 0 ? x.im : x.re, second = y.re == 0 ? x.re : x.im;
  return {first == 0 ? plain.re : q.re, second == 0 ? plain.im : q.im};
}

// A zero divisor gives its infinities and NaNs without a report.
inline int32_t vzdiv_cout_rare(const tmk_complex16* a, const tmk_complex16* b, tmk_complex16* r) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  if (is_zero(*b)) {
    *r = is_zero(*a) ? scaled(plain_product(*a, conjugate_of(*b)), infinity)
                     : scaled(*a, std::copysign(infinity, b->re));
    return VTM_STATUS_OK;
  }
  if (!is_finite(*a) || !is_finite(*b)) {
    *r = special_quotient(*a, *b);
    return VTM_STATUS_OK;
  }
  if (!has_zero(*b)) return tmk_vtm_reference_zDiv(a, b, r);
  *r = quotient_by_axis(*a, *b);
  return has_infinity(*r) ? VTM_STATUS_OVERFLOW : VTM_STATUS_OK;
}

}  // namespace
TMK_TIER_CLOSE
