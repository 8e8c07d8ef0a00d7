// SPDX-License-Identifier: Apache-2.0
// Nested uniform scrambling of points in base 2 (A. B. Owen, Randomly permuted (t, m, s)-nets and
// (t, s)-sequences, 1995): a bit of a coordinate is turned or not, by chance, depending on the bits above it.
// The chance is a hash, in which every bit of a word depends on the bits below alone, of the coordinate with
// its bits in reverse order (S. Laine, T. Karras, Stratified sampling for stochastic transparency, 2011; B.
// Burley, Practical hash-based Owen scrambling, JCGT 9, 2020).
#pragma once

#include <cstdint>

#include "platform/by_tier.hpp"

namespace tmk::rng {

// On n words, a multiple of 16.
constexpr int32_t words_together = 16;

struct point_kernels {
  void (*shift)(int32_t n, uint32_t* x, const uint32_t* key);  // x ^= key, a digital shift
  void (*scramble)(int32_t n, uint32_t* x, const uint32_t* key);
};

TMK_DECLARE_TIER_KERNELS(point_kernels)

}  // namespace tmk::rng
