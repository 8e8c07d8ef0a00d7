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

// Lanes that hold an infinity or a NaN; those, or a zero or a subnormal number.
template <class Real>
lane_mask<Real> not_finite(const batch<Real>& x) {
  return magnitude_outside<Real, typename format<Real>::bits{0}, format<Real>::infinity>(x);
}
template <class Real>
lane_mask<Real> not_normal(const batch<Real>& x) {
  return not_positive_normal(xsimd::abs(x));
}

}  // namespace
TMK_TIER_CLOSE
