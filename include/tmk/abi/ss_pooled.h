/* SPDX-License-Identifier: Apache-2.0 */
/* Summaries of data that come in blocks, from several places, or both: moments and quantile sketches that
 * merge and have a saved form, and exact quantiles of weighted data. Included by tmk/abi/ss.h.
 *
 * Everything is computed in double. On one tier, results depend neither on layout, strides nor threads, to
 * the bit. Every function returns 0 or a negative status (tmk_status_text has a sentence for each); an object
 * stays as it was when a call fails. VTS_STATUS_SS_MEMORY: no memory. VTS_STATUS_SS_TASK_NULL: a handle, or
 * the place for one, is null. An object is used by one thread at a time. <tmk/stats.hpp> is the checked C++
 * API over these functions.
 */
#ifndef TMK_ABI_SS_POOLED_H
#define TMK_ABI_SS_POOLED_H

#include "tmk/abi/ss.h"

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

enum {
  TMK_SS_BAD_WEIGHTS = -4101,       /* negative, not finite, not whole where they are counts, or their sum */
  TMK_SS_NAN = -4102,               /* a NaN under TMK_SS_NAN_REFUSE */
  TMK_SS_BAD_OPTIONS = -4103,       /* an option or an estimate that does not exist */
  TMK_SS_MISMATCH = -4104,          /* other columns or options than those of the object */
  TMK_SS_NO_CROSS_PRODUCT = -4105,  /* an estimate that needs the option crossProduct */
  TMK_SS_BAD_IMAGE_SIZE = -4106,    /* an image that is truncated or too long, or memory too small for one */
  TMK_SS_BAD_IMAGE = -4107,         /* bytes that are no image of this kind */
  TMK_SS_BAD_IMAGE_VERSION = -4108, /* an image of another version */
  TMK_SS_DAMAGED_IMAGE = -4109,     /* an image whose hash is not that of its content */
  TMK_SS_IMPOSSIBLE_IMAGE = -4110   /* an image whose content cannot be that of any data */
};

/* What a NaN does: estimates that it enters are NaN; each variable leaves out its own NaNs, while matrices
 * are over the rows without any; the data are refused with TMK_SS_NAN. */
enum { TMK_SS_NAN_PROPAGATE = 0, TMK_SS_NAN_OMIT = 1, TMK_SS_NAN_REFUSE = 2 };

/* Observations by variables, the caller's: value (i, j) is at values[i rowStride + j columnStride]. Strides
 * count elements and may be negative or 0; rows in a block of memory have rowStride = columns and
 * columnStride = 1. */
typedef struct TmkSSData {
  const void* values; /* double, or float where `single` is not 0 */
  int32_t single;
  int64_t rows, columns; /* at least 0 and 1 to 2147483647 */
  int64_t rowStride, columnStride;
  const double* weights; /* one per row, finite and not negative; null: each row counts once */
} TmkSSData;

typedef struct TmkSSOptions {
  int32_t crossProduct;     /* keeps columns (columns + 1) / 2 sums of products; columns up to 32768 */
  int32_t nanPolicy;        /* TMK_SS_NAN_... */
  int32_t weightsAreCounts; /* weights are whole numbers: how often an observation was made */
} TmkSSOptions;

/* The first NaN by rows in an observation of positive weight: 1 and its place, or 0. */
int32_t tmk_ss_pooled_find_nan(const TmkSSData* data, int64_t* row, int64_t* column);

/* ---- Moments up to order 4, extrema and cross-product ---- */

typedef struct TmkSSMoments TmkSSMoments;

/* An object without data. VTS_STATUS_SS_BAD_DIMENSION: columns; TMK_SS_BAD_OPTIONS. */
int32_t tmk_ss_pooled_moments_new(TmkSSMoments** moments, int64_t columns, const TmkSSOptions* options);
int32_t tmk_ss_pooled_moments_copy(TmkSSMoments** copy, const TmkSSMoments* moments);
/* Frees the object and nulls the pointer. */
int32_t tmk_ss_pooled_moments_delete(TmkSSMoments** moments);

/* Adds a block, which may have no rows. VTS_STATUS_SS_DATA_NULL, VTS_STATUS_SS_BAD_DIMENSION (columns),
 * VTS_STATUS_SS_BAD_OBSERVATIONS (rows), TMK_SS_MISMATCH (columns), TMK_SS_BAD_WEIGHTS, TMK_SS_NAN. */
int32_t tmk_ss_pooled_moments_add(TmkSSMoments* moments, const TmkSSData* block,
                                  const ThreadingService* threading);
/* Adds what the other object, or the same, has seen. TMK_SS_MISMATCH; TMK_SS_BAD_WEIGHTS: a sum of weights
 * that is not finite. */
int32_t tmk_ss_pooled_moments_merge(TmkSSMoments* moments, const TmkSSMoments* other);
/* Forgets all data. */
int32_t tmk_ss_pooled_moments_reset(TmkSSMoments* moments);

/* Columns, options and the number of complete rows behind the matrices (0 without a cross-product). Each of
 * the three pointers may be null. */
int32_t tmk_ss_pooled_moments_query(const TmkSSMoments* moments, int64_t* columns, TmkSSOptions* options,
                                    int64_t* complete);
/* Observations that counted, one number per column. */
int32_t tmk_ss_pooled_moments_counts(const TmkSSMoments* moments, int64_t* counts);

/* With W the sum of the weights, W2 that of their squares, and m_k the weighted mean of (x - mean)^k. One
 * number per column; NaN without observations, and where the divisor is 0. */
enum {
  TMK_SS_POOLED_WEIGHT = 0, /* W */
  TMK_SS_POOLED_MEAN = 1,
  TMK_SS_POOLED_VARIANCE = 2, /* W m_2 / (W - W2 / W), or over W - 1 where weights are counts */
  TMK_SS_POOLED_SD = 3,
  TMK_SS_POOLED_SKEWNESS = 4, /* m_3 / m_2^(3/2) */
  TMK_SS_POOLED_KURTOSIS = 5, /* m_4 / m_2^2 - 3 */
  TMK_SS_POOLED_MINIMUM = 6,
  TMK_SS_POOLED_MAXIMUM = 7,
  TMK_SS_POOLED_RAW1 = 11, /* weighted means of x^k */
  TMK_SS_POOLED_RAW2 = 12,
  TMK_SS_POOLED_RAW3 = 13,
  TMK_SS_POOLED_RAW4 = 14,
  TMK_SS_POOLED_CENTRAL1 = 21, /* m_k */
  TMK_SS_POOLED_CENTRAL2 = 22,
  TMK_SS_POOLED_CENTRAL3 = 23,
  TMK_SS_POOLED_CENTRAL4 = 24,
  /* columns by columns numbers, by rows, over the complete rows */
  TMK_SS_POOLED_CROSS_PRODUCT = 31, /* sums of products about the means */
  TMK_SS_POOLED_COVARIANCE = 32,
  TMK_SS_POOLED_CORRELATION = 33
};
/* TMK_SS_BAD_OPTIONS: no such estimate; TMK_SS_NO_CROSS_PRODUCT; VTS_STATUS_SS_DATA_NULL: no place for the
 * result. */
int32_t tmk_ss_pooled_moments_estimate(const TmkSSMoments* moments, int32_t estimate, double* result);

/* An image of the same bytes on every machine, little-endian, with a hash at its end. The size in bytes, or a
 * negative status; `save` writes so many (TMK_SS_BAD_IMAGE_SIZE: size is another). `load` makes an object of
 * an image and refuses what is truncated, damaged, of another version or impossible. */
int64_t tmk_ss_pooled_moments_image_size(const TmkSSMoments* moments);
int32_t tmk_ss_pooled_moments_save(const TmkSSMoments* moments, void* image, int64_t size);
int32_t tmk_ss_pooled_moments_load(TmkSSMoments** moments, const void* image, int64_t size);

/* ---- Quantile sketches ---- */

typedef struct TmkSSSketch TmkSSSketch;

/* Ranks are off by at most epsilon times the count, above 0 and at most 1 (VTS_STATUS_SS_BAD_EPSILON), in
 * whatever order data come and sketches merge. VTS_STATUS_SS_BAD_DIMENSION: columns; TMK_SS_BAD_OPTIONS: the
 * policy. */
int32_t tmk_ss_pooled_sketch_new(TmkSSSketch** sketch, int64_t columns, double epsilon, int32_t nanPolicy);
int32_t tmk_ss_pooled_sketch_copy(TmkSSSketch** copy, const TmkSSSketch* sketch);
int32_t tmk_ss_pooled_sketch_delete(TmkSSSketch** sketch);
/* Statuses as those of moments; TMK_SS_BAD_WEIGHTS: a sketch takes no weights. */
int32_t tmk_ss_pooled_sketch_add(TmkSSSketch* sketch, const TmkSSData* block);
/* Of two epsilons the larger holds from then on. */
int32_t tmk_ss_pooled_sketch_merge(TmkSSSketch* sketch, const TmkSSSketch* other);
int32_t tmk_ss_pooled_sketch_reset(TmkSSSketch* sketch);
/* Each of the three pointers may be null. */
int32_t tmk_ss_pooled_sketch_query(const TmkSSSketch* sketch, int64_t* columns, double* epsilon,
                                   int32_t* nanPolicy);

/* The answer for one variable: a value, bounds of the number of values that are not above it, and the count
 * of the values seen. After a NaN under TMK_SS_NAN_PROPAGATE value is NaN and the bounds are 0. */
typedef struct TmkSSRank {
  double value;
  int64_t lowest, highest, count;
} TmkSSRank;
/* The value of an order from 0 to 1 (VTS_STATUS_SS_BAD_STREAM_ORDERS); NaN before the first value. A variable
 * that does not exist is VTS_STATUS_SS_BAD_DIMENSION. */
int32_t tmk_ss_pooled_sketch_quantile(TmkSSSketch* sketch, int64_t variable, double order, TmkSSRank* answer);
/* The bounds for a value of the caller's, which is not NaN (TMK_SS_NAN). */
int32_t tmk_ss_pooled_sketch_rank(TmkSSSketch* sketch, int64_t variable, double value, TmkSSRank* answer);

/* As those of moments. What is loaded answers as the saved sketch did. */
int64_t tmk_ss_pooled_sketch_image_size(const TmkSSSketch* sketch);
int32_t tmk_ss_pooled_sketch_save(TmkSSSketch* sketch, void* image, int64_t size);
int32_t tmk_ss_pooled_sketch_load(TmkSSSketch** sketch, const void* image, int64_t size);

/* ---- Exact quantiles ---- */

/* Quantiles of orders from 0 to 1 (VTS_STATUS_SS_BAD_ORDERS), columns by orderCount numbers by rows: linear
 * between the ranks 0 to n - 1 without weights; with weights the mean of the inverse distribution function
 * from q (W - u) to q (W - u) + u, u being W2 / W, or 1 where weights are counts (A. Akinshin,
 * arXiv:2304.07265, 2023). `deviations` has the median of abs(x - median) per column, `nans` the number of
 * NaNs of positive weight; either may be null. Options: crossProduct is not used.
 * VTS_STATUS_SS_BAD_OBSERVATIONS: no rows, or above 2147483647. */
int32_t tmk_ss_pooled_quantiles(const TmkSSData* data, const TmkSSOptions* options, int64_t orderCount,
                                const double* orders, double* quantiles, double* deviations, int64_t* nans,
                                const ThreadingService* threading);

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif
#endif
