// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace tmk::detail {

// Elements that one kernel call may take: the largest count of 32 bits that ends on a cache line. Tests lower
// it.
inline constinit std::size_t longest_piece = 0x7FFFFFC0;

}  // namespace tmk::detail
