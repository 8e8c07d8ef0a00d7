// SPDX-License-Identifier: Apache-2.0
// The hot loop of running minima and maxima.
#pragma once

#include <cstddef>

#include "platform/by_tier.hpp"

namespace tmk {

// For each period, folds `length` values at `x`, the next period being `step` values on, into `length` minima
// and maxima. A NaN among the values replaces nothing.
template <class Real>
using fold_extrema = void(const Real* x, ptrdiff_t periods, ptrdiff_t step, int length, Real* low,
                          Real* high);

struct extrema_loops {
  fold_extrema<double>* d;
  fold_extrema<float>* s;
};

}  // namespace tmk

TMK_DECLARE_LOOPS(extrema_loops)
