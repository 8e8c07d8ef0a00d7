// SPDX-License-Identifier: Apache-2.0
// The instructions of V3 (AVX2 and FMA): 256-bit registers of two 128-bit parts.
#pragma once

#include "simd/batch.hpp"

TMK_TIER_OPEN

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

TMK_TIER_CLOSE
