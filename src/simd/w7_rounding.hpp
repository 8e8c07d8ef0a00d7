// SPDX-License-Identifier: Apache-2.0
// Numbers rounded to integers by the instructions of W7, which has none for it. Zeros keep their sign, and
// results that vanish have that of the argument.
#pragma once

#include <limits>

#include "simd/types.hpp"

TMK_TIER_OPEN

// Adding a number whose unit is 1 rounds the magnitude. From that number on all are integers, and a NaN
// stays.
template <class Real>
constexpr Real first_integer = 1 / std::numeric_limits<Real>::epsilon();

template <class Real>
batch<Real> sign_bit(const batch<Real>& x) {
  return x & batch<Real>(Real(-0.0));
}

// The SSE unit rounds to nearest in these three.
template <class Real>
batch<Real> round_to_zero(const batch<Real>& x) {
  using value = batch<Real>;
  const value unit(first_integer<Real>), magnitude = xsimd::abs(x);
  const value nearest = (magnitude + unit) - unit;
  const value below = nearest - xsimd::select(nearest > magnitude, value(Real(1)), value(Real(0)));
  return xsimd::select(magnitude >= unit, x, below | sign_bit(x));
}
template <class Real>
batch<Real> round_down(const batch<Real>& x) {
  const batch<Real> whole = round_to_zero(x);
  return whole - xsimd::select(whole > x, batch<Real>(Real(1)), batch<Real>(Real(0)));
}
template <class Real>
batch<Real> round_up(const batch<Real>& x) {
  const batch<Real> whole = round_to_zero(x);
  return (whole + xsimd::select(whole < x, batch<Real>(Real(1)), batch<Real>(Real(0)))) | sign_bit(x);
}

// In the direction that the SSE unit is set to.
template <class Real>
batch<Real> round_as_set(const batch<Real>& x) {
  using value = batch<Real>;
  const value unit(first_integer<Real>), shifter = unit | sign_bit(x);
  return xsimd::select(xsimd::abs(x) >= unit, x, xsimd::abs((x + shifter) - shifter) | sign_bit(x));
}

TMK_TIER_CLOSE
