// SPDX-License-Identifier: Apache-2.0
// x^2 + 1 and x^2 - 1 as sums of two numbers, and the root of such a sum.
#pragma once

#include "vector/toolbox/pair.hpp"

TMK_TIER_OPEN
namespace {

// For |x| below half the precision's bits: 1 - high is exact there, being a multiple of high's last place.
template <class Real>
batch_pair<Real> square_plus_one(const batch<Real>& x) {
  const batch<Real> one(Real(1));
  if constexpr (is_baseline) {
    const auto square = two_prod(x, x);
    const auto sum = two_sum(square.high, one);
    return {sum.high, sum.low + square.low};
  } else {
    const batch<Real> high = multiply_add(x, x, one);
    return {high, multiply_add(x, x, one - high)};
  }
}

// For x >= 1.
template <class Real>
batch_pair<Real> square_minus_one(const batch<Real>& x) {
  const auto square = two_prod(x, x);
  const auto sum = fast_two_sum(square.high, batch<Real>(Real(-1)));
  return {sum.high, sum.low + square.low};
}

// Of zero as well.
template <class Real>
batch_pair<Real> square_root_or_zero(const batch_pair<Real>& x) {
  const batch<Real> root = xsimd::sqrt(x.high);
  const batch<Real> divisor = maximum_or_second(root + root, batch<Real>(Real(0x1p-60)));
  return {root, (residual(x.high, root, root) + x.low) / divisor};
}

}  // namespace
TMK_TIER_CLOSE
