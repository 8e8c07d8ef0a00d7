// SPDX-License-Identifier: Apache-2.0
// V3's tables (tables.hpp): permutations of 32-bit words, in registers up to 32 singles or 8 doubles; loads
// beyond.
#pragma once

#include <bit>

#include "simd/types.hpp"

TMK_TIER_OPEN

template <class Real, int N>
class lane_table;

// Up to four registers. Of two of them, the index bit above the positions chooses; it is moved to the sign.
// Four entries are in both 128-bit parts, whose own permutation is the fastest.
template <int N>
requires(N == 4 || N == 8 || N == 16 || N == 32) class lane_table<float, N> {
 public:
  using index = i32;
  template <int Shift>
  static index index_of(const u32& x) {
    return bits_as<int32_t>(Shift == 0 ? x : x >> Shift);
  }

  explicit lane_table(const float (&entries)[N]) {
    if constexpr (N == 4)
      part_[0] = _mm256_broadcast_ps(reinterpret_cast<const __m128*>(entries));
    else
      for (int k = 0; k < registers; ++k) part_[k] = _mm256_loadu_ps(entries + 8 * k);
  }
  f32 operator[](const index& i) const { return choose<0, registers>(i); }
  f32 leading(const index& i) const { return (*this)[i]; }
  f32 short_entry(const index& i) const { return (*this)[i]; }

 private:
  static constexpr int registers = N < 8 ? 1 : N / 8;

  template <int First, int Count>
  __m256 choose(const __m256i& i) const {
    if constexpr (N == 4) {
      return _mm256_permutevar_ps(part_[0], i);
    } else if constexpr (Count == 1) {
      return _mm256_permutevar8x32_ps(part_[First], i);
    } else {
      constexpr int half = Count / 2;
      constexpr int bit = 3 + std::countr_zero(static_cast<unsigned>(half));
      const __m256 upper = _mm256_castsi256_ps(_mm256_slli_epi32(i, 31 - bit));
      return _mm256_blendv_ps(choose<First, half>(i), choose<First + half, half>(i), upper);
    }
  }

  __m256 part_[registers];
};

// 4 or 8 doubles: lower and upper words apart, so that one permutation of words reaches 8 entries; both words
// of an index hold it. 16 doubles so would take as long as the loads, and four registers.
template <int N>
requires(N == 4 || N == 8) class lane_table<double, N> {
 public:
  using index = i32;
  template <int Shift>
  static index index_of(const u64& x) {
    static_assert(Shift % 32 + std::countr_zero(static_cast<unsigned>(N)) <= 32, "the index is in one word");
    const __m256i words = _mm256_shuffle_epi32(x, Shift < 32 ? 0xA0 : 0xF5);
    return Shift % 32 == 0 ? words : _mm256_srli_epi32(words, Shift % 32);
  }

  explicit lane_table(const double (&entries)[N]) {
    if constexpr (N == 4) {
      const __m128 first = _mm_castpd_ps(_mm_loadu_pd(entries));
      const __m128 second = _mm_castpd_ps(_mm_loadu_pd(entries + 2));
      const __m128 low = _mm_shuffle_ps(first, second, 0x88), high = _mm_shuffle_ps(first, second, 0xDD);
      low_ = _mm256_set_m128(low, low);
      high_ = _mm256_set_m128(high, high);
    } else {
      const __m256 first = _mm256_castpd_ps(_mm256_loadu_pd(entries));
      const __m256 second = _mm256_castpd_ps(_mm256_loadu_pd(entries + 4));
      const __m256i order = _mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7);
      low_ = _mm256_permutevar8x32_ps(_mm256_shuffle_ps(first, second, 0x88), order);
      high_ = _mm256_permutevar8x32_ps(_mm256_shuffle_ps(first, second, 0xDD), order);
    }
  }
  f64 operator[](const index& i) const { return join(permute(low_, i), permute(high_, i)); }
  f64 leading(const index& i) const { return _mm256_castps_pd(permute(high_, i)); }
  f64 short_entry(const index& i) const { return join(_mm256_setzero_ps(), permute(high_, i)); }

 private:
  static __m256 permute(const __m256& words, const __m256i& i) {
    if constexpr (N == 4)
      return _mm256_permutevar_ps(words, i);
    else
      return _mm256_permutevar8x32_ps(words, i);
  }
  static __m256d join(const __m256& low, const __m256& high) {
    return _mm256_castps_pd(_mm256_blend_ps(low, high, 0xAA));
  }

  __m256 low_, high_;
};

// 16 or 32 doubles: each lane loads its entry. A gather instruction takes as long here, and several times as
// long on the processors that are protected against gather data sampling.
template <int N>
requires(N == 16 || N == 32) class lane_table<double, N> {
 public:
  using index = u64;
  template <int Shift>
  static index index_of(const u64& x) {
    return (Shift == 0 ? x : x >> Shift) & u64(N - 1);
  }

  explicit lane_table(const double (&entries)[N]) : entries_(entries) {}
  f64 operator[](const index& i) const {
    alignas(32) uint64_t at[4];
    i.store_aligned(at);
    const __m128d low = _mm_setr_pd(entries_[at[0]], entries_[at[1]]);
    return _mm256_set_m128d(_mm_setr_pd(entries_[at[2]], entries_[at[3]]), low);
  }
  f64 leading(const index& i) const { return (*this)[i]; }
  f64 short_entry(const index& i) const { return (*this)[i]; }

 private:
  const double* entries_;
};

TMK_TIER_CLOSE
