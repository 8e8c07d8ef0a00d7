// SPDX-License-Identifier: Apache-2.0
// V4's tables (tables.hpp): in registers, one permutation of one register or of two; four registers for 32
// doubles.
#pragma once

#include "simd/types.hpp"

TMK_TIER_OPEN

template <class Real, int N>
class lane_table;

// Four entries are in every 128-bit part, whose own permutation is the fastest.
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
      part_[0] = _mm512_broadcast_f32x4(_mm_loadu_ps(entries));
    else if constexpr (N == 8)
      part_[0] = _mm512_broadcast_f32x8(_mm256_loadu_ps(entries));
    else
      for (int k = 0; k < registers; ++k) part_[k] = _mm512_loadu_ps(entries + 16 * k);
  }
  f32 operator[](const index& i) const {
    if constexpr (N == 4)
      return _mm512_permutevar_ps(part_[0], i);
    else if constexpr (N <= 16)
      return _mm512_permutexvar_ps(i, part_[0]);
    else
      return _mm512_permutex2var_ps(part_[0], i, part_[1]);
  }
  f32 leading(const index& i) const { return (*this)[i]; }
  f32 short_entry(const index& i) const { return (*this)[i]; }

 private:
  static constexpr int registers = N < 16 ? 1 : N / 16;
  __m512 part_[registers];
};

template <int N>
requires(N == 4 || N == 8 || N == 16 || N == 32) class lane_table<double, N> {
 public:
  using index = u64;
  template <int Shift>
  static index index_of(const u64& x) {
    return Shift == 0 ? x : x >> Shift;
  }

  explicit lane_table(const double (&entries)[N]) {
    if constexpr (N == 4)
      part_[0] = _mm512_broadcast_f64x4(_mm256_loadu_pd(entries));
    else
      for (int k = 0; k < registers; ++k) part_[k] = _mm512_loadu_pd(entries + 8 * k);
  }
  f64 operator[](const index& i) const {
    if constexpr (N <= 8)
      return _mm512_permutexvar_pd(i, part_[0]);
    else if constexpr (N == 16)
      return _mm512_permutex2var_pd(part_[0], i, part_[1]);
    else
      return _mm512_mask_blend_pd(_mm512_test_epi64_mask(i, _mm512_set1_epi64(16)),
                                  _mm512_permutex2var_pd(part_[0], i, part_[1]),
                                  _mm512_permutex2var_pd(part_[2], i, part_[3]));
  }
  f64 leading(const index& i) const { return (*this)[i]; }
  f64 short_entry(const index& i) const { return (*this)[i]; }

 private:
  static constexpr int registers = N < 8 ? 1 : N / 8;
  __m512d part_[registers];
};

TMK_TIER_CLOSE
