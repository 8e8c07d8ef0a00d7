// SPDX-License-Identifier: Apache-2.0
// Array initialisation of the twisters: every word of the key reaches every word of the state.
// M. Matsumoto, T. Nishimura, mt19937ar (2002).
#pragma once

#include <algorithm>
#include <cstdint>

namespace tmk::rng {

// A key of no words is the single word 1.
template <int Ring>
void seed_twister(uint32_t (&mt)[Ring], int32_t n, const uint32_t* key) {
  constexpr uint32_t one = 1;
  if (n <= 0) {
    n = 1;
    key = &one;
  }
  const auto mixed = [](uint32_t x) { return x ^ (x >> 30); };
  mt[0] = 19650218;
  for (uint32_t i = 1; i < Ring; ++i) mt[i] = 1812433253 * mixed(mt[i - 1]) + i;
  uint32_t i = 1;
  const auto advance = [&] {
    if (++i < Ring) return;
    mt[0] = mt[Ring - 1];
    i = 1;
  };
  int32_t j = 0;
  for (int32_t left = std::max(n, Ring); left > 0; --left) {
    mt[i] = (mt[i] ^ (mixed(mt[i - 1]) * 1664525)) + key[j] + static_cast<uint32_t>(j);
    advance();
    if (++j == n) j = 0;
  }
  for (int left = Ring - 1; left > 0; --left) {
    mt[i] = (mt[i] ^ (mixed(mt[i - 1]) * 1566083941)) - i;
    advance();
  }
  mt[0] = 0x80000000;
}

}  // namespace tmk::rng
