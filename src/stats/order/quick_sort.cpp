// SPDX-License-Identifier: Apache-2.0
#include "stats/order/quick_sort.hpp"

#include <cstdint>

#include "tmk/abi/ss.h"

#define TMK_QUICK_SORTS(letter, Real)                                         \
  void __vts##letter##QSort(int32_t n, Real* a) {                             \
    tmk::stats::quick_sort(tmk::stats::contiguous<Real>{a}, n);               \
  }                                                                           \
  void __vts##letter##QSortStep(int32_t n, Real* a, int32_t stride) {         \
    tmk::stats::quick_sort(tmk::stats::strided<Real>{a, stride}, n);          \
  }                                                                           \
  Real __vts##letter##QSortSelect(int32_t n, Real* a, int32_t k) {            \
    tmk::stats::quick_select(tmk::stats::contiguous<Real>{a}, {0, n - 1}, k); \
    return a[k];                                                              \
  }
TMK_QUICK_SORTS(d, double)
TMK_QUICK_SORTS(s, float)
#undef TMK_QUICK_SORTS
