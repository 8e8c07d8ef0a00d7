// SPDX-License-Identifier: Apache-2.0
// Integers in V3's registers: words of 64-bit lanes, conversions, and lanes in turn.
#pragma once

#include "simd/types.hpp"

TMK_TIER_OPEN

// The 64-bit products of the lower words of 64-bit lanes.
inline u64 multiply_low_words(const u64& x, const u64& y) { return _mm256_mul_epu32(x, y); }

// The lower words of one vector of 64-bit lanes, and the upper words of another.
inline u32 merge_words(const u64& lower, const u64& upper) { return _mm256_blend_epi32(lower, upper, 0xAA); }

// As many words as x has lanes: the lower word of each.
inline void store_lower_words(uint32_t* p, const u64& x) {
  const __m256i even = _mm256_permutevar8x32_epi32(x, _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(even));
}

// As many words as a vector has doubles, as signed or unsigned numbers.
inline f64 load_signed_words(const uint32_t* p) {
  return _mm256_cvtepi32_pd(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}

// A word is the low end of 2^52 + word; the difference is exact.
inline f64 load_unsigned_words(const uint32_t* p) {
  const __m256i word = _mm256_cvtepu32_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
  return bits_as<double>(u64(_mm256_or_si256(word, _mm256_castpd_si256(_mm256_set1_pd(0x1p52))))) - 0x1p52;
}

// As many singles as the vector has doubles, each rounded once.
inline void store_singles(float* p, const f64& x) { _mm_storeu_ps(p, _mm256_cvtpd_ps(x)); }

// As many integers as x has lanes, each the greatest one not above its lane: truncated, less 1 where that
// rounded up. What does not fit becomes the least integer.
inline void store_floor(int32_t* p, const f64& x) {
  const __m128i whole = _mm256_cvttpd_epi32(x);
  const __m256d above = _mm256_cmp_pd(x, _mm256_cvtepi32_pd(whole), _CMP_LT_OQ);
  const __m128i one = _mm256_cvttpd_epi32(_mm256_and_pd(above, _mm256_set1_pd(1)));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_sub_epi32(whole, one));
}

// As many integers as x has lanes: the fraction dropped, and an integer added.
inline void store_truncated(int32_t* p, const f64& x, int32_t addend) {
  const __m128i sum = _mm_add_epi32(_mm256_cvttpd_epi32(x), _mm_set1_epi32(addend));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), sum);
}

// Doubles that hold words, four vectors of them: the words of each lane next to each other, lane after lane.
inline void store_interleaved_words(uint32_t* p, const f64 (&x)[4]) {
  __m128i* to = reinterpret_cast<__m128i*>(p);
  const __m128i a = _mm256_cvtpd_epi32(x[0]), b = _mm256_cvtpd_epi32(x[1]);
  const __m128i c = _mm256_cvtpd_epi32(x[2]), d = _mm256_cvtpd_epi32(x[3]);
  const __m128i ab_high = _mm_unpackhi_epi32(a, b), cd_high = _mm_unpackhi_epi32(c, d);
  _mm_storeu_si128(to + 2, _mm_unpacklo_epi64(ab_high, cd_high));
  _mm_storeu_si128(to + 3, _mm_unpackhi_epi64(ab_high, cd_high));
  const __m128i ab_low = _mm_unpacklo_epi32(a, b), cd_low = _mm_unpacklo_epi32(c, d);
  _mm_storeu_si128(to, _mm_unpacklo_epi64(ab_low, cd_low));
  _mm_storeu_si128(to + 1, _mm_unpackhi_epi64(ab_low, cd_low));
}

// The lanes of two vectors in turn: x[0], y[0], x[1], y[1], ...
inline void store_interleaved(uint64_t* p, const u64& x, const u64& y) {
  const __m256i even = _mm256_unpacklo_epi64(x, y), odd = _mm256_unpackhi_epi64(x, y);
  store(p, u64(_mm256_permute2x128_si256(even, odd, 0x20)));
  store(p + 4, u64(_mm256_permute2x128_si256(even, odd, 0x31)));
}

TMK_TIER_CLOSE
