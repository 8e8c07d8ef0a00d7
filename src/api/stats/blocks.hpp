// SPDX-License-Identifier: Apache-2.0
// Moments of data by blocks: how a block is summarised, and how two summaries become one.
#pragma once

#include "api/stats/checks.hpp"

namespace tmk::detail {

// What has been seen of nothing.
moment_sums no_sums(std::size_t cols, bool cross_product);

// The data's sums, a function of data, weights and options alone. NaNs propagate, unless they are omitted.
moment_sums summarise(const char* function, const data_view& x, const weight_view& weights,
                      const moments_options& options, int threads);

// a then holds what both have seen; unchanged if there is no memory.
void merge(moment_sums& a, const moment_sums& b);

}  // namespace tmk::detail
