// SPDX-License-Identifier: Apache-2.0
// The instructions of V3 (AVX2 and FMA): registers of 256 bits, which most shuffles treat as two parts of
// 128.
#pragma once

#include <bit>
#include <limits>

#include "simd/types.hpp"

TMK_TIER_OPEN

// A store past the caches; p is aligned to the register.
inline void stream(float* p, const f32& x) { _mm256_stream_ps(p, x); }
inline void stream(double* p, const f64& x) { _mm256_stream_pd(p, x); }

// The first `count` lanes, for partial.hpp.
template <class T>
__m256i leading_lanes(int count) {
  if constexpr (sizeof(T) == 4)
    return _mm256_cmpgt_epi32(_mm256_set1_epi32(count), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
  else
    return _mm256_cmpgt_epi64(_mm256_set1_epi64x(count), _mm256_setr_epi64x(0, 1, 2, 3));
}
template <class T>
batch<T> load_leading(const T* p, int count, T filler) {
  const __m256i m = leading_lanes<T>(count);
  if constexpr (sizeof(T) == 4)
    return _mm256_blendv_ps(batch<T>(filler), _mm256_maskload_ps(p, m), _mm256_castsi256_ps(m));
  else
    return _mm256_blendv_pd(batch<T>(filler), _mm256_maskload_pd(p, m), _mm256_castsi256_pd(m));
}
template <class T>
void store_leading(T* p, int count, const batch<T>& x) {
  if constexpr (sizeof(T) == 4)
    _mm256_maskstore_ps(p, leading_lanes<T>(count), x);
  else
    _mm256_maskstore_pd(p, leading_lanes<T>(count), x);
}

// A mask as an integer: bit i is set where lane i is.
template <class T>
uint32_t lane_bits(const lane_mask<T>& m) {
  if constexpr (sizeof(T) == 4)
    return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(std::bit_cast<__m256i>(m.data))));
  else
    return static_cast<uint32_t>(_mm256_movemask_pd(_mm256_castsi256_pd(std::bit_cast<__m256i>(m.data))));
}

// Estimates of 12 bits.
inline f32 reciprocal_estimate(const f32& x) { return _mm256_rcp_ps(x); }
inline f32 reciprocal_sqrt_estimate(const f32& x) { return _mm256_rsqrt_ps(x); }

// Singles as doubles, and back.
inline widened widen(const f32& x) {
  return {_mm256_cvtps_pd(_mm256_castps256_ps128(x)), _mm256_cvtps_pd(_mm256_extractf128_ps(x, 1))};
}
inline f32 narrow(const widened& x) {
  return _mm256_set_m128(_mm256_cvtpd_ps(x.high), _mm256_cvtpd_ps(x.low));
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

// From a0 a1 ... a7, b0 ... b7 to a0 a2 a4 a6 b0 ... b6, a1 a3 a5 a7 b1 ... b7: in each 128-bit part first,
// then the quarters into order.
inline two_batches<double> deinterleave(const f64& a, const f64& b) {
  return {_mm256_permute4x64_pd(_mm256_unpacklo_pd(a, b), 0xD8),
          _mm256_permute4x64_pd(_mm256_unpackhi_pd(a, b), 0xD8)};
}
inline two_batches<float> deinterleave(const f32& a, const f32& b) {
  const __m256d even = _mm256_castps_pd(_mm256_shuffle_ps(a, b, 0x88));
  const __m256d odd = _mm256_castps_pd(_mm256_shuffle_ps(a, b, 0xDD));
  return {_mm256_castpd_ps(_mm256_permute4x64_pd(even, 0xD8)),
          _mm256_castpd_ps(_mm256_permute4x64_pd(odd, 0xD8))};
}
// And back.
inline two_batches<double> interleave(const f64& even, const f64& odd) {
  const __m256d low = _mm256_unpacklo_pd(even, odd), high = _mm256_unpackhi_pd(even, odd);
  return {_mm256_permute2f128_pd(low, high, 0x20), _mm256_permute2f128_pd(low, high, 0x31)};
}
inline two_batches<float> interleave(const f32& even, const f32& odd) {
  const __m256 low = _mm256_unpacklo_ps(even, odd), high = _mm256_unpackhi_ps(even, odd);
  return {_mm256_permute2f128_ps(low, high, 0x20), _mm256_permute2f128_ps(low, high, 0x31)};
}

// The same from and to memory, in halves of registers, which need no permutation across these.
inline two_batches<double> load_deinterleaved(const double* p) {
  const __m256d a = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(p)), _mm_loadu_pd(p + 4), 1);
  const __m256d b = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(p + 2)), _mm_loadu_pd(p + 6), 1);
  return {_mm256_unpacklo_pd(a, b), _mm256_unpackhi_pd(a, b)};
}
inline two_batches<float> load_deinterleaved(const float* p) {
  const __m256 a = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(p)), _mm_loadu_ps(p + 8), 1);
  const __m256 b = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(p + 4)), _mm_loadu_ps(p + 12), 1);
  return {_mm256_shuffle_ps(a, b, 0x88), _mm256_shuffle_ps(a, b, 0xDD)};
}
inline void store_interleaved(double* p, const f64& even, const f64& odd) {
  const __m256d low = _mm256_unpacklo_pd(even, odd), high = _mm256_unpackhi_pd(even, odd);
  _mm_storeu_pd(p, _mm256_castpd256_pd128(low));
  _mm_storeu_pd(p + 2, _mm256_castpd256_pd128(high));
  _mm_storeu_pd(p + 4, _mm256_extractf128_pd(low, 1));
  _mm_storeu_pd(p + 6, _mm256_extractf128_pd(high, 1));
}
inline void store_interleaved(float* p, const f32& even, const f32& odd) {
  const __m256 low = _mm256_unpacklo_ps(even, odd), high = _mm256_unpackhi_ps(even, odd);
  _mm_storeu_ps(p, _mm256_castps256_ps128(low));
  _mm_storeu_ps(p + 4, _mm256_castps256_ps128(high));
  _mm_storeu_ps(p + 8, _mm256_extractf128_ps(low, 1));
  _mm_storeu_ps(p + 12, _mm256_extractf128_ps(high, 1));
}

// Within each 128-bit part (rows.hpp has a picture): the lower, or upper, lanes of two registers in turn; two
// lanes of the one and two of the other, by the two-bit numbers in Lanes; the lower lane of the one and the
// upper lane of the other.
inline f32 unpack_low(const f32& a, const f32& b) { return _mm256_unpacklo_ps(a, b); }
inline f32 unpack_high(const f32& a, const f32& b) { return _mm256_unpackhi_ps(a, b); }
inline f64 unpack_low(const f64& a, const f64& b) { return _mm256_unpacklo_pd(a, b); }
inline f64 unpack_high(const f64& a, const f64& b) { return _mm256_unpackhi_pd(a, b); }
template <int Lanes>
f32 shuffle(const f32& a, const f32& b) {
  return _mm256_shuffle_ps(a, b, Lanes);
}
inline f64 lower_and_upper(const f64& a, const f64& b) { return _mm256_shuffle_pd(a, b, 0xA); }

// The register whose 128-bit parts are part(0), part(1), ... as doubles, and one such part of a register.
template <class Part>
[[gnu::always_inline]] inline f64 from_parts(const Part& part) {
  return _mm256_insertf128_pd(_mm256_castpd128_pd256(part(0)), part(1), 1);
}
template <int Part>
__m128d part_of(const f64& x) {
  return _mm256_extractf128_pd(x, Part);
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
inline f32 round_as_set(const f32& x) { return _mm256_round_ps(x, _MM_FROUND_CUR_DIRECTION); }
inline f64 round_as_set(const f64& x) { return _mm256_round_pd(x, _MM_FROUND_CUR_DIRECTION); }

// Lanes that hold an infinity or a NaN.
inline lane_mask<float> not_finite(const f32& x) {
  return _mm256_cmp_ps(xsimd::abs(x), f32(std::numeric_limits<float>::infinity()), _CMP_NLT_UQ);
}
inline lane_mask<double> not_finite(const f64& x) {
  return _mm256_cmp_pd(xsimd::abs(x), f64(std::numeric_limits<double>::infinity()), _CMP_NLT_UQ);
}

// Lanes where one of two is a NaN.
inline lane_mask<float> unordered(const f32& x, const f32& y) { return _mm256_cmp_ps(x, y, _CMP_UNORD_Q); }
inline lane_mask<double> unordered(const f64& x, const f64& y) { return _mm256_cmp_pd(x, y, _CMP_UNORD_Q); }

// The larger or smaller of two; the second one where they are equal or one is a NaN.
inline f32 maximum_or_second(const f32& x, const f32& y) { return _mm256_max_ps(x, y); }
inline f64 maximum_or_second(const f64& x, const f64& y) { return _mm256_max_pd(x, y); }
inline f32 minimum_or_second(const f32& x, const f32& y) { return _mm256_min_ps(x, y); }
inline f64 minimum_or_second(const f64& x, const f64& y) { return _mm256_min_pd(x, y); }

TMK_TIER_CLOSE
