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
