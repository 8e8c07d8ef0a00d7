// Rows of a table by index as columns in registers, and columns of registers as rows in memory: loads, stores
// and shuffles of 128-bit parts, which cost less than gather and scatter instructions.
#pragma once

#include <type_traits>
#include <utility>

#include "platform/simd.hpp"

TMK_TIER_OPEN

// In each 128-bit part: the lower, or upper, lanes of two registers in turn. The pairs of singles are moved
// as doubles are.
#if TMK_TIER_NUMBER(TMK_TIER) == 2
inline f32 unpack_low(const f32& a, const f32& b) { return _mm512_unpacklo_ps(a, b); }
inline f32 unpack_high(const f32& a, const f32& b) { return _mm512_unpackhi_ps(a, b); }
inline f64 unpack_low(const f64& a, const f64& b) { return _mm512_unpacklo_pd(a, b); }
inline f64 unpack_high(const f64& a, const f64& b) { return _mm512_unpackhi_pd(a, b); }
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
inline f32 unpack_low(const f32& a, const f32& b) { return _mm256_unpacklo_ps(a, b); }
inline f32 unpack_high(const f32& a, const f32& b) { return _mm256_unpackhi_ps(a, b); }
inline f64 unpack_low(const f64& a, const f64& b) { return _mm256_unpacklo_pd(a, b); }
inline f64 unpack_high(const f64& a, const f64& b) { return _mm256_unpackhi_pd(a, b); }
#else
inline f32 unpack_low(const f32& a, const f32& b) { return _mm_unpacklo_ps(a, b); }
inline f32 unpack_high(const f32& a, const f32& b) { return _mm_unpackhi_ps(a, b); }
inline f64 unpack_low(const f64& a, const f64& b) { return _mm_unpacklo_pd(a, b); }
inline f64 unpack_high(const f64& a, const f64& b) { return _mm_unpackhi_pd(a, b); }
#endif

// The register whose 128-bit parts are part(0), part(1), ... as doubles, and such a part of a register.
template <class Part>
[[gnu::always_inline]] inline f64 from_parts(const Part& part) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  const __m256d low = _mm256_insertf128_pd(_mm256_castpd128_pd256(part(0)), part(1), 1);
  const __m256d high = _mm256_insertf128_pd(_mm256_castpd128_pd256(part(2)), part(3), 1);
  return _mm512_insertf64x4(_mm512_castpd256_pd512(low), high, 1);
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  return _mm256_insertf128_pd(_mm256_castpd128_pd256(part(0)), part(1), 1);
#else
  return part(0);
#endif
}

template <int Part>
__m128d part_of(const f64& x) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  return _mm512_extractf64x2_pd(x, Part);
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  return _mm256_extractf128_pd(x, Part);
#else
  return x;
#endif
}

// The values at p + index[lane], lane by lane: loads and shuffles, since gather instructions are no faster.
template <class T>
[[gnu::always_inline]] inline batch<T> load_at(const T* p, const int32_t* index) {
  if constexpr (sizeof(T) == 8) {
    return from_parts([&](int i) { return _mm_set_pd(p[index[2 * i + 1]], p[index[2 * i]]); });
  } else {
    return bits_as<float>(from_parts([&](int i) {
      const int32_t* at = index + 4 * i;
      return _mm_castps_pd(_mm_setr_ps(p[at[0]], p[at[1]], p[at[2]], p[at[3]]));
    }));
  }
}

// Rows of a table of `Columns` columns, row[lane] for each lane, as columns.
template <int Columns, class T>
[[gnu::always_inline]] inline void load_columns(const T* table, const int32_t* row,
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
    const auto rows = [&](int first) __attribute__((always_inline)) {
      return bits_as<float>(
          from_parts([&](int i) { return _mm_castps_pd(_mm_loadu_ps(at(4 * i + first))); }));
    };
    const f32 r0 = rows(0), r1 = rows(1), r2 = rows(2), r3 = rows(3);
    const f64 low01 = bits_as<double>(unpack_low(r0, r1)), high01 = bits_as<double>(unpack_high(r0, r1));
    const f64 low23 = bits_as<double>(unpack_low(r2, r3)), high23 = bits_as<double>(unpack_high(r2, r3));
    column[0] = bits_as<float>(unpack_low(low01, low23));
    column[1] = bits_as<float>(unpack_high(low01, low23));
    column[2] = bits_as<float>(unpack_low(high01, high23));
    column[3] = bits_as<float>(unpack_high(high01, high23));
  } else {
    const auto rows = [&](int first)
        __attribute__((always_inline)) {  // lanes `first` and `first` + 2 of each part
      return bits_as<float>(from_parts([&](int i) {
        const __m128d low = _mm_load_sd(reinterpret_cast<const double*>(at(4 * i + first)));
        return _mm_loadh_pd(low, reinterpret_cast<const double*>(at(4 * i + first + 2)));
      }));
    };
    const f32 even = rows(0), odd = rows(1);
    const f64 low = bits_as<double>(unpack_low(even, odd)), high = bits_as<double>(unpack_high(even, odd));
    column[0] = bits_as<float>(unpack_low(low, high));
    column[1] = bits_as<float>(unpack_high(low, high));
  }
  if constexpr (Columns == 3) {
    if constexpr (sizeof(T) == 8)
      column[2] = from_parts([&](int i) {
        const __m128d low = _mm_load_sd(at(2 * i) + 2);
        return _mm_loadh_pd(low, at(2 * i + 1) + 2);
      });
    else
      column[2] = bits_as<float>(from_parts([&](int i) {
        const auto value = [&](int lane) { return at(4 * i + lane)[2]; };
        return _mm_castps_pd(_mm_setr_ps(value(0), value(1), value(2), value(3)));
      }));
  }
}

// Columns as rows: lane i of column c goes to p[i * stride + c].
template <int Columns, class T>
[[gnu::always_inline]] inline void store_columns(T* p, ptrdiff_t stride, const batch<T> (&column)[Columns]) {
  static_assert(Columns >= 2 && Columns <= 4);
  const auto part = [&]<int Part>(std::integral_constant<int, Part>) __attribute__((always_inline)) {
    if constexpr (sizeof(T) == 8) {
      T* even = p + 2 * Part * stride;
      T* odd = even + stride;
      _mm_storeu_pd(even, part_of<Part>(unpack_low(column[0], column[1])));
      _mm_storeu_pd(odd, part_of<Part>(unpack_high(column[0], column[1])));
      if constexpr (Columns == 3) {
        _mm_storel_pd(even + 2, part_of<Part>(column[2]));
        _mm_storeh_pd(odd + 2, part_of<Part>(column[2]));
      } else if constexpr (Columns == 4) {
        _mm_storeu_pd(even + 2, part_of<Part>(unpack_low(column[2], column[3])));
        _mm_storeu_pd(odd + 2, part_of<Part>(unpack_high(column[2], column[3])));
      }
    } else {
      T* row = p + 4 * Part * stride;
      const auto pairs = [&](int first) __attribute__((always_inline)) {
        const f64 low = bits_as<double>(unpack_low(column[first], column[first + 1]));
        const f64 high = bits_as<double>(unpack_high(column[first], column[first + 1]));
        const auto to = [&](int i) { return reinterpret_cast<double*>(row + i * stride + first); };
        _mm_storel_pd(to(0), part_of<Part>(low));
        _mm_storeh_pd(to(1), part_of<Part>(low));
        _mm_storel_pd(to(2), part_of<Part>(high));
        _mm_storeh_pd(to(3), part_of<Part>(high));
      };
      pairs(0);
      if constexpr (Columns == 4) pairs(2);
      if constexpr (Columns == 3) {
        alignas(16) float last[4];
        _mm_store_ps(last, _mm_castpd_ps(part_of<Part>(bits_as<double>(column[2]))));
        for (int i = 0; i < 4; ++i) row[i * stride + 2] = last[i];
      }
    }
  };
  [&]<int... Part>(std::integer_sequence<int, Part...>) { (part(std::integral_constant<int, Part>()), ...); }
  (std::make_integer_sequence<int, static_cast<int>(sizeof(batch<T>) / 16)>());
}

TMK_TIER_CLOSE
