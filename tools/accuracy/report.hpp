// SPDX-License-Identifier: Apache-2.0
// Printed forms of what was measured.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "measure.hpp"

namespace tmk::accuracy {

void print_heading(std::FILE* out);

// One line per kernel: tier, levels, maximum and mean error, share of correctly rounded results, correct
// bits, worst argument.
void print_lines(std::FILE* out, const measurement& m);

// The comments above the kernels in their sources.
void print_source_comments(std::FILE* out, const measurement& m);

// docs/accuracy.md.
void print_markdown(std::FILE* out, const std::vector<measurement>& all, const std::vector<int>& tiers,
                    std::int64_t samples);

}  // namespace tmk::accuracy
