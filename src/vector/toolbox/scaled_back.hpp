// SPDX-License-Identifier: Apache-2.0
// Results computed on a larger scale, brought back with one rounding where they are subnormal numbers. From
// and to these it goes by adding one, or twice, the least normal number, and by the exponents: a product with
// a subnormal number may take a hundred times as long.
#pragma once

#include <limits>

#include "simd/batch.hpp"

TMK_TIER_OPEN
namespace {

// What a power of two adds to the bits of a normal number that it multiplies.
template <auto Scale, class Real>
batch<typename format<Real>::bits> exponent_step() {
  return batch<typename format<Real>::bits>(to_bits(Real(Scale)) - to_bits(Real(1)));
}

// x Scale for x >= 0 that is small enough: zero, subnormal or normal.
template <auto Scale, class Real>
batch<Real> scaled_up(const batch<Real>& x) {
  using value = batch<Real>;
  using bits = typename format<Real>::bits;
  constexpr Real least = std::numeric_limits<Real>::min();
  const auto small = x < value(least);
  const value zero(Real(0)), normal = x + xsimd::select(small, value(least), zero);
  return bits_as<Real>(bits_as<bits>(normal) + exponent_step<Scale, Real>()) -
         xsimd::select(small, value(least * Scale), zero);
}

// (high + low) / Scale for high >= 0, a pair whose second word is below the last place of the first or little
// more. Both words of what becomes subnormal are rounded to the result's unit first.
template <auto Scale, class Real>
batch<Real> scaled_back(const batch<Real>& high, const batch<Real>& low) {
  using value = batch<Real>;
  using bits = typename format<Real>::bits;
  using limits = std::numeric_limits<Real>;
  constexpr Real unit = limits::denorm_min() * Scale, least = limits::min() * Scale;
  const value shifter(Real(1.5) / limits::epsilon() * unit);
  const value whole = (high + shifter) - shifter, rest = (high - whole) + low;
  const value subnormal = whole + ((rest + shifter) - shifter), sum = high + low;
  const auto small = sum < value(least);
  const value normal = xsimd::select(small, subnormal + value(least), sum),
              added = xsimd::select(small, value(limits::min()), value(Real(0)));
  return bits_as<Real>(bits_as<bits>(normal) - exponent_step<Scale, Real>() - bits_as<bits>(added));
}

}  // namespace
TMK_TIER_CLOSE
