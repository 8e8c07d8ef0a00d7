// SPDX-License-Identifier: Apache-2.0
// PHILOX4X32X10 and ARS5: published blocks, plain forms, and jumps within and across blocks.
#include <array>

#include "random/plain_generators.hpp"

namespace {

using block = std::array<uint32_t, 4>;

double unsigned_value(const uint32_t* x, double a, double b) { return *x * ((b - a) * 0x1p-32) + a; }

void count_up(block& counter) {
  for (uint32_t& word : counter)
    if (++word != 0) return;
}

// A generator of words from blocks(counter).
template <class Blocks>
plain_generator plain_blocks(int32_t id, std::vector<uint32_t> seeds, block counter, Blocks blocks) {
  return {id, seeds,
          [counter, blocks, at = 4, words = block{}](uint32_t* r) mutable {
            if (at == 4) {
              words = blocks(counter);
              count_up(counter);
              at = 0;
            }
            *r = words[static_cast<size_t>(at++)];
          },
          unsigned_value, unsigned_value};
}

block plain_philox(block c, uint32_t k0, uint32_t k1) {
  for (int round = 0; round < 10; ++round, k0 += 0x9E3779B9, k1 += 0xBB67AE85) {
    const uint64_t p = uint64_t{0xD2511F53} * c[0], q = uint64_t{0xCD9E8D57} * c[2];
    c = {static_cast<uint32_t>(q >> 32) ^ c[1] ^ k0, static_cast<uint32_t>(q),
         static_cast<uint32_t>(p >> 32) ^ c[3] ^ k1, static_cast<uint32_t>(p)};
  }
  return c;
}

using bytes = std::array<uint8_t, 16>;

uint8_t gf_product(unsigned a, unsigned b) {
  unsigned r = 0;
  for (; b != 0; b >>= 1, a = (a << 1) ^ (a & 0x80 ? 0x11B : 0))
    if (b & 1) r ^= a;
  return static_cast<uint8_t>(r);
}

// The cipher's S-box: the inverse, then an affine map.
uint8_t substitute(uint8_t x) {
  unsigned inverse = 0;
  while (x != 0 && gf_product(x, ++inverse) != 1) {
  }
  unsigned r = 0x63;
  for (int i = 0; i < 5; ++i) r ^= (inverse << i) | (inverse >> (8 - i));
  return static_cast<uint8_t>(r);
}

bytes cipher_round(const bytes& x, const bytes& key, bool mix) {
  static const auto box = [] {
    std::array<uint8_t, 256> table;
    for (unsigned i = 0; i < 256; ++i) table[i] = substitute(static_cast<uint8_t>(i));
    return table;
  }();
  bytes shifted, r;
  for (size_t i = 0; i < 16; ++i) shifted[i] = box[x[(i + 4 * (i % 4)) % 16]];
  for (size_t i = 0; i < 16; ++i) {
    const auto at = [&](size_t k) { return shifted[i / 4 * 4 + (i + k) % 4]; };
    const int mixed = gf_product(at(0), 2) ^ gf_product(at(1), 3) ^ at(2) ^ at(3);
    r[i] = static_cast<uint8_t>((mix ? mixed : at(0)) ^ key[i]);
  }
  return r;
}

block plain_ars5(const block& counter, std::array<uint64_t, 2> key) {
  bytes x, k;
  std::memcpy(x.data(), counter.data(), 16);
  for (int round = 0; round <= 5; ++round) {
    std::memcpy(k.data(), key.data(), 16);
    if (round == 0)
      for (size_t i = 0; i < 16; ++i) x[i] ^= k[i];
    else
      x = cipher_round(x, k, round < 5);
    key[0] += 0x9E3779B97F4A7C15;
    key[1] += 0xBB67AE8584CAA73B;
  }
  block r;
  std::memcpy(r.data(), x.data(), 16);
  return r;
}

TEST(counter_based, philox_gives_the_published_blocks) {
  // Known answers published with Random123 for philox4x32, 10 rounds: key, counter, block.
  const struct {
    std::vector<uint32_t> seeds, wanted;
  } cases[] = {
      {{}, {0x6627E8D5, 0xE169C58D, 0xBC57AC4C, 0x9B00DBD8}},
      {std::vector<uint32_t>(6, UINT32_MAX), {0x408F276D, 0x41C83B0E, 0xA20BC7C6, 0x6D5451FD}},
      {{0xA4093822, 0x299F31D0, 0x243F6A88, 0x85A308D3, 0x13198A2E, 0x03707344},
       {0xD16CFE09, 0x94FDCCEB, 0x5001E420, 0x24126EA1}},
  };
  for (const auto& c : cases)
    on_every_tier([&] {
      const owned_stream stream(VTS_BRNG_PHILOX4X32X10, c.seeds);
      EXPECT_EQ(draw_words(stream, 4), c.wanted);
    });
}

TEST(counter_based, draws_are_the_plain_forms_across_carries_of_the_counter) {
  expect_plain_sequence(plain_blocks(VTS_BRNG_PHILOX4X32X10, {1, 2, 0xFFFFFFE5, UINT32_MAX, 7},
                                     {0xFFFFFFE5, UINT32_MAX, 7, 0},
                                     [](const block& c) { return plain_philox(c, 1, 2); }));
  if (!__vtsCPUisAES()) GTEST_SKIP() << "no AES instructions";
  EXPECT_EQ(substitute(0x53), 0xED);  // FIPS 197
  expect_plain_sequence(plain_blocks(VTS_BRNG_ARS5,
                                     {1, 2, 0xFFFFFFFF, 0xFFFFFFF0, 0xFFFFFFE5, UINT32_MAX, UINT32_MAX, 3},
                                     {0xFFFFFFE5, UINT32_MAX, UINT32_MAX, 3}, [](const block& c) {
                                       return plain_ars5(c, {0x200000001, 0xFFFFFFF0FFFFFFFF});
                                     }));
}

TEST(counter_based, far_jumps_add_to_the_counter) {
  const uint64_t count = (uint64_t{1} << 63) + 4 * 5 + 3;  // 2^61 + 5 blocks and 3 words
  const owned_stream far(VTS_BRNG_PHILOX4X32X10, {8, 9, 0, 0, 4});
  const owned_stream there(VTS_BRNG_PHILOX4X32X10, {8, 9, 5, 1u << 29, 4});
  EXPECT_EQ(__vtsSkipAheadStream(far, count), 0);
  EXPECT_EQ(__vtsSkipAheadStream(there, 3), 0);
  EXPECT_EQ(draw_words(far, 50), draw_words(there, 50));
}

}  // namespace
