// SPDX-License-Identifier: Apache-2.0
// Elements on their way between a dense array and a spread one, one by one.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "platform/tier.hpp"

TMK_TIER_OPEN
namespace {

// Never through a floating-point register that could quieten a signalling NaN.
template <class Element>
void move_bits(const Element* from, Element* to) {
  unsigned char bits[sizeof(Element)];
  std::memcpy(bits, from, sizeof bits);
  std::memcpy(to, bits, sizeof bits);
}

template <class Element>
void move_all(const Element* from, Element* to, int64_t count) {
  if (count > 0) std::memmove(to, from, static_cast<size_t>(count) * sizeof(Element));
}

template <class Element>
struct gather {
  const Element* spread;
  Element* dense;
  void operator()(int64_t i, int64_t place) const { move_bits(spread + place, dense + i); }
  void all(int64_t count) const { move_all(spread, dense, count); }
};

template <class Element>
struct scatter {
  const Element* dense;
  Element* spread;
  void operator()(int64_t i, int64_t place) const { move_bits(dense + i, spread + place); }
  void all(int64_t count) const { move_all(dense, spread, count); }
};

template <class Integer, class Move>
void along_stride(int64_t n, int64_t inc, Move move) {
  const Integer count = static_cast<Integer>(n), stride = static_cast<Integer>(inc);
  if (stride == 1) return move.all(count);
#pragma GCC unroll 8
  for (Integer i = 0; i < count; ++i) move(i, int64_t{i} * stride);
}

// The places of a block first, without a branch that a random mask would mislead; then the moves, which touch
// no other element.
template <class Integer, class Move>
void where_set(int64_t n, const void* mask, Move move) {
  constexpr Integer block = 256;
  const Integer count = static_cast<Integer>(n);
  const Integer* set = static_cast<const Integer*>(mask);
  int64_t dense = 0;
  for (Integer i = 0; i < count; i += block) {
    const Integer end = std::min(block, count - i);
    uint16_t places[block];
    uint32_t found = 0;
#pragma GCC unroll 4
    for (Integer k = 0; k < end; ++k) {
      places[found] = static_cast<uint16_t>(k);
      found += set[i + k] != 0;
    }
#pragma GCC unroll 4
    for (uint32_t k = 0; k < found; ++k) move(dense + k, int64_t{i} + places[k]);
    dense += found;
  }
}

}  // namespace
TMK_TIER_CLOSE
