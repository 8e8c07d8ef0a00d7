// SPDX-License-Identifier: Apache-2.0
// A block of observations in scratch memory, in the layout that the kernels read.
#pragma once

#include <vector>

#include "stats/pooled/data.hpp"

namespace tmk::stats::pooled {

// Value (k, j) is x[j n + k].
struct block {
  size_t n = 0, p = 0;
  std::vector<double> x, weights;  // no weights: each counts 1
  double* column(size_t j) { return x.data() + j * n; }
};

bool contains_nan(const double* x, size_t n);

// Reads the rows first to last - 1 of positive weight. The memory of what b held is used again.
void read_block(block& b, const TmkSSData& data, size_t first, size_t last);

// Of the variables first to last - 1, the rows in which none of them is NaN.
block without_nan(const block& b, size_t first, size_t last);

}  // namespace tmk::stats::pooled
