// SPDX-License-Identifier: Apache-2.0
// Rows of data with holes against the rows of a matrix that belong to the holes. All rows have `width`
// elements (model.hpp), those of data zeros at the holes; `holes` are the k rows of the model that are
// missing.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/by_tier.hpp"

namespace tmk::stats::missing {

// Observations of one pattern, one after the other.
template <class Real>
struct row_block {
  ptrdiff_t width, count;
  const Real* rows;
  ptrdiff_t k;
  const int32_t* holes;
};

template <class Real>
struct row_kernels {
  // values[i k + a] = row holes[a] of the matrix times row i of the data.
  void (*products)(const row_block<Real>& block, const Real* matrix, Real* values);
  // Half of what the holes, filled with values[i k + a], add to the sums of products: the other half is its
  // transpose.
  void (*accumulate)(const row_block<Real>& block, const Real* values, Real* half);
};

TMK_DECLARE_TIER_KERNEL_PAIR(row)

}  // namespace tmk::stats::missing
