// SPDX-License-Identifier: Apache-2.0
// Symmetric matrices in the caller's storage: full, or a triangle packed by rows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "stats/moments/basic.hpp"

namespace tmk::stats {

// The storage code that a pointer of the task points to; a null pointer means full.
template <class Real>
int matrix_storage(const task<Real>& task, const void* code);

// The place of element (i, j), j <= i.
inline ptrdiff_t position(int storage, ptrdiff_t p, ptrdiff_t i, ptrdiff_t j) {
  if (storage == VTS_SS_LOWER) return i * (i + 1) / 2 + j;
  if (storage == VTS_SS_UPPER) return j * p - j * (j - 1) / 2 + (i - j);
  return i * p + j;
}

// The count of elements of a matrix in that storage.
inline ptrdiff_t stored_size(int storage, ptrdiff_t p) {
  return storage == VTS_SS_FULL ? p * p : p * (p + 1) / 2;
}

// Writes element(i, j), j <= i, of the variables for which selects(i) and selects(j).
template <class Real, class Selects, class Element>
void pack(ptrdiff_t p, int storage, Real* r, Selects selects, Element element) {
  for (ptrdiff_t i = 0; i < p; ++i) {
    if (!selects(i)) continue;
    for (ptrdiff_t j = 0; j <= i; ++j) {
      if (!selects(j)) continue;
      const Real value = element(i, j);
      r[position(storage, p, i, j)] = value;
      if (storage == VTS_SS_FULL) r[j * p + i] = value;
    }
  }
}

// The lower triangle of a full p by p matrix, from a matrix in that storage.
template <class Real>
void expand(ptrdiff_t p, int storage, const Real* packed, Real* full);

// As expand, for the cross-product from which a covariance or correlation matrix of weight w was made. Of a
// correlation matrix the diagonal holds variances.
template <class Real>
void expand_cov(ptrdiff_t p, int storage, const Real* packed, weight_pair<Real> w, Real* cross);
template <class Real>
void expand_cor(ptrdiff_t p, int storage, const Real* packed, weight_pair<Real> w, Real* cross);

// Writes those of cor, cov and cross that are requested from the working matrix. 0 or a status.
template <class Real>
int32_t write_matrices(const task<Real>& task, const demand& asked, ptrdiff_t p, weight_pair<Real> w,
                       const Real* cross);

}  // namespace tmk::stats
