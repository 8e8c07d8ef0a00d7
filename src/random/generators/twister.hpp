// SPDX-License-Identifier: Apache-2.0
// Twisted recurrences over a ring of words, tempered on the way out:
//   y = upper bits of w[i] | lower bits of w[i + 1],  w[i] <- w[i + middle] ^ (y >> 1) ^ (y odd ? matrix : 0)
// with positions modulo the ring. Only the words that are drawn are updated.
#pragma once

#include <algorithm>

#include "simd/integer.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {

inline void load_words(uint32_t& x, const uint32_t* p) { x = *p; }
inline void load_words(u32& x, const uint32_t* p) { x = load(p); }
inline void store_words(uint32_t* p, uint32_t x) { *p = x; }
inline void store_words(uint32_t* p, const u32& x) { store(p, x); }

// Shape: ring and middle, the count of lower bits that come from the next word, first shift of the tempering.
// Its members are the constants of a parameter set.
template <class Shape>
struct twister {
  Shape shape;

  template <class Words>
  Words twist(const uint32_t* here, const uint32_t* next, const uint32_t* partner) const {
    constexpr uint32_t lower = (uint32_t{1} << Shape::lower_bits) - 1;
    Words x, following, other;
    load_words(x, here);
    load_words(following, next);
    load_words(other, partner);
    const Words y = (x & Words(~lower)) | (following & Words(lower));
    return other ^ (y >> 1) ^ ((Words(0) - (y & Words(1))) & Words(shape.matrix_a));
  }

  template <class Words>
  Words temper(Words y) const {
    y = y ^ (y >> Shape::first_shift);
    y = y ^ ((y << 7) & Words(shape.temper_b));
    y = y ^ ((y << 15) & Words(shape.temper_c));
    return y ^ (y >> 18);
  }

  template <class Words>
  void step(uint32_t* here, const uint32_t* next, const uint32_t* partner, uint32_t* r) const {
    const Words x = twist<Words>(here, next, partner);
    store_words(here, x);
    store_words(r, temper(x));
  }

  // Positions from first to last, none of them the ring's end, with their partners at a fixed distance.
  void run(uint32_t* w, int first, int last, int distance, uint32_t* r) const {
    int i = first;
    for (; last - i >= lanes<uint32_t>; i += lanes<uint32_t>)
      step<u32>(w + i, w + i + 1, w + i + distance, r + (i - first));
    for (; i < last; ++i) step<uint32_t>(w + i, w + i + 1, w + i + distance, r + (i - first));
  }

  void draw(uint32_t* w, uint32_t& index, int32_t n, uint32_t* r) const {
    constexpr int ring = Shape::ring, middle = Shape::middle, wrapped = ring - middle;
    static_assert(middle >= lanes<uint32_t> && wrapped >= lanes<uint32_t>);
    int i = static_cast<int>(index);
    while (n > 0) {
      if (i == ring) i = 0;
      const auto advance = [&](int last, auto update) {
        last = std::min(last, i + n);
        if (last <= i) return;
        update(last);
        r += last - i;
        n -= last - i;
        i = last;
      };
      advance(wrapped, [&](int last) { run(w, i, last, middle, r); });
      advance(ring - 1, [&](int last) { run(w, i, last, -wrapped, r); });
      advance(ring, [&](int) { step<uint32_t>(w + i, w, w + i - wrapped, r); });
    }
    index = static_cast<uint32_t>(i);
  }
};

}  // namespace TMK_TIER
}  // namespace tmk::rng
