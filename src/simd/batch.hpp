// SPDX-License-Identifier: Apache-2.0
// SIMD vocabulary of the kernels: xsimd's batches in the tier's registers, and what that library lacks.
// Vector intrinsics stand in this file and in simd_integer.hpp alone.
#pragma once

#include <immintrin.h>

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <utility>
#include <xsimd/config/xsimd_arch.hpp>

#if XSIMD_WITH_AVX512F
// The library's AVX-512 part has no fused operations: it would round the product. Its interface looks them up
// by qualified name, so these stand before it.
namespace xsimd {
template <class T, class A>
class batch;
namespace kernel {
template <class A, std::floating_point T>
batch<T, A> fma(const batch<T, A>& x, const batch<T, A>& y, const batch<T, A>& z, const avx512f&) noexcept {
  if constexpr (sizeof(T) == 4)
    return _mm512_fmadd_ps(x, y, z);
  else
    return _mm512_fmadd_pd(x, y, z);
}
template <class A, std::floating_point T>
batch<T, A> fms(const batch<T, A>& x, const batch<T, A>& y, const batch<T, A>& z, const avx512f&) noexcept {
  if constexpr (sizeof(T) == 4)
    return _mm512_fmsub_ps(x, y, z);
  else
    return _mm512_fmsub_pd(x, y, z);
}
template <class A, std::floating_point T>
batch<T, A> fnma(const batch<T, A>& x, const batch<T, A>& y, const batch<T, A>& z, const avx512f&) noexcept {
  if constexpr (sizeof(T) == 4)
    return _mm512_fnmadd_ps(x, y, z);
  else
    return _mm512_fnmadd_pd(x, y, z);
}
template <class A, std::floating_point T>
batch<T, A> fnms(const batch<T, A>& x, const batch<T, A>& y, const batch<T, A>& z, const avx512f&) noexcept {
  if constexpr (sizeof(T) == 4)
    return _mm512_fnmsub_ps(x, y, z);
  else
    return _mm512_fnmsub_pd(x, y, z);
}
}  // namespace kernel
}  // namespace xsimd
#endif

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

// What deinterleave returns (the even lanes of two registers in their order, then the odd ones) and
// interleave (the first register of lanes in turn, then the second): complex elements as parts, and back.
template <class T>
struct two_batches {
  batch<T> first, second;
};

// The same bits, read as lanes of another type.
template <class To, class From>
batch<To> bits_as(const batch<From>& x) {
  if constexpr (std::same_as<To, From>)
    return x;
  else
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

// Past the caches; p is aligned to the register. streaming_done() makes such stores visible in order.
template <class T>
void stream(T* p, const batch<T>& x) {
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  if constexpr (sizeof(T) == 4)
    _mm512_stream_ps(p, x);
  else
    _mm512_stream_pd(p, x);
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  if constexpr (sizeof(T) == 4)
    _mm256_stream_ps(p, x);
  else
    _mm256_stream_pd(p, x);
#else
  if constexpr (sizeof(T) == 4)
    _mm_stream_ps(p, x);
  else
    _mm_stream_pd(p, x);
#endif
}
inline void streaming_done() { _mm_sfence(); }

// The first `count` lanes of a register, as the tier's masked moves want them.
#if TMK_TIER_NUMBER(TMK_TIER) == 2
inline __mmask16 leading_lanes(int count) { return static_cast<__mmask16>((1u << count) - 1); }
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
template <class T>
__m256i leading_lanes(int count) {
  if constexpr (sizeof(T) == 4)
    return _mm256_cmpgt_epi32(_mm256_set1_epi32(count), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
  else
    return _mm256_cmpgt_epi64(_mm256_set1_epi64x(count), _mm256_setr_epi64x(0, 1, 2, 3));
}
#endif

// Lanes from `count` on get the filler; nothing behind p[count - 1] is read.
template <class T>
batch<T> load_partial(const T* p, int count, T filler) {
  if (count == lanes<T>) return load(p);
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  if constexpr (sizeof(T) == 4)
    return _mm512_mask_loadu_ps(batch<T>(filler), leading_lanes(count), p);
  else
    return _mm512_mask_loadu_pd(batch<T>(filler), static_cast<__mmask8>(leading_lanes(count)), p);
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  const __m256i m = leading_lanes<T>(count);
  if constexpr (sizeof(T) == 4)
    return _mm256_blendv_ps(batch<T>(filler), _mm256_maskload_ps(p, m), _mm256_castsi256_ps(m));
  else
    return _mm256_blendv_pd(batch<T>(filler), _mm256_maskload_pd(p, m), _mm256_castsi256_pd(m));
#else
  alignas(16) T lane[lanes<T>];
  batch<T>(filler).store_aligned(lane);
  std::memcpy(lane, p, sizeof(T) * static_cast<size_t>(count));
  return batch<T>::load_aligned(lane);
#endif
}

// Nothing behind p[count - 1] is written.
template <class T>
void store_partial(T* p, int count, const batch<T>& x) {
  if (count == lanes<T>) return store(p, x);
#if TMK_TIER_NUMBER(TMK_TIER) == 2
  if constexpr (sizeof(T) == 4)
    _mm512_mask_storeu_ps(p, leading_lanes(count), x);
  else
    _mm512_mask_storeu_pd(p, static_cast<__mmask8>(leading_lanes(count)), x);
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
  if constexpr (sizeof(T) == 4)
    _mm256_maskstore_ps(p, leading_lanes<T>(count), x);
  else
    _mm256_maskstore_pd(p, leading_lanes<T>(count), x);
#else
  alignas(16) T lane[lanes<T>];
  x.store_aligned(lane);
  std::memcpy(p, lane, sizeof(T) * static_cast<size_t>(count));
#endif
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
// Doubles tested on their upper 32 bits: the mask holds in the sign bit that lane_bits looks at, and only
// there.
inline lane_mask<double> mask_of_high_words(const xsimd::batch_bool<int32_t>& m) {
  return lane_mask<double>(std::bit_cast<__m128d>(m.data));
}

// Rows of two values, picked by each lane's index (below 2^16): a load per lane, for want of a gather
// instruction.
template <class Row>
double_value<f32> lookup(const Row* rows, const i32& index) {
  static_assert(sizeof(Row) == 2 * sizeof(float));
  const auto pair = [&](int first, int second) {
    const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(rows + first));
    return _mm_loadh_pi(_mm_castsi128_ps(low), reinterpret_cast<const __m64*>(rows + second));
  };
  const __m128 a = pair(_mm_extract_epi16(index, 0), _mm_extract_epi16(index, 2));
  const __m128 b = pair(_mm_extract_epi16(index, 4), _mm_extract_epi16(index, 6));
  return {_mm_shuffle_ps(a, b, 0x88), _mm_shuffle_ps(a, b, 0xDD)};
}

template <class Row>
double_value<f64> lookup(const Row* rows, const i64& index) {
  static_assert(sizeof(Row) == 2 * sizeof(double));
  const auto row = [&](int i) { return _mm_loadu_pd(reinterpret_cast<const double*>(rows + i)); };
  const __m128d a = row(_mm_extract_epi16(index, 0));
  const __m128d b = row(_mm_extract_epi16(index, 4));
  return {_mm_unpacklo_pd(a, b), _mm_unpackhi_pd(a, b)};
}

// Rows of a table, one a lane, as columns: four singles or two doubles each. Offsets are in bytes, below 2^16
// since SSE2 extracts nothing wider; those of doubles stand in the upper words.
inline void load_rows(const void* table, const i32& offsets, f32 (&column)[4]) {
  const auto row = [&](int offset) {
    return _mm_load_ps(reinterpret_cast<const float*>(static_cast<const char*>(table) + offset));
  };
  const __m128 r0 = row(_mm_extract_epi16(offsets, 0)), r1 = row(_mm_extract_epi16(offsets, 2));
  const __m128 r2 = row(_mm_extract_epi16(offsets, 4)), r3 = row(_mm_extract_epi16(offsets, 6));
  const __m128 low01 = _mm_unpacklo_ps(r0, r1), low23 = _mm_unpacklo_ps(r2, r3);
  const __m128 high01 = _mm_unpackhi_ps(r0, r1), high23 = _mm_unpackhi_ps(r2, r3);
  column[0] = _mm_movelh_ps(low01, low23);
  column[1] = _mm_movehl_ps(low23, low01);
  column[2] = _mm_movelh_ps(high01, high23);
  column[3] = _mm_movehl_ps(high23, high01);
}

inline void load_rows(const void* table, const i32& offsets, f64 (&column)[2]) {
  const auto row = [&](int offset) {
    return _mm_load_pd(reinterpret_cast<const double*>(static_cast<const char*>(table) + offset));
  };
  const __m128d r0 = row(_mm_extract_epi16(offsets, 2)), r1 = row(_mm_extract_epi16(offsets, 6));
  column[0] = _mm_unpacklo_pd(r0, r1);
  column[1] = _mm_unpackhi_pd(r0, r1);
}

// Single values likewise.
inline f64 load_values(const double* table, const i32& offsets) {
  const auto value = [&](int offset) {
    return reinterpret_cast<const double*>(reinterpret_cast<const char*>(table) + offset);
  };
  const __m128d first = _mm_load_sd(value(_mm_extract_epi16(offsets, 2)));
  return _mm_loadh_pd(first, value(_mm_extract_epi16(offsets, 6)));
}

// The values of four singles as doubles, the first two in `low`, and back.
struct widened {
  f64 low, high;
};
inline widened widen(const f32& x) { return {_mm_cvtps_pd(x), _mm_cvtps_pd(_mm_movehl_ps(x, x))}; }
inline f32 narrow(const widened& x) { return _mm_movelh_ps(_mm_cvtpd_ps(x.low), _mm_cvtpd_ps(x.high)); }

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

#if TMK_TIER_NUMBER(TMK_TIER) > 0
// A table of 8 or 4 entries held in registers, looked up by permutation. table_index makes the index vector
// from the three or two bits of each lane that begin at `Shift`; the bits above them do not matter. Four
// entries cost V3 the least: their words lie within reach of every 128-bit half.
template <class T, int Count = 8>
class register_table;

template <>
class register_table<float, 8> {
 public:
  using index = i32;
#if TMK_TIER_NUMBER(TMK_TIER) == 1
  explicit register_table(const float (&entries)[8]) : entries_(_mm256_loadu_ps(entries)) {}
  f32 operator[](const index& i) const { return _mm256_permutevar8x32_ps(entries_, i); }
  f32 leading(const index& i) const { return (*this)[i]; }

 private:
  __m256 entries_;
#else
  explicit register_table(const float (&entries)[8])
      : entries_(_mm512_broadcast_f32x8(_mm256_loadu_ps(entries))) {}
  f32 operator[](const index& i) const { return _mm512_permutexvar_ps(i, entries_); }
  f32 leading(const index& i) const { return (*this)[i]; }

 private:
  __m512 entries_;
#endif
};

template <>
class register_table<double, 8> {
 public:
#if TMK_TIER_NUMBER(TMK_TIER) == 1
  // Lower and upper words apart, so that a permutation of words serves 8 entries; the index stands in both
  // words.
  using index = i32;
  explicit register_table(const double (&entries)[8]) {
    const __m256 first = _mm256_castpd_ps(_mm256_loadu_pd(entries));
    const __m256 second = _mm256_castpd_ps(_mm256_loadu_pd(entries + 4));
    const __m256i order = _mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7);
    low_ = _mm256_permutevar8x32_ps(_mm256_shuffle_ps(first, second, 0x88), order);
    high_ = _mm256_permutevar8x32_ps(_mm256_shuffle_ps(first, second, 0xDD), order);
  }
  f64 operator[](const index& i) const {
    return _mm256_castps_pd(
        _mm256_blend_ps(_mm256_permutevar8x32_ps(low_, i), _mm256_permutevar8x32_ps(high_, i), 0xAA));
  }
  // The entry as far as its upper word goes, 20 fraction bits: one permutation instead of two.
  f64 leading(const index& i) const { return _mm256_castps_pd(_mm256_permutevar8x32_ps(high_, i)); }

 private:
  __m256 low_, high_;
#else
  using index = u64;
  explicit register_table(const double (&entries)[8]) : entries_(_mm512_loadu_pd(entries)) {}
  f64 operator[](const index& i) const { return _mm512_permutexvar_pd(i, entries_); }
  f64 leading(const index& i) const { return (*this)[i]; }

 private:
  __m512d entries_;
#endif
};

template <>
class register_table<float, 4> {
 public:
  using index = i32;
#if TMK_TIER_NUMBER(TMK_TIER) == 1
  explicit register_table(const float (&entries)[4])
      : entries_(_mm256_broadcast_ps(reinterpret_cast<const __m128*>(entries))) {}
  f32 operator[](const index& i) const { return _mm256_permutevar_ps(entries_, i); }
  f32 short_entry(const index& i) const { return (*this)[i]; }

 private:
  __m256 entries_;
#else
  explicit register_table(const float (&entries)[4])
      : entries_(_mm512_broadcast_f32x4(_mm_loadu_ps(entries))) {}
  f32 operator[](const index& i) const { return _mm512_permutevar_ps(entries_, i); }
  f32 short_entry(const index& i) const { return (*this)[i]; }

 private:
  __m512 entries_;
#endif
};

template <>
class register_table<double, 4> {
 public:
#if TMK_TIER_NUMBER(TMK_TIER) == 1
  using index = i32;
  explicit register_table(const double (&entries)[4]) {
    const __m128 first = _mm_castpd_ps(_mm_loadu_pd(entries));
    const __m128 second = _mm_castpd_ps(_mm_loadu_pd(entries + 2));
    const __m128 low = _mm_shuffle_ps(first, second, 0x88), high = _mm_shuffle_ps(first, second, 0xDD);
    low_ = _mm256_set_m128(low, low);
    high_ = _mm256_set_m128(high, high);
  }
  f64 operator[](const index& i) const {
    return _mm256_castps_pd(
        _mm256_blend_ps(_mm256_permutevar_ps(low_, i), _mm256_permutevar_ps(high_, i), 0xAA));
  }
  // For entries whose lower words are zero.
  f64 short_entry(const index& i) const {
    return _mm256_castps_pd(_mm256_blend_ps(_mm256_setzero_ps(), _mm256_permutevar_ps(high_, i), 0xAA));
  }

 private:
  __m256 low_, high_;
#else
  using index = u64;
  explicit register_table(const double (&entries)[4])
      : entries_(_mm512_broadcast_f64x4(_mm256_loadu_pd(entries))) {}
  f64 operator[](const index& i) const { return _mm512_permutexvar_pd(i, entries_); }
  f64 short_entry(const index& i) const { return (*this)[i]; }

 private:
  __m512d entries_;
#endif
};

template <int Shift>
register_table<float>::index table_index(const u32& bits) {
  return bits_as<int32_t>(Shift == 0 ? bits : bits >> Shift);
}

template <int Shift>
register_table<double>::index table_index(const u64& bits) {
#if TMK_TIER_NUMBER(TMK_TIER) == 1
  const __m256i words = _mm256_shuffle_epi32(bits, Shift < 32 ? 0xA0 : 0xF5);
  return Shift % 32 == 0 ? words : _mm256_srli_epi32(words, Shift % 32);
#else
  return Shift == 0 ? bits : bits >> Shift;
#endif
}
#endif

TMK_TIER_CLOSE

#if TMK_TIER_NUMBER(TMK_TIER) == 2
#include "simd/v4.hpp"
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
#include "simd/v3.hpp"
#else
#include "simd/w7.hpp"
#endif
