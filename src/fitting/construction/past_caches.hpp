// SPDX-License-Identifier: Apache-2.0
// Which coefficients are written with streaming stores.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fitting/task_view.hpp"

namespace tmk::fitting {

// Whether a cubic's coefficients are better written past the caches, which could not hold them; the stores
// that do so need 16-byte alignment.
template <class Real>
bool passes_caches(const task<Real>& t) {
  constexpr ptrdiff_t cached_elements = (ptrdiff_t{8} << 20) / static_cast<ptrdiff_t>(sizeof(Real));
  const auto is_aligned = [](const Real* c) { return reinterpret_cast<uintptr_t>(c) % 16 == 0; };
  return points(t) * 4 > cached_elements / functions(t) &&
         std::all_of(t.coeff_rows, t.coeff_rows + functions(t), is_aligned);
}

}  // namespace tmk::fitting
