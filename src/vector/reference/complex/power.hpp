// SPDX-License-Identifier: Apache-2.0
// a^b = e^(b ln a), with the principal logarithm.
#pragma once

#include "vector/reference/complex/extended.hpp"

namespace tmk::reference {

// a^b for components of a and b that are doubles, its own components good to `precision` bits short of 1/8 of
// the last place, as long as |b ln a| stays below 2^50. a^0 is 1 for every a.
extended_complex power(extended_complex a, extended_complex b, int precision);

template <std::floating_point Real>
int Pow(std::complex<Real> a, std::complex<Real> b, std::complex<Real>& r) {
  const extended_complex x = widened(a), y = widened(b);
  return conclude<exponential>(power(x, y, std::numeric_limits<Real>::digits), r, x, y);
}

template <std::floating_point Real>
int Powx(std::complex<Real> a, std::complex<Real> b, std::complex<Real>& r) {
  return Pow(a, b, r);
}

}  // namespace tmk::reference
