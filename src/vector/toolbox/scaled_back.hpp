// SPDX-License-Identifier: Apache-2.0
// Results computed on a larger scale, brought back with one rounding where they are subnormal numbers.
#pragma once

#include <limits>

#include "simd/batch.hpp"

TMK_TIER_OPEN
namespace {

// (high + low) / Scale for high >= 0, a pair whose second word is below the last place of the first or little
// more. Both words of what becomes subnormal are rounded to the result's unit first.
template <auto Scale, class Real>
batch<Real> scaled_back(const batch<Real>& high, const batch<Real>& low) {
  using value = batch<Real>;
  using limits = std::numeric_limits<Real>;
  constexpr Real unit = limits::denorm_min() * Scale;
  const value shifter(Real(1.5) / limits::epsilon() * unit);
  const value whole = (high + shifter) - shifter, rest = (high - whole) + low;
  const value subnormal = whole + ((rest + shifter) - shifter);
  return xsimd::select(high < value(limits::min() * Scale), subnormal, high + low) * value(1 / Scale);
}

}  // namespace
TMK_TIER_CLOSE
