// SPDX-License-Identifier: Apache-2.0
// A task's data for the code that takes observations by strides.
#pragma once

#include <limits>

#include "stats/pooled/data.hpp"
#include "stats/task.hpp"

namespace tmk::stats::robust {

template <class Real>
TmkSSData data_of(const task<Real>& t) {
  const int64_t p = t.p(), n = t.n();
  const bool rows = p == 1 || (t.integer(t.dataStorage) & VTS_SS_ROWS) != 0;
  return {t.data, sizeof(Real) == 4, n, p, rows ? 1 : p, rows ? n : 1, nullptr};
}

// Exactly one of the two storage codes, in the width of the task.
template <class Real>
bool has_storage(const task<Real>& t) {
  const int64_t code = t.integer(t.dataStorage);
  return code == VTS_SS_ROWS || code == VTS_SS_COLUMNS;
}

// A count that is at least 1 and that LAPACK can take.
template <class Real>
bool has_dimension(const task<Real>& t) {
  return t.dimension != nullptr && t.p() >= 1 && t.p() <= std::numeric_limits<int32_t>::max();
}

}  // namespace tmk::stats::robust
