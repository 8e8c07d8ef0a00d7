// SPDX-License-Identifier: Apache-2.0
// Seeds by hashing: the algorithm of NumPy's SeedSequence, after M. E. O'Neill's seed_seq_fe (2015). A pool
// of four words takes every word of the seed, then the stream's identifier as a spawn key, each through a
// multiplicative hash whose constant moves on; the generator's words come out of the pool by another one.
//   words = numpy.random.SeedSequence(seed, spawn_key=(identifier,)).generate_state(n)
#include "api/random/seed.hpp"

#include <tmk/abi/vts.h>

#include <array>

namespace tmk::detail {

namespace {

struct hash {
  std::uint32_t constant, multiplier;
  std::uint32_t operator()(std::uint32_t value) {
    value ^= constant;
    constant *= multiplier;
    value *= constant;
    return value ^ value >> 16;
  }
};

std::uint32_t mix(std::uint32_t x, std::uint32_t y) {
  const std::uint32_t sum = 0xca01f9dd * x - 0x4973f715 * y;
  return sum ^ sum >> 16;
}

using entropy_pool = std::array<std::uint32_t, 4>;

entropy_pool pool_of(std::span<const std::uint32_t> entropy) {
  entropy_pool pool;
  hash next{0x43b0d7e5, 0x931e8875};
  for (std::size_t i = 0; i < pool.size(); ++i) pool[i] = next(i < entropy.size() ? entropy[i] : 0);
  for (const std::uint32_t& from : pool)
    for (std::uint32_t& to : pool)
      if (&from != &to) to = mix(to, next(from));
  for (std::size_t i = pool.size(); i < entropy.size(); ++i)
    for (std::uint32_t& to : pool) to = mix(to, next(entropy[i]));
  return pool;
}

// States are as long as their generators': no more words than that make a difference. The twisters spread
// any number of words over their states, and eight hold the pool.
std::size_t words_of(std::int32_t id) {
  constexpr std::int32_t family = ~0xFFFFF;
  switch (id & family) {
    case VTS_BRNG_MCG31M1:
      return 1;
    case VTS_BRNG_MCG59:
      return 2;
    case VTS_BRNG_R250:
      return 250;
    case VTS_BRNG_PHILOX4X32X10:
      return 6;
    case VTS_BRNG_MT19937:
    case VTS_BRNG_MT2203:
    case VTS_BRNG_SFMT19937:
      return 8;
    default: {
      VtsBrngProperties record;
      const bool known = __vtsGetBrngProperties(id, &record) >= 0;
      return known ? static_cast<std::size_t>(record.seedWords) : 0;
    }
  }
}

}  // namespace

std::vector<std::uint32_t> expand_seed(std::span<const std::uint32_t> seed, std::int32_t id) {
  std::vector<std::uint32_t> entropy(seed.begin(), seed.end());
  if (entropy.size() < entropy_pool().size()) entropy.resize(entropy_pool().size());
  entropy.push_back(static_cast<std::uint32_t>(id));
  const entropy_pool pool = pool_of(entropy);

  std::vector<std::uint32_t> words(words_of(id));
  hash next{0x8b51f9dd, 0x58f38ded};
  for (std::size_t i = 0; i < words.size(); ++i) words[i] = next(pool[i % pool.size()]);
  if (id == VTS_BRNG_MCG59) words[0] |= 1;  // even ones have a shorter period
  return words;
}

}  // namespace tmk::detail
