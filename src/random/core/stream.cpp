// SPDX-License-Identifier: Apache-2.0
// Streams: made, copied, moved ahead, deleted. What depends on the generator is done by the functions of its
// record.
#include "random/core/stream.hpp"

#include <algorithm>
#include <cstring>

#include "platform/scratch.hpp"
#include "random/core/image.hpp"
#include "random/core/registry.hpp"
#include "tmk/abi/serv.h"

namespace {
using namespace tmk::rng;

constexpr int32_t header_bytes = sizeof(stream_header);

// The abstract kinds, which only their constructors make; clearing bit 20 maps two of them to one number.
bool is_abstract(int32_t brng_id) {
  return (brng_id & ~0x100000) == VTS_BRNG_IABSTRACT || brng_id == VTS_BRNG_SABSTRACT;
}

// Another family's words are a state only when the positions among them stay inside its arrays; they are
// checked in scratch memory, so that a refused copy leaves the destination as it was.
int32_t try_copy(VtsStreamHandle destination, const VtsBrngProperties& record, VtsStreamHandle source,
                 size_t bytes) {
  if (state_holds_addresses(record) && bytes > 0) return VTS_STATUS_BAD_ARGUMENT;
  const tmk::scratch<unsigned char> block(static_cast<size_t>(record.stateBytes));
  if (!block) return VTS_STATUS_NO_MEMORY;
  const auto trial = reinterpret_cast<VtsStreamHandle>(block.get());
  std::memcpy(block.get(), destination, static_cast<size_t>(record.stateBytes));
  std::memcpy(&state_of<char>(trial), &state_of<char>(source), bytes);
  return state_is_sound(trial) ? VTS_STATUS_OK : VTS_STATUS_BAD_ARGUMENT;
}

}  // namespace

extern "C" {

int32_t __vtsAllocateStream(VtsStreamHandle* stream, const VtsBrngProperties* table, int32_t brngId,
                            int32_t row, int32_t offset) {
  if (__vtsIsBrngValid(table, row, offset) != VTS_STATUS_OK) return VTS_STATUS_INVALID_BRNG;
  // Valid rows that make no stream: below zero, the two empty legacy rows, and what a caller registered too
  // small.
  if (row < 0 || table[row].initStream == nullptr || table[row].stateBytes < header_bytes)
    return VTS_STATUS_INVALID_BRNG;

  void* block = tmk_serv_allocate(static_cast<size_t>(table[row].stateBytes), stream_alignment);
  if (block == nullptr) return VTS_STATUS_NO_MEMORY;
  // Images hold the whole state, and some states have words that no generator sets.
  *stream = static_cast<VtsStreamHandle>(std::memset(block, 0, static_cast<size_t>(table[row].stateBytes)));
  header_of(*stream) = {brngId, 1, 0};
  return VTS_STATUS_OK;
}

int32_t __vtsNewStreamEx(VtsStreamHandle* stream, int32_t brngId, int32_t n, const uint32_t* seeds) {
  if (is_abstract(brngId)) return VTS_STATUS_INVALID_BRNG;
  int32_t row, offset;
  const VtsBrngProperties* table = __vtsGetBrngBaseOffset(brngId, &row, &offset);
  const int32_t status = __vtsAllocateStream(stream, table, brngId, row, offset);
  if (status < 0) return status;
  return table[row].initStream(VTS_INIT_SEED, *stream, n, seeds);
}

int32_t __vtsDeleteStream(VtsStreamHandle* stream) {
  if (*stream != nullptr) {
    __vtsDeleteChunks(*stream);
    tmk_serv_deallocate(*stream);
    *stream = nullptr;
  }
  return VTS_STATUS_OK;
}

int32_t __vtsCopyStream(VtsStreamHandle* copy, VtsStreamHandle source) {
  int32_t row, offset;
  const int32_t brng_id = header_of(source).brng_id;
  const VtsBrngProperties* table = __vtsGetBrngBaseOffset(brng_id, &row, &offset);
  const int32_t status = __vtsAllocateStream(copy, table, brng_id, row, offset);
  if (status < 0) return status;
  std::memcpy(static_cast<void*>(*copy), source, static_cast<size_t>(table[row].stateBytes));
  header_of(*copy).chunk_list = 0;
  return __vtsCopyChunks(*copy, source);
}

int32_t __vtsCopyStreamState(VtsStreamHandle destination, VtsStreamHandle source) {
  if (destination == source) return VTS_STATUS_OK;
  const VtsBrngProperties& from = record_of(source);
  const VtsBrngProperties& to = record_of(destination);
  // The record of WH counts four words of 16 bytes, and its state has 32 bytes.
  const int64_t counted = int64_t{from.wordBytes} * from.seedWords;
  const int64_t reached = std::min(from.stateBytes, to.stateBytes) - header_bytes;
  const auto bytes = static_cast<size_t>(std::min(counted, reached));
  if (from.initStream != to.initStream) {
    const int32_t status = try_copy(destination, to, source, bytes);
    if (status < 0) return status;
  }
  std::memcpy(&state_of<char>(destination), &state_of<char>(source), bytes);
  __vtsDeleteChunks(destination);
  return __vtsCopyChunks(destination, source);
}

int32_t __vtsLeapfrogStream(VtsStreamHandle stream, int32_t k, int32_t nstreams) {
  if (nstreams < 0) return VTS_STATUS_BAD_NSTREAMS;
  const auto index = static_cast<uint32_t>(k);
  return record_of(stream).initStream(VTS_INIT_LEAPFROG, stream, nstreams, &index);
}

int32_t __vtsSkipAheadStream(VtsStreamHandle stream, int64_t nskip) {
  uint32_t words[2];
  std::memcpy(words, &nskip, sizeof(words));
  return record_of(stream).initStream(VTS_INIT_SKIPAHEAD, stream, 2, words);
}

int32_t __vtsGetStreamStateBrng(VtsStreamHandle stream) { return header_of(stream).brng_id; }

}  // extern "C"
