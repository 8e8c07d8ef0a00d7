// SPDX-License-Identifier: Apache-2.0
// What continuous laws by candidates share: checks, and the end of a block.
#pragma once

#include <algorithm>
#include <cmath>

#include "random/distributions/compaction.hpp"
#include "random/distributions/precision.hpp"
#include "tmk/abi/vtm.h"

namespace tmk::rng {

template <class Real>
bool is_positive(Real x) {
  return std::isfinite(x) && x > 0;
}

// A callback: underflow to zero and overflow to infinity are what the law has there.
inline int32_t leave_result(VtmErrorContext*) { return 0; }

// make(x) fills n doubles; they are rounded to r and the rejected left out.
template <class Real, class Make>
int32_t finish_candidates(int32_t n, Real* r, int32_t rejected, const int32_t* rejected_at, Make make) {
  if constexpr (sizeof(Real) == 8) {
    make(r);
  } else {
    alignas(64) double x[distribution_block];
    make(x);
    std::transform(x, x + n, r, [](double v) { return static_cast<Real>(v); });
  }
  removal<Real> kept(r);
  for (int32_t k = 0; k < rejected; ++k) kept.without(rejected_at[k], 1);
  return kept.finish(n);
}

}  // namespace tmk::rng
