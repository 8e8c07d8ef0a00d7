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

#include "tmk/abi/ss.h"

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

/* Of tmk/abi/ss_pooled.h, whichever of these headers is read first. */
typedef struct TmkSSData TmkSSData;

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

/* ---- Beneath <tmk/robust.hpp>: data by strides, in double, without weights ---- */

/* The functions below take observations without NaN and infinity (TMK_SS_NAN) and without weights
 * (TMK_SS_BAD_WEIGHTS), of 1 to 32768 columns (VTS_STATUS_SS_BAD_DIMENSION). They work on a copy, each
 * variable less its median and divided by its MAD, which must not be 0 (TMK_SS_FLAT), so that results follow
 * changes of units. VTS_STATUS_SS_NOT_POSITIVE: too many observations lie on a hyperplane, or a matrix is not
 * positive definite. VTS_STATUS_SS_DATA_NULL: data or the place for a result is missing. */
enum { TMK_SS_FLAT = -4121 /* a variable of which half the observations or more have one value */ };

/* Called in the caller's thread after each round with its number, from 1, and how much it changed; a result
 * other than 0 ends the computation after that round. It does not throw. */
typedef int32_t (*TmkSSRobustProgress)(void* context, int64_t round, double change);

enum { TMK_SS_TBS = 0, TMK_SS_OGK = 1 };
typedef struct TmkSSRobustOptions {
  int32_t method;
  double breakdown; /* above 0 and at most 0.5; no more than (rows - columns) / (2 rows) is used */
  double rejection; /* the share of normal observations that get weight 0, above 0 and below 1 */
  double tolerance; /* ends the rounds: root of the mean square by which weights changed, at least 0 */
  int64_t rounds;   /* the most, at least 1 */
  int32_t reweight; /* not 0: last, mean and covariance of the rows within the 0.975 quantile */
  TmkSSRobustProgress progress; /* or null */
  void* context;
} TmkSSRobustOptions;
typedef struct TmkSSRobustEstimate {
  double *location, *covariance; /* columns; columns by columns */
  double *distances, *weights;   /* per row: Mahalanobis distance, and weight from 0 to 1 */
  int64_t rounds;
  int32_t converged;
  double breakdown, rejection; /* those in force */
} TmkSSRobustEstimate;
/* TMK_SS_TBS: the S-estimate with the translated biweight (D. Rocke 1996), or with the biweight, which takes
 * a larger rejection probability, where the translated one cannot have the breakdown point, by weighted steps
 * from the best of the six starts of M. Hubert, P. Rousseeuw and T. Verdonck (2012). TMK_SS_OGK: one step of
 * R. Maronna and R. Zamar (2002), reweighted; breakdown, rejection, tolerance, rounds and reweight are not
 * used. Both are consistent at the normal distribution. VTS_STATUS_SS_BAD_OBSERVATIONS: fewer rows than 2
 * columns + 1, or above 2147483647. TMK_SS_BAD_OPTIONS. */
int32_t tmk_ss_robust_covariance(const TmkSSData* data, const TmkSSRobustOptions* options,
                                 TmkSSRobustEstimate* result, const ThreadingService* threading);

enum { TMK_SS_START_MAHALANOBIS = 1, TMK_SS_START_MEDIAN = 2 };
typedef struct TmkSSOutlierOptions {
  int32_t start;
  double alpha; /* the probability that clean normal data have an outlier, above 0 and below 1 */
  TmkSSRobustProgress progress;
  void* context;
} TmkSSOutlierOptions;
typedef struct TmkSSOutliers {
  double *weights, *distances; /* per row: 0 for an outlier and 1 else; distance from the regular ones */
  double cutoff;               /* distances of outliers are not below this */
  int64_t rounds, regular;
  int32_t converged; /* 0 where the regular rows still changed after 1000 rounds, or at a stop */
} TmkSSOutliers;
/* BACON (N. Billor, A. Hadi and P. Velleman 2000): alpha / rows is the tail beyond the cut-off, and rounds
 * end when the number of regular rows stays. VTS_STATUS_SS_BAD_OBSERVATIONS: fewer rows than 3 columns + 2,
 * or above 2147483647. */
int32_t tmk_ss_robust_outliers(const TmkSSData* data, const TmkSSOutlierOptions* options,
                               TmkSSOutliers* result, const ThreadingService* threading);

/* Mahalanobis distances, not squared, of any observations, NaN and infinity among them. */
int32_t tmk_ss_robust_distances(const TmkSSData* data, const double* location, const double* covariance,
                                double* distances, const ThreadingService* threading);

/* The first value by rows that is NaN or infinite: 1 and its place, or 0. */
int32_t tmk_ss_robust_find_not_finite(const TmkSSData* data, int64_t* row, int64_t* column);
/* The first variable whose MAD is 0: 1 and its number, or 0. */
int32_t tmk_ss_robust_find_flat(const TmkSSData* data, int64_t* column, const ThreadingService* threading);

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif
#endif
