// SPDX-License-Identifier: Apache-2.0
// The median of contiguous values in O(n), and what is based on it.
#pragma once

#include <cstddef>

namespace tmk::stats::robust {

// The middle value, or the mean of the middle two. `work` takes n values; y stays. Data with NaNs give some
// number.
double median(const double* y, size_t n, double* work);

// The value of rank k, from 0.
double ranked(const double* y, size_t n, size_t k, double* work);

// The median and the median distance from it, not scaled. `work` takes 2 n values.
struct centre_and_spread {
  double median, mad;
};
centre_and_spread median_and_mad(const double* y, size_t n, double* work);

}  // namespace tmk::stats::robust
