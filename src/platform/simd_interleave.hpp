// Columns of numbers as rows that go past the caches.
#pragma once

#include <type_traits>

#include "platform/simd_rows.hpp"

TMK_TIER_OPEN

// Four columns as rows without gaps behind p, which is aligned to 16 bytes. streaming_done() has to follow.
template <class T>
[[gnu::always_inline]] inline void stream_columns(T* p, const batch<T> (&column)[4]) {
  const batch<T> first[] = {unpack_low(column[0], column[1]), unpack_high(column[0], column[1])};
  const batch<T> second[] = {unpack_low(column[2], column[3]), unpack_high(column[2], column[3])};
  // Part P of pair[k][m] stands 16 (4 P + 2 k + m) bytes behind p.
  const auto put = [&]<int K>(std::integral_constant<int, K>) __attribute__((always_inline)) {
    const f64 a = bits_as<double>(first[K]), b = bits_as<double>(second[K]);
    const f64 pair[] = {sizeof(T) == 8 ? a : unpack_low(a, b), sizeof(T) == 8 ? b : unpack_high(a, b)};
    double* to = reinterpret_cast<double*>(p) + 4 * K;
    for_each_part([&]<int Part>(std::integral_constant<int, Part>) __attribute__((always_inline)) {
      _mm_stream_pd(to + 8 * Part, part_of<Part>(pair[0]));
      _mm_stream_pd(to + 8 * Part + 2, part_of<Part>(pair[1]));
    });
  };
  put(std::integral_constant<int, 0>());
  put(std::integral_constant<int, 1>());
}

TMK_TIER_CLOSE
