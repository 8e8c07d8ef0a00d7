// SPDX-License-Identifier: Apache-2.0
// Tables of 4, 8, 16 or 32 entries, one entry for each lane: permuted in registers where that is faster than
// loads, as V4 does for all of them, V3 for all singles and up to 8 doubles, and the baseline for none.
//   const lane_table<Real, N> t(entries);           // a constant array, to which t may refer
//   const auto i = table_index<Real, N, Shift>(x);  // by the bits of each lane of x from bit Shift on
//   t[i]              // the entries
//   t.leading(i)      // of doubles at least sign, exponent and 20 fraction bits
//   t.short_entry(i)  // the entries, if the lower words of doubles are zero
// On V3 the last two need one permutation instead of two.
#pragma once

#include "simd/instructions.hpp"

TMK_TIER_OPEN

template <class Real, int N, int Shift>
typename lane_table<Real, N>::index table_index(const batch<typename format<Real>::bits>& x) {
  return lane_table<Real, N>::template index_of<Shift>(x);
}

TMK_TIER_CLOSE
