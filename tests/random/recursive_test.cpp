// SPDX-License-Identifier: Apache-2.0
// MRG32K3A, R250 and the hardware generator.
#include "random/plain_generators.hpp"

namespace {

constexpr int64_t m1 = 4294967087, m2 = 4294944443;

double mrg_value(const uint32_t* x, double a, double b) { return *x * ((b - a) * (1.0 / m1)) + a; }
double unsigned_value(const uint32_t* x, double a, double b) { return *x * ((b - a) * 0x1p-32) + a; }

TEST(mrg32k3a, draws_are_the_plain_recurrence) {
  expect_plain_sequence(
      {VTS_BRNG_MRG32K3A,
       {4294967086, 0, 4294967088, 7, 4294944443},  // reduced: m1 - 1, 0, 1; 7, 0, absent
       [x = std::vector<int64_t>{m1 - 1, 0, 1}, y = std::vector<int64_t>{7, 0, 1}](uint32_t* r) mutable {
         const int64_t p = ((1403580 * x[1] - 810728 * x[0]) % m1 + m1) % m1;
         const int64_t q = ((527612 * y[2] - 1370589 * y[0]) % m2 + m2) % m2;
         x = {x[1], x[2], p};
         y = {y[1], y[2], q};
         *r = static_cast<uint32_t>((p - q + m1) % m1);
       },
       mrg_value,
       mrg_value});
}

// L'Ecuyer's own check of his code: six seeds of 12345, and the sum of ten million numbers, which are words
// divided by m1 + 1.
TEST(mrg32k3a, the_authors_sum) {
  const owned_stream stream(VTS_BRNG_MRG32K3A, std::vector<uint32_t>(6, 12345));
  double sum = 0;
  for (int part = 0; part < 100; ++part)
    for (const uint32_t word : draw_words(stream, 100000)) sum += (word ? word : m1) / (m1 + 1.0);
  EXPECT_NEAR(sum, 5001090.95, 0.005);
}

TEST(mrg32k3a, triples_of_zeros_are_mended) {
  const owned_stream zeros(VTS_BRNG_MRG32K3A, {m1, 0, 0, 0, 0, m2});
  const owned_stream ones(VTS_BRNG_MRG32K3A, {1, 0, 0, 1, 0, 0});
  EXPECT_EQ(draw_words(zeros, 9), draw_words(ones, 9));
}

TEST(mrg32k3a, far_jumps_compose) {
  const owned_stream twice(VTS_BRNG_MRG32K3A, {5}), once(VTS_BRNG_MRG32K3A, {5});
  EXPECT_EQ(__vtsSkipAheadStream(twice, 0xFEDCBA9876543210), 0);
  EXPECT_EQ(__vtsSkipAheadStream(twice, 0x0123456789ABCDEF), 0);
  EXPECT_EQ(__vtsSkipAheadStream(once, UINT64_MAX), 0);
  EXPECT_EQ(draw_words(twice, 20), draw_words(once, 20));
}

TEST(r250, draws_are_the_plain_recurrence) {
  std::vector<uint32_t> seeds(250);
  std::mt19937 engine(3);
  for (auto& word : seeds) word = engine();
  expect_plain_sequence({VTS_BRNG_R250, seeds,
                         [x = seeds, n = size_t{0}](uint32_t* r) mutable {
                           x.push_back(x[n] ^ x[n + 147]);
                           ++n;
                           *r = x.back();
                         },
                         unsigned_value, unsigned_value});
}

TEST(r250, columns_of_a_short_seed_are_independent) {
  for (const auto& seeds : {std::vector<uint32_t>{}, {0}, {1, 2, 3}, std::vector<uint32_t>(249, 0)}) {
    const owned_stream stream(VTS_BRNG_R250, seeds);
    auto rows = draw_words(stream, 250);
    uint32_t rank = 0;
    for (uint32_t bit = 1; bit != 0; bit <<= 1) {
      const auto pivot = std::find_if(rows.begin() + rank, rows.end(), [&](uint32_t x) { return x & bit; });
      if (pivot == rows.end()) continue;
      std::iter_swap(rows.begin() + rank, pivot);
      for (size_t i = rank + 1; i < rows.size(); ++i)
        if (rows[i] & bit) rows[i] ^= rows[rank];
      ++rank;
    }
    EXPECT_EQ(rank, 32u) << seeds.size();
  }
}

TEST(hardware, words_differ_or_the_status_says_why) {
  VtsStreamHandle stream;
  const int32_t status = __vtsNewStreamEx(&stream, VTS_BRNG_NONDETERM, 0, nullptr);
  if (__vtsCPUisRDRAND()) {
    EXPECT_EQ(status, 0);
    auto words = draw_words(stream, 1000);
    std::sort(words.begin(), words.end());
    EXPECT_GT(std::unique(words.begin(), words.end()) - words.begin(), 990);
  } else {
    EXPECT_EQ(status, VTS_STATUS_NO_RDRAND);
  }
  __vtsDeleteStream(&stream);
}

}  // namespace
