// SPDX-License-Identifier: Apache-2.0
// The memory of a stream: 16 bytes of header, the same on 32-bit and 64-bit builds, then the generator's
// state.
#pragma once

#include <cstdint>

#include "tmk/abi/vts.h"

namespace tmk::rng {

struct stream_header {
  int32_t brng_id;
  uint32_t header_word;  // 1; not saved
  uint64_t chunk_list;   // first chunk's address, zero-extended
};
static_assert(sizeof(stream_header) == 16);

constexpr int32_t stream_alignment = 128;

// A generator's state, which follows the header.
template <class State>
State& state_of(VtsStreamHandle stream) {
  return *reinterpret_cast<State*>(reinterpret_cast<char*>(stream) + sizeof(stream_header));
}

inline stream_header& header_of(VtsStreamHandle stream) { return *reinterpret_cast<stream_header*>(stream); }

// The parameter set that an identifier selects within its family, in either numbering.
constexpr int32_t parameter_set(int32_t brng_id) {
  if (brng_id >= 0x100000) return brng_id & 0xFFFFF;
  return brng_id >= 4 && brng_id <= 276 ? brng_id - 4 : 0;
}

}  // namespace tmk::rng
