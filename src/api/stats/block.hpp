// SPDX-License-Identifier: Apache-2.0
// A block of observations in scratch memory, as the kernels want it.
#pragma once

#include "api/stats/checks.hpp"

namespace tmk::detail {

// Value (k, j) stands at x[j n + k].
struct block {
  std::size_t n = 0, p = 0;
  std::vector<double> x, weights;  // no weights: each counts 1
  double* column(std::size_t j) { return x.data() + j * n; }
};

bool contains_nan(const double* x, std::size_t n);

// Reads the rows first to last - 1 of positive weight. The memory of what b held is used again.
void read_block(block& b, const data_view& x, const weight_view& weights, std::size_t first,
                std::size_t last);

// Of the variables first to last - 1, the rows in which none of them is NaN.
block without_nan(const block& b, std::size_t first, std::size_t last);

}  // namespace tmk::detail
