// SPDX-License-Identifier: Apache-2.0
// A function's checks of its arguments as a table, in the order in which their statuses take precedence.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tmk {

struct status_row {
  bool holds;
  int32_t status;
};

// The status of the first row whose condition holds, or 0.
template <size_t Count>
int32_t first_status(const status_row (&rows)[Count]) {
  const auto* row = std::find_if(rows, rows + Count, [](const status_row& r) { return r.holds; });
  return row != rows + Count ? row->status : 0;
}

}  // namespace tmk
