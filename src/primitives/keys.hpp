// SPDX-License-Identifier: Apache-2.0
// Elements as unsigned keys whose order is the order of the elements.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace tmk::primitives {

template <size_t Bytes>
using word_of = std::conditional_t<
    Bytes == 1, uint8_t,
    std::conditional_t<Bytes == 2, uint16_t, std::conditional_t<Bytes == 4, uint32_t, uint64_t>>>;

// Signed integers turn the sign bit. Floating values turn it when it is clear and all bits when it is set, so
// that -0.0 is below +0.0 and NaNs are outside all numbers. A descending order complements the keys.
template <class T, bool Descending>
struct order {
  using word = word_of<sizeof(T)>;
  static constexpr int bits = 8 * static_cast<int>(sizeof(T));
  static constexpr word sign = static_cast<word>(word{1} << (bits - 1));
  static constexpr word flip = Descending ? static_cast<word>(~word{0}) : word{0};

  static constexpr word key(word x) {
    if constexpr (std::floating_point<T>)
      return static_cast<word>(x ^ ((word{0} - (x >> (bits - 1))) | sign) ^ flip);
    else
      return static_cast<word>(x ^ (std::signed_integral<T> ? sign : word{0}) ^ flip);
  }
  static constexpr word element(word k) {
    if constexpr (std::floating_point<T>) {
      k = static_cast<word>(k ^ flip);
      return static_cast<word>(k ^ (((k >> (bits - 1)) - 1) | sign));
    } else {
      return key(k);
    }
  }
};

// A key's digits for a counting sort by all of them: at most three.
template <int Bits>
struct digits {
  static constexpr int width = Bits <= 16 ? 8 : 11;
  static constexpr int count = Bits == 8 ? 1 : Bits == 16 ? 2 : 3;
  static constexpr int size = 1 << width;

  template <class Word>
  static constexpr uint32_t digit(Word key, int d) {
    return static_cast<uint32_t>(key >> (d * width)) & (size - 1);
  }
};

// Counts become the places where each digit's elements begin.
template <int Size>
void counts_to_places(int32_t (&counts)[Size]) {
  int32_t place = 0;
  for (int32_t& count : counts) {
    const int32_t next = place + count;
    count = place;
    place = next;
  }
}

}  // namespace tmk::primitives
