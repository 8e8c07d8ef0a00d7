// SPDX-License-Identifier: Apache-2.0
// The baseline's tables (tables.hpp): SSE2 permutes no register by another, so each lane loads its entry.
#pragma once

#include <type_traits>

#include "simd/types.hpp"

TMK_TIER_OPEN

template <class Real, int N>
class lane_table {
  static_assert(N == 4 || N == 8 || N == 16 || N == 32);
  using bits = typename format<Real>::bits;

 public:
  using index = batch<bits>;
  template <int Shift>
  static index index_of(const batch<bits>& x) {
    return (Shift == 0 ? x : x >> Shift) & batch<bits>(N - 1);
  }

  explicit lane_table(const Real (&entries)[N]) : entries_(entries) {}
  batch<Real> operator[](const index& i) const {
    if constexpr (sizeof(Real) == 8)
      return _mm_setr_pd(entries_[_mm_extract_epi16(i, 0)], entries_[_mm_extract_epi16(i, 4)]);
    else
      return _mm_setr_ps(entries_[_mm_extract_epi16(i, 0)], entries_[_mm_extract_epi16(i, 2)],
                         entries_[_mm_extract_epi16(i, 4)], entries_[_mm_extract_epi16(i, 6)]);
  }
  batch<Real> leading(const index& i) const { return (*this)[i]; }
  batch<Real> short_entry(const index& i) const { return (*this)[i]; }

 private:
  const Real* entries_;
};

TMK_TIER_CLOSE
