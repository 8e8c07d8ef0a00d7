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

// Puts these figures into the record, a table of tab-separated lines that docs/accuracy.md is made from, in
// the place of what it had of the function on these tiers. `searched`: the maxima are a search's, not the
// samples' alone. Returns false if the file cannot be written.
bool record(const std::string& path, const measurement& m, const std::vector<int>& tiers, bool searched);

}  // namespace tmk::accuracy
