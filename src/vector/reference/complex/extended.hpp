// SPDX-License-Identifier: Apache-2.0
// What the complex reference functions compute in: complex numbers of the extended format, sums of products
// in pairs of it, and the last step of each function: the rounding of both components, with the status that
// goes with it.
#pragma once

#include <complex>

#include "vector/reference/real/extended.hpp"

namespace tmk::reference {

using extended_complex = std::complex<extended>;

template <class T>
concept complex_number = std::same_as<T, std::complex<float>> || std::same_as<T, std::complex<double>>;

// The barrier stops the compiler from moving a comparison with zero back into the narrow format, where the
// caller's SSE controls may treat subnormals as zero.
inline extended widened(std::floating_point auto x) {
  extended wide = x;
  asm("" : "+t"(wide));
  return wide;
}

template <std::floating_point Real>
extended_complex widened(std::complex<Real> z) {
  return {widened(z.real()), widened(z.imag())};
}

inline extended_pair operator+(extended_pair x, extended_pair y) {
  const extended_pair s = two_sum(x.high, y.high);
  return fast_two_sum(s.high, s.low + (x.low + y.low));
}

inline extended_pair operator-(extended_pair x) { return {-x.high, -x.low}; }
inline extended_pair operator-(extended_pair x, extended_pair y) { return x + -y; }

inline extended_pair operator*(extended_pair x, extended y) {
  const extended_pair p = two_prod(x.high, y);
  return fast_two_sum(p.high, p.low + x.low * y);
}

// For doubles both products are exact, and the lower halves of two that cancel have so few bits that their
// sum is exact too: the error stays near 2^-126 of the result.
inline extended_pair sum_of_products(extended a, extended b, extended c, extended d) {
  return two_prod(a, b) + two_prod(c, d);
}

inline bool has_nan(extended_complex z) { return std::isnan(z.real()) || std::isnan(z.imag()); }
inline bool has_infinity(extended_complex z) { return std::isinf(z.real()) || std::isinf(z.imag()); }
inline bool is_finite(extended_complex z) { return std::isfinite(z.real()) && std::isfinite(z.imag()); }

template <std::floating_point Real>
void round_parts(extended_complex value, std::complex<Real>& r) {
  r = {static_cast<Real>(value.real()), static_cast<Real>(value.imag())};
}

// Rounds a value of the function to the result and says what became of it; Growth as for real functions.
// `first` and the others are the arguments. A result underflows when both of its components do: one that is
// tiny compared with the other lost nothing of the number.
template <growth Growth, std::floating_point Real, class... Others>
int conclude(extended_complex value, std::complex<Real>& r, extended_complex first, Others... others) {
  round_parts(value, r);
  if (has_nan(first) || (has_nan(others) || ...)) return VTM_STATUS_OK;
  const bool finite = is_finite(first) && (is_finite(others) && ...);
  const bool out_of_range = (Growth & expanding) != 0 && first != extended{0};
  const extended_complex rounded = widened(r);
  if (finite && has_infinity(rounded))
    return has_infinity(value) && !out_of_range ? VTM_STATUS_SINGULARITY : VTM_STATUS_OVERFLOW;
  if (has_nan(value)) return VTM_STATUS_DOMAIN;
  if (!finite || (Growth & shrinking) == 0) return VTM_STATUS_OK;

  constexpr extended smallest = std::numeric_limits<Real>::min();
  const bool subnormal = std::fabs(rounded.real()) < smallest && std::fabs(rounded.imag()) < smallest;
  const bool vanished = value == extended{0} && out_of_range;
  return subnormal && (rounded != value || vanished) ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
}

template <growth Growth = plain, std::floating_point Real>
int apply(extended_complex (*function)(const extended_complex&), std::complex<Real> a,
          std::complex<Real>& r) {
  const extended_complex z = widened(a);
  return conclude<Growth>(function(z), r, z);
}

}  // namespace tmk::reference
