// SPDX-License-Identifier: Apache-2.0
// Odd functions with slope 1 at zero, from what they are of positive x: below `tiny` x is its own answer, and
// keeps its sign. The formula sees no smaller magnitude, since arithmetic on subnormal numbers may take a
// hundred times as long.
#pragma once

#include "simd/batch.hpp"

TMK_TIER_OPEN

// x^2 / 3 is nothing to 1.
template <class Real>
constexpr Real tiny = sizeof(Real) == 4 ? Real(0x1p-14) : Real(0x1p-28);

template <class Real, class F>
[[gnu::always_inline]] inline batch<Real> odd_function(const batch<Real>& x, const F& of_positive) {
  using value = batch<Real>;
  const value magnitude = xsimd::abs(x);
  // A NaN is the second one.
  const value y = of_positive(maximum_or_second(value(tiny<Real>), magnitude));
  return xsimd::select(magnitude < value(tiny<Real>), x, y | (x & value(Real(-0.0))));
}

TMK_TIER_CLOSE
