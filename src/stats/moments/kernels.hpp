// SPDX-License-Identifier: Apache-2.0
// Row kernels: they fold the observations of a range into the working arrays of the moments.
//
// A kernel's name follows from its place in a table: _vSSBasic, the pass (1p, Fast, 2p), the layout (R or C),
// W with weights or _ without, R and a column for each raw order 1 to 4 that it keeps (the digit, or _); for
// the passes 1p and 2p then C and a column for each central order 2 to 4; for 1p last a C if it keeps the
// cross-product, or _.
//   q         0            1            2            3
//   1p        R1___C____   R1___C2___   R12__C2___   R1234C234_
//   Fast      R1___        R12__        R123_        R1234
//   2p        R____C2__    R____C23_    R____C234    R_234C234
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/by_tier.hpp"

namespace tmk::stats {

// Working arrays: mean and raw moments 2 to 4, then central sums 2 to 4.
constexpr int raw_arrays = 4, central_arrays = 3, moment_arrays = raw_arrays + central_arrays;

// The accumulator record: sum of weights, sum of their squares, and two that are merged and not used.
enum : int { sum_of_weights, sum_of_squared_weights, accumulators = 4 };

// Arguments of a row kernel. Arrays that it does not keep may be null.
template <class Real>
struct row_range {
  ptrdiff_t first, end;  // observations
  ptrdiff_t n;           // the distance of two variables in rows layout
  ptrdiff_t p;           // variables, and the row length of cross
  const Real* data;
  const Real* weights;
  Real* accum;
  Real* work[moment_arrays];
  Real* cross;  // p by p, of which the elements (i, j), j <= i, are kept
};

// 0, or a negative status.
template <class Real>
using row_kernel = int32_t(const row_range<Real>&);

constexpr int order_kinds = 4;

constexpr int index_1pass(bool columns, bool weighted, int q, bool cross) {
  return 16 * columns + 8 * weighted + 2 * q + cross;
}
constexpr int index_2pass(bool columns, bool weighted, int q) { return 8 * columns + 4 * weighted + q; }

template <class Real>
struct one_pass_kernels {
  row_kernel<Real>* kernel_1pass_funcs_table[32];
  // Folds the estimates b of weight wb into those of a, variable by variable: pairwise formulas. Null arrays
  // of b are left out; where both have the same array of means, it is not changed.
  void (*merge)(ptrdiff_t p, Real wa, Real wb, Real* const* a, Real* const* b);
};
template <class Real>
struct fast_kernels {
  row_kernel<Real>* kernel_fast_funcs_table[16];
};
template <class Real>
struct two_pass_kernels {
  row_kernel<Real>* kernel_2pass_funcs_table[16];
};

TMK_DECLARE_TIER_KERNEL_PAIR(one_pass)
TMK_DECLARE_TIER_KERNEL_PAIR(fast)
TMK_DECLARE_TIER_KERNEL_PAIR(two_pass)

}  // namespace tmk::stats
