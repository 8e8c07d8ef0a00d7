// SPDX-License-Identifier: Apache-2.0
// Streams from files and memory blocks. Nothing that is read is trusted before its size is checked.
#include <sys/stat.h>

#include <cstring>
#include <limits>

#include "random/core/chunk_kinds.hpp"
#include "random/core/chunks.hpp"
#include "random/core/image.hpp"
#include "random/core/registry.hpp"
#include "tmk/abi/serv.h"

namespace {
using namespace tmk::rng;

constexpr uint64_t unbounded = std::numeric_limits<uint64_t>::max();

enum medium { file_medium, memory_medium };

struct image_source {
  medium kind;
  uint64_t left;  // bytes up to the end, where that is known
  FILE* file;
  const char* position;
};

// The older header, 16 bytes with the magic word.
struct older_header {
  uint16_t ignored, state_bytes, chunk_count, filler;
  int32_t brng_id;
};
static_assert(sizeof(older_header) == 12);

}  // namespace

extern "C" {

int32_t __vtsLoadFromFile(void* to, size_t size, size_t count, image_source* source) {
  return std::fread(to, size, count, source->file) == count ? VTS_STATUS_OK : VTS_STATUS_FILE_READ;
}
int32_t __vtsLoadFromMemory(void* to, size_t size, size_t count, image_source* source) {
  std::memcpy(to, source->position, size * count);
  source->position += size * count;
  return VTS_STATUS_OK;
}
int32_t __vtsSkipLoadingFromFile(size_t bytes, image_source* source) {
  return std::fseek(source->file, static_cast<long>(bytes), SEEK_CUR) == 0 ? VTS_STATUS_OK
                                                                           : VTS_STATUS_FILE_READ;
}
int32_t __vtsSkipLoadingFromMemory(size_t bytes, image_source* source) {
  source->position += bytes;
  return VTS_STATUS_OK;
}

}  // extern "C"

namespace {

constexpr struct {
  int32_t (*load)(void* to, size_t size, size_t count, image_source* source);
  int32_t (*skip)(size_t bytes, image_source* source);
} LoadDispatch[] = {{__vtsLoadFromFile, __vtsSkipLoadingFromFile},
                    {__vtsLoadFromMemory, __vtsSkipLoadingFromMemory}};

bool take(image_source& source, uint64_t bytes) {
  if (bytes > source.left) return false;
  if (source.left != unbounded) source.left -= bytes;
  return true;
}

int32_t load(image_source& source, void* to, size_t bytes) {
  if (!take(source, bytes)) return VTS_STATUS_FILE_READ;
  return bytes == 0 ? VTS_STATUS_OK : LoadDispatch[source.kind].load(to, bytes, 1, &source);
}

int32_t skip(image_source& source, size_t bytes) {
  if (!take(source, bytes)) return VTS_STATUS_FILE_READ;
  return LoadDispatch[source.kind].skip(bytes, &source);
}

// Reads a header of either form into the present one.
int32_t load_header(image_source& source, image_header& header) {
  int32_t status = load(source, &header.magic, sizeof header.magic);
  if (status < 0) return status;
  if ((header.magic & 0xFF) == image_version)
    return load(source, &header.header_bytes, sizeof header - sizeof header.magic);

  older_header older;
  status = load(source, &older, sizeof older);
  if (status < 0) return status;
  header = {header.magic, sizeof header, 0, older.state_bytes, older.chunk_count, 0, older.brng_id};
  return VTS_STATUS_OK;
}

// The version is in the first byte or in the last.
int32_t check_header(const image_header& header, const VtsBrngProperties* record) {
  const uint32_t first = header.magic & 0xFF, last = header.magic >> 24;
  const bool marked =
      (header.magic & 0xFFFFFF00) == image_magic || (header.magic & 0x00FFFFFF) == image_magic >> 8;
  if (!marked) return VTS_STATUS_BAD_IMAGE;
  if (first > image_version && last > image_version) return VTS_STATUS_BAD_IMAGE_VERSION;
  const bool fits =
      record != nullptr && header.header_bytes >= sizeof header &&
      uint64_t{header.state_bytes} + sizeof(stream_header) == static_cast<uint64_t>(record->stateBytes);
  return fits ? VTS_STATUS_OK : VTS_STATUS_BAD_IMAGE;
}

int32_t check_processor(int32_t brng_id) {
  if (brng_id == VTS_BRNG_NONDETERM && !__vtsCPUisRDRAND()) return VTS_STATUS_NO_RDRAND;
  if (brng_id == VTS_BRNG_ARS5 && !__vtsCPUisAES()) return VTS_STATUS_NO_AES;
  return VTS_STATUS_OK;
}

// Versions 1 and 2 have a key, version 0 has none.
int32_t load_chunk_head(image_source& source, uint32_t version, image_chunk& head) {
  int32_t status = load(source, &head.chunk_id, sizeof head.chunk_id);
  if (status < 0) return status;
  if (version > image_version) return VTS_STATUS_FILE_READ;
  if (version > 0) status = load(source, head.key, sizeof head.key);
  return status < 0 ? status : load(source, &head.data_bytes, sizeof head.data_bytes);
}

int32_t load_chunk(image_source& source, uint32_t version, VtsStreamHandle stream) {
  image_chunk head = {};
  int32_t status = load_chunk_head(source, version, head);
  if (status < 0) return status;
  if (head.data_bytes > source.left) return VTS_STATUS_FILE_READ;
  // The size of a shared blob is what its users rely on: one of another size stays private, and so do the
  // library's own chunks, which a draw changes.
  if (bytes_of_kind(head.chunk_id) != 0 || !may_share(head.key, head.data_bytes))
    std::memset(head.key, 0, sizeof head.key);

  void* blob = tmk_serv_allocate(head.data_bytes, stream_alignment);
  if (blob == nullptr) return VTS_STATUS_NO_MEMORY;
  status = load(source, blob, head.data_bytes);
  if (status >= 0 && !chunk_is_sound(head.chunk_id, blob, head.data_bytes)) status = VTS_STATUS_BAD_IMAGE;
  if (status >= 0) status = __vtsAddChunk(stream, head.chunk_id, head.key, blob, head.data_bytes);
  const bool taken = status >= 0 && first_chunk(stream)->data == blob;
  if (!taken) tmk_serv_deallocate(blob);
  return status;
}

}  // namespace

// Reads the chunks after a state, unless *status is already a failure.
static void __vtsReadChunks(int32_t* status, image_source* source, const image_header* header,
                            VtsStreamHandle stream) {
  for (uint32_t i = 0; i < header->chunk_count && *status >= 0; ++i)
    *status = load_chunk(*source, header->magic & 0xFF, stream);
}

namespace {

int32_t load_stream(VtsStreamHandle* stream, image_source& source, bool addresses_allowed) {
  *stream = nullptr;
  image_header header;
  int32_t status = load_header(source, header);
  if (status < 0) return status;
  const VtsBrngProperties* record = find_record(header.brng_id);
  status = check_header(header, record);
  if (status < 0) return status;
  if (!addresses_allowed && state_holds_addresses(*record)) return VTS_STATUS_BAD_IMAGE;
  // A longer header is one that a later program wrote.
  status = skip(source, header.header_bytes - sizeof header);
  if (status < 0) return status;

  int32_t row, offset;
  const VtsBrngProperties* table = __vtsGetBrngBaseOffset(header.brng_id, &row, &offset);
  status = __vtsAllocateStream(stream, table, header.brng_id, row, offset);
  if (status < 0) return status;
  status = load(source, &state_of<char>(*stream), header.state_bytes);
  if (status >= 0 && !state_is_sound(*stream)) status = VTS_STATUS_BAD_IMAGE;
  if (status >= 0) status = check_processor(header.brng_id);
  __vtsReadChunks(&status, &source, &header, *stream);
  if (status < 0) __vtsDeleteStream(stream);
  return status;
}

uint64_t bytes_of(FILE* file) {
  struct stat about;
  return fstat(fileno(file), &about) == 0 && S_ISREG(about.st_mode) ? static_cast<uint64_t>(about.st_size)
                                                                    : unbounded;
}

}  // namespace

extern "C" {

int32_t __vtsLoadStreamF(VtsStreamHandle* stream, const char* fileName, int32_t nameLength) {
  *stream = nullptr;
  const file_name name(fileName, nameLength);
  if (name.text() == nullptr) return VTS_STATUS_NO_MEMORY;
  FILE* file = std::fopen(name.text(), "rb");
  if (file == nullptr) return VTS_STATUS_FILE_OPEN;
  image_source source = {file_medium, bytes_of(file), file, nullptr};
  int32_t status = load_stream(stream, source, true);
  if (std::fclose(file) != 0) status = VTS_STATUS_FILE_CLOSE;
  if (status < 0) __vtsDeleteStream(stream);
  return status;
}

int32_t __vtsLoadStreamM(VtsStreamHandle* stream, const void* block) {
  image_source source = {memory_medium, unbounded, nullptr, static_cast<const char*>(block)};
  return load_stream(stream, source, true);
}

int32_t tmk_vts_load_stream_bounded(VtsStreamHandle* stream, const void* block, uint64_t bytes) {
  image_source source = {memory_medium, bytes, nullptr, static_cast<const char*>(block)};
  return load_stream(stream, source, false);
}

}  // extern "C"
