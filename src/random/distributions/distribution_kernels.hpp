// SPDX-License-Identifier: Apache-2.0
// Element-wise steps between uniforms, vector kernels and variates. The same bits on every tier.
#pragma once

#include <cstdint>

#include "platform/by_tier.hpp"

namespace tmk::rng {

template <class Real>
struct distribution_kernels {
  void (*scale)(int32_t n, Real* r, Real factor);                   // r factor
  void (*place)(int32_t n, Real* r, Real factor, Real a);           // r factor + a
  void (*place_above)(int32_t n, Real* r, Real factor, Real a);     // max(a, r factor + a)
  void (*subtract_above)(int32_t n, Real* r, Real factor, Real a);  // max(a, a - r factor)
  void (*clamp)(int32_t n, Real* r, Real a, Real b);                // min(b, max(a, r))
  // Uniforms u in pairs: the first to r, the second to u[0], u[1], ...
  void (*split_pairs)(int32_t n, Real* u, Real* r);
  void (*place_either_side)(int32_t n, Real* r, const Real* u, Real beta,
                            Real a);  // u <= 1/2 turns beta's sign
  // r[2i] = radius[i] x[i] sigma + a, r[2i + 1] with y
  void (*join_pairs)(int32_t n, Real* r, const Real* radius, const Real* x, const Real* y, Real sigma,
                     Real a);
  void (*floor)(int32_t n, const Real* x, int32_t* r);
};

// (x k + a) + (y k_lower + a_lower) for a pair of words, y first, kept within [low, high].
struct pair_scale {
  double k, a, k_lower, a_lower, low, high;
};

TMK_DECLARE_TIER_KERNEL_PAIR(distribution)

struct bit_kernels {
  // Non-negative singles, compared by their bits: 1 below the bound, else 0. r may be x.
  void (*below)(int32_t n, const int32_t* x, int32_t bound, int32_t* r);
  void (*upper_32_of_59)(int32_t n, const uint64_t* words, uint32_t* r);
  void (*pairs_to_doubles)(int32_t n, double* r, const pair_scale& scale);  // r holds the pairs
  void (*doubles_below)(int32_t n, const double* x, double bound, int32_t* r);
  // low + floor(word width / 2^64), 0 < width < 2^32, where each of the width values comes from as many
  // words; the other words are left out. Returns how many values there are.
  int32_t (*bounded)(int32_t n, const uint64_t* words, uint32_t width, int32_t low, int32_t* r);
};

TMK_DECLARE_TIER_KERNELS(bit_kernels)

}  // namespace tmk::rng
