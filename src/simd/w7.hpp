// SPDX-License-Identifier: Apache-2.0
// The baseline's instructions (SSE2): registers of 128 bits, no fused operations, no partial moves.
#pragma once

#include <bit>
#include <cstring>
#include <limits>

#include "simd/types.hpp"

TMK_TIER_OPEN

// A store past the caches; p is aligned to the register.
inline void stream(float* p, const f32& x) { _mm_stream_ps(p, x); }
inline void stream(double* p, const f64& x) { _mm_stream_pd(p, x); }

// The first `count` lanes, for partial.hpp.
template <class T>
batch<T> load_leading(const T* p, int count, T filler) {
  alignas(16) T lane[lanes<T>];
  batch<T>(filler).store_aligned(lane);
  std::memcpy(lane, p, sizeof(T) * static_cast<size_t>(count));
  return batch<T>::load_aligned(lane);
}
template <class T>
void store_leading(T* p, int count, const batch<T>& x) {
  alignas(16) T lane[lanes<T>];
  x.store_aligned(lane);
  std::memcpy(p, lane, sizeof(T) * static_cast<size_t>(count));
}

// A mask as an integer: bit i is set where lane i is.
template <class T>
uint32_t lane_bits(const lane_mask<T>& m) {
  if constexpr (sizeof(T) == 4)
    return static_cast<uint32_t>(_mm_movemask_ps(std::bit_cast<__m128>(m.data)));
  else
    return static_cast<uint32_t>(_mm_movemask_pd(std::bit_cast<__m128d>(m.data)));
}

// Doubles tested on their upper 32 bits: the mask is valid in the sign bit, which lane_bits reads, and
// nowhere else.
inline lane_mask<double> mask_of_high_words(const xsimd::batch_bool<int32_t>& m) {
  return lane_mask<double>(std::bit_cast<__m128d>(m.data));
}

// Estimates of 12 bits: part of the contract of the baseline's reciprocal family.
inline f32 reciprocal_estimate(const f32& x) { return _mm_rcp_ps(x); }
inline f32 reciprocal_sqrt_estimate(const f32& x) { return _mm_rsqrt_ps(x); }

// Singles as doubles, and back.
inline widened widen(const f32& x) { return {_mm_cvtps_pd(x), _mm_cvtps_pd(_mm_movehl_ps(x, x))}; }
inline f32 narrow(const widened& x) { return _mm_movelh_ps(_mm_cvtpd_ps(x.low), _mm_cvtpd_ps(x.high)); }

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

// Within each 128-bit part (rows.hpp has a picture): the lower, or upper, lanes of two registers in turn; two
// lanes of the one and two of the other, by the two-bit numbers in Lanes; the lower lane of the one and the
// upper lane of the other.
inline f32 unpack_low(const f32& a, const f32& b) { return _mm_unpacklo_ps(a, b); }
inline f32 unpack_high(const f32& a, const f32& b) { return _mm_unpackhi_ps(a, b); }
inline f64 unpack_low(const f64& a, const f64& b) { return _mm_unpacklo_pd(a, b); }
inline f64 unpack_high(const f64& a, const f64& b) { return _mm_unpackhi_pd(a, b); }
template <int Lanes>
f32 shuffle(const f32& a, const f32& b) {
  return _mm_shuffle_ps(a, b, Lanes);
}
inline f64 lower_and_upper(const f64& a, const f64& b) { return _mm_shuffle_pd(a, b, 2); }

// The register whose 128-bit parts are part(0), part(1), ... as doubles, and one such part of a register.
template <class Part>
[[gnu::always_inline]] inline f64 from_parts(const Part& part) {
  return part(0);
}
template <int Part>
__m128d part_of(const f64& x) {
  return x;
}

// Lanes that hold an infinity or a NaN.
inline lane_mask<float> not_finite(const f32& x) {
  return _mm_cmpnlt_ps(xsimd::abs(x), f32(std::numeric_limits<float>::infinity()));
}
inline lane_mask<double> not_finite(const f64& x) {
  return _mm_cmpnlt_pd(xsimd::abs(x), f64(std::numeric_limits<double>::infinity()));
}

// Lanes where one of two is a NaN.
inline lane_mask<float> unordered(const f32& x, const f32& y) { return _mm_cmpunord_ps(x, y); }
inline lane_mask<double> unordered(const f64& x, const f64& y) { return _mm_cmpunord_pd(x, y); }

// The larger or smaller of two; the second one where they are equal or one is a NaN.
inline f32 maximum_or_second(const f32& x, const f32& y) { return _mm_max_ps(x, y); }
inline f64 maximum_or_second(const f64& x, const f64& y) { return _mm_max_pd(x, y); }
inline f32 minimum_or_second(const f32& x, const f32& y) { return _mm_min_ps(x, y); }
inline f64 minimum_or_second(const f64& x, const f64& y) { return _mm_min_pd(x, y); }

TMK_TIER_CLOSE
