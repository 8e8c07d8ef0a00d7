// SPDX-License-Identifier: Apache-2.0
// The process-wide table of blobs that streams share, under a spin lock.
#include <algorithm>
#include <atomic>
#include <cstring>

#include "random/core/chunks.hpp"
#include "tmk/abi/serv.h"

extern "C" {
VtsGlobRODataEntry _GlobRODataTable[128];
uint32_t _GlobRODataTableCount;
uint32_t _VTS_GLOB_RO_DATA_TABLE_LOCKER_1;
}

namespace {
using namespace tmk::rng;

constexpr uint32_t capacity = 128;
constexpr uint32_t chunk_capacity = 127;  // chunks leave one entry to direct creation
constexpr uint32_t unknown_bytes = UINT32_MAX;

// Sizes of the shared blobs, entry by entry: the entries' layout has no room for them.
uint32_t blob_bytes[capacity];

class table_lock {
 public:
  table_lock() {
    for (uint32_t free = 0; !word_.compare_exchange_weak(free, 1, std::memory_order_acquire);) free = 0;
  }
  ~table_lock() { word_.store(0, std::memory_order_release); }
  table_lock(const table_lock&) = delete;
  table_lock& operator=(const table_lock&) = delete;

 private:
  std::atomic_ref<uint32_t> word_{_VTS_GLOB_RO_DATA_TABLE_LOCKER_1};
};

bool names_blob(const uint32_t* key) {
  return key != nullptr && std::any_of(key, key + 4, [](uint32_t word) { return word != 0; });
}

bool is_under(const VtsGlobRODataEntry& entry, const uint32_t* key) {
  return std::equal(key, key + 4, entry.key);
}

// The functions from here to the next extern "C" need the lock held.
VtsGlobRODataEntry* find(const uint32_t* key) {
  auto* end = _GlobRODataTable + _GlobRODataTableCount;
  auto* entry = std::find_if(_GlobRODataTable, end, [key](const auto& e) { return is_under(e, key); });
  return entry == end ? nullptr : entry;
}

VtsGlobRODataEntry* create(const uint32_t* key, void* data, uint32_t bytes) {
  VtsGlobRODataEntry& entry = _GlobRODataTable[_GlobRODataTableCount];
  entry = {{}, 1, data};
  std::memcpy(entry.key, key, sizeof(entry.key));
  blob_bytes[_GlobRODataTableCount++] = bytes;
  return &entry;
}

void reference(VtsGlobRODataEntry& entry, VtsChunk& chunk) {
  ++entry.refCount;
  chunk.data = entry.data;
}

// The last entry moves into the gap.
void remove(uint32_t index) {
  tmk_serv_deallocate(_GlobRODataTable[index].data);
  const uint32_t last = --_GlobRODataTableCount;
  if (index == last) return;
  _GlobRODataTable[index] = _GlobRODataTable[last];
  blob_bytes[index] = blob_bytes[last];
}

}  // namespace

extern "C" {

int32_t __vtsCreateGlobRODataTableEntry(VtsGlobRODataEntry** entry, const uint32_t* key, void* data) {
  const table_lock lock;
  if (_GlobRODataTableCount >= capacity) return VTS_STATUS_RO_TABLE_FULL;
  *entry = create(key, data, unknown_bytes);
  return VTS_STATUS_OK;
}

int32_t __vtsFindGlobRODataTableEntry(VtsGlobRODataEntry** entry, const uint32_t* key) {
  if (!names_blob(key)) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
  const table_lock lock;
  VtsGlobRODataEntry* found = find(key);
  if (found == nullptr) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
  *entry = found;
  return VTS_STATUS_OK;
}

int32_t __vtsRegisterGlobRODataReference(VtsChunk* chunk, const uint32_t* key) {
  if (!names_blob(key)) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
  const table_lock lock;
  VtsGlobRODataEntry* found = find(key);
  if (found == nullptr) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
  reference(*found, *chunk);
  return VTS_STATUS_OK;
}

int32_t __vtsUnregisterGlobRODataReference(const uint32_t* key) {
  if (!names_blob(key)) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
  const table_lock lock;
  int32_t status = VTS_STATUS_RO_ENTRY_NOT_FOUND;
  // Entries created twice under one key are removed together.
  for (uint32_t i = 0; i < _GlobRODataTableCount; ++i) {
    if (!is_under(_GlobRODataTable[i], key)) continue;
    status = VTS_STATUS_OK;
    if (--_GlobRODataTable[i].refCount == 0) remove(i);
  }
  return status;
}

int32_t __vtsGenerateNewGlobalRODataTableEntryId(uint32_t* key, int32_t tag) {
  const int64_t tail = tag;
  std::memcpy(key + 2, &tail, sizeof(tail));
  VtsGlobRODataEntry* entry;
  do {
    const uint64_t counter = __builtin_ia32_rdtsc();
    std::memcpy(key, &counter, sizeof(counter));
  } while (__vtsFindGlobRODataTableEntry(&entry, key) == VTS_STATUS_OK);
  return VTS_STATUS_OK;
}

}  // extern "C"

void tmk::rng::share_blob(VtsChunk& chunk) {
  if (!names_blob(chunk.key)) return;
  const table_lock lock;
  if (VtsGlobRODataEntry* found = find(chunk.key))
    reference(*found, chunk);
  else if (_GlobRODataTableCount < chunk_capacity)
    create(chunk.key, chunk.data, chunk.dataBytes);
  else
    std::memset(chunk.key, 0, sizeof(chunk.key));
}

bool tmk::rng::may_share(const uint32_t* key, uint32_t bytes) {
  if (!names_blob(key)) return true;
  const table_lock lock;
  const VtsGlobRODataEntry* found = find(key);
  return found == nullptr || blob_bytes[found - _GlobRODataTable] == bytes;
}
