// SPDX-License-Identifier: Apache-2.0
// Identifiers, the registry, and what streams do with their blocks.
#include "random/streams.hpp"

namespace {

TEST(registry, identifiers_mean_a_table_a_row_and_a_set) {
  const struct {
    int32_t id, row, offset;
    const VtsBrngProperties* table;
    int32_t validity;
  } cases[] = {
      {VTS_BRNG_WH + 272, 4, 272, __RegBrngsNew, 0},
      {VTS_BRNG_WH + 273, 4, 273, __RegBrngsNew, VTS_STATUS_INVALID_BRNG},
      {VTS_BRNG_MT2203 + 6023, 8, 6023, __RegBrngsNew, 0},
      {VTS_BRNG_SABSTRACT, 11, 0, __RegBrngsNew, 0},
      {0xFFFFF, 0xFFFFF, 0, __RegBrngs, VTS_STATUS_INVALID_BRNG},
      {0x7FFFFFFF, 2046, 0xFFFFF, __RegBrngsNew, VTS_STATUS_INVALID_BRNG},
      {3, 3, 0, __RegBrngs, 0},
      {4, 4, 0, __RegBrngs, 0},
      {6, 4, 2, __RegBrngs, 0},
      {276, 4, 272, __RegBrngs, 0},
      {277, 277, 0, __RegBrngs, 0},
      {280, 280, 0, __RegBrngs, 0},
      {281, 281, 0, __RegBrngs, VTS_STATUS_INVALID_BRNG},
      {-1, -1, 0, __RegBrngs, 0},
  };
  for (const auto& c : cases) {
    int32_t row, offset;
    EXPECT_EQ(__vtsGetBrngBaseOffset(c.id, &row, &offset), c.table) << c.id;
    EXPECT_EQ(row, c.row) << c.id;
    EXPECT_EQ(offset, c.offset) << c.id;
    EXPECT_EQ(__vtsIsBrngValid(c.table, row, offset), c.validity) << c.id;
  }
}

TEST(registry, legacy_rows_are_the_records_of_the_current_ones) {
  const struct {
    int32_t from, to, current;
  } cases[] = {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}, {4, 276, 4}, {277, 277, 5}, {278, 278, 6}};
  for (const auto& c : cases)
    for (int32_t row = c.from; row <= c.to; ++row)
      EXPECT_EQ(std::memcmp(&__RegBrngs[row], &__RegBrngsNew[c.current], sizeof(VtsBrngProperties)), 0)
          << row;
  EXPECT_EQ(__RegBrngs[279].stateBytes, 0);
  EXPECT_EQ(__RegBrngs[280].initStream, nullptr);
}

TEST(registry, registration_checks_in_order) {
  VtsBrngProperties record = {-1, 0, 0, 5, 0, nullptr, nullptr, nullptr, nullptr};
  const VtsBrngProperties good = counting_record();
  const int32_t rows = __vtsGetNumRegBrngs();
  EXPECT_EQ(__vtsRegisterBrng(&record), VTS_STATUS_BAD_STATE_SIZE);
  record.stateBytes = 0;
  EXPECT_EQ(__vtsRegisterBrng(&record), VTS_STATUS_BAD_WORD_SIZE);
  record.wordBytes = 8;
  EXPECT_EQ(__vtsRegisterBrng(&record), VTS_STATUS_BAD_SEED_COUNT);
  record.seedWords = 1;
  EXPECT_EQ(__vtsRegisterBrng(&record), VTS_STATUS_BAD_BIT_COUNT);
  record.bitsPerWord = 1;
  record.initStream = good.initStream, record.sBrng = good.sBrng, record.dBrng = good.dBrng;
  EXPECT_EQ(__vtsRegisterBrng(&record), VTS_STATUS_NULL_CALLBACK);
  EXPECT_EQ(__vtsGetNumRegBrngs(), rows);
}

TEST(stream, creation_refuses_what_has_no_record) {
  const int32_t ids[] = {
      VTS_BRNG_IABSTRACT, VTS_BRNG_DABSTRACT, VTS_BRNG_SABSTRACT, VTS_BRNG_WH + 273, -1, 279,
      0x7FF00000,         INT32_MIN};
  for (const int32_t id : ids) {
    VtsStreamHandle stream = nullptr;
    EXPECT_EQ(__vtsNewStreamEx(&stream, id, 0, nullptr), VTS_STATUS_INVALID_BRNG) << id;
    EXPECT_EQ(stream, nullptr) << id;
  }
}

TEST(stream, a_refused_seed_leaves_a_stream_to_delete) {
  VtsStreamHandle stream = nullptr;
  const uint32_t refused = 13;
  EXPECT_EQ(__vtsNewStreamEx(&stream, counting_id(), 1, &refused), VTS_STATUS_BAD_ARGUMENT);
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(__vtsGetStreamStateBrng(stream), counting_id());
  EXPECT_EQ(__vtsDeleteStream(&stream), 0);
  EXPECT_EQ(stream, nullptr);
}

TEST(stream, jumps_ask_the_generator) {
  owned_stream stream(counting_id(), {7});
  const auto& s = tmk::rng::state_of<counting_state>(stream);
  EXPECT_EQ(__vtsLeapfrogStream(stream, 3, 0), 0);
  EXPECT_EQ(s.method, VTS_INIT_LEAPFROG);
  EXPECT_EQ(s.n, 0);
  EXPECT_EQ(s.params[0], 3u);
  EXPECT_EQ(__vtsLeapfrogStream(stream, 4, -1), VTS_STATUS_BAD_NSTREAMS);
  EXPECT_EQ(s.params[0], 3u);
  EXPECT_EQ(__vtsSkipAheadStream(stream, 0x123456789AB), 0);
  EXPECT_EQ(s.method, VTS_INIT_SKIPAHEAD);
  EXPECT_EQ(s.n, 2);
  EXPECT_EQ(s.params[0], 0x456789ABu);
  EXPECT_EQ(s.params[1], 0x123u);
}

TEST(stream, copies_go_on_alike_and_apart) {
  owned_stream stream(VTS_BRNG_MCG59, {77}), copy;
  draw_bytes(stream, 5);
  __vtsAddChunk(stream, 50, nullptr, new_blob(3, 9), 3);
  ASSERT_EQ(__vtsCopyStream(&copy.handle, stream), 0);
  EXPECT_EQ(draw_bytes(copy, 9), draw_bytes(stream, 9));
  ASSERT_NE(__vtsSearchChunk(copy, 50), __vtsSearchChunk(stream, 50));
  EXPECT_EQ(std::memcmp(__vtsSearchChunk(copy, 50), __vtsSearchChunk(stream, 50), 3), 0);
}

TEST(stream, a_copied_state_leaves_the_multiplier) {
  owned_stream source(VTS_BRNG_MCG59, {77}), destination(VTS_BRNG_MCG59, {1}), whole(VTS_BRNG_MCG59, {77});
  ASSERT_EQ(__vtsLeapfrogStream(source, 0, 3), 0);
  __vtsAddChunk(destination, 51, nullptr, new_blob(8, 0), 8);
  __vtsAddChunk(source, 50, nullptr, new_blob(8, 0), 8);
  EXPECT_EQ(__vtsCopyStreamState(source, source), 0);
  EXPECT_EQ(__vtsGetNumChunks(source), 1);
  EXPECT_EQ(__vtsCopyStreamState(destination, source), 0);
  EXPECT_EQ(__vtsSearchChunk(destination, 51), nullptr);
  EXPECT_NE(__vtsSearchChunk(destination, 50), nullptr);
  EXPECT_EQ(draw_bytes(destination, 4), draw_bytes(whole, 4));
}

// By the record's count WH's copy is 64 bytes of a state of 32, and MT19937's 2500 do not fit MCG31M1.
TEST(stream, a_copied_state_ends_with_the_smaller_block) {
  owned_stream source(VTS_BRNG_WH + 5, {1, 2, 3, 4}), destination(VTS_BRNG_WH + 5, {5, 6, 7, 8});
  draw_bytes(source, 3);
  EXPECT_EQ(__vtsCopyStreamState(destination, source), 0);
  EXPECT_EQ(draw_bytes(destination, 4), draw_bytes(source, 4));
  owned_stream large(VTS_BRNG_MT19937, {1}), small(VTS_BRNG_MCG31M1, {1});
  EXPECT_EQ(__vtsCopyStreamState(small, large), 0);
  EXPECT_EQ(__vtsGetStreamStateBrng(small), VTS_BRNG_MCG31M1);
}

// Words of one family as positions of another lead a draw out of its arrays, or round them for ever.
TEST(stream, a_copied_state_of_another_family_is_sound_or_refused) {
  std::vector<int32_t> families;
  for (int32_t id = VTS_BRNG_MCG31M1; id <= VTS_BRNG_PHILOX4X32X10; id += 0x100000)
    if (id < VTS_BRNG_IABSTRACT || id > VTS_BRNG_SABSTRACT) families.push_back(id);
  std::erase_if(families, [](int32_t id) {
    return id == VTS_BRNG_NONDETERM || (id == VTS_BRNG_ARS5 && !__vtsCPUisAES());
  });
  int refused = 0;
  for (const int32_t from : families)
    for (const int32_t to : families) {
      const owned_stream source(from, {3, 1, 4, 1}), destination(to, {5}), untouched(to, {5});
      draw_bytes(source, 5);
      __vtsAddChunk(destination, 50, nullptr, new_blob(8, 0), 8);
      const int32_t status = __vtsCopyStreamState(destination, source);
      if (status == VTS_STATUS_BAD_ARGUMENT) {
        ++refused;
        EXPECT_NE(from, to);
        EXPECT_EQ(draw_bytes(destination, 700), draw_bytes(untouched, 700)) << std::hex << from << ' ' << to;
        EXPECT_EQ(__vtsGetNumChunks(destination), 1);
      } else {
        EXPECT_EQ(status, 0) << std::hex << from << ' ' << to;
        draw_bytes(destination, 700);
      }
    }
  EXPECT_GT(refused, 0);

  uint32_t array[4] = {};
  owned_stream abstract;
  ASSERT_EQ(__vtsiNewAbstractStream(&abstract.handle, 4, array,
                                    [](VtsStreamHandle, int32_t*, uint32_t*, const int32_t* least,
                                       const int32_t*, const int32_t*) -> int32_t { return *least; }),
            0);
  EXPECT_EQ(__vtsCopyStreamState(abstract, owned_stream(VTS_BRNG_MT19937, {1})), VTS_STATUS_BAD_ARGUMENT);
  EXPECT_EQ(draw_bytes(abstract, 1), std::vector<unsigned char>(4));
}

}  // namespace
