// SPDX-License-Identifier: Apache-2.0
// Quotients to within 5 % by one subtraction of integers: enough to divide a residual by what left it, or to
// choose the entry of a table. Unlike the estimates that processors have, the same bits everywhere.
#pragma once

#include "simd/batch.hpp"

TMK_TIER_OPEN
namespace {

// A significand 1 + f, subtracted in the bits, gives 1 + b - f, or (2 + b - f) / 2 where that borrows. Times
// 1 + f the result ranges from 1 + b to (1 + b / 2)^2, and its middle is to be the factor. Halved, that is
// 17/32 to 17/16; other factors differ from these by a power of two.
template <class Real>
constexpr auto rough_quotient_bits(double factor) {
  using bits = typename format<Real>::bits;
  bits exponent = 2 * format<Real>::bias - 1;
  const bits sign = factor < 0 ? format<Real>::sign : 0;
  factor = factor < 0 ? -factor : factor;
  for (; factor > 17.0 / 16; factor /= 2) ++exponent;
  for (; factor <= 17.0 / 32; factor *= 2) --exponent;
  double root = 4.5;  // b = sqrt(8 + 16 factor) - 4
  for (int i = 0; i < 5; ++i) root = (root + (8 + 16 * factor) / root) / 2;
  constexpr bits one = bits{1} << format<Real>::fraction_bits;
  return sign + exponent * one + static_cast<bits>((root - 4) * double(one));
}

// Factor / x for x >= 0 and below 2^126 or 2^1022. Zero gives a large number.
template <auto Factor, class Real>
batch<Real> rough_quotient(const batch<Real>& x) {
  using bits = typename format<Real>::bits;
  constexpr bits minuend = rough_quotient_bits<Real>(Factor);
  return bits_as<Real>(batch<bits>(minuend) - bits_as<bits>(x));
}

}  // namespace
TMK_TIER_CLOSE
