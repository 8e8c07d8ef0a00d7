/* SPDX-License-Identifier: Apache-2.0 */
/* Data with holes under a normal model: the likeliest mean and covariance, and multiple imputation. Included
 * by tmk/abi/ss.h.
 *
 * Every NaN is a hole. Everything is computed in double, on variables brought to mean 0 and deviation 1, so
 * that results follow a change of units. On one tier they depend neither on layout, strides nor threads, to
 * the bit. Observations without any value say nothing about the model; they are imputed from it. Every
 * function returns 0 or a negative status (tmk_status_text has a sentence for each): VTS_STATUS_SS_MEMORY,
 * those of the data that tmk_ss_impute_refusal gives, and the ones named here. <tmk/impute.hpp> is the
 * checked C++ API over these functions.
 */
#ifndef TMK_ABI_SS_IMPUTE_H
#define TMK_ABI_SS_IMPUTE_H

#include "tmk/abi/ss.h"
#include "tmk/abi/vts.h"

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

enum {
  TMK_SS_INFINITE = -4131,  /* an infinite value, or values whose spread is not finite */
  TMK_SS_NO_VALUES = -4132, /* a variable of holes alone */
  TMK_SS_NO_SPREAD = -4133, /* a variable all of whose values are equal */
  TMK_SS_FEW_ROWS = -4134,  /* not more observations with a value than variables */
  TMK_SS_NOT_REGULAR =
      -4135,             /* a covariance that became singular: variables depend on one another linearly */
  TMK_SS_STOPPED = -4136 /* the caller's function stopped an imputation */
};

struct TmkSSData; /* of ss_pooled.h */

/* What the data are refused for, or 0: VTS_STATUS_SS_DATA_NULL, VTS_STATUS_SS_BAD_DIMENSION (columns),
 * VTS_STATUS_SS_BAD_OBSERVATIONS (rows), TMK_SS_BAD_WEIGHTS (weights are not offered), then TMK_SS_INFINITE
 * to TMK_SS_FEW_ROWS in this order. *row and *column are the first place, by rows, or -1 where there is none.
 */
int32_t tmk_ss_impute_refusal(const struct TmkSSData* data, int64_t* row, int64_t* column);

/* How many holes the data have. */
int32_t tmk_ss_impute_holes(const struct TmkSSData* data, int64_t* holes);

/* Called after each round with the number of the imputation (-1 for EM), the round from 1 and the largest
 * change of a mean or covariance in units of the variables' deviations. Not 0 stops. Calls for several
 * imputations come from several threads, one at a time. */
typedef int32_t (*TmkSSImputeProgress)(void* context, int64_t imputation, int64_t round, double change);

typedef struct TmkSSEmOptions {
  int64_t rounds;   /* the most rounds, at least 1 */
  double tolerance; /* bound of the parameters' distance from the maximum, in deviations; above 0 */
  TmkSSImputeProgress progress; /* or null */
  void* context;                /* of progress */
} TmkSSEmOptions;

typedef struct TmkSSEmReport {
  double logLikelihood; /* of the observed values */
  int64_t rounds;
  int32_t converged;
} TmkSSEmReport;

/* The likeliest mean (columns numbers) and covariance (columns by columns, divisor n) of the observed values,
 * by EM with the extrapolation of R. Varadhan and C. Roland (Scand. J. Statist. 35, 2008), which is taken
 * where the likelihood does not fall. It ends when the distance that is left, from the last two changes, is
 * within the tolerance. TMK_SS_BAD_OPTIONS, TMK_SS_NOT_REGULAR. */
int32_t tmk_ss_em(const struct TmkSSData* data, const TmkSSEmOptions* options, double* mean,
                  double* covariance, TmkSSEmReport* report, const ThreadingService* threading);

typedef struct TmkSSImputeOptions {
  int64_t count;     /* imputations, at least 1 */
  int64_t rounds;    /* of augmentation before each imputation, at least 1 */
  int32_t oneChain;  /* 0: each imputation has a chain of its own, which begins at EM's estimate; else one
                        chain  gives all of them, `rounds` apart */
  TmkSSEmOptions em; /* its progress is called throughout */
} TmkSSImputeOptions;

/* Multiple imputation by data augmentation with Jeffreys' prior. streams: one for each chain, which the draws
 * advance. imputed: the holes of each imputation, by observation and then by variable. A model is its mean
 * and the lower triangle of its covariance by rows, columns (columns + 3) / 2 numbers: chain, or null, has
 * one for each round of each imputation; start, or null, is EM's, whose report may be null, too.
 * TMK_SS_BAD_OPTIONS, TMK_SS_NOT_REGULAR, TMK_SS_STOPPED, VTS_STATUS_SS_ISTEP_DRAW_FAILED,
 * VTS_STATUS_SS_PSTEP_DRAW_FAILED. */
int32_t tmk_ss_impute(const struct TmkSSData* data, const TmkSSImputeOptions* options,
                      const VtsStreamHandle* streams, double* imputed, double* chain, double* start,
                      TmkSSEmReport* report, const ThreadingService* threading);

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif
#endif
