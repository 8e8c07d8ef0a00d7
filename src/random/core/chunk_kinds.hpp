// SPDX-License-Identifier: Apache-2.0
// The library's own chunks: what distributions keep with a stream. Their owners use a chunk without checking
// it, so a loaded one is checked here.
#pragma once

#include <cstdint>

namespace tmk::rng {

enum chunk_kind : uint32_t {
  chunk_gaussian_single = 1,  // leftover of a pair
  chunk_gaussian_double = 2,
  chunk_poisson = 3,  // set-ups
  chunk_negative_binomial = 4,
  chunk_binomial = 5,
  chunk_hypergeometric = 6,
  chunk_gamma_double = 7,
  chunk_gamma_single = 8,
};

// The size of the library's chunks; 0 for other kinds.
constexpr uint32_t bytes_of_kind(uint32_t chunk_id) {
  constexpr uint32_t bytes[] = {0, 8, 16, 2304, 0x530, 2304, 0x254, 0x10, 8};
  return chunk_id <= chunk_gamma_single ? bytes[chunk_id] : 0;
}

// Whether a draw can use a loaded chunk of that kind, which then is made fit for use. True for other kinds.
bool chunk_is_sound(uint32_t chunk_id, void* blob, uint32_t bytes);

}  // namespace tmk::rng
