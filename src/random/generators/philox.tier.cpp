// SPDX-License-Identifier: Apache-2.0
// Philox: several vectors of blocks at once, word by word. Words are in the lower halves of 64-bit lanes,
// as products need them; what the upper halves hold does not matter.
#include "random/generators/philox.hpp"

#include "simd/integer.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

constexpr int rounds = 10;
constexpr int vectors = 4;
constexpr int width = lanes<uint64_t>;
constexpr int group = vectors * width;  // blocks

struct vector_of_blocks {
  u64 c0, c1, c2, c3;

  void round(uint32_t k0, uint32_t k1) {
    const u64 p = multiply_low_words(c0, u64(0xD2511F53u)), q = multiply_low_words(c2, u64(0xCD9E8D57u));
    c0 = (q >> 32) ^ c1 ^ u64(k0);
    c2 = (p >> 32) ^ c3 ^ u64(k1);
    c1 = q;
    c3 = p;
  }
  // Words of blocks a, b, ...; dots are the upper halves, which do not matter:
  //   c0  a0 .  b0 .        first   a0 a1 b0 b1
  //   c1  a1 .  b1 .   ->   second  a2 a3 b2 b3   ->   r  a0 a1 a2 a3 b0 b1 b2 b3
  //   c2  a2 .  b2 .
  //   c3  a3 .  b3 .
  void store_words(uint32_t* r) const {
    const u64 first = bits_as<uint64_t>(merge_words(c0, c1 << 32));
    const u64 second = bits_as<uint64_t>(merge_words(c2, c3 << 32));
    store_interleaved(reinterpret_cast<uint64_t*>(r), first, second);
  }
};

// Blocks of consecutive counters whose lowest word does not wrap within them.
void group_of_blocks(const uint32_t* counter, const uint32_t* key, uint32_t* r) {
  alignas(64) uint64_t step[width];
  for (int lane = 0; lane < width; ++lane) step[lane] = static_cast<uint64_t>(lane);
  vector_of_blocks v[vectors];
#pragma GCC unroll 4
  for (int i = 0; i < vectors; ++i)
    v[i] = {u64::load_aligned(step) + u64(uint64_t{counter[0]} + static_cast<uint64_t>(i * width)),
            u64(counter[1]), u64(counter[2]), u64(counter[3])};
  uint32_t k0 = key[0], k1 = key[1];
#pragma GCC unroll 10
  for (int round = 0; round < rounds; ++round) {
#pragma GCC unroll 4
    for (vector_of_blocks& blocks : v) blocks.round(k0, k1);
    k0 += 0x9E3779B9;
    k1 += 0xBB67AE85;
  }
#pragma GCC unroll 4
  for (int i = 0; i < vectors; ++i) v[i].store_words(r + 4 * width * i);
}

void advance(uint32_t (&counter)[4], int by) {
  uint64_t carry = static_cast<uint64_t>(by);
  for (uint32_t& word : counter) {
    carry += word;
    word = static_cast<uint32_t>(carry);
    carry >>= 32;
  }
}

void blocks(const uint32_t* counter, const uint32_t* key, int32_t count, uint32_t* r) {
  uint32_t c[4] = {counter[0], counter[1], counter[2], counter[3]};
  for (int part; count > 0; count -= part, r += 4 * part) {
    // At the end, and where the lowest word wraps, the blocks beyond are dropped.
    const uint32_t until_wrap = 0 - c[0];
    part = count < group ? count : group;
    if (until_wrap != 0 && until_wrap < static_cast<uint32_t>(part)) part = static_cast<int>(until_wrap);
    if (part == group) {
      group_of_blocks(c, key, r);
    } else {
      uint32_t all[4 * group];
      group_of_blocks(c, key, all);
      for (int i = 0; i < 4 * part; ++i) r[i] = all[i];
    }
    advance(c, part);
  }
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(philox_kernels) = {blocks};

}  // namespace tmk::rng
