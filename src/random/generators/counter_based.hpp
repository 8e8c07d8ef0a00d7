// SPDX-License-Identifier: Apache-2.0
// What generators share whose block of four words is a function of a counter of 128 bits and a key: a request
// takes what is left of the last block, whole blocks, and the start of one more; a jump adds to the counter.
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

namespace tmk::rng {

// The counter, least word first, counts blocks.
inline void advance_counter(uint32_t (&counter)[4], uint64_t count) {
  for (uint32_t& word : counter) {
    const uint64_t sum = uint64_t{word} + static_cast<uint32_t>(count);
    word = static_cast<uint32_t>(sum);
    count = (count >> 32) + (sum >> 32);
  }
}

// The seed words in order, absent ones 0; no word of a block is left over.
template <class State>
void seed_counter_based(State& s, int32_t n, const uint32_t* seed) {
  const auto word = [&](int32_t i) { return i < n ? seed[i] : 0; };
  constexpr int32_t key_words = std::extent_v<decltype(s.key)>;
  for (int32_t i = 0; i < key_words; ++i) s.key[i] = word(i);
  for (int32_t i = 0; i < 4; ++i) s.counter[i] = word(key_words + i);
  std::fill_n(s.buffer, 4, 0);
  s.index = 4;
}

// blocks(counter, key, count, r) makes `count` blocks from the counter on, and does not change it.
template <class State, class Blocks>
void draw_counter_based(State& s, int32_t n, uint32_t* r, Blocks blocks) {
  for (; n > 0 && s.index < 4; --n) *r++ = s.buffer[s.index++];
  const int32_t whole = n / 4, rest = n % 4;
  blocks(s.counter, s.key, whole, r);
  advance_counter(s.counter, static_cast<uint64_t>(whole));
  if (rest == 0) return;
  blocks(s.counter, s.key, 1, s.buffer);
  advance_counter(s.counter, 1);
  std::copy_n(s.buffer, rest, r + 4 * int64_t{whole});
  s.index = static_cast<uint32_t>(rest);
}

template <class State, class Blocks>
void skip_counter_based(State& s, uint64_t count, Blocks blocks) {
  const uint64_t kept = 4 - s.index;
  if (count < kept) {
    s.index += static_cast<uint32_t>(count);
    return;
  }
  count -= kept;
  advance_counter(s.counter, count / 4);
  s.index = 4;
  uint32_t dropped[3];
  draw_counter_based(s, static_cast<int32_t>(count % 4), dropped, blocks);
}

}  // namespace tmk::rng
