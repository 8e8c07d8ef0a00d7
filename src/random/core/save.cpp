// SPDX-License-Identifier: Apache-2.0
// Streams to files and memory blocks.
#include <cstring>

#include "random/core/chunks.hpp"
#include "random/core/image.hpp"
#include "random/core/registry.hpp"
#include "tmk/abi/serv.h"

namespace {
using namespace tmk::rng;

using sink = int32_t (*)(const void* data, size_t size, size_t count, void* target);

// Callers learn of a failing blob only when it is the last one.
int32_t save(VtsStreamHandle stream, sink write, void* target) {
  const auto state_bytes = static_cast<uint32_t>(record_of(stream).stateBytes) - sizeof(stream_header);
  const image_header header = {image_magic | image_version,
                               sizeof(image_header),
                               0,
                               static_cast<uint32_t>(state_bytes),
                               static_cast<uint16_t>(__vtsGetNumChunks(stream)),
                               0,
                               header_of(stream).brng_id};
  int32_t status = write(&header, sizeof header, 1, target);
  const int32_t state_status = write(&state_of<char>(stream), state_bytes, 1, target);
  if (status >= 0) status = state_status;

  for (const VtsChunk* chunk = first_chunk(stream); chunk != nullptr; chunk = chunk->next) {
    image_chunk head = {chunk->chunkId, {}, chunk->dataBytes};
    std::memcpy(head.key, chunk->key, sizeof head.key);
    write(&head, sizeof head, 1, target);
    status = write(chunk->data, chunk->dataBytes, 1, target);
  }
  return status;
}

}  // namespace

tmk::rng::file_name::file_name(const char* name, int32_t length) : text_(name) {
  if (length < 0) return;
  const auto bytes = static_cast<size_t>(length);
  text_ = copy_ = static_cast<char*>(tmk_serv_allocate(bytes + 1, stream_alignment));
  if (copy_ == nullptr) return;
  std::memcpy(copy_, name, bytes);
  copy_[bytes] = '\0';
}
tmk::rng::file_name::~file_name() { tmk_serv_deallocate(copy_); }

extern "C" {

int32_t __vtsSaveToFile(const void* data, size_t size, size_t count, void* file) {
  if (size == 0) return VTS_STATUS_OK;  // an empty blob has no items to count
  return std::fwrite(data, size, count, static_cast<FILE*>(file)) == count ? VTS_STATUS_OK
                                                                           : VTS_STATUS_FILE_WRITE;
}

int32_t __vtsSaveToMemory(const void* data, size_t size, size_t count, void* cursor) {
  char*& position = *static_cast<char**>(cursor);
  if (size * count > 0) std::memcpy(position, data, size * count);
  position += size * count;
  return VTS_STATUS_OK;
}

int32_t __vtsGetStreamSize(VtsStreamHandle stream) {
  size_t bytes =
      sizeof(image_header) - sizeof(stream_header) + static_cast<size_t>(record_of(stream).stateBytes);
  for (const VtsChunk* chunk = first_chunk(stream); chunk != nullptr; chunk = chunk->next)
    bytes += sizeof(image_chunk) + chunk->dataBytes;
  return static_cast<int32_t>(bytes);
}

int32_t __vtsSaveStreamF(VtsStreamHandle stream, const char* fileName, int32_t nameLength) {
  const file_name name(fileName, nameLength);
  if (name.text() == nullptr) return VTS_STATUS_NO_MEMORY;
  FILE* file = std::fopen(name.text(), "wb");
  if (file == nullptr) return VTS_STATUS_FILE_OPEN;
  const int32_t status = save(stream, __vtsSaveToFile, file);
  return std::fclose(file) == 0 ? status : VTS_STATUS_FILE_CLOSE;
}

int32_t __vtsSaveStreamM(VtsStreamHandle stream, void* block) {
  return save(stream, __vtsSaveToMemory, &block);
}

}  // extern "C"
