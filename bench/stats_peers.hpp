// SPDX-License-Identifier: Apache-2.0
// What a user would otherwise take for moments. Data are doubles, n observations of p variables; `rows` is
// true where the observations of a variable are contiguous. Results go to `r`, so that no work is optimised
// away.
#pragma once

#include <cstddef>

namespace tmk::bench {

// The sum of n values in several vector registers: the speed at which an array can be read.
double plain_sum(const double* x, ptrdiff_t n);

// r: p means, then p variances.
void eigen_variance(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r);
void gsl_variance(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r);
void boost_variance(const double* x, const double* w, ptrdiff_t n, ptrdiff_t p, bool rows, double* r);

// r: mean, variance, skewness and kurtosis of each variable.
void eigen_moments(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r);
void gsl_moments(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r);
void boost_moments(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r);

// r: the quartiles of one variable, estimated as the values arrive (P-square, no bound on the error).
void boost_quartiles(const double* x, ptrdiff_t n, double* r);

// r: p by p. The bare update leaves the means in.
void eigen_covariance(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r);
void bare_rank_update(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r);

}  // namespace tmk::bench
