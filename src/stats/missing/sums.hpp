// SPDX-License-Identifier: Apache-2.0
// Sums of products of completed data: those of observed values, which never change, and what the holes add.
#pragma once

#include "linalg/blas.hpp"
#include "stats/missing/model.hpp"

namespace tmk::stats::missing {

// Rows of a product, whose number BLAS chooses its order of additions by.
constexpr ptrdiff_t product_elements = 131072;

// Sums of the rows (model.hpp). Zeros at the holes add nothing.
template <class Real>
square<Real> observed_sums(ptrdiff_t p, ptrdiff_t n, const Real* rows) {
  square<Real> sums(p);
  const Real one = 1;
  const int order = static_cast<int>(sums.order), width = static_cast<int>(sums.width);
  const ptrdiff_t most = std::max<ptrdiff_t>(product_elements / p, 1);
  for (ptrdiff_t first = 0, count; first < n; first += count) {
    count = std::min(n - first, most);
    const int now = static_cast<int>(count);
    linalg::serial<Real>::syrk("U", "N", &order, &now, &one, rows + first * sums.width, &width, &one, sums[0],
                               &width);
  }
  sums[0][0] = static_cast<Real>(n);  // in single precision ones stop counting at 2^24
  // The upper triangle by columns is the lower one by rows.
  for (ptrdiff_t i = 0; i < sums.order; ++i)
    for (ptrdiff_t j = 0; j < i; ++j) sums[j][i] = sums[i][j];
  return sums;
}

// observed + half + half'
template <class Real>
void complete_sums(const square<Real>& observed, const square<Real>& half, square<Real>& sums) {
  for (ptrdiff_t i = 0; i < sums.order; ++i)
    for (ptrdiff_t j = 0; j <= i; ++j) sums[i][j] = sums[j][i] = observed[i][j] + half[i][j] + half[j][i];
}

}  // namespace tmk::stats::missing
