// SPDX-License-Identifier: Apache-2.0
// The least size of the library's own chunks. Their owners read that much without checking the size, so a
// loaded chunk that is smaller is refused.
#pragma once

#include <cstdint>

namespace tmk::rng {

enum chunk_kind : uint32_t {
  chunk_gaussian_single = 1,  // leftover of a pair
  chunk_gaussian_double = 2,
};

constexpr uint32_t least_bytes_of_kind(uint32_t chunk_id) {
  switch (chunk_id) {
    case chunk_gaussian_single:
      return 8;
    case chunk_gaussian_double:
      return 16;
    default:
      return 0;
  }
}

}  // namespace tmk::rng
