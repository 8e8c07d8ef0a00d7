// SPDX-License-Identifier: Apache-2.0
// The searches of blocks of sites without a hook, per tier.
#pragma once

#include "fitting/search/search.hpp"
#include "platform/by_tier.hpp"

namespace tmk {

template <class Real>
struct search_loops {
  using loop = void(ptrdiff_t nx, const Real* x, ptrdiff_t n, const Real* sites,
                    fitting::search_state<Real>* state, int32_t* cells);
  loop* by_method[static_cast<int>(fitting::search_method::user_defined)];
};

}  // namespace tmk

TMK_DECLARE_TWIN_LOOPS(search)
