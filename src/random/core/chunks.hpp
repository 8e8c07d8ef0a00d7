// SPDX-License-Identifier: Apache-2.0
// The blobs of a stream, walked from the head of its list.
#pragma once

#include "random/core/stream.hpp"

// The table of shared blobs: callers reach it by the functions of vts.h.
extern "C" {
extern VtsGlobRODataEntry _GlobRODataTable[128];
extern uint32_t _GlobRODataTableCount;
extern uint32_t _VTS_GLOB_RO_DATA_TABLE_LOCKER_1;
}

namespace tmk::rng {

inline VtsChunk* first_chunk(VtsStreamHandle stream) {
  return reinterpret_cast<VtsChunk*>(static_cast<uintptr_t>(header_of(stream).chunk_list));
}
inline void set_first_chunk(VtsStreamHandle stream, VtsChunk* chunk) {
  header_of(stream).chunk_list = reinterpret_cast<uintptr_t>(chunk);
}

// Finds or makes the shared blob of the chunk's key in one step under the lock, so that two threads adding
// one key cannot both make it. A key that the table has no room for is cleared: the blob is private then.
void share_blob(VtsChunk& chunk);

// Whether the blob shared under the key can replace one of that size: the key is unused, or its blob has the
// same size.
bool may_share(const uint32_t* key, uint32_t bytes);

}  // namespace tmk::rng
