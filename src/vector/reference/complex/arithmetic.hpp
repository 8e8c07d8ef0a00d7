// SPDX-License-Identifier: Apache-2.0
// Complex arithmetic, each component rounded once. Where operands are infinite, products and quotients keep
// an infinity or a zero that plain arithmetic would turn into NaNs (ISO C, annex G.5.1).
//
// The one status of arithmetic is overflow: a finite exact component too large for the result. A zero divisor
// gives its infinities and NaNs in silence, and so does Abs an infinity; and so does an overflow in a product
// or quotient of singles if one of their components is zero.
#pragma once

#include <utility>

#include "vector/reference/complex/extended.hpp"
#include "vector/reference/real/arithmetic.hpp"

namespace tmk::reference {

namespace detail {

// Infinite components become 1 and the others 0, each with its sign.
inline extended_complex box(extended_complex z) {
  const auto unit = [](extended x) { return std::copysign(std::isinf(x) ? extended{1} : extended{0}, x); };
  return {unit(z.real()), unit(z.imag())};
}

inline extended_complex nan_to_zero(extended_complex z) {
  const auto known = [](extended x) { return std::isnan(x) ? std::copysign(extended{0}, x) : x; };
  return {known(z.real()), known(z.imag())};
}

inline extended_complex plain_product(extended_complex x, extended_complex y) {
  return {x.real() * y.real() - x.imag() * y.imag(), x.real() * y.imag() + x.imag() * y.real()};
}

// Exact zeros come from the plain formula, which gives them their sign.
inline extended either_sum(extended_pair exact, extended plain) {
  return exact.high == 0 ? plain : round_to_odd(exact);
}

inline extended_complex special_product(extended_complex x, extended_complex y) {
  if (x == extended{0} || y == extended{0} || !(has_infinity(x) || has_infinity(y)))
    return plain_product(x, y);
  const auto opened = [](extended_complex z) { return has_infinity(z) ? box(z) : nan_to_zero(z); };
  return plain_product(opened(x), opened(y)) * std::numeric_limits<extended>::infinity();
}

inline extended_complex special_quotient(extended_complex x, extended_complex y) {
  constexpr extended infinity = std::numeric_limits<extended>::infinity();
  if (y == extended{0}) return x * std::copysign(infinity, y.real());
  if (has_infinity(x) && is_finite(y)) return plain_product(box(x), std::conj(y)) * infinity;
  if (is_finite(x) && has_infinity(y)) return plain_product(x, std::conj(box(y))) * extended{0};
  const extended_complex product = plain_product(x, std::conj(y));
  return product / (y.real() * y.real() + y.imag() * y.imag());
}

inline extended_complex sum(extended_complex x, extended_complex y) {
  return {reference::sum(x.real(), y.real()), reference::sum(x.imag(), y.imag())};
}

inline extended_complex difference(extended_complex x, extended_complex y) { return sum(x, -y); }

inline extended_complex product(extended_complex x, extended_complex y) {
  if (!is_finite(x) || !is_finite(y)) return special_product(x, y);
  const auto [a, b] = std::pair(x.real(), x.imag());
  const auto [c, d] = std::pair(y.real(), y.imag());
  const extended_complex plain = plain_product(x, y);
  return {either_sum(sum_of_products(a, c, -b, d), plain.real()),
          either_sum(sum_of_products(a, d, b, c), plain.imag())};
}

// One step of long division: the remainder of the first quotient digit gives the second.
inline extended_pair quotient(extended_pair n, extended_pair d) {
  const extended q = n.high / d.high;
  return fast_two_sum(q, (n - d * q).high / d.high);
}

// x / y = x conj(y) / |y|^2
inline extended_complex quotient(extended_complex x, extended_complex y) {
  if (!is_finite(x) || !is_finite(y) || y == extended{0}) return special_quotient(x, y);
  const auto [a, b] = std::pair(x.real(), x.imag());
  const auto [c, d] = std::pair(y.real(), y.imag());
  const extended_complex plain = plain_product(x, std::conj(y));
  const extended_pair norm = sum_of_products(c, c, d, d);
  return {either_sum(quotient(sum_of_products(a, c, b, d), norm), plain.real()),
          either_sum(quotient(sum_of_products(b, c, -a, d), norm), plain.imag())};
}

// For singles, whose products are exact in any precision of the x87 unit that holds doubles.
inline extended_complex short_quotient(extended_complex x, extended_complex y) {
  if (!is_finite(x) || !is_finite(y) || y == extended{0}) return special_quotient(x, y);
  const extended inverse = 1 / (y.real() * y.real() + y.imag() * y.imag());
  return plain_product(x, std::conj(y)) * inverse;
}

inline bool has_zero(extended_complex z) { return z.real() == 0 || z.imag() == 0; }

template <std::floating_point Real>
int apply(extended_complex (*operation)(extended_complex, extended_complex), std::complex<Real> a,
          std::complex<Real> b, std::complex<Real>& r) {
  const extended_complex x = widened(a), y = widened(b), value = operation(x, y);
  round_parts(value, r);
  const auto overflows = [](extended exact, Real rounded) {
    return std::isfinite(exact) && std::isinf(rounded);
  };
  const bool either = overflows(value.real(), r.real()) || overflows(value.imag(), r.imag());
  return either && !has_infinity(x) && !has_infinity(y) ? VTM_STATUS_OVERFLOW : VTM_STATUS_OK;
}

}  // namespace detail

int Add(complex_number auto a, auto b, auto& r) { return detail::apply(detail::sum, a, b, r); }
int Sub(complex_number auto a, auto b, auto& r) { return detail::apply(detail::difference, a, b, r); }
int Mul(std::complex<double> a, auto b, auto& r) { return detail::apply(detail::product, a, b, r); }
int Mul(std::complex<float> a, auto b, auto& r) {
  const int status = detail::apply(detail::product, a, b, r);
  return detail::has_zero(widened(a)) || detail::has_zero(widened(b)) ? VTM_STATUS_OK : status;
}
int MulByConj(complex_number auto a, auto b, auto& r) { return Mul(a, std::conj(b), r); }
int Div(std::complex<double> a, auto b, auto& r) { return detail::apply(detail::quotient, a, b, r); }
int Div(std::complex<float> a, auto b, auto& r) {
  const int status = detail::apply(detail::short_quotient, a, b, r);
  return detail::has_zero(widened(a)) || detail::has_zero(widened(b)) ? VTM_STATUS_OK : status;
}

template <std::floating_point Real>
int Conj(std::complex<Real> a, std::complex<Real>& r) {
  r = std::conj(a);
  return VTM_STATUS_OK;
}

// No square overflows or underflows in the extended format. An infinity outweighs a NaN.
template <std::floating_point Real>
int Abs(std::complex<Real> a, Real& r) {
  const extended x = a.real(), y = a.imag();
  const bool infinite = std::isinf(x) || std::isinf(y);
  r = static_cast<Real>(infinite ? std::numeric_limits<extended>::infinity() : sqrtl(x * x + y * y));
  return VTM_STATUS_OK;
}

template <std::floating_point Real>
int Arg(std::complex<Real> a, Real& r) {
  r = static_cast<Real>(atan2l(a.imag(), a.real()));
  return VTM_STATUS_OK;
}

}  // namespace tmk::reference
