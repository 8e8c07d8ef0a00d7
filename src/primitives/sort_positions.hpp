// SPDX-License-Identifier: Apache-2.0
// Positions in sorted order, for elements of 32 and 64 bits. Keys travel with their positions, so that no
// pass reads the source out of order; a digit that all keys share takes no pass.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "primitives/keys.hpp"

namespace tmk::primitives {

// Hidden, so that the shared library does not export it from the units of the C++ API.
template <class T, bool Descending>
[[gnu::visibility("hidden")]] void sort_positions(const T* x, std::uint32_t n, std::size_t* positions) {
  using order = order<T, Descending>;
  using word = typename order::word;
  struct record {
    word key;
    std::uint32_t position;
  };
  constexpr int width = 11, size = 1 << width, passes = (order::bits + width - 1) / width;
  // Below this the digits' counters cost more than they save.
  constexpr std::uint32_t radix_pays = 500;

  std::vector<record> records(n);
  for (std::uint32_t i = 0; i < n; ++i) {
    word bits;
    std::memcpy(&bits, x + i, sizeof bits);
    records[i] = {order::key(bits), i};
  }
  if (n < radix_pays) {
    std::sort(records.begin(), records.end(), [](const record& a, const record& b) {
      return a.key != b.key ? a.key < b.key : a.position < b.position;
    });
  } else {
    const auto digit = [](word key, int d) {
      return static_cast<std::uint32_t>(key >> (d * width)) & (size - 1);
    };
    std::vector<std::uint32_t> places(std::size_t{passes} * size);
    for (const record& r : records)
      for (int d = 0; d < passes; ++d) ++places[static_cast<std::size_t>(d * size) + digit(r.key, d)];
    std::vector<record> next(n);
    for (int d = 0; d < passes; ++d) {
      std::uint32_t* const place = places.data() + static_cast<std::size_t>(d) * size;
      if (place[digit(records[0].key, d)] == n) continue;
      std::uint32_t begin = 0;
      for (int k = 0; k < size; ++k) begin += std::exchange(place[k], begin);
      for (const record& r : records) next[place[digit(r.key, d)]++] = r;
      records.swap(next);
    }
  }
  for (std::uint32_t i = 0; i < n; ++i) positions[i] = records[i].position;
}

}  // namespace tmk::primitives
