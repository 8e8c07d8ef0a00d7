// SPDX-License-Identifier: Apache-2.0
// Reciprocals and square roots that are not rounded correctly, for formulas that make up for it by a
// residual. V4 has them from its estimates of 14 bits in a fraction of the time that its dividers need; other
// processors' estimates differ, and with them the last bits, far below the results'.
#pragma once

#include "simd/batch.hpp"
#include "vector/toolbox/pair.hpp"

TMK_TIER_OPEN

// 1 / x: within 2^-41 in double, 2^-23 in single.
template <class Real>
batch<Real> near_reciprocal(const batch<Real>& x) {
  const batch<Real> one(Real(1));
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  const batch<Real> y = reciprocal_estimate(x), e = negative_multiply_add(x, y, one);
  return multiply_add(y, sizeof(Real) == 4 ? e : multiply_add(e, e, e), y);
#else
  return one / x;
#endif
}

// sqrt(x) within an ulp or two, and 1 / (2 sqrt(x)) within 2^-26 in double, 2^-13 in single; of zero, zero
// and a large number. Other x have roots from `least`, a power of two, on.
template <class Real>
struct near_root {
  batch<Real> root, half_reciprocal;

  explicit near_root(const batch<Real>& x, Real least = Real(0x1p-30)) {
    const batch<Real> half(Real(0.5));
#if TMK_TIER_NUMBER(TMK_TIER) == 2
    const batch<Real> y = reciprocal_sqrt_estimate(maximum_or_second(x, batch<Real>(least * least)));
    root = x * y;
    half_reciprocal = y * half;
    if constexpr (sizeof(Real) == 8) {
      const batch<Real> e = negative_multiply_add(root, half_reciprocal, half);
      root = multiply_add(root, e, root);
      half_reciprocal = multiply_add(half_reciprocal, e, half_reciprocal);
    }
    root = multiply_add(negative_multiply_add(root, root, x), half_reciprocal, root);
#else
    root = xsimd::sqrt(x);
    half_reciprocal = half / maximum_or_second(root, batch<Real>(least));
#endif
  }

  // With a reciprocal to all bits but a few.
  near_root refined() const {
    near_root better = *this;
#if TMK_TIER_NUMBER(TMK_TIER) == 2
    const batch<Real> e = negative_multiply_add(root, half_reciprocal, batch<Real>(Real(0.5)));
    better.half_reciprocal = multiply_add(half_reciprocal, e, half_reciprocal);
#endif
    return better;
  }

  // sqrt(x + x_low) as a pair, x that of above.
  batch_pair<Real> pair(const batch_pair<Real>& x) const {
    return {root, (residual(x.high, root, root) + x.low) * half_reciprocal};
  }
};

TMK_TIER_CLOSE
