// SPDX-License-Identifier: Apache-2.0
// The kernels of evaluation, once per tier.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/by_tier.hpp"

namespace tmk::fitting {

// Sites are evaluated in blocks of this many, whatever a caller's count: the cells, pieces and distances of a
// block stay in the first cache, and the steps between them cost little against its sites.
constexpr int site_block = 256;

// Polynomials of `count` sites at given distances from the bases of their pieces, whose coefficients are in
// rows. pieces and distances are readable up to a multiple of 16. Column c of site i goes to
// out[i * site_stride + c * column_stride]; one of the two strides is 1.
template <class Real>
using polynomial_kernel = void(const Real* rows, const int32_t* pieces, const Real* distances, int count,
                               Real* out, ptrdiff_t site_stride, ptrdiff_t column_stride);

template <class Real>
struct evaluation_kernels {
  // By order - 2, and by the set of derivatives as bits: 1 the value, 2 the first, 4 the second, 8 the third.
  polynomial_kernel<Real>* polynomials[3][16];
  // Pieces of cells, those outside 1 ... last + 1 as the nearest, and the distances of sites from their bases
  // x[piece] or first + piece * step. Pieces and distances have room up to a multiple of 16.
  void (*locate_given)(const Real* sites, const int32_t* cells, int count, int32_t last, const Real* x,
                       int32_t* pieces, Real* distances);
  void (*locate_uniform)(const Real* sites, const int32_t* cells, int count, int32_t last, Real first,
                         Real step, int32_t* pieces, Real* distances);
  // `columns` columns of `count` values, `pitch` apart, as rows from out on, `stride` apart. The columns are
  // readable up to a multiple of 16.
  void (*as_rows)(const Real* column, ptrdiff_t pitch, int columns, int count, Real* out, ptrdiff_t stride);
};

TMK_DECLARE_TIER_KERNEL_PAIR(evaluation)

}  // namespace tmk::fitting
