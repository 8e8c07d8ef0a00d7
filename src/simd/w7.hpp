// SPDX-License-Identifier: Apache-2.0
// The baseline's instructions (SSE2): 128-bit registers, no fused operations.
#pragma once

#include "simd/batch.hpp"

TMK_TIER_OPEN

// x y + z, x y - z and z - x y, rounded after the product too.
template <class T>
batch<T> multiply_add(const batch<T>& x, const batch<T>& y, const batch<T>& z) {
  return x * y + z;
}
template <class T>
batch<T> multiply_subtract(const batch<T>& x, const batch<T>& y, const batch<T>& z) {
  return x * y - z;
}
template <class T>
batch<T> negative_multiply_add(const batch<T>& x, const batch<T>& y, const batch<T>& z) {
  return z - x * y;
}

// From a0 a1 a2 a3, b0 b1 b2 b3 to a0 a2 b0 b2, a1 a3 b1 b3.
inline two_batches<float> deinterleave(const f32& a, const f32& b) {
  return {_mm_shuffle_ps(a, b, 0x88), _mm_shuffle_ps(a, b, 0xDD)};
}
inline two_batches<double> deinterleave(const f64& a, const f64& b) {
  return {_mm_unpacklo_pd(a, b), _mm_unpackhi_pd(a, b)};
}
// And back.
inline two_batches<float> interleave(const f32& even, const f32& odd) {
  return {_mm_unpacklo_ps(even, odd), _mm_unpackhi_ps(even, odd)};
}
inline two_batches<double> interleave(const f64& even, const f64& odd) {
  return {_mm_unpacklo_pd(even, odd), _mm_unpackhi_pd(even, odd)};
}

TMK_TIER_CLOSE
