// SPDX-License-Identifier: Apache-2.0
// The searches of blocks of sites, per tier. Those by a hook need no tier.
#pragma once

#include "fitting/search/search.hpp"
#include "platform/by_tier.hpp"

namespace tmk::fitting {

template <class Real>
struct cell_kernels {
  using kernel = void(ptrdiff_t nx, const Real* x, ptrdiff_t n, const Real* sites, search_state<Real>* state,
                      int32_t* cells);
  kernel* by_method[static_cast<int>(search_method::user_defined)];
};

TMK_DECLARE_TIER_KERNEL_PAIR(cell)

}  // namespace tmk::fitting
