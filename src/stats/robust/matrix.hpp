// SPDX-License-Identifier: Apache-2.0
// Small symmetric matrices, p by p, of which elements i p + j with j not below i are used: the lower triangle
// of LAPACK, whose matrices go by columns.
#pragma once

#include <cstdint>

namespace tmk::stats::robust {

// Leaves a matrix whose eigenvalues are above 1e-15, and raises the diagonal of another by a hundredth of its
// first eigenvalue that is not negative. The other triangle is overwritten. VTS_STATUS_SS_NOT_POSITIVE where
// there is none.
template <class Real>
int32_t make_invertible(int32_t p, Real* c);

// The inverse in place of the matrix. VTS_STATUS_SS_FACTOR_FAILED, VTS_STATUS_SS_INVERSE_FAILED from p of 4
// on; smaller matrices without an inverse give IEEE results.
template <class Real>
int32_t invert(int32_t p, Real* c);

// Copies the used triangle to the other.
template <class Real>
void mirror(int32_t p, Real* c);

// The logarithm of the determinant; not finite where the matrix is not positive definite.
double log_determinant_of(int32_t p, const double* c);

// Whether a covariance has an inverse worth computing, whatever the scales of its variables.
bool well_conditioned(int32_t p, const double* c);

}  // namespace tmk::stats::robust
