// SPDX-License-Identifier: Apache-2.0
// Integers in V4's registers: words of 64-bit lanes, conversions, and lanes in turn.
#pragma once

#include "simd/types.hpp"

TMK_TIER_OPEN

// The 64-bit products of the lower words of 64-bit lanes.
inline u64 multiply_low_words(const u64& x, const u64& y) { return _mm512_mul_epu32(x, y); }

// The lower words of one vector of 64-bit lanes, and the upper words of another.
inline u32 merge_words(const u64& lower, const u64& upper) {
  return _mm512_mask_blend_epi32(0xAAAA, lower, upper);
}

// As many words as x has lanes: the lower word of each.
inline void store_lower_words(uint32_t* p, const u64& x) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtepi64_epi32(x));
}

// As many words as a vector has doubles, as signed or unsigned numbers.
inline f64 load_signed_words(const uint32_t* p) {
  return _mm512_cvtepi32_pd(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
}
inline f64 load_unsigned_words(const uint32_t* p) {
  return _mm512_cvtepu32_pd(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
}

// As many singles as the vector has doubles, each rounded once.
inline void store_singles(float* p, const f64& x) { _mm256_storeu_ps(p, _mm512_cvtpd_ps(x)); }

// As many integers as x has lanes, each the greatest one not above its lane: truncated, less 1 where that
// rounded up. What does not fit becomes the least integer.
inline void store_floor(int32_t* p, const f64& x) {
  const __m256i whole = _mm512_cvttpd_epi32(x);
  const __mmask8 above = _mm512_cmp_pd_mask(x, _mm512_cvtepi32_pd(whole), _CMP_LT_OQ);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p),
                      _mm256_mask_sub_epi32(whole, above, whole, _mm256_set1_epi32(1)));
}

// As many integers as x has lanes: the fraction dropped, and an integer added.
inline void store_truncated(int32_t* p, const f64& x, int32_t addend) {
  const __m256i sum = _mm256_add_epi32(_mm512_cvttpd_epi32(x), _mm256_set1_epi32(addend));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), sum);
}

// Doubles that hold words, four vectors of them: the words of each lane next to each other, lane after lane.
inline void store_interleaved_words(uint32_t* p, const f64 (&x)[4]) {
  const __m256i a = _mm512_cvtpd_epi32(x[0]), b = _mm512_cvtpd_epi32(x[1]);
  const __m256i c = _mm512_cvtpd_epi32(x[2]), d = _mm512_cvtpd_epi32(x[3]);
  const __m256i ab_low = _mm256_unpacklo_epi32(a, b), ab_high = _mm256_unpackhi_epi32(a, b);
  const __m256i cd_low = _mm256_unpacklo_epi32(c, d), cd_high = _mm256_unpackhi_epi32(c, d);
  const __m256i lanes04 = _mm256_unpacklo_epi64(ab_low, cd_low);
  const __m256i lanes15 = _mm256_unpackhi_epi64(ab_low, cd_low);
  const __m256i lanes26 = _mm256_unpacklo_epi64(ab_high, cd_high);
  const __m256i lanes37 = _mm256_unpackhi_epi64(ab_high, cd_high);
  __m256i* to = reinterpret_cast<__m256i*>(p);
  _mm256_storeu_si256(to, _mm256_permute2x128_si256(lanes04, lanes15, 0x20));
  _mm256_storeu_si256(to + 1, _mm256_permute2x128_si256(lanes26, lanes37, 0x20));
  _mm256_storeu_si256(to + 2, _mm256_permute2x128_si256(lanes04, lanes15, 0x31));
  _mm256_storeu_si256(to + 3, _mm256_permute2x128_si256(lanes26, lanes37, 0x31));
}

// The lanes of two vectors in turn: x[0], y[0], x[1], y[1], ...
inline void store_interleaved(uint64_t* p, const u64& x, const u64& y) {
  const __m512i low = _mm512_set_epi64(11, 3, 10, 2, 9, 1, 8, 0);
  const __m512i high = _mm512_set_epi64(15, 7, 14, 6, 13, 5, 12, 4);
  store(p, u64(_mm512_permutex2var_epi64(x, low, y)));
  store(p + 8, u64(_mm512_permutex2var_epi64(x, high, y)));
}

TMK_TIER_CLOSE
