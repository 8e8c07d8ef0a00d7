// SPDX-License-Identifier: Apache-2.0
// Values of functions of one or two real arguments in the next wider format, which judge nearly every result
// at a hundredth of the oracle's cost. What they find is confirmed by the oracle.
#pragma once

#include <string_view>

namespace tmk::accuracy {

struct filter {
  std::string_view stem;
  double (*in_double)(double a, double b);                   // b counts for functions of two arguments only
  long double (*in_extended)(long double a, long double b);  // null where it would lose too many digits
  bool is_exact = false;  // in_double has no error at all where a and b are singles
};

// Null for a function without a filter.
const filter* find_filter(std::string_view stem);

}  // namespace tmk::accuracy
