// SPDX-License-Identifier: Apache-2.0
// What the estimators of order share: the selected variables, copies of a variable's values between the
// task's arrays and contiguous scratch, and the sort of contiguous values.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "platform/checks.hpp"
#include "platform/scratch.hpp"
#include "stats/order/quick_sort.hpp"
#include "stats/task.hpp"
#include "tmk/abi/tpp.h"

namespace tmk::stats {

template <class Real>
bool storage_is(const task<Real>& t, const void* storage, int64_t bits) {
  return (t.integer(storage) & bits) != 0;
}

// Whether a code is one of the two layouts and nothing else.
template <class Real>
bool is_layout(const task<Real>& t, const void* storage) {
  const int64_t code = t.integer(storage);
  return code == VTS_SS_ROWS || code == VTS_SS_COLUMNS;
}

// Counts may have changed since the task was made. No observations are allowed, no variables are not.
template <class Real>
int32_t counts_status(const task<Real>& t) {
  return first_status({{t.p() < 1, VTS_STATUS_SS_BAD_DIMENSION},
                       {t.observations == nullptr || t.n() < 0, VTS_STATUS_SS_BAD_OBSERVATIONS}});
}

// Writes the numbers of the selected variables to `list` and returns their count.
template <class Real>
int32_t list_selected(const task<Real>& t, int32_t* list) {
  const auto p = static_cast<int32_t>(t.p());
  int32_t count = 0;
  for (int32_t j = 0; j < p; ++j)
    if (t.selects(j)) list[count++] = j;
  return count;
}

// The values of one variable in a p by n matrix.
template <class Real>
struct variable {
  Real* first;
  ptrdiff_t stride;

  variable(Real* matrix, bool rows, ptrdiff_t j, ptrdiff_t p, ptrdiff_t n)
      : first(matrix + (rows ? j * n : j)), stride(rows ? 1 : p) {}
};

template <class Real>
void copy(const variable<Real>& from, const variable<Real>& to, ptrdiff_t n) {
  if (from.stride == 1 && to.stride == 1) {
    std::copy_n(from.first, n, to.first);
    return;
  }
  for (ptrdiff_t i = 0; i < n; ++i) to.first[i * to.stride] = from.first[i * from.stride];
}

// Sorts contiguous values; the radix sort counts to 2^31 - 1.
template <class Real>
void sort_values(Real* values, Real* workspace, ptrdiff_t n) {
  if (n > std::numeric_limits<int32_t>::max()) return quick_sort(contiguous<Real>{values}, n);
  if constexpr (sizeof(Real) == 8)
    tmk_dft_t4_tppsSortRadixAscend_64f_I(values, workspace, static_cast<int32_t>(n));
  else
    tmk_dft_t4_tppsSortRadixAscend_32f_I(values, workspace, static_cast<int32_t>(n));
}

}  // namespace tmk::stats
