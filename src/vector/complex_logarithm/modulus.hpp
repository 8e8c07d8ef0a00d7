// SPDX-License-Identifier: Apache-2.0
// The square of a modulus as a pair, good to the last place in its distance from 1: a logarithm is that
// distance near the unit circle, where the sum of the rounded squares has lost it.
#pragma once

#include "vector/toolbox/pair.hpp"

TMK_TIER_OPEN
namespace {

// larger^2 + smaller^2, of sizes whose squares are in the format. Exact, every sum of words that may cancel
// is too; else to 2^-105 of itself, which is enough in comparison with |z - 1|.
template <bool Exact, class Real>
batch_pair<Real> sum_of_squares(const batch<Real>& larger, const batch<Real>& smaller) {
  const auto first = two_prod(larger, larger);
  if constexpr (Exact) {
    const auto second = two_prod(smaller, smaller), high = fast_two_sum(first.high, second.high),
               low = two_sum(first.low, second.low), middle = two_sum(high.low, low.high),
               sum = fast_two_sum(high.high, middle.high);
    return {sum.high, sum.low + (middle.low + low.low)};
  } else {
    const auto sum = add_product(first.high, smaller, smaller);
    return {sum.high, sum.low + first.low};
  }
}

}  // namespace
TMK_TIER_CLOSE
