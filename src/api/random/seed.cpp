// SPDX-License-Identifier: Apache-2.0
// Seeds by hashing: the algorithm of NumPy's SeedSequence, after M. E. O'Neill's seed_seq_fe (2015). A pool
// of four words takes every word of the entropy, then those of the spawn key, each through a multiplicative
// hash whose constant moves on; the words come out of the pool by another one. A stream's identifier is the
// last word of its key:
//   words = numpy.random.SeedSequence(entropy, spawn_key=(*key, identifier)).generate_state(n)
#include "api/random/seed.hpp"

#include <tmk/abi/vts.h>

#include <array>
#include <random>

#include "api/call/refuse.hpp"

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

std::vector<std::uint32_t> expand_seed(const seed_sequence& seeds, std::int32_t id) {
  std::vector<std::uint32_t> words = seeds.child(static_cast<std::uint32_t>(id)).words(words_of(id));
  if (id == VTS_BRNG_MCG59) words[0] |= 1;  // even ones have a shorter period
  return words;
}

}  // namespace tmk::detail

namespace tmk {

seed_sequence::seed_sequence(std::span<const std::uint32_t> entropy, std::span<const std::uint32_t> spawn_key)
    : entropy_(entropy.begin(), entropy.end()), spawn_key_(spawn_key.begin(), spawn_key.end()) {}

seed_sequence::seed_sequence(std::uint64_t seed, bool negative) {
  if (negative) detail::refuse_below("seed_sequence", "seed", static_cast<std::int64_t>(seed), 0);
  entropy_.push_back(static_cast<std::uint32_t>(seed));
  if (seed >> 32 != 0) entropy_.push_back(static_cast<std::uint32_t>(seed >> 32));
}

seed_sequence seed_sequence::of_text(std::string_view text) {
  std::vector<std::uint32_t> words(text.size() / 4 + (text.size() % 4 != 0), 0);
  for (std::size_t i = 0; i < text.size(); ++i)
    words[i / 4] |= std::uint32_t{static_cast<unsigned char>(text[i])} << 8 * (i % 4);
  words.push_back(static_cast<std::uint32_t>(text.size()));
  return seed_sequence(words);
}

seed_sequence seed_sequence::of_system() {
  std::random_device source;
  std::uint32_t words[4];
  for (std::uint32_t& word : words) word = source();
  return seed_sequence(words);
}

seed_sequence seed_sequence::child(std::uint32_t k) const {
  seed_sequence own = *this;
  own.spawn_key_.push_back(k);
  return own;
}

std::vector<std::uint32_t> seed_sequence::words(std::size_t count) const {
  std::vector<std::uint32_t> all = entropy_;
  if (!spawn_key_.empty() && all.size() < detail::entropy_pool().size())
    all.resize(detail::entropy_pool().size());
  all.insert(all.end(), spawn_key_.begin(), spawn_key_.end());
  const detail::entropy_pool pool = detail::pool_of(all);
  std::vector<std::uint32_t> words(count);
  detail::hash next{0x8b51f9dd, 0x58f38ded};
  for (std::size_t i = 0; i < count; ++i) words[i] = next(pool[i % pool.size()]);
  return words;
}

}  // namespace tmk
