// SPDX-License-Identifier: Apache-2.0
// The instructions of V4 (AVX-512 F, BW, CD, DQ, VL): registers of 512 bits, masks of one bit a lane, and
// permutations across the whole register.
#pragma once

#include "simd/types.hpp"

TMK_TIER_OPEN

// A store past the caches; p is aligned to the register.
inline void stream(float* p, const f32& x) { _mm512_stream_ps(p, x); }
inline void stream(double* p, const f64& x) { _mm512_stream_pd(p, x); }

// The first `count` lanes, for partial.hpp.
inline __mmask16 leading_lanes(int count) { return static_cast<__mmask16>((1u << count) - 1); }
template <class T>
batch<T> load_leading(const T* p, int count, T filler) {
  if constexpr (sizeof(T) == 4)
    return _mm512_mask_loadu_ps(batch<T>(filler), leading_lanes(count), p);
  else
    return _mm512_mask_loadu_pd(batch<T>(filler), static_cast<__mmask8>(leading_lanes(count)), p);
}
template <class T>
void store_leading(T* p, int count, const batch<T>& x) {
  if constexpr (sizeof(T) == 4)
    _mm512_mask_storeu_ps(p, leading_lanes(count), x);
  else
    _mm512_mask_storeu_pd(p, static_cast<__mmask8>(leading_lanes(count)), x);
}

// A mask as an integer: bit i is set where lane i is.
template <class T>
uint32_t lane_bits(const lane_mask<T>& m) {
  return static_cast<uint32_t>(m.data);
}

// Estimates of 14 bits, of doubles too.
inline f32 reciprocal_estimate(const f32& x) { return _mm512_rcp14_ps(x); }
inline f32 reciprocal_sqrt_estimate(const f32& x) { return _mm512_rsqrt14_ps(x); }
inline f64 reciprocal_estimate(const f64& x) { return _mm512_rcp14_pd(x); }
inline f64 reciprocal_sqrt_estimate(const f64& x) { return _mm512_rsqrt14_pd(x); }

// Singles as doubles, and back.
inline widened widen(const f32& x) {
  return {_mm512_cvtps_pd(_mm512_castps512_ps256(x)), _mm512_cvtps_pd(_mm512_extractf32x8_ps(x, 1))};
}
inline f32 narrow(const widened& x) {
  return _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(x.low)), _mm512_cvtpd_ps(x.high), 1);
}

// x y + z, x y - z and z - x y, rounded once.
template <class T>
batch<T> multiply_add(const batch<T>& x, const batch<T>& y, const batch<T>& z) {
  return xsimd::fma(x, y, z);
}
template <class T>
batch<T> multiply_subtract(const batch<T>& x, const batch<T>& y, const batch<T>& z) {
  return xsimd::fms(x, y, z);
}
template <class T>
batch<T> negative_multiply_add(const batch<T>& x, const batch<T>& y, const batch<T>& z) {
  return xsimd::fnma(x, y, z);
}

// From a0 a1 ..., b0 b1 ... to a0 a2 ... b0 b2 ..., a1 a3 ... b1 b3 ... A number in an order is a lane of the
// first register, or of the second one where it is not below the number of lanes.
inline two_batches<double> deinterleave(const f64& a, const f64& b) {
  const __m512i even = _mm512_setr_epi64(0, 2, 4, 6, 8, 10, 12, 14);
  const __m512i odd = _mm512_setr_epi64(1, 3, 5, 7, 9, 11, 13, 15);
  return {_mm512_permutex2var_pd(a, even, b), _mm512_permutex2var_pd(a, odd, b)};
}
inline two_batches<float> deinterleave(const f32& a, const f32& b) {
  const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  const __m512i odd = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
  return {_mm512_permutex2var_ps(a, even, b), _mm512_permutex2var_ps(a, odd, b)};
}
// And back.
inline two_batches<double> interleave(const f64& even, const f64& odd) {
  const __m512i first = _mm512_setr_epi64(0, 8, 1, 9, 2, 10, 3, 11);
  const __m512i second = _mm512_setr_epi64(4, 12, 5, 13, 6, 14, 7, 15);
  return {_mm512_permutex2var_pd(even, first, odd), _mm512_permutex2var_pd(even, second, odd)};
}
inline two_batches<float> interleave(const f32& even, const f32& odd) {
  const __m512i first = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const __m512i second = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  return {_mm512_permutex2var_ps(even, first, odd), _mm512_permutex2var_ps(even, second, odd)};
}

// Within each 128-bit part (rows.hpp has a picture): the lower, or upper, lanes of two registers in turn; two
// lanes of the one and two of the other, by the two-bit numbers in Lanes; the lower lane of the one and the
// upper lane of the other.
inline f32 unpack_low(const f32& a, const f32& b) { return _mm512_unpacklo_ps(a, b); }
inline f32 unpack_high(const f32& a, const f32& b) { return _mm512_unpackhi_ps(a, b); }
inline f64 unpack_low(const f64& a, const f64& b) { return _mm512_unpacklo_pd(a, b); }
inline f64 unpack_high(const f64& a, const f64& b) { return _mm512_unpackhi_pd(a, b); }
template <int Lanes>
f32 shuffle(const f32& a, const f32& b) {
  return _mm512_shuffle_ps(a, b, Lanes);
}
inline f64 lower_and_upper(const f64& a, const f64& b) { return _mm512_shuffle_pd(a, b, 0xAA); }

// The register whose 128-bit parts are part(0), part(1), ... as doubles, and one such part of a register.
template <class Part>
[[gnu::always_inline]] inline f64 from_parts(const Part& part) {
  const __m256d low = _mm256_insertf128_pd(_mm256_castpd128_pd256(part(0)), part(1), 1);
  const __m256d high = _mm256_insertf128_pd(_mm256_castpd128_pd256(part(2)), part(3), 1);
  return _mm512_insertf64x4(_mm512_castpd256_pd512(low), high, 1);
}
template <int Part>
__m128d part_of(const f64& x) {
  return _mm512_extractf64x2_pd(x, Part);
}

// Numbers rounded to integers; the last in the direction that the processor is set to.
template <class T>
batch<T> round_to_zero(const batch<T>& x) {
  return xsimd::trunc(x);
}
template <class T>
batch<T> round_down(const batch<T>& x) {
  return xsimd::floor(x);
}
template <class T>
batch<T> round_up(const batch<T>& x) {
  return xsimd::ceil(x);
}
inline f32 round_as_set(const f32& x) { return _mm512_roundscale_ps(x, _MM_FROUND_CUR_DIRECTION); }
inline f64 round_as_set(const f64& x) { return _mm512_roundscale_pd(x, _MM_FROUND_CUR_DIRECTION); }

// Lanes that hold an infinity or a NaN; those, or a zero or a subnormal number.
inline lane_mask<float> not_finite(const f32& x) { return lane_mask<float>(_mm512_fpclass_ps_mask(x, 0x99)); }
inline lane_mask<double> not_finite(const f64& x) {
  return lane_mask<double>(_mm512_fpclass_pd_mask(x, 0x99));
}
inline lane_mask<float> not_normal(const f32& x) { return lane_mask<float>(_mm512_fpclass_ps_mask(x, 0xBF)); }
inline lane_mask<double> not_normal(const f64& x) {
  return lane_mask<double>(_mm512_fpclass_pd_mask(x, 0xBF));
}

// Lanes where one of two is a NaN.
inline lane_mask<float> unordered(const f32& x, const f32& y) {
  return lane_mask<float>(_mm512_cmp_ps_mask(x, y, _CMP_UNORD_Q));
}
inline lane_mask<double> unordered(const f64& x, const f64& y) {
  return lane_mask<double>(_mm512_cmp_pd_mask(x, y, _CMP_UNORD_Q));
}

// The larger or smaller of two; the second one where they are equal or one is a NaN.
inline f32 maximum_or_second(const f32& x, const f32& y) { return _mm512_max_ps(x, y); }
inline f64 maximum_or_second(const f64& x, const f64& y) { return _mm512_max_pd(x, y); }
inline f32 minimum_or_second(const f32& x, const f32& y) { return _mm512_min_ps(x, y); }
inline f64 minimum_or_second(const f64& x, const f64& y) { return _mm512_min_pd(x, y); }

TMK_TIER_CLOSE
