// SPDX-License-Identifier: Apache-2.0
// The square of a modulus with its distance from 1: a logarithm is that distance near the unit circle, where
// the sum of the rounded squares has lost it.
#pragma once

#include "vector/toolbox/pair.hpp"

TMK_TIER_OPEN
namespace {

// larger^2 + smaller^2 of sizes whose squares are in the format, to 2^-105 of itself, which is enough in
// comparison with |z - 1|.
template <class Real>
batch_pair<Real> sum_of_squares(const batch<Real>& larger, const batch<Real>& smaller) {
  const auto first = two_prod(larger, larger);
  const auto sum = add_product(first.high, smaller, smaller);
  return {sum.high, sum.low + first.low};
}

// The same with three words: sums of words that may cancel are exact.
template <class Real>
struct three_words {
  batch<Real> high;
  batch_pair<Real> low;
};
template <class Real>
three_words<Real> exact_sum_of_squares(const batch<Real>& larger, const batch<Real>& smaller) {
  const auto first = two_prod(larger, larger), second = two_prod(smaller, smaller),
             high = fast_two_sum(first.high, second.high), low = two_sum(first.low, second.low),
             middle = two_sum(high.low, low.high), sum = fast_two_sum(high.high, middle.high);
  return {sum.high, fast_two_sum(sum.low, middle.low + low.low)};
}

}  // namespace
TMK_TIER_CLOSE
