// SPDX-License-Identifier: Apache-2.0
// Rows of tables by index on the baseline, one row a lane, as columns: a load per lane, since SSE2 has no
// gather instruction. Indices and offsets are below 2^16, since SSE2 extracts no wider integers from a lane.
#pragma once

#include "simd/types.hpp"

TMK_TIER_OPEN

// Rows of two values, chosen by each lane's index.
template <class Row>
value_pair<f32> lookup(const Row* rows, const i32& index) {
  static_assert(sizeof(Row) == 2 * sizeof(float));
  const auto two_rows = [&](int first, int second) {
    const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(rows + first));
    return _mm_loadh_pi(_mm_castsi128_ps(low), reinterpret_cast<const __m64*>(rows + second));
  };
  const __m128 a = two_rows(_mm_extract_epi16(index, 0), _mm_extract_epi16(index, 2));
  const __m128 b = two_rows(_mm_extract_epi16(index, 4), _mm_extract_epi16(index, 6));
  return {_mm_shuffle_ps(a, b, 0x88), _mm_shuffle_ps(a, b, 0xDD)};
}

template <class Row>
value_pair<f64> lookup(const Row* rows, const i64& index) {
  static_assert(sizeof(Row) == 2 * sizeof(double));
  const auto row = [&](int i) { return _mm_loadu_pd(reinterpret_cast<const double*>(rows + i)); };
  const __m128d a = row(_mm_extract_epi16(index, 0));
  const __m128d b = row(_mm_extract_epi16(index, 4));
  return {_mm_unpacklo_pd(a, b), _mm_unpackhi_pd(a, b)};
}

// Rows of four singles, or two doubles, at offsets in bytes; those of doubles are in the upper words.
inline void load_rows(const void* table, const i32& offsets, f32 (&column)[4]) {
  const auto row = [&](int offset) {
    return _mm_load_ps(reinterpret_cast<const float*>(static_cast<const char*>(table) + offset));
  };
  const __m128 r0 = row(_mm_extract_epi16(offsets, 0)), r1 = row(_mm_extract_epi16(offsets, 2));
  const __m128 r2 = row(_mm_extract_epi16(offsets, 4)), r3 = row(_mm_extract_epi16(offsets, 6));
  const __m128 low01 = _mm_unpacklo_ps(r0, r1), low23 = _mm_unpacklo_ps(r2, r3);
  const __m128 high01 = _mm_unpackhi_ps(r0, r1), high23 = _mm_unpackhi_ps(r2, r3);
  column[0] = _mm_movelh_ps(low01, low23);
  column[1] = _mm_movehl_ps(low23, low01);
  column[2] = _mm_movelh_ps(high01, high23);
  column[3] = _mm_movehl_ps(high23, high01);
}

inline void load_rows(const void* table, const i32& offsets, f64 (&column)[2]) {
  const auto row = [&](int offset) {
    return _mm_load_pd(reinterpret_cast<const double*>(static_cast<const char*>(table) + offset));
  };
  const __m128d r0 = row(_mm_extract_epi16(offsets, 2)), r1 = row(_mm_extract_epi16(offsets, 6));
  column[0] = _mm_unpacklo_pd(r0, r1);
  column[1] = _mm_unpackhi_pd(r0, r1);
}

// Single values likewise.
inline f64 load_values(const double* table, const i32& offsets) {
  const auto value = [&](int offset) {
    return reinterpret_cast<const double*>(reinterpret_cast<const char*>(table) + offset);
  };
  const __m128d first = _mm_load_sd(value(_mm_extract_epi16(offsets, 2)));
  return _mm_loadh_pd(first, value(_mm_extract_epi16(offsets, 6)));
}

TMK_TIER_CLOSE
