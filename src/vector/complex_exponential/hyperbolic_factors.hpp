// SPDX-License-Identifier: Apache-2.0
// The hyperbolic sine and cosine of |a| as factors.
#pragma once

#include "vector/complex_exponential/factors.hpp"
#include "vector/hyperbolic/even_and_odd.hpp"
#include "vector/toolbox/odd.hpp"

TMK_TIER_OPEN
namespace {

template <class Factor>
struct sinh_and_cosh {
  Factor sinh, cosh;
};

// Below `tiny` the sine is its argument, and the cosine 1.
template <class Real>
batch_pair<Real> or_argument(const batch<Real>& magnitude, const batch_pair<Real>& sinh) {
  const auto is_tiny = magnitude < batch<Real>(tiny<Real>);
  return {xsimd::select(is_tiny, magnitude, sinh.high),
          xsimd::select(is_tiny, batch<Real>(Real(0)), sinh.low)};
}
template <class Real>
batch<Real> or_argument(const batch<Real>& magnitude, const batch<Real>& sinh) {
  return xsimd::select(magnitude < batch<Real>(tiny<Real>), magnitude, sinh);
}

template <class Real, level Level>
auto factors_of(const batch<Real>& magnitude, const hyperbolic_argument<Real, Level>& arg) {
  if constexpr (Level == level::ha)
    return sinh_and_cosh<batch_pair<Real>>{or_argument(magnitude, normalized(sinh_pair(arg))),
                                           normalized(cosh_pair(arg))};
  else
    return sinh_and_cosh<batch<Real>>{or_argument(magnitude, sinh_in_one(arg)), cosh_in_one(arg)};
}

template <level Level, class Real>
auto hyperbolic_factors(const batch<Real>& a) {
  const batch<Real> magnitude = xsimd::abs(a);
  return factors_of(magnitude,
                    hyperbolic_argument<Real, Level>(maximum_or_second(batch<Real>(tiny<Real>), magnitude)));
}

}  // namespace
TMK_TIER_CLOSE
