// SPDX-License-Identifier: Apache-2.0
// Rows of a table by index as columns in registers, and columns of registers as rows in memory: loads, stores
// and shuffles of 128-bit parts, which cost less than gather and scatter instructions.
//
// Shuffles work within each 128-bit part, alike in all parts. The pictures are of the first part: two doubles
// or four singles of the columns a, b, c, d, lane 0 on the left.
//   unpack_low(a, b)    a0 b0        a0 b0 a1 b1
//   unpack_high(a, b)   a1 b1        a2 b2 a3 b3
// Two singles that stay together are moved as one double.
#pragma once

#include <type_traits>
#include <utility>

#include "simd/batch.hpp"

TMK_TIER_OPEN

// The values at p + index[lane] * stride, lane by lane.
template <class T>
[[gnu::always_inline]] inline batch<T> load_at(const T* p, const int32_t* index, ptrdiff_t stride = 1) {
  const auto at = [&](int lane) { return p[index[lane] * stride]; };
  if constexpr (sizeof(T) == 8)
    return from_parts([&](int i) { return _mm_setr_pd(at(2 * i), at(2 * i + 1)); });
  else
    return bits_as<float>(from_parts([&](int i) {
      return _mm_castps_pd(_mm_setr_ps(at(4 * i), at(4 * i + 1), at(4 * i + 2), at(4 * i + 3)));
    }));
}

// Rows of a table of `Columns` columns, row[lane] for each lane, as columns. Singles, four columns:
//   r0  a0 b0 c0 d0        low01   a0 a1 b0 b1        column[0]  a0 a1 a2 a3
//   r1  a1 b1 c1 d1        high01  c0 c1 d0 d1        column[1]  b0 b1 b2 b3
//   r2  a2 b2 c2 d2   ->   low23   a2 a3 b2 b3   ->   column[2]  c0 c1 c2 c3
//   r3  a3 b3 c3 d3        high23  c2 c3 d2 d3        column[3]  d0 d1 d2 d3
// Two columns of singles:
//   even  a0 b0 a2 b2  ->  low   a0 a1 b0 b1  ->  column[0]  a0 a1 a2 a3
//   odd   a1 b1 a3 b3      high  a2 a3 b2 b3      column[1]  b0 b1 b2 b3
template <int Columns, class T, class Rows>
[[gnu::always_inline]] inline void load_columns(const T* table, const Rows& row,
                                                batch<T> (&column)[Columns]) {
  static_assert(Columns >= 2 && Columns <= 4);
  const auto at = [&](int lane) { return table + ptrdiff_t{Columns} * row[lane]; };
  if constexpr (sizeof(T) == 8) {
    const auto pairs = [&](int first) __attribute__((always_inline)) {
      const f64 even = from_parts([&](int i) { return _mm_loadu_pd(at(2 * i) + first); });
      const f64 odd = from_parts([&](int i) { return _mm_loadu_pd(at(2 * i + 1) + first); });
      column[first] = unpack_low(even, odd);
      column[first + 1] = unpack_high(even, odd);
    };
    pairs(0);
    if constexpr (Columns == 4) pairs(2);
  } else if constexpr (Columns == 4) {
    const auto row_of_each = [&](int first) __attribute__((always_inline)) {
      return bits_as<float>(
          from_parts([&](int i) { return _mm_castps_pd(_mm_loadu_ps(at(4 * i + first))); }));
    };
    const f32 r0 = row_of_each(0), r1 = row_of_each(1), r2 = row_of_each(2), r3 = row_of_each(3);
    const f64 low01 = bits_as<double>(unpack_low(r0, r1)), high01 = bits_as<double>(unpack_high(r0, r1));
    const f64 low23 = bits_as<double>(unpack_low(r2, r3)), high23 = bits_as<double>(unpack_high(r2, r3));
    column[0] = bits_as<float>(unpack_low(low01, low23));
    column[1] = bits_as<float>(unpack_high(low01, low23));
    column[2] = bits_as<float>(unpack_low(high01, high23));
    column[3] = bits_as<float>(unpack_high(high01, high23));
  } else {
    // The rows of lanes `first` and `first` + 2 of each part.
    const auto two_of_each = [&](int first) __attribute__((always_inline)) {
      return bits_as<float>(from_parts([&](int i) {
        const auto row = [&](int lane) { return reinterpret_cast<const __m64*>(at(4 * i + lane)); };
        const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(row(first)));
        return _mm_castps_pd(_mm_loadh_pi(_mm_castsi128_ps(low), row(first + 2)));
      }));
    };
    const f32 even = two_of_each(0), odd = two_of_each(1);
    const f64 low = bits_as<double>(unpack_low(even, odd)), high = bits_as<double>(unpack_high(even, odd));
    column[0] = bits_as<float>(unpack_low(low, high));
    column[1] = bits_as<float>(unpack_high(low, high));
  }
  if constexpr (Columns == 3) column[2] = load_at(table + 2, row, Columns);
}

template <class Store>
[[gnu::always_inline]] inline void for_each_part(const Store& store) {
  [&]<int... Part>(std::integer_sequence<int, Part...>) __attribute__((always_inline)) {
    (store(std::integral_constant<int, Part>()), ...);
  }
  (std::make_integer_sequence<int, static_cast<int>(sizeof(f64) / 16)>());
}

// Three columns as rows without gaps between them:
//   ab  a0 b0
//   ca  c0 a1
//   bc  b1 c1
[[gnu::always_inline]] inline void store_triples(double* p, const f64& a, const f64& b, const f64& c) {
  const f64 ab = unpack_low(a, b), ca = lower_and_upper(c, a), bc = unpack_high(b, c);
  for_each_part([&]<int Part>(std::integral_constant<int, Part>) __attribute__((always_inline)) {
    _mm_storeu_pd(p + 6 * Part, part_of<Part>(ab));
    _mm_storeu_pd(p + 6 * Part + 2, part_of<Part>(ca));
    _mm_storeu_pd(p + 6 * Part + 4, part_of<Part>(bc));
  });
}
//   ab_low   a0 b0 a1 b1     c0_a1    c0 c0 a1 a1        first   a0 b0 c0 a1
//   ab_high  a2 b2 a3 b3     b1_c1    b1 b1 c1 c1   ->   second  b1 c1 a2 b2
//                            c23_ab3  c2 c3 a3 b3        third   c2 a3 b3 c3
[[gnu::always_inline]] inline void store_triples(float* p, const f32& a, const f32& b, const f32& c) {
  const f32 ab_low = unpack_low(a, b), ab_high = unpack_high(a, b);
  const f32 c0_a1 = shuffle<0x50>(c, a), b1_c1 = shuffle<0x55>(b, c), c23_ab3 = shuffle<0xEE>(c, ab_high);
  const f64 first = bits_as<double>(shuffle<0x84>(ab_low, c0_a1));
  const f64 second = bits_as<double>(shuffle<0x48>(b1_c1, ab_high));
  const f64 third = bits_as<double>(shuffle<0x78>(c23_ab3, c23_ab3));
  for_each_part([&]<int Part>(std::integral_constant<int, Part>) __attribute__((always_inline)) {
    _mm_storeu_ps(p + 12 * Part, _mm_castpd_ps(part_of<Part>(first)));
    _mm_storeu_ps(p + 12 * Part + 4, _mm_castpd_ps(part_of<Part>(second)));
    _mm_storeu_ps(p + 12 * Part + 8, _mm_castpd_ps(part_of<Part>(third)));
  });
}

// Columns as rows: lane i of column c goes to p[i * stride + c], and no other memory is written.
//   even  a0 b0     last_even  c0 d0
//   odd   a1 b1     last_odd   c1 d1
template <int Columns>
[[gnu::always_inline]] inline void store_columns(double* p, ptrdiff_t stride, const f64 (&column)[Columns]) {
  static_assert(Columns >= 2 && Columns <= 4);
  if constexpr (Columns == 3)
    if (stride == 3) return store_triples(p, column[0], column[1], column[2]);
  const f64 even = unpack_low(column[0], column[1]), odd = unpack_high(column[0], column[1]);
  const f64 last = column[Columns - 1];
  const f64 last_even = unpack_low(column[2 % Columns], last),
            last_odd = unpack_high(column[2 % Columns], last);
  for_each_part([&]<int Part>(std::integral_constant<int, Part>) __attribute__((always_inline)) {
    double* row = p + 2 * Part * stride;
    _mm_storeu_pd(row, part_of<Part>(even));
    _mm_storeu_pd(row + stride, part_of<Part>(odd));
    if constexpr (Columns == 3) {
      _mm_storel_pd(row + 2, part_of<Part>(last));
      _mm_storeh_pd(row + stride + 2, part_of<Part>(last));
    } else if constexpr (Columns == 4) {
      _mm_storeu_pd(row + 2, part_of<Part>(last_even));
      _mm_storeu_pd(row + stride + 2, part_of<Part>(last_odd));
    }
  });
}

//   low   a0 b0 a1 b1     last_low   c0 d0 c1 d1        row[0]  a0 b0 c0 d0     row[2]  a2 b2 c2 d2
//   high  a2 b2 a3 b3     last_high  c2 d2 c3 d3   ->   row[1]  a1 b1 c1 d1     row[3]  a3 b3 c3 d3
template <int Columns>
[[gnu::always_inline]] inline void store_columns(float* p, ptrdiff_t stride, const f32 (&column)[Columns]) {
  static_assert(Columns >= 2 && Columns <= 4);
  if constexpr (Columns == 3)
    if (stride == 3) return store_triples(p, column[0], column[1], column[2]);
  const f64 low = bits_as<double>(unpack_low(column[0], column[1]));
  const f64 high = bits_as<double>(unpack_high(column[0], column[1]));
  const f32 third = column[2 % Columns], last = column[Columns - 1];
  const f64 last_low = bits_as<double>(unpack_low(third, last));
  const f64 last_high = bits_as<double>(unpack_high(third, last));
  const f64 row[] = {unpack_low(low, last_low), unpack_high(low, last_low), unpack_low(high, last_high),
                     unpack_high(high, last_high)};
  for_each_part([&]<int Part>(std::integral_constant<int, Part>) __attribute__((always_inline)) {
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
      const __m128d values = part_of<Part>(row[i]);
      float* to = p + (4 * Part + i) * stride;
      if constexpr (Columns == 4)
        _mm_storeu_ps(to, _mm_castpd_ps(values));
      else
        _mm_storel_pi(reinterpret_cast<__m64*>(to), _mm_castpd_ps(values));
      if constexpr (Columns == 3) _mm_store_ss(to + 2, _mm_castpd_ps(_mm_unpackhi_pd(values, values)));
    }
  });
}

// Four columns as rows without gaps, stored past the caches, p aligned to 16 bytes. streaming_done() must
// follow.
template <class T>
[[gnu::always_inline]] inline void stream_columns(T* p, const batch<T> (&column)[4]) {
  const batch<T> first[] = {unpack_low(column[0], column[1]), unpack_high(column[0], column[1])};
  const batch<T> second[] = {unpack_low(column[2], column[3]), unpack_high(column[2], column[3])};
  // Part P of pair[m], which `put` makes of first[k] and second[k], goes to 16 (4 P + 2 k + m) bytes after p.
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

// Four columns as rows without gaps, by stores of either kind.
template <class T>
[[gnu::always_inline]] inline void put_columns(T* p, const batch<T> (&column)[4], bool past_caches) {
  if (past_caches)
    stream_columns(p, column);
  else
    store_columns<4>(p, 4, column);
}

TMK_TIER_CLOSE
