// Element-wise steps between uniforms, vector kernels and variates. The same bits on every tier.
#pragma once

#include <cstdint>

#include "platform/by_tier.hpp"

namespace tmk {

template <class Real>
struct distribution_loops {
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

struct single_loops : distribution_loops<float> {};
struct double_loops : distribution_loops<double> {};
struct bit_loops {
  // Non-negative singles, compared by their bits: 1 below the bound, else 0. r may be x.
  void (*below)(int32_t n, const int32_t* x, int32_t bound, int32_t* r);
  void (*upper_32_of_59)(int32_t n, const uint64_t* words, uint32_t* r);
};

}  // namespace tmk

TMK_DECLARE_LOOPS(single_loops)
TMK_DECLARE_LOOPS(double_loops)
TMK_DECLARE_LOOPS(bit_loops)
