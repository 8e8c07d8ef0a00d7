// SPDX-License-Identifier: Apache-2.0
// Chunks: blobs that distributions and generators attach to a stream.
#include "random/core/chunks.hpp"

#include <cstring>

#include "tmk/abi/serv.h"

namespace {
using namespace tmk::rng;

void release(VtsChunk* chunk) {
  VtsGlobRODataEntry* entry;
  if (__vtsFindGlobRODataTableEntry(&entry, chunk->key) == VTS_STATUS_OK)
    __vtsUnregisterGlobRODataReference(chunk->key);
  else
    tmk_serv_deallocate(chunk->data);
  tmk_serv_deallocate(chunk);
}

// The blob that a copy of the chunk starts from: the shared one, or a copy; null without memory.
void* blob_of_copy(const VtsChunk& chunk) {
  VtsGlobRODataEntry* entry;
  if (__vtsFindGlobRODataTableEntry(&entry, chunk.key) == VTS_STATUS_OK) return chunk.data;
  void* blob = tmk_serv_allocate(chunk.dataBytes, stream_alignment);
  if (blob != nullptr && chunk.dataBytes > 0) std::memcpy(blob, chunk.data, chunk.dataBytes);
  return blob;
}

}  // namespace

extern "C" {

int32_t __vtsAddChunk(VtsStreamHandle stream, uint32_t chunkId, const uint32_t* key, void* data,
                      uint32_t dataBytes) {
  auto* chunk = static_cast<VtsChunk*>(tmk_serv_allocate(sizeof(VtsChunk), stream_alignment));
  if (chunk == nullptr) return VTS_STATUS_NO_MEMORY;
  *chunk = {chunkId, dataBytes, data, first_chunk(stream), {}};
  if (key != nullptr) {
    std::memcpy(chunk->key, key, sizeof(chunk->key));
    share_blob(*chunk);
  }
  set_first_chunk(stream, chunk);
  return VTS_STATUS_OK;
}

void* __vtsSearchChunk(VtsStreamHandle stream, uint32_t chunkId) {
  for (VtsChunk* chunk = first_chunk(stream); chunk != nullptr; chunk = chunk->next)
    if (chunk->chunkId == chunkId) return chunk->data;
  return nullptr;
}

int32_t __vtsGetNumChunks(VtsStreamHandle stream) {
  int32_t count = 0;
  for (VtsChunk* chunk = first_chunk(stream); chunk != nullptr; chunk = chunk->next) ++count;
  return count;
}

int32_t __vtsCopyChunks(VtsStreamHandle destination, VtsStreamHandle source) {
  for (VtsChunk* chunk = first_chunk(source); chunk != nullptr; chunk = chunk->next) {
    void* blob = blob_of_copy(*chunk);
    const int32_t status =
        blob == nullptr && chunk->data != nullptr
            ? VTS_STATUS_NO_MEMORY
            : __vtsAddChunk(destination, chunk->chunkId, chunk->key, blob, chunk->dataBytes);
    if (status < 0) {
      if (blob != chunk->data) tmk_serv_deallocate(blob);
      __vtsDeleteChunks(destination);
      return status;
    }
  }
  return VTS_STATUS_OK;
}

int32_t __vtsDeleteChunks(VtsStreamHandle stream) {
  for (VtsChunk* chunk = first_chunk(stream); chunk != nullptr;) {
    VtsChunk* next = chunk->next;
    release(chunk);
    chunk = next;
  }
  set_first_chunk(stream, nullptr);
  return VTS_STATUS_OK;
}

int32_t __vtsDeleteChunksById(VtsStreamHandle stream, uint32_t chunkId) {
  VtsChunk* kept = nullptr;
  for (VtsChunk* chunk = first_chunk(stream); chunk != nullptr;) {
    VtsChunk* next = chunk->next;
    if (chunk->chunkId == chunkId) {
      release(chunk);
      if (kept != nullptr) kept->next = next;
    } else {
      kept = chunk;
    }
    chunk = next;
  }
  // The head becomes the last kept chunk, not the first: callers rely on it.
  set_first_chunk(stream, kept);
  return VTS_STATUS_OK;
}

}  // extern "C"
