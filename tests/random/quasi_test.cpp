// SPDX-License-Identifier: Apache-2.0
// SOBOL and NIEDERR: published points, how evenly points lie, selection of one dimension, jumps, and jumps of
// the other generators that have no test of their own.
#include <bit>

#include "random/plain_generators.hpp"

namespace {

double unsigned_value(const uint32_t* x, double a, double b) { return *x * ((b - a) * 0x1p-32) + a; }

constexpr uint32_t most_dimensions(int32_t id) { return id == VTS_BRNG_SOBOL ? 40 : 318; }

std::vector<uint32_t> points(int32_t id, uint32_t dimensions, uint32_t count) {
  const owned_stream stream(id, {dimensions});
  return draw_words(stream, static_cast<int32_t>(dimensions * count));
}

TEST(quasi, sobol_gives_the_published_points) {
  // The first points that Joe and Kuo publish with their direction numbers, after the origin.
  const double wanted[] = {0.5,   0.5,   0.5,   0.75,   0.25,   0.25,   0.25,   0.75,   0.75,
                           0.375, 0.375, 0.625, 0.875,  0.875,  0.125,  0.625,  0.125,  0.875,
                           0.125, 0.625, 0.375, 0.1875, 0.3125, 0.9375, 0.6875, 0.8125, 0.4375};
  const owned_stream stream(VTS_BRNG_SOBOL, {3});
  double got[std::size(wanted)];
  VtsBrngProperties record;
  ASSERT_EQ(__vtsGetBrngProperties(VTS_BRNG_SOBOL, &record), 0);
  ASSERT_EQ(record.dBrng(stream, std::size(got), got, 0, 1), 0);
  for (size_t i = 0; i < std::size(got); ++i) EXPECT_EQ(got[i], wanted[i]) << i;
}

TEST(quasi, sobol_draws_are_the_plain_recurrences) {
  // Direction numbers as fractions: of 1, x + 1 and x^2 + x + 1, from 1 and 1, 3 on.
  uint32_t v[3][33] = {};
  for (int i = 1; i <= 32; ++i) {
    v[0][i] = 1u << (32 - i);
    v[1][i] = i == 1 ? 1u << 31 : v[1][i - 1] ^ (v[1][i - 1] >> 1);
    v[2][i] = i <= 2 ? (2u * i - 1) << (32 - i) : v[2][i - 1] ^ v[2][i - 2] ^ (v[2][i - 2] >> 2);
  }
  std::vector<uint32_t> seeds = {3, VTS_SOBOL_DIRECTIONS};
  for (const auto& numbers : v) seeds.insert(seeds.end(), numbers + 1, numbers + 33);
  for (const auto& seed : {std::vector<uint32_t>{3}, seeds})
    expect_plain_sequence({VTS_BRNG_SOBOL, seed,
                           [&v, element = uint32_t{3}](uint32_t* r) mutable {
                             const uint32_t point = element / 3, gray = point ^ (point >> 1);
                             *r = 0;
                             for (int i = 0; i < 32; ++i)
                               if (gray >> i & 1) *r ^= v[element % 3][i + 1];
                             ++element;
                           },
                           unsigned_value, unsigned_value});
}

TEST(quasi, dimensions_and_directions_are_checked) {
  for (const int32_t id : {VTS_BRNG_SOBOL, VTS_BRNG_NIEDERR}) {
    const auto line = points(id, 1, 8);
    for (const uint32_t none : {0u, most_dimensions(id) + 1, UINT32_MAX}) {
      const owned_stream stream(id, {none});
      EXPECT_EQ(draw_words(stream, 8), line) << none;
    }
    EXPECT_EQ(draw_words(owned_stream(id, {}), 8), line);
  }
  for (std::vector<uint32_t> seeds :
       {std::vector<uint32_t>{2, 0, 5}, std::vector<uint32_t>(2 + 32 * 40, 1)}) {
    seeds[1] = VTS_SOBOL_DIRECTIONS;
    seeds[0] += seeds.size() > 3 ? 40 : 0;  // one dimension more than there can be
    VtsStreamHandle stream;
    EXPECT_EQ(__vtsNewStreamEx(&stream, VTS_BRNG_SOBOL, static_cast<int32_t>(seeds.size()), seeds.data()),
              VTS_STATUS_BAD_ARGUMENT);
    __vtsDeleteStream(&stream);
  }
}

// Of the first 2^bits points, the origin with them, each box of that volume holds one.
void expect_one_per_box(const std::vector<uint32_t>& x, uint32_t dimensions, uint32_t i, int bits_i,
                        uint32_t j, int bits_j) {
  std::vector<int> held(size_t{1} << (bits_i + bits_j));
  held[0] = 1;
  for (size_t point = 0; point + 1 < held.size(); ++point) {
    const uint64_t at_i = x[point * dimensions + i], at_j = x[point * dimensions + j];
    ++held[(at_i >> (32 - bits_i)) << bits_j | at_j >> (32 - bits_j)];
  }
  for (const int count : held) ASSERT_EQ(count, 1) << "dimensions " << i << ' ' << j;
}

TEST(quasi, niederreiter_boxes_of_the_degrees_of_its_polynomials_hold_one_point_each) {
  constexpr uint32_t all = 318;
  const auto x = points(VTS_BRNG_NIEDERR, all, 2047);
  // Irreducible polynomials of each degree; in its own degree, and multiples, every dimension is even, and so
  // is every pair in the sum of its degrees.
  const uint32_t of_degree[] = {2, 1, 2, 3, 6, 9, 18, 30, 56, 99, 92};
  std::vector<int> degrees;
  for (int degree = 1; degree <= 11; ++degree) degrees.insert(degrees.end(), of_degree[degree - 1], degree);
  ASSERT_EQ(degrees.size(), all);
  for (uint32_t i = 0; i < all; ++i)
    for (int bits = degrees[i]; bits <= 11; bits += degrees[i]) expect_one_per_box(x, all, i, bits, i, 0);
  for (uint32_t j = 1; j < all; ++j)
    for (uint32_t i = 0; i < j && degrees[i] + degrees[j] <= 11; ++i)
      expect_one_per_box(x, all, i, degrees[i], j, degrees[j]);
}

TEST(quasi, sobol_lines_are_even) {
  const auto x = points(VTS_BRNG_SOBOL, 40, 4095);
  for (uint32_t i = 0; i < 40; ++i)
    for (int bits = 1; bits <= 12; ++bits) expect_one_per_box(x, 40, i, bits, i, 0);
}

TEST(quasi, a_leapfrogged_stream_has_one_dimension) {
  for (const int32_t id : {VTS_BRNG_SOBOL, VTS_BRNG_NIEDERR}) {
    const uint32_t dimensions = most_dimensions(id), k = dimensions - 1;
    const auto x = points(id, dimensions, 70);
    const owned_stream stream(id, {dimensions});
    EXPECT_EQ(__vtsLeapfrogStream(stream, static_cast<int32_t>(k), 3), VTS_STATUS_NO_LEAPFROG);
    EXPECT_EQ(__vtsLeapfrogStream(stream, static_cast<int32_t>(dimensions), 0x7FFFFFFF),
              VTS_STATUS_NO_LEAPFROG);
    draw_words(stream, static_cast<int32_t>(2 * dimensions + 1));  // amid point 2
    const auto expect_dimension = [&](uint32_t selected, size_t from, size_t to) {
      EXPECT_EQ(__vtsLeapfrogStream(stream, static_cast<int32_t>(selected), 0x7FFFFFFF), 0);
      const auto got = draw_words(stream, static_cast<int32_t>(to - from));
      for (size_t i = from; i < to; ++i) ASSERT_EQ(got[i - from], x[i * dimensions + selected]) << i;
    };
    expect_dimension(k, 2, 20);
    EXPECT_EQ(__vtsSkipAheadStream(stream, 5), 0);  // elements of that dimension
    expect_dimension(k, 25, 40);
    expect_dimension(3, 40, 60);
  }
}

TEST(jumps, from_anywhere_equal_generation) {
  const struct {
    int32_t id;
    std::vector<uint32_t> seeds;
  } generators[] = {{VTS_BRNG_PHILOX4X32X10, {3, 4}},
                    {VTS_BRNG_ARS5, {5}},
                    {VTS_BRNG_MRG32K3A, {6}},
                    {VTS_BRNG_SOBOL, {7}},
                    {VTS_BRNG_NIEDERR, {318}}};
  for (const auto& g : generators) {
    if (g.id == VTS_BRNG_ARS5 && !__vtsCPUisAES()) continue;
    const auto whole = draw_words(owned_stream(g.id, g.seeds), 6000);
    for (const int32_t drawn : {0, 1, 3, 4, 6, 700})
      for (const int32_t skipped : {0, 1, 2, 3, 4, 5, 7, 64, 317, 318, 319, 4999}) {
        const owned_stream stream(g.id, g.seeds);
        if (drawn > 0) draw_words(stream, drawn);
        EXPECT_EQ(__vtsSkipAheadStream(stream, static_cast<uint64_t>(skipped)), 0);
        const auto at = whole.begin() + drawn + skipped;
        ASSERT_EQ(draw_words(stream, 40), std::vector<uint32_t>(at, at + 40))
            << std::hex << g.id << std::dec << ' ' << drawn << ' ' << skipped;
      }
  }
}

TEST(jumps, generators_refuse_what_they_cannot) {
  const struct {
    int32_t id, leapfrog, skip_ahead;
  } answers[] = {
      {VTS_BRNG_R250, VTS_STATUS_NO_LEAPFROG, VTS_STATUS_NO_SKIPAHEAD},
      {VTS_BRNG_MRG32K3A, VTS_STATUS_NO_LEAPFROG, 0},
      {VTS_BRNG_PHILOX4X32X10, VTS_STATUS_NO_LEAPFROG, 0},
      {VTS_BRNG_ARS5, VTS_STATUS_NO_LEAPFROG, 0},
      {VTS_BRNG_SOBOL, VTS_STATUS_NO_LEAPFROG, 0},
      {VTS_BRNG_NIEDERR, VTS_STATUS_NO_LEAPFROG, 0},
      {VTS_BRNG_NONDETERM, VTS_STATUS_NO_LEAPFROG, VTS_STATUS_NO_SKIPAHEAD},
  };
  const uint32_t seed = 1;
  for (const auto& answer : answers) {
    VtsStreamHandle stream;
    __vtsNewStreamEx(&stream, answer.id, 1,
                     &seed);  // where instructions lack, the requests are still answered
    EXPECT_EQ(__vtsLeapfrogStream(stream, 0, 1), answer.leapfrog) << std::hex << answer.id;
    if (answer.skip_ahead != 0) {
      EXPECT_EQ(__vtsSkipAheadStream(stream, 1), answer.skip_ahead) << std::hex << answer.id;
    }
    VtsBrngProperties record;
    ASSERT_EQ(__vtsGetBrngProperties(answer.id, &record), 0);
    EXPECT_EQ(record.initStream(3, stream, 1, &seed), VTS_STATUS_BAD_METHOD) << std::hex << answer.id;
    __vtsDeleteStream(&stream);
  }
}

}  // namespace
