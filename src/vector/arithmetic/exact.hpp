// SPDX-License-Identifier: Apache-2.0
// What the functions share that the processor computes in one or a few instructions: they take less time than
// their results need to get to memory.
#pragma once

#include "vector/toolbox/lane_tests.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct memory_bound : description<Real> {
  static constexpr bool streams = true;
};

// No result is rounded: subnormal numbers are kept in every mode.
template <class Real>
struct exact : memory_bound<Real> {
  static constexpr auto sse = sse_control::exact;
};

// x >= 0, or a NaN, with the sign of y.
template <class Real>
batch<Real> with_sign_of(const batch<Real>& x, const batch<Real>& y) {
  return x | (y & batch<Real>(Real(-0.0)));
}

// For patch(): a NaN is its own answer, and a result that is a number or an infinity has no status where an
// argument is infinite. Returns the other lanes.
template <class Real>
lane_mask<Real> without_special_arguments(const batch<Real>& x, const batch<Real>& y, batch<Real>& r) {
  const lane_mask<Real> no_answer = xsimd::isnan(r);
  pack result{r};
  const lane_mask<Real> nan = answer_nans(pack{x, y}, result);
  r = result.first;
  return !(nan | ((not_finite(x) | not_finite(y)) & !no_answer));
}

}  // namespace
TMK_TIER_CLOSE
