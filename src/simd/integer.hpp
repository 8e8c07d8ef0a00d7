// SPDX-License-Identifier: Apache-2.0
// What the integer generators need beyond xsimd: products of 32-bit words, halves of 64-bit lanes, 128-bit
// lanes, and exact conversions between words and doubles. Intrinsics that are not in simd.hpp stand here.
#pragma once

#include "simd/batch.hpp"

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

// As many words as x has lanes: the lower word of each.
inline void store_lower_words(uint32_t* p, const u64& x) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtepi64_epi32(x));
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  const __m256i even = _mm256_permutevar8x32_epi32(x, _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(even));
#else
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_shuffle_epi32(x, _MM_SHUFFLE(3, 1, 2, 0)));
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

// As many signed words as a vector of T has lanes, as numbers of its type.
template <class T>
batch<T> load_as(const int32_t* p) {
  if constexpr (sizeof(T) == 8)
    return load_signed_words(reinterpret_cast<const uint32_t*>(p));
  else
    return xsimd::to_float(load(p));
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

// As many integers as x has lanes, each the greatest one not above its lane: truncated, less 1 where that
// went up. What does not fit becomes the least integer.
inline void store_floor(int32_t* p, const f32& x) {
  const i32 whole = xsimd::to_int(x);
  const f32 above = xsimd::select(x < xsimd::to_float(whole), f32(1), f32(0));
  store(p, whole - xsimd::to_int(above));
}
inline void store_floor(int32_t* p, const f64& x) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  const __m256i whole = _mm512_cvttpd_epi32(x);
  const __mmask8 above = _mm512_cmp_pd_mask(x, _mm512_cvtepi32_pd(whole), _CMP_LT_OQ);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p),
                      _mm256_mask_sub_epi32(whole, above, whole, _mm256_set1_epi32(1)));
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  const __m128i whole = _mm256_cvttpd_epi32(x);
  const __m256d above = _mm256_cmp_pd(x, _mm256_cvtepi32_pd(whole), _CMP_LT_OQ);
  const __m128i one = _mm256_cvttpd_epi32(_mm256_and_pd(above, _mm256_set1_pd(1)));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_sub_epi32(whole, one));
#else
  const __m128i whole = _mm_cvttpd_epi32(x);
  const __m128d above = _mm_cmplt_pd(x, _mm_cvtepi32_pd(whole));
  const __m128i one = _mm_cvttpd_epi32(_mm_and_pd(above, _mm_set1_pd(1)));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_sub_epi32(whole, one));
#endif
}

// As many integers as x has lanes: the fraction dropped, and an integer added.
inline void store_truncated(int32_t* p, const f32& x, int32_t addend) {
  store(p, xsimd::to_int(x) + i32(addend));
}
inline void store_truncated(int32_t* p, const f64& x, int32_t addend) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  const __m256i sum = _mm256_add_epi32(_mm512_cvttpd_epi32(x), _mm256_set1_epi32(addend));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), sum);
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  const __m128i sum = _mm_add_epi32(_mm256_cvttpd_epi32(x), _mm_set1_epi32(addend));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), sum);
#else
  const __m128i sum = _mm_add_epi32(_mm_cvttpd_epi32(x), _mm_set1_epi32(addend));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), sum);
#endif
}

// Doubles that hold words, four vectors of them: the words of each lane side by side, lane after lane.
inline void store_interleaved_words(uint32_t* p, const f64 (&x)[4]) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
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
#else
  __m128i* to = reinterpret_cast<__m128i*>(p);
#if TMK_TIER_NUMBER(TMK_TIER) == 1
  const __m128i a = _mm256_cvtpd_epi32(x[0]), b = _mm256_cvtpd_epi32(x[1]);
  const __m128i c = _mm256_cvtpd_epi32(x[2]), d = _mm256_cvtpd_epi32(x[3]);
  const __m128i ab_high = _mm_unpackhi_epi32(a, b), cd_high = _mm_unpackhi_epi32(c, d);
  _mm_storeu_si128(to + 2, _mm_unpacklo_epi64(ab_high, cd_high));
  _mm_storeu_si128(to + 3, _mm_unpackhi_epi64(ab_high, cd_high));
#else
  const __m128i a = _mm_cvtpd_epi32(x[0]), b = _mm_cvtpd_epi32(x[1]);
  const __m128i c = _mm_cvtpd_epi32(x[2]), d = _mm_cvtpd_epi32(x[3]);
#endif
  const __m128i ab_low = _mm_unpacklo_epi32(a, b), cd_low = _mm_unpacklo_epi32(c, d);
  _mm_storeu_si128(to, _mm_unpacklo_epi64(ab_low, cd_low));
  _mm_storeu_si128(to + 1, _mm_unpackhi_epi64(ab_low, cd_low));
#endif
}

// The lanes of two vectors side by side: x[0], y[0], x[1], y[1], ...
inline void store_interleaved(uint64_t* p, const u64& x, const u64& y) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  const __m512i low = _mm512_set_epi64(11, 3, 10, 2, 9, 1, 8, 0);
  const __m512i high = _mm512_set_epi64(15, 7, 14, 6, 13, 5, 12, 4);
  store(p, u64(_mm512_permutex2var_epi64(x, low, y)));
  store(p + 8, u64(_mm512_permutex2var_epi64(x, high, y)));
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  const __m256i even = _mm256_unpacklo_epi64(x, y), odd = _mm256_unpackhi_epi64(x, y);
  store(p, u64(_mm256_permute2x128_si256(even, odd, 0x20)));
  store(p + 4, u64(_mm256_permute2x128_si256(even, odd, 0x31)));
#else
  store(p, u64(_mm_unpacklo_epi64(x, y)));
  store(p + 2, u64(_mm_unpackhi_epi64(x, y)));
#endif
}

// A lane of 128 bits, on every tier. << and >> shift each of its four words; the other two shift the lane by
// whole bytes.
struct lane128 {
  __m128i bits;
  static lane128 load(const uint32_t* p) { return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))}; }
  void store(uint32_t* p) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), bits); }
  lane128 operator^(const lane128& y) const { return {_mm_xor_si128(bits, y.bits)}; }
  lane128 operator&(const lane128& y) const { return {_mm_and_si128(bits, y.bits)}; }
  lane128 operator<<(int n) const { return {_mm_slli_epi32(bits, n)}; }
  lane128 operator>>(int n) const { return {_mm_srli_epi32(bits, n)}; }
};
template <int Bytes>
lane128 shift_lane_left(const lane128& x) {
  return {_mm_bslli_si128(x.bits, Bytes)};
}
template <int Bytes>
lane128 shift_lane_right(const lane128& x) {
  return {_mm_bsrli_si128(x.bits, Bytes)};
}

TMK_TIER_CLOSE
