// SPDX-License-Identifier: Apache-2.0
// Two neighbours of a table for each lane, by one load of 128 bits.
#pragma once

#include "simd/batch.hpp"

TMK_TIER_OPEN

// The doubles at p + index[lane], and those after them.
[[gnu::always_inline]] inline two_batches<double> load_neighbours(const double* p, const int32_t* index) {
  const f64 even = from_parts([&](int i) { return _mm_loadu_pd(p + index[2 * i]); });
  const f64 odd = from_parts([&](int i) { return _mm_loadu_pd(p + index[2 * i + 1]); });
  return {unpack_low(even, odd), unpack_high(even, odd)};
}

TMK_TIER_CLOSE
