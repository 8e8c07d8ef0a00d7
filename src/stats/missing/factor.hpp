// SPDX-License-Identifier: Apache-2.0
// The triangular factor of a positive definite matrix.
#pragma once

#include <cstddef>

#include "linalg/blas.hpp"

namespace tmk::stats::missing {

// In place, n by n by columns, "L" or "U". False where there is none; a BLAS may let NaN pass for a pivot.
template <class Real>
bool factorise(const char* triangle, ptrdiff_t n, Real* a) {
  const int order = static_cast<int>(n);
  int info = 0;
  linalg::serial<Real>::potrf(triangle, &order, a, &order, &info);
  bool regular = info == 0;
  for (ptrdiff_t i = 0; i < n; ++i) regular = regular && a[i * n + i] > 0;
  return regular;
}

}  // namespace tmk::stats::missing
