// SPDX-License-Identifier: Apache-2.0
// Where each function is measured, by src/vector/domains.def.
#pragma once

#include <array>
#include <string_view>

namespace tmk::accuracy {

struct interval {
  double low, high;
};

// Samples are drawn over the numbers of `full` by their bits (each binade alike) and evenly over the reals of
// `core`, and near multiples of `period`, the listed points and the bounds.
struct domain {
  std::string_view letters, stem;
  int argument;  // 0 or 1
  interval full, core;
  double period = 0;
  std::array<double, 4> points{};
};

// Both parts of a complex argument are drawn alike.
const domain& find_domain(char letter, std::string_view stem, int argument);

}  // namespace tmk::accuracy
