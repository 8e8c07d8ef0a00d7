// SPDX-License-Identifier: Apache-2.0
// Around zero, where erf and its inverse are multiples of x.
#pragma once

#include <cmath>

#include "simd/batch.hpp"

TMK_TIER_OPEN
namespace {

// (1 + excess) x for |x| < 1. Residuals of products with small x would underflow, and so would, without fused
// operations, the first rounding of two.
template <class Real>
batch<Real> multiple_near_zero(const batch<Real>& x, double excess) {
  using value = batch<Real>;
  constexpr Real scale = is_baseline ? Real(0x1p30) : Real(1);
  const value scaled = x * value(scale);
  return multiply_add(scaled, value(static_cast<Real>(excess)), scaled) * value(1 / scale);
}

// Where the next term is nothing to 1.
template <class Real>
constexpr Real linear_end = sizeof(Real) == 4 ? Real(0x1p-14) : Real(0x1p-31);

}  // namespace
TMK_TIER_CLOSE
