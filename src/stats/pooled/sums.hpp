// SPDX-License-Identifier: Apache-2.0
// Moments of data by blocks: what is kept of the data, how a block is summarised, and how two summaries
// merge.
#pragma once

#include <vector>

#include "stats/pooled/data.hpp"

namespace tmk::stats::pooled {

// Sums of (x - mean)^k, the mean being shift + offset; mean_weight is W2 / W. All zero while n is.
struct variable_sums {
  int64_t n = 0;
  double weight = 0, mean_weight = 0, shift = 0, offset = 0, c2 = 0, c3 = 0, c4 = 0, min = 0, max = 0;
};

// Sums of products about the means of the complete rows: the lower triangle by rows.
struct joint_sums {
  int64_t n = 0;
  double weight = 0, mean_weight = 0;
  std::vector<double> shift, offset, cross;
};

struct moment_sums {
  std::vector<variable_sums> variables;
  joint_sums joint;  // without elements unless the option crossProduct is set
};

// The sums of no data.
moment_sums no_sums(size_t columns, bool cross_product);

// The data's sums, a function of data, weights and options alone. NaNs propagate, unless they are omitted.
moment_sums summarise(const TmkSSData& data, const TmkSSOptions& options, const ThreadingService* threading);

// Adds b's observations to a's; a is unchanged if there is no memory.
void merge(moment_sums& a, const moment_sums& b);

}  // namespace tmk::stats::pooled

struct TmkSSMoments {
  TmkSSOptions options;
  tmk::stats::pooled::moment_sums sums;
};
