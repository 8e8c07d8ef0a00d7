// SPDX-License-Identifier: Apache-2.0
// Blobs of streams and the table of those that are shared.
#include "random/core/chunks.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

#include "random/streams.hpp"

namespace {

using key_words = std::array<uint32_t, 4>;

std::vector<uint32_t> kinds(VtsStreamHandle stream) {
  std::vector<uint32_t> ids;
  for (const VtsChunk* chunk = tmk::rng::first_chunk(stream); chunk != nullptr; chunk = chunk->next)
    ids.push_back(chunk->chunkId);
  return ids;
}

void add(VtsStreamHandle stream, uint32_t id, const key_words& key = {}) {
  ASSERT_EQ(__vtsAddChunk(stream, id, key.data(), new_blob(16, static_cast<int>(id)), 16), 0);
}

uint32_t references(const key_words& key) {
  VtsGlobRODataEntry* entry;
  return __vtsFindGlobRODataTableEntry(&entry, key.data()) == 0 ? entry->refCount : 0;
}

TEST(chunks, the_newest_is_first_and_copies_reverse) {
  owned_stream stream(VTS_BRNG_MCG59, {1}), copy;
  for (uint32_t id = 50; id < 53; ++id) add(stream, id);
  EXPECT_EQ(kinds(stream), (std::vector<uint32_t>{52, 51, 50}));
  ASSERT_EQ(__vtsCopyStream(&copy.handle, stream), 0);
  EXPECT_EQ(kinds(copy), (std::vector<uint32_t>{50, 51, 52}));
  EXPECT_EQ(__vtsGetNumChunks(copy), 3);
  EXPECT_EQ(__vtsDeleteChunks(copy), 0);
  EXPECT_EQ(__vtsSearchChunk(copy, 50), nullptr);
}

// Several kept chunks: the list starts at the last of them, and the others are their finder's to free.
TEST(chunks, deletion_by_kind_keeps_the_last_other_chunk) {
  const struct {
    std::vector<uint32_t> added, left;
  } cases[] = {{{60}, {}},       {{60, 60}, {}},       {{50, 60}, {50}},
               {{60, 50}, {50}}, {{50, 60, 51}, {50}}, {{50, 51}, {50}}};
  for (const auto& c : cases) {
    owned_stream stream(VTS_BRNG_MCG59, {1});
    for (const uint32_t id : c.added) add(stream, id);
    VtsChunk* head = tmk::rng::first_chunk(stream);
    EXPECT_EQ(__vtsDeleteChunksById(stream, 60), 0);
    EXPECT_EQ(kinds(stream), c.left);
    if (c.added.back() != 60 && head != tmk::rng::first_chunk(stream)) {
      EXPECT_EQ(head->next, tmk::rng::first_chunk(stream));
      tmk_serv_deallocate(head->data);
      tmk_serv_deallocate(head);
    }
  }
}

TEST(shared_blobs, live_until_the_last_reference) {
  const key_words key = {1, 0, 0, 9}, other = {1, 0, 0, 8};
  const uint32_t before = _GlobRODataTableCount;
  {
    owned_stream first(VTS_BRNG_MCG59, {1}), second(VTS_BRNG_MCG59, {2}), copy;
    add(first, 50, key);
    add(first, 51, other);
    void* blob = __vtsSearchChunk(first, 50);
    void* unused = new_blob(16, 0);
    ASSERT_EQ(__vtsAddChunk(second, 52, key.data(), unused, 16), 0);
    tmk_serv_deallocate(unused);
    ASSERT_EQ(__vtsCopyStream(&copy.handle, second), 0);
    EXPECT_EQ(__vtsSearchChunk(copy, 52), blob);
    EXPECT_EQ(references(key), 3u);
    __vtsDeleteStream(&first.handle);
    EXPECT_EQ(references(key), 2u);
    EXPECT_EQ(references(other), 0u);
    EXPECT_EQ(*static_cast<unsigned char*>(__vtsSearchChunk(second, 52)), 50);
  }
  EXPECT_EQ(references(key), 0u);
  EXPECT_EQ(_GlobRODataTableCount, before);
}

TEST(shared_blobs, a_full_table_makes_chunks_private) {
  const uint32_t before = _GlobRODataTableCount;
  {
    owned_stream stream(VTS_BRNG_MCG59, {1});
    for (uint32_t i = before; i < 127; ++i) add(stream, 50, {i, 1, 1, 1});
    add(stream, 51, {127, 1, 1, 1});
    const VtsChunk& head = *tmk::rng::first_chunk(stream);
    EXPECT_TRUE(std::all_of(head.key, head.key + 4, [](uint32_t word) { return word == 0; }));
    EXPECT_EQ(_GlobRODataTableCount, 127u);

    VtsGlobRODataEntry* entry;
    const key_words last = {128, 1, 1, 1};
    EXPECT_EQ(__vtsCreateGlobRODataTableEntry(&entry, last.data(), nullptr), 0);
    EXPECT_EQ(__vtsCreateGlobRODataTableEntry(&entry, last.data(), nullptr), VTS_STATUS_RO_TABLE_FULL);
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(last.data()), 0);
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(last.data()), VTS_STATUS_RO_ENTRY_NOT_FOUND);
  }
  EXPECT_EQ(_GlobRODataTableCount, before);
}

TEST(shared_blobs, keys_without_a_word_name_nothing) {
  VtsGlobRODataEntry* entry;
  const key_words none = {};
  _VTS_GLOB_RO_DATA_TABLE_LOCKER_1 = 1;  // these must not wait for the lock
  EXPECT_EQ(__vtsFindGlobRODataTableEntry(&entry, nullptr), VTS_STATUS_RO_ENTRY_NOT_FOUND);
  EXPECT_EQ(__vtsFindGlobRODataTableEntry(&entry, none.data()), VTS_STATUS_RO_ENTRY_NOT_FOUND);
  _VTS_GLOB_RO_DATA_TABLE_LOCKER_1 = 0;
  key_words key;
  EXPECT_EQ(__vtsGenerateNewGlobalRODataTableEntryId(key.data(), -2), 0);
  EXPECT_NE(key[0] | key[1], 0u);
  EXPECT_EQ(key[2], 0xFFFFFFFEu);
  EXPECT_EQ(key[3], 0xFFFFFFFFu);
}

// For a build under the thread sanitizer, too: the threads meet in the table alone.
TEST(shared_blobs, threads_share_and_let_go) {
  constexpr int rounds = 20000;
  std::atomic<int> wrong = 0;
  const auto work = [&](uint32_t start) {
    for (int round = 0; round < rounds; ++round) {
      const uint32_t id = 50 + (start + static_cast<uint32_t>(round)) % 3;
      const key_words key = {id, 7, 7, 7};
      VtsStreamHandle stream, copy;
      const int32_t row = 3;
      if (__vtsAllocateStream(&stream, __RegBrngsNew, VTS_BRNG_MCG59, row, 0) != 0) ++wrong;
      std::memset(&tmk::rng::state_of<char>(stream), 0, 16);
      void* blob = new_blob(64, static_cast<int>(id));
      if (__vtsAddChunk(stream, id, key.data(), blob, 64) != 0) ++wrong;
      if (__vtsSearchChunk(stream, id) != blob) tmk_serv_deallocate(blob);
      if (__vtsCopyStream(&copy, stream) != 0) ++wrong;
      if (__vtsSearchChunk(stream, id) != __vtsSearchChunk(copy, id)) ++wrong;
      __vtsDeleteStream(&stream);
      if (static_cast<unsigned char*>(__vtsSearchChunk(copy, id))[63] != id) ++wrong;
      __vtsDeleteStream(&copy);
    }
  };
  const uint32_t before = _GlobRODataTableCount;
  std::thread other(work, 0);
  work(1);
  other.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(_GlobRODataTableCount, before);
}

}  // namespace
