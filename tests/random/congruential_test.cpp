// SPDX-License-Identifier: Apache-2.0
// MCG31M1, MCG59 and WH: sequences, seeds, leapfrog and skip-ahead.
#include <cmath>

#include "random/generators/wh_data.hpp"
#include "random/plain_generators.hpp"

namespace {

constexpr uint64_t mask59 = (uint64_t{1} << 59) - 1;

double mcg31_value(const uint32_t* x, double a, double b) { return *x * ((b - a) * (1 / 2147483647.0)) + a; }

double mcg59_double(const uint32_t* x, double a, double b) {
  const double k = (b - a) * 0x1p-59;
  return (x[0] * k + x[1] * 0x1p32 * k) + a;
}
double mcg59_wide_single(const uint32_t* x, double a, double b) {
  return (x[0] + x[1] * 0x1p32) * ((b - a) * 0x1p-59) + a;
}

template <int Set>
double wh_value(const uint32_t* x, double a, double b) {
  const auto& m = tmk::rng::wh_moduli[Set];
  const double s = ((x[0] * (1.0 / m[0]) + x[1] * (1.0 / m[1])) + x[2] * (1.0 / m[2])) + x[3] * (1.0 / m[3]);
  return (s - std::floor(s)) * (b - a) + a;
}

template <int Set>
plain_generator plain_wh(int32_t id) {
  return {id,
          {9, 16000000, 3},
          [x = std::array<uint64_t, 4>{9, 16000000, 3, 1}](uint32_t* r) mutable {
            for (int j = 0; j < 4; ++j) {
              r[j] = static_cast<uint32_t>(x[j]);
              x[j] = x[j] * tmk::rng::wh_multipliers[Set][j] % tmk::rng::wh_moduli[Set][j];
            }
          },
          wh_value<Set>,
          wh_value<Set>};
}

TEST(congruential, draws_are_the_plain_recurrences) {
  expect_plain_sequence({VTS_BRNG_MCG31M1,
                         {0x80000004},
                         [x = uint64_t{5}](uint32_t* r) mutable {
                           *r = static_cast<uint32_t>(x);
                           x = x * 1132489760 % 2147483647;
                         },
                         mcg31_value,
                         mcg31_value});
  expect_plain_sequence({VTS_BRNG_MCG59,
                         {0xFFFFFFFD, 0xFFFFFFFF},
                         [x = mask59 - 2](uint32_t* r) mutable {
                           r[0] = static_cast<uint32_t>(x);
                           r[1] = static_cast<uint32_t>(x >> 32);
                           x = x * 302875106592253 & mask59;
                         },
                         mcg59_double,
                         mcg59_wide_single});
  expect_plain_sequence(plain_wh<2>(6));
  expect_plain_sequence(plain_wh<272>(VTS_BRNG_WH + 272));
}

TEST(congruential, a_seed_that_vanishes_becomes_one) {
  const struct {
    int32_t id;
    std::vector<uint32_t> seeds, first;
  } cases[] = {
      {VTS_BRNG_MCG31M1, {}, {1}},
      {VTS_BRNG_MCG31M1, {2147483647}, {1}},
      {VTS_BRNG_MCG31M1, {0xFFFFFFFF, 5}, {1}},
      {VTS_BRNG_MCG59, {}, {1, 0}},
      {VTS_BRNG_MCG59, {0, 0x08000000}, {1, 0}},
      {VTS_BRNG_MCG59, {0, 0xFFFFFFFF, 3}, {0, 0x07FFFFFF}},
      {VTS_BRNG_MCG59, {7}, {7, 0}},
      {VTS_BRNG_WH, {}, {1, 1, 1, 1}},
      {VTS_BRNG_WH, {16770648}, {1, 1, 1, 1}},
      {VTS_BRNG_WH, {5, 16770643, 0xFFFFFFFF, 4, 5}, {5, 1, 0xFFFFFFFF % 16770623, 4}},
  };
  for (const auto& c : cases) {
    const owned_stream stream(c.id, c.seeds);
    EXPECT_EQ(draw_words(stream, 1), c.first) << std::hex << c.id;
  }
}

TEST(congruential, leapfrog_parts_interleave_to_the_whole_and_compose) {
  for (const int32_t id : {int32_t{VTS_BRNG_MCG31M1}, int32_t{VTS_BRNG_MCG59}, VTS_BRNG_WH + 100}) {
    const owned_stream whole(id, {77});
    const auto words = draw_words(whole, 600);
    const size_t per_element = words.size() / 600;
    for (const auto& [k, nstreams] : {std::pair{0, 1}, {0, 3}, {2, 3}, {9, 3}, {6, 7}}) {
      const owned_stream part(id, {77});
      EXPECT_EQ(__vtsLeapfrogStream(part, k, nstreams), 0);
      EXPECT_EQ(__vtsLeapfrogStream(part, 1, 2), 0);  // elements k + nstreams, k + 3 nstreams, ...
      EXPECT_EQ(__vtsSkipAheadStream(part, 3), 0);    // of the thinned sequence
      const auto got = draw_words(part, 30);
      for (size_t i = 0; i < got.size(); ++i) {
        const size_t element =
            static_cast<size_t>(k + nstreams) + 2 * static_cast<size_t>(nstreams) * (i / per_element + 3);
        ASSERT_EQ(got[i], words[element * per_element + i % per_element])
            << std::hex << id << ' ' << k << ' ' << i;
      }
    }
    const owned_stream still(id, {77});
    EXPECT_EQ(__vtsLeapfrogStream(still, 1, 0), 0);
    const auto same = draw_words(still, 200);
    for (size_t i = 0; i < same.size(); ++i) ASSERT_EQ(same[i], words[per_element + i % per_element]);
  }
}

}  // namespace
