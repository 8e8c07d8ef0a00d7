// SPDX-License-Identifier: Apache-2.0
// Every function's formula in multiple-precision arithmetic.
#pragma once

#include <string_view>

#include "oracle/evaluation.hpp"

namespace tmk::accuracy {

struct oracle_row {
  std::string_view stem;
  formula real;     // null where the function has complex elements only
  formula complex;  // null where it has real elements only
};

const oracle_row* find_oracle_row(std::string_view stem);

}  // namespace tmk::accuracy
