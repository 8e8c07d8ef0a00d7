// SPDX-License-Identifier: Apache-2.0
// Running minima and maxima, per tier.
#pragma once

#include <cstddef>

#include "platform/by_tier.hpp"

namespace tmk::stats {

// For each period, folds `length` values at `x`, the next period being `step` values on, into `length` minima
// and maxima. A NaN among the values replaces nothing.
template <class Real>
struct extrema_kernels {
  void (*fold)(const Real* x, ptrdiff_t periods, ptrdiff_t step, int length, Real* low, Real* high);
};

TMK_DECLARE_TIER_KERNEL_PAIR(extrema)

}  // namespace tmk::stats
