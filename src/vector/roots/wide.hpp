// SPDX-License-Identifier: Apache-2.0
// What the wide tiers' sqrt and inv_sqrt share around the estimate of 1 / sqrt(x).
#pragma once

#include "vector/roots/estimates.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// r with so few bits that its square is exact.
template <class Real>
batch<Real> shortened(const batch<Real>& r) {
  using bits = typename format<Real>::bits;
  constexpr int cleared = sizeof(Real) == 4 ? 12 : 32;
  return bits_as<Real>(bits_as<bits>(r) & batch<bits>(~bits{0} << cleared));
}

// (1 + e)^(-1/2) - 1 by the terms that make the level: |e| is below 2^-9.7 in single, 2^-10.4 in double.
template <level Level, class Real>
batch<Real> inverse_root_series(const batch<Real>& e) {
  using value = batch<Real>;
  if constexpr (sizeof(Real) == 4 || Level == level::ep) {
    return e * xsimd::fma(e, value(Real(0.375)), value(Real(-0.5)));
  } else {
    // The next term, -63/256 e^5, within that range by its Chebyshev fit of degree 3: 2^-58 remains of it.
    constexpr Real next = -63.0 / 256, range2 = 0x1.26p-21;
    value p = xsimd::fma(e, value(35.0 / 128), value(-5.0 / 16 + next * range2 * 5 / 4));
    p = xsimd::fma(e, p, value(0.375));
    return e * xsimd::fma(e, p, value(-0.5 - next * range2 * range2 * 5 / 16));
  }
}

}  // namespace
TMK_TIER_CLOSE
