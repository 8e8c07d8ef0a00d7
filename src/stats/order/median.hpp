// SPDX-License-Identifier: Apache-2.0
// The median of contiguous values, by selection.
#pragma once

#include <algorithm>

#include "stats/order/quick_sort.hpp"

namespace tmk::stats {

// Of n > 0 values, whose order it changes; the mean of the two middle ones if n is even.
template <class Real>
Real median_in_place(Real* values, ptrdiff_t n) {
  const ptrdiff_t k = (n - 1) / 2;
  quick_select(contiguous<Real>{values}, {0, n - 1}, k);
  if (n % 2 == 1) return values[k];
  const Real next = *std::min_element(values + k + 1, values + n);
  return Real(0.5) * values[k] + Real(0.5) * next;
}

}  // namespace tmk::stats
