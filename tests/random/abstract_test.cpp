// SPDX-License-Identifier: Apache-2.0
// Streams over an array of the caller, refilled by a callback.
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "random/streams.hpp"

namespace {

// What was requested from the callback, and how it answers.
struct refills {
  int32_t calls = 0, n = 0, least = 0, most = 0, index = 0;
  int32_t surplus = 0;  // elements beyond the least, where there is room
  int32_t answer = 0;   // instead of the count, when not zero
  uint32_t next = 0;
} seen;

template <class Element>
int32_t refill(VtsStreamHandle, int32_t* n, Element* buffer, const int32_t* nmin, const int32_t* nmax,
               const int32_t* idx) {
  seen.calls++, seen.n = *n, seen.least = *nmin, seen.most = *nmax, seen.index = *idx;
  if (seen.answer != 0) return seen.answer;
  const int32_t count = std::min(*nmin + seen.surplus, *nmax);
  for (int32_t i = 0; i < count; ++i) buffer[(*idx + i) % *n] = static_cast<Element>(seen.next++);
  return count;
}

TEST(abstract_stream, goes_round_the_array_for_any_cut) {
  for (const int32_t surplus : {0, 1, 3, 100}) {
    seen = {.surplus = surplus, .next = 1};
    std::vector<uint32_t> array(7), drawn(60);
    owned_stream stream;
    ASSERT_EQ(__vtsiNewAbstractStream(&stream.handle, 7, array.data(), refill<uint32_t>), 0);
    const auto draw = __RegBrngsNew[9].iBrng;
    int32_t at = 0;
    for (const int32_t n : {1, 2, 7, 9, 3, 15, 20, 3}) {
      ASSERT_EQ(draw(stream, n, drawn.data() + at), 0);
      at += n;
    }
    for (uint32_t i = 0; i < 60; ++i) EXPECT_EQ(drawn[i], i + 1) << surplus;
    EXPECT_EQ(seen.n, 7);
    EXPECT_EQ(seen.most, 7);
    EXPECT_GE(seen.least, 1);
  }
}

TEST(abstract_stream, requests_what_the_draw_lacks) {
  seen = {.surplus = 1};
  std::vector<uint32_t> array(5), drawn(8);
  owned_stream stream;
  ASSERT_EQ(__vtsiNewAbstractStream(&stream.handle, 5, array.data(), refill<uint32_t>), 0);
  ASSERT_EQ(__RegBrngsNew[9].iBrng(stream, 2, drawn.data()), 0);  // one is left
  ASSERT_EQ(__RegBrngsNew[9].iBrng(stream, 3, drawn.data()), 0);
  EXPECT_EQ(seen.calls, 2);
  EXPECT_EQ(seen.least, 2);
  EXPECT_EQ(seen.index, 3);
}

TEST(abstract_stream, a_short_refill_fails_the_draw) {
  const struct {
    int32_t answer, status;
  } cases[] = {{-77, -77}, {3, VTS_STATUS_BAD_ARGUMENT}, {6, VTS_STATUS_BAD_ARGUMENT}, {4, 0}, {5, 0}};
  for (const auto& c : cases) {
    seen = {.answer = c.answer};
    uint32_t array[5] = {}, drawn[4];
    owned_stream stream;
    ASSERT_EQ(__vtsiNewAbstractStream(&stream.handle, 5, array, refill<uint32_t>), 0);
    EXPECT_EQ(__RegBrngsNew[9].iBrng(stream, 4, drawn), c.status) << c.answer;
  }
}

TEST(abstract_stream, reals_move_to_the_interval_of_the_draw) {
  double doubles[4] = {};
  float singles[4] = {};
  owned_stream d, s;
  ASSERT_EQ(__vtsdNewAbstractStream(&d.handle, 4, doubles, -2, 14, refill<double>), 0);
  ASSERT_EQ(__vtssNewAbstractStream(&s.handle, 4, singles, -2, 14, refill<float>), 0);
  double r[6];
  float f[6];
  seen = {};
  ASSERT_EQ(__RegBrngsNew[10].dBrng(d, 6, r, 10, 18), 0);
  seen = {};
  ASSERT_EQ(__RegBrngsNew[11].sBrng(s, 6, f, 10, 18), 0);
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(r[i], 11 + 0.5 * i);
    EXPECT_EQ(f[i], r[i]);
  }
}

TEST(abstract_stream, has_the_draws_of_its_kind_alone) {
  uint32_t words[4] = {};
  double doubles[4] = {}, r = 5;
  float singles[4] = {}, f = 5;
  uint32_t w = 5;
  owned_stream i, d, s;
  ASSERT_EQ(__vtsiNewAbstractStream(&i.handle, 4, words, refill<uint32_t>), 0);
  ASSERT_EQ(__vtsdNewAbstractStream(&d.handle, 4, doubles, 0, 1, refill<double>), 0);
  ASSERT_EQ(__vtssNewAbstractStream(&s.handle, 4, singles, 0, 1, refill<float>), 0);
  for (const int32_t status : {__RegBrngsNew[9].dBrng(i, 1, &r, 0, 1), __RegBrngsNew[9].sBrng(i, 1, &f, 0, 1),
                               __RegBrngsNew[10].iBrng(d, 1, &w), __RegBrngsNew[10].sBrng(d, 1, &f, 0, 1),
                               __RegBrngsNew[11].iBrng(s, 1, &w), __RegBrngsNew[11].dBrng(s, 1, &r, 0, 1)})
    EXPECT_EQ(status, VTS_STATUS_INVALID_BRNG);
  EXPECT_TRUE(r == 5 && f == 5 && w == 5);
  EXPECT_EQ(__vtsLeapfrogStream(d, 0, 2), VTS_STATUS_NO_LEAPFROG);
  EXPECT_EQ(__vtsSkipAheadStream(d, 2), VTS_STATUS_NO_SKIPAHEAD);
  EXPECT_EQ(__RegBrngsNew[11].initStream(3, s, 0, &w), VTS_STATUS_BAD_METHOD);
}

TEST(abstract_stream, bad_arguments_make_no_stream) {
  const double nan = std::nan("");
  double array[2] = {};
  const struct {
    int32_t n;
    const double* buffer;
    double a, b;
    VtsDUpdate callback;
  } cases[] = {{0, array, 0, 1, refill<double>},   {-1, array, 0, 1, refill<double>},
               {2, nullptr, 0, 1, refill<double>}, {2, array, 1, 0, refill<double>},
               {2, array, 1, 1, refill<double>},   {2, array, nan, 1, refill<double>},
               {2, array, 0, 1, nullptr}};
  for (const auto& c : cases) {
    VtsStreamHandle stream = nullptr;
    EXPECT_EQ(__vtsdNewAbstractStream(&stream, c.n, c.buffer, c.a, c.b, c.callback), VTS_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(stream, nullptr);
  }
}

}  // namespace
