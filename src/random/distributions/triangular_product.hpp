// SPDX-License-Identifier: Apache-2.0
// a + T z for many vectors z, T lower triangular. Sums run over the components in their order, for each
// vector by itself, so that a result does not depend on how many vectors there are, as it does in libraries
// that choose their blocks by the size of the matrix.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/by_tier.hpp"

namespace tmk::rng {

template <class Real>
struct triangular_kernels {
  // T as the product reads it, in so many elements.
  ptrdiff_t (*packed_size)(ptrdiff_t order);
  // Row i of T begins at t + i order, or, for rows of 1, 2, 3, ... elements, at t + i (i + 1) / 2.
  void (*pack)(ptrdiff_t order, const Real* t, bool short_rows, Real* packed);
  // In place: z holds the vectors one after the other.
  void (*multiply)(ptrdiff_t order, ptrdiff_t vectors, const Real* packed, const Real* a, Real* z);
};

TMK_DECLARE_TIER_KERNEL_PAIR(triangular)

}  // namespace tmk::rng
