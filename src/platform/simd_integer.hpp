// What the integer generators need beyond xsimd: products of 32-bit words, halves of 64-bit lanes, 128-bit
// lanes, and exact conversions between words and doubles. Intrinsics that are not in simd.hpp stand here.
#pragma once

#include "platform/simd.hpp"

TMK_TIER_OPEN

// The 64-bit products of the lower words of 64-bit lanes.
inline u64 multiply_low_words(const u64& x, const u64& y) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  return _mm512_mul_epu32(x, y);
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  return _mm256_mul_epu32(x, y);
#else
  return _mm_mul_epu32(x, y);
#endif
}

// The lower words of one vector of 64-bit lanes, and the upper words of another.
inline u32 merge_words(const u64& lower, const u64& upper) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  return _mm512_mask_blend_epi32(0xAAAA, lower, upper);
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  return _mm256_blend_epi32(lower, upper, 0xAA);
#else
  const __m128i mask = _mm_set1_epi64x(0xFFFFFFFF);
  return _mm_or_si128(_mm_and_si128(lower, mask), _mm_andnot_si128(mask, upper));
#endif
}

// As many words as a vector has doubles, as signed or unsigned numbers.
inline f64 load_signed_words(const uint32_t* p) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  return _mm512_cvtepi32_pd(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  return _mm256_cvtepi32_pd(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
#else
  return _mm_cvtepi32_pd(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
#endif
}

// On the narrow tiers a word is the low end of 2^52 + word; the difference is exact.
inline f64 load_unsigned_words(const uint32_t* p) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  return _mm512_cvtepu32_pd(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  const __m256i word = _mm256_cvtepu32_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
  return bits_as<double>(u64(_mm256_or_si256(word, _mm256_castpd_si256(_mm256_set1_pd(0x1p52))))) - 0x1p52;
#else
  const __m128i word = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  return f64(_mm_castsi128_pd(_mm_unpacklo_epi32(word, _mm_set1_epi32(0x43300000)))) - 0x1p52;
#endif
}

// As many singles as the vector has doubles, each rounded once.
inline void store_singles(float* p, const f64& x) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  _mm256_storeu_ps(p, _mm512_cvtpd_ps(x));
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  _mm_storeu_ps(p, _mm256_cvtpd_ps(x));
#else
  _mm_storel_pi(reinterpret_cast<__m64*>(p), _mm_cvtpd_ps(x));
#endif
}

TMK_TIER_CLOSE
