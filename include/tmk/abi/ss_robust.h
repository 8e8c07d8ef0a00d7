/* SPDX-License-Identifier: Apache-2.0 */
/* Outliers and robust covariance: the support functions that they share, and the functions beneath
 * <tmk/robust.hpp>, which is the checked C++ API. Included by tmk/abi/ss.h.
 *
 * Everything is computed in double. On one tier, results depend neither on layout, strides nor threads, to
 * the bit. Every function that returns int32_t returns 0 or a negative status (tmk_status_text has a sentence
 * for each), and VTS_STATUS_SS_MEMORY when there is no memory.
 */
#ifndef TMK_ABI_SS_ROBUST_H
#define TMK_ABI_SS_ROBUST_H

#include "tmk/abi/ss_pooled.h"

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

/* The chi-square distribution with df degrees of freedom: distribution function, density, and the quantile of
 * a probability (0 for 0, infinity for 1). 0 for arguments not above 0; a NaN gives NaN, and in the density 0
 * where it is x. The logarithm of the absolute value of the gamma function. */
double __vtsdChi2CDF(double df, double x);
double __vtsdChi2PDF(double df, double x);
double __vtsdChi2ICDF(double df, double probability);
double __vtsdLGamma(double x);

/* Symmetric p by p matrices, of which elements i p + j with j not below i are used.
 *
 * TestCovRank leaves a matrix whose eigenvalues are above 1e-15, whatever its scale, and adds a hundredth of
 * the first eigenvalue that is not negative to the diagonal of another; the other triangle is overwritten.
 * VTS_STATUS_SS_NOT_POSITIVE: there is no such eigenvalue. VTS_STATUS_SS_EIGEN_FAILED.
 *
 * InvCov replaces a matrix by its inverse; that of a singular matrix of order up to 3 has infinite or NaN
 * elements. VTS_STATUS_SS_FACTOR_FAILED from order 4 on: the matrix is not positive definite, and has been
 * freed by tmk_serv_deallocate, so that its memory must come from tmk_serv_allocate and not be used again.
 * VTS_STATUS_SS_INVERSE_FAILED.
 *
 * MahDistance writes the distances from distanceMean by distanceInvCov, an inverse as InvCov leaves it, of
 * the observations distanceFirst to distanceLast - 1 of a task to distanceOut. These fields have no parameter
 * number: they are filled by the library in tasks of its own. */
int32_t __vtsdTestCovRank(int32_t p, double* c);
int32_t __vtssTestCovRank(int32_t p, float* c);
int32_t __vtsdInvCov(int32_t p, double* c);
int32_t __vtssInvCov(int32_t p, float* c);
int32_t _vtsdSSMahDistance(SSTask* task);
int32_t _vtssSSMahDistance(SSTask* task);

/* Called after each round with its number, from 1, and how much it changed; not 0 stops the computation after
 * that round. It runs in the caller's thread and does not throw. */
typedef int32_t (*TmkSSProgress)(int64_t round, double change, void* context);

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif
#endif
