// SIMD vocabulary of the kernels: xsimd's batches in the tier's registers, and what that library lacks.
// Intrinsics stand in this file alone.
#pragma once

#include <immintrin.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <xsimd/xsimd.hpp>

#include "platform/fp.hpp"
#include "platform/tier.hpp"

TMK_TIER_OPEN

template <class T>
using batch = xsimd::batch<T>;
template <class T>
using lane_mask = typename batch<T>::batch_bool_type;

using f32 = batch<float>;
using f64 = batch<double>;
using i32 = batch<int32_t>;
using u32 = batch<uint32_t>;
using i64 = batch<int64_t>;
using u64 = batch<uint64_t>;

template <class T>
constexpr int lanes = static_cast<int>(batch<T>::size);

// The same bits, read as lanes of another type.
template <class To, class From>
batch<To> bits_as(const batch<From>& x) {
  return xsimd::bitwise_cast<batch<To>>(x);
}

// A mask over lanes of another type of the same width.
template <class To, class From>
lane_mask<To> mask_as(const xsimd::batch_bool<From>& m) {
  static_assert(sizeof(To) == sizeof(From));
  return lane_mask<To>(std::bit_cast<typename lane_mask<To>::register_type>(m.data));
}

template <class T>
batch<T> load(const T* p) {
  return batch<T>::load_unaligned(p);
}

template <class T>
void store(T* p, const batch<T>& x) {
  x.store_unaligned(p);
}

// Lanes from `count` on get the filler; nothing behind p[count - 1] is read.
template <class T>
batch<T> load_partial(const T* p, int count, T filler) {
  alignas(64) T lane[lanes<T>];
  batch<T>(filler).store_aligned(lane);
  std::memcpy(lane, p, sizeof(T) * static_cast<size_t>(count));
  return batch<T>::load_aligned(lane);
}

// Nothing behind p[count - 1] is written.
template <class T>
void store_partial(T* p, int count, const batch<T>& x) {
  alignas(64) T lane[lanes<T>];
  x.store_aligned(lane);
  std::memcpy(p, lane, sizeof(T) * static_cast<size_t>(count));
}

// A mask as an integer: bit i stands for lane i.
template <class T>
uint32_t lane_bits(const lane_mask<T>& m) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  return static_cast<uint32_t>(m.data);
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  if constexpr (sizeof(T) == 4)
    return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(std::bit_cast<__m256i>(m.data))));
  else
    return static_cast<uint32_t>(_mm256_movemask_pd(_mm256_castsi256_pd(std::bit_cast<__m256i>(m.data))));
#else
  if constexpr (sizeof(T) == 4)
    return static_cast<uint32_t>(_mm_movemask_ps(std::bit_cast<__m128>(m.data)));
  else
    return static_cast<uint32_t>(_mm_movemask_pd(std::bit_cast<__m128d>(m.data)));
#endif
}

#if TMK_TIER_NUMBER(TMK_TIER) == 0
// Doubles tested on their upper 32 bits: the mask holds in the sign bit that lane_bits looks at, and only there.
inline lane_mask<double> mask_of_high_words(const xsimd::batch_bool<int32_t>& m) {
  return lane_mask<double>(std::bit_cast<__m128d>(m.data));
}

// The 12-bit estimates of the baseline: part of the contract of its reciprocal family.
inline f32 reciprocal_estimate(const f32& x) { return _mm_rcp_ps(x); }
inline f32 reciprocal_sqrt_estimate(const f32& x) { return _mm_rsqrt_ps(x); }
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
inline f32 reciprocal_estimate(const f32& x) { return _mm256_rcp_ps(x); }
inline f32 reciprocal_sqrt_estimate(const f32& x) { return _mm256_rsqrt_ps(x); }
#else
inline f32 reciprocal_estimate(const f32& x) { return _mm512_rcp14_ps(x); }
inline f32 reciprocal_sqrt_estimate(const f32& x) { return _mm512_rsqrt14_ps(x); }
inline f64 reciprocal_estimate(const f64& x) { return _mm512_rcp14_pd(x); }
inline f64 reciprocal_sqrt_estimate(const f64& x) { return _mm512_rsqrt14_pd(x); }
#endif

TMK_TIER_CLOSE
