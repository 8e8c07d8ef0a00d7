// SPDX-License-Identifier: Apache-2.0
// Integers in the baseline's registers: words of 64-bit lanes, conversions, and lanes in turn.
#pragma once

#include "simd/types.hpp"

TMK_TIER_OPEN

// The 64-bit products of the lower words of 64-bit lanes.
inline u64 multiply_low_words(const u64& x, const u64& y) { return _mm_mul_epu32(x, y); }

// The lower words of one vector of 64-bit lanes, and the upper words of another.
inline u32 merge_words(const u64& lower, const u64& upper) {
  const __m128i mask = _mm_set1_epi64x(0xFFFFFFFF);
  return _mm_or_si128(_mm_and_si128(lower, mask), _mm_andnot_si128(mask, upper));
}

// As many words as x has lanes: the lower word of each.
inline void store_lower_words(uint32_t* p, const u64& x) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_shuffle_epi32(x, _MM_SHUFFLE(3, 1, 2, 0)));
}

// As many words as a vector has doubles, as signed or unsigned numbers.
inline f64 load_signed_words(const uint32_t* p) {
  return _mm_cvtepi32_pd(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
}

// A word is the low end of 2^52 + word; the difference is exact.
inline f64 load_unsigned_words(const uint32_t* p) {
  const __m128i word = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  return f64(_mm_castsi128_pd(_mm_unpacklo_epi32(word, _mm_set1_epi32(0x43300000)))) - 0x1p52;
}

// As many singles as the vector has doubles, each rounded once.
inline void store_singles(float* p, const f64& x) {
  _mm_storel_pi(reinterpret_cast<__m64*>(p), _mm_cvtpd_ps(x));
}

// As many integers as x has lanes, each the greatest one not above its lane: truncated, less 1 where that
// rounded up. What does not fit becomes the least integer.
inline void store_floor(int32_t* p, const f64& x) {
  const __m128i whole = _mm_cvttpd_epi32(x);
  const __m128d above = _mm_cmplt_pd(x, _mm_cvtepi32_pd(whole));
  const __m128i one = _mm_cvttpd_epi32(_mm_and_pd(above, _mm_set1_pd(1)));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_sub_epi32(whole, one));
}

// As many integers as x has lanes: the fraction dropped, and an integer added.
inline void store_truncated(int32_t* p, const f64& x, int32_t addend) {
  const __m128i sum = _mm_add_epi32(_mm_cvttpd_epi32(x), _mm_set1_epi32(addend));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), sum);
}

// Doubles that hold words, four vectors of them: the words of each lane next to each other, lane after lane.
inline void store_interleaved_words(uint32_t* p, const f64 (&x)[4]) {
  __m128i* to = reinterpret_cast<__m128i*>(p);
  const __m128i a = _mm_cvtpd_epi32(x[0]), b = _mm_cvtpd_epi32(x[1]);
  const __m128i c = _mm_cvtpd_epi32(x[2]), d = _mm_cvtpd_epi32(x[3]);
  const __m128i ab = _mm_unpacklo_epi32(a, b), cd = _mm_unpacklo_epi32(c, d);
  _mm_storeu_si128(to, _mm_unpacklo_epi64(ab, cd));
  _mm_storeu_si128(to + 1, _mm_unpackhi_epi64(ab, cd));
}

// The lanes of two vectors in turn: x[0], y[0], x[1], y[1], ...
inline void store_interleaved(uint64_t* p, const u64& x, const u64& y) {
  store(p, u64(_mm_unpacklo_epi64(x, y)));
  store(p + 2, u64(_mm_unpackhi_epi64(x, y)));
}

TMK_TIER_CLOSE
