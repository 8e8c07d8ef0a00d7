// SPDX-License-Identifier: Apache-2.0
// The instructions of V4 (AVX-512 F, BW, CD, DQ, VL): 512-bit registers, masks of one bit a lane.
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

TMK_TIER_CLOSE
