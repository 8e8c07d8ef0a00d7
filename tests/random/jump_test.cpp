// SPDX-License-Identifier: Apache-2.0
// Skip-ahead of every generator that has it, and the statuses of those that have not.
#include "random/core/jump.hpp"

#include <cstring>

#include "random/plain_generators.hpp"

namespace {

constexpr int32_t with_jumps[] = {VTS_BRNG_MCG31M1, VTS_BRNG_MCG59, VTS_BRNG_WH + 3, VTS_BRNG_MT19937,
                                  VTS_BRNG_SFMT19937};

TEST(skip_ahead, equals_generation) {
  // On both sides of where methods change, of blocks and of lanes.
  constexpr int64_t counts[] = {0,     1,     2,     3,     7,        624,      19936,
                                19967, 19968, 19971, 65535, 0x1FFFFF, 0x200000, 0x200003};
  on_every_tier([&] {
    for (const int32_t id : with_jumps) {
      const owned_stream plain(id, {5, 6, 7, 8});
      std::vector<uint32_t> sequence = draw_words(plain, 0x200000 + 1000);
      const size_t per_element = sequence.size() / (0x200000 + 1000);
      for (const int64_t count : counts)
        for (const int32_t before : {0, 5, 623}) {
          const owned_stream stream(id, {5, 6, 7, 8});
          if (before != 0) draw_words(stream, before);
          ASSERT_EQ(__vtsSkipAheadStream(stream, count), 0);
          const auto got = draw_words(stream, 300);
          const auto* wanted = sequence.data() + static_cast<size_t>(count + before) * per_element;
          ASSERT_TRUE(std::equal(got.begin(), got.end(), wanted)) << std::hex << id << ' ' << count;
        }
    }
  });
}

// Where a polynomial begins to take less time than the words themselves.
TEST(skip_ahead, equals_generation_where_methods_change) {
  on_every_tier([&] {
    for (const auto& [id, change] :
         {std::pair(VTS_BRNG_MT19937 + 0, 10'000'000), std::pair(VTS_BRNG_SFMT19937 + 0, 14'000'000)})
      for (const int32_t count : {change - 1, change, change + 5}) {
        const owned_stream stream(id, {5}), plain(id, {5});
        draw_words(stream, 3);
        ASSERT_EQ(__vtsSkipAheadStream(stream, count), 0);
        std::vector<uint32_t> words(1 << 16);
        for (int32_t part, left = count + 3; left > 0; left -= part) {
          part = std::min<int32_t>(left, 1 << 16);
          _vtsiRngUniformBits(0, plain, part, words.data());
        }
        ASSERT_EQ(draw_words(stream, 300), draw_words(plain, 300)) << std::hex << id << ' ' << count;
      }
  });
}

// A register of five bits that steps by x, modulo the primitive x^5 + x^2 + 1: both methods multiply by x^n.
TEST(skip_ahead, both_methods_evaluate_the_polynomial) {
  constexpr int32_t exponents[] = {0, 2, 5};
  static constexpr auto at = [](VtsStreamHandle block) -> uint32_t& {
    return tmk::rng::state_of<uint32_t>(block);
  };
  const tmk::rng::zero_state zero = [](VtsStreamHandle block) { at(block) = 0; };
  const tmk::rng::combine_states add = [](VtsStreamHandle to, VtsStreamHandle from, int32_t) {
    at(to) ^= at(from);
  };
  const tmk::rng::combine_states copy = [](VtsStreamHandle to, VtsStreamHandle from, int32_t) {
    at(to) = at(from);
  };
  const tmk::rng::step_state step = [](VtsStreamHandle block) {
    at(block) = at(block) << 1 ^ (at(block) & 16 ? 0b100101 : 0);
  };
  const tmk::rng::absorb_skip none = [](VtsStreamHandle, uint64_t*, int32_t*) -> int32_t { return 1; };
  constexpr auto bytes = static_cast<int32_t>(sizeof(tmk::rng::stream_header) + sizeof(uint32_t));
  for (const auto method : {__vts_SkipAheadHorner, __vts_SkipAheadSWin})
    for (const uint64_t n : {uint64_t{0}, uint64_t{1}, uint64_t{6}, uint64_t{30}, ~uint64_t{0}}) {
      struct {
        tmk::rng::stream_header header;
        uint32_t state = 11;
      } got, wanted;
      const auto handle = [](auto& block) { return reinterpret_cast<VtsStreamHandle>(&block); };
      for (uint64_t i = 0; i < n % 31; ++i) step(handle(wanted));
      ASSERT_EQ(method(handle(got), zero, add, copy, step, copy, none, static_cast<uint32_t>(n),
                       static_cast<uint32_t>(n >> 32), 1, 5, bytes, 3, exponents),
                0);
      EXPECT_EQ(got.state, wanted.state) << n;
    }
}

TEST(skip_ahead, long_jumps_add_up) {
  for (const int32_t id : with_jumps) {
    const owned_stream once(id, {1, 2}), in_parts(id, {1, 2});
    const int64_t part = 123456789012345, rest = -1 - part;  // all 64 bits count
    EXPECT_EQ(__vtsSkipAheadStream(once, -1), 0);
    EXPECT_EQ(__vtsSkipAheadStream(in_parts, part), 0);
    EXPECT_EQ(__vtsSkipAheadStream(in_parts, rest), 0);
    EXPECT_EQ(draw_words(once, 2000), draw_words(in_parts, 2000)) << std::hex << id;
  }
}

TEST(skip_ahead, powers_of_x_have_their_remainders) {
  constexpr int32_t exponents[] = {0, 2, 5};  // x^5 + x^2 + 1 is primitive: x^31 = 1
  for (const uint64_t n : {uint64_t{0}, uint64_t{1}, uint64_t{4}, uint64_t{5}, uint64_t{31}, ~uint64_t{0}}) {
    uint32_t wanted = 1, got[2];
    for (uint64_t i = 0; i < n % 31; ++i) wanted = wanted << 1 ^ (wanted & 16 ? 0b100101 : 0);
    ASSERT_EQ(x_pow_nskip_mod_cpoly(n, 5, 3, exponents, 1, got), 0);
    EXPECT_EQ(got[0], wanted) << n;
    EXPECT_EQ(got[1], 0u) << n;
  }
}

TEST(skip_ahead, requests_that_a_generator_does_not_serve) {
  const struct {
    int32_t id, leapfrog, skip_ahead;
  } cases[] = {{VTS_BRNG_MT19937, VTS_STATUS_NO_LEAPFROG, 0},
               {VTS_BRNG_SFMT19937, VTS_STATUS_NO_LEAPFROG, 0},
               {VTS_BRNG_MT2203 + 5, VTS_STATUS_NO_LEAPFROG, VTS_STATUS_NO_SKIPAHEAD}};
  for (const auto& c : cases) {
    const owned_stream stream(c.id, {1}), untouched(c.id, {1});
    VtsBrngProperties record;
    const uint32_t params[] = {0, 0};
    EXPECT_EQ(__vtsGetBrngProperties(c.id, &record), 0);
    EXPECT_EQ(__vtsLeapfrogStream(stream, 0, 1), c.leapfrog);
    EXPECT_EQ(__vtsSkipAheadStream(stream, 0), c.skip_ahead);
    EXPECT_EQ(record.initStream(3, stream, 1, params), VTS_STATUS_BAD_METHOD);
    EXPECT_EQ(draw_words(stream, 100), draw_words(untouched, 100));
  }
}

}  // namespace
