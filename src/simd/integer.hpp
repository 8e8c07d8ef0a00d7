// SPDX-License-Identifier: Apache-2.0
// What the integer generators need in addition to xsimd: products of 32-bit words, halves of 64-bit lanes,
// exact conversions between words and doubles (each tier's own, in w7_integer.hpp and its like), integral
// parts, and 128-bit lanes.
#pragma once

#include "simd/batch.hpp"

TMK_TIER_OPEN

// As many signed words as a vector of T has lanes, as numbers of its type.
template <class T>
batch<T> load_as(const int32_t* p) {
  if constexpr (sizeof(T) == 8)
    return load_signed_words(reinterpret_cast<const uint32_t*>(p));
  else
    return xsimd::to_float(load(p));
}

// The integral parts of singles, as the tiers define them for doubles.
inline void store_floor(int32_t* p, const f32& x) {
  const i32 whole = xsimd::to_int(x);
  const f32 above = xsimd::select(x < xsimd::to_float(whole), f32(1), f32(0));
  store(p, whole - xsimd::to_int(above));
}
inline void store_truncated(int32_t* p, const f32& x, int32_t addend) {
  store(p, xsimd::to_int(x) + i32(addend));
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
