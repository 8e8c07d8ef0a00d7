// a^b = e^(b ln a), with the principal logarithm.
#pragma once

#include "vector/complex/reference/extended.hpp"

namespace tmk::reference {

// a^b with components good to `precision` bits, short of a last-place error: as long as |b ln a| stays below
// 2^50, and below 2^(60 - precision) where a is within 2^-50 of 1. 0^0 and a^0 are 1 for every a.
extended_complex power(extended_complex a, extended_complex b, int precision);

template <std::floating_point Real>
int Pow(std::complex<Real> a, std::complex<Real> b, std::complex<Real>& r) {
  const extended_complex x(a), y(b);
  return conclude<exponential>(power(x, y, std::numeric_limits<Real>::digits), r, x, y);
}

template <std::floating_point Real>
int Powx(std::complex<Real> a, std::complex<Real> b, std::complex<Real>& r) {
  return Pow(a, b, r);
}

}  // namespace tmk::reference
