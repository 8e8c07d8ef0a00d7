// SPDX-License-Identifier: Apache-2.0
// The times of vector functions as lines and as the tables of docs/performance.md. A group is named
// function/size; its own subjects are named by the levels that a kernel serves.
#pragma once

#include <vector>

#include "runner.hpp"

namespace tmk::bench {

// A line per subject, to stderr in a markdown run; kernels with their ratio to the best peer of their tier.
void print_lines(const measured_group& g, const options& wish);

void print_tables(const std::vector<measured_group>& groups);

}  // namespace tmk::bench
