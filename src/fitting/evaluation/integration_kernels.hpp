// SPDX-License-Identifier: Apache-2.0
// The kernel of integration, once per tier.
#pragma once

#include <cstdint>

#include "platform/by_tier.hpp"

namespace tmk::fitting {

// F(right piece, right distance) - F(left piece, left distance) for `count` pairs, F the antiderivative of a
// piece that vanishes at its base. Pieces and distances are readable, and differences writable, up to a
// multiple of 16.
template <class Real>
using antiderivative_kernel = void(const Real* rows, const int32_t* left_pieces, const Real* left_distances,
                                   const int32_t* right_pieces, const Real* right_distances, int count,
                                   Real* differences);

template <class Real>
struct integration_kernels {
  antiderivative_kernel<Real>* antiderivatives[3];  // by order - 2
};

TMK_DECLARE_TIER_KERNEL_PAIR(integration)

}  // namespace tmk::fitting
