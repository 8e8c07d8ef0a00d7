/* SPDX-License-Identifier: Apache-2.0 */
/* Summary statistics: a task that points to the caller's arrays, and the functions that compute over it.
 *
 * A task holds pointers: what they point to, counts and storage codes included, may change from one
 * computation to the next, and stays the caller's. Counts are checked at each computation: p below 1 is
 * VTS_STATUS_SS_BAD_DIMENSION, n below 0 (below 1 for Basic) VTS_STATUS_SS_BAD_OBSERVATIONS. Integers (p, n,
 * storage codes, counts, masks) have 32 bits, or 64 when the task was made with wideIntegers set. Every
 * function returns 0 or a negative status (tmk_status_text has a sentence for each); floating-point accidents
 * are left as IEEE results. A task is used by one thread at a time. <tmk/stats.hpp> is the checked C++ API.
 */
#ifndef TMK_ABI_SS_H
#define TMK_ABI_SS_H

#include <stdint.h>

#include "tmk/abi/threading.h"

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

enum {
  VTS_STATUS_SS_BAD_PARAMETER = -3,
  VTS_STATUS_SS_MEMORY = -4000,
  VTS_STATUS_SS_BAD_DIMENSION = -4001,
  VTS_STATUS_SS_BAD_OBSERVATIONS = -4002,
  VTS_STATUS_SS_BAD_STORAGE = -4003,
  VTS_STATUS_SS_INDICES_NULL = -4004,
  VTS_STATUS_SS_WEIGHTS_NULL = -4005,
  VTS_STATUS_SS_MEAN_NULL = -4006,
  VTS_STATUS_SS_RAW2_NULL = -4007,
  VTS_STATUS_SS_RAW3_NULL = -4008,
  VTS_STATUS_SS_RAW4_NULL = -4009,
  VTS_STATUS_SS_CENTRAL2_NULL = -4010,
  VTS_STATUS_SS_CENTRAL3_NULL = -4011,
  VTS_STATUS_SS_CENTRAL4_NULL = -4012,
  VTS_STATUS_SS_KURTOSIS_NULL = -4013,
  VTS_STATUS_SS_SKEWNESS_NULL = -4014,
  VTS_STATUS_SS_MIN_NULL = -4015,
  VTS_STATUS_SS_MAX_NULL = -4016,
  VTS_STATUS_SS_VARIATION_NULL = -4017,
  VTS_STATUS_SS_COV_NULL = -4018,
  VTS_STATUS_SS_COR_NULL = -4019,
  VTS_STATUS_SS_ACCUM_WEIGHT_NULL = -4020,
  VTS_STATUS_SS_ORDERS_NULL = -4021,
  VTS_STATUS_SS_BAD_ORDERS = -4022,
  VTS_STATUS_SS_QUANTILES_NULL = -4023,
  VTS_STATUS_SS_ORDER_STATS_NULL = -4024,
  VTS_STATUS_SS_TOO_FEW_REGULAR = -4026,
  VTS_STATUS_SS_ROBUST_MEAN_NULL = -4027,
  VTS_STATUS_SS_ROBUST_COV_NULL = -4028,
  VTS_STATUS_SS_BAD_METHOD = -4029,
  VTS_STATUS_SS_GROUP_NULL = -4030,
  VTS_STATUS_SS_TASK_NULL = -4031,
  VTS_STATUS_SS_DATA_NULL = -4032,
  VTS_STATUS_SS_NOT_POSITIVE = -4033,
  VTS_STATUS_SS_POOLED_COV_NULL = -4034,
  VTS_STATUS_SS_POOLED_MEAN_NULL = -4035,
  VTS_STATUS_SS_GROUP_COV_NULL = -4036,
  VTS_STATUS_SS_GROUP_MEAN_NULL = -4037,
  VTS_STATUS_SS_BAD_GROUP = -4038,
  VTS_STATUS_SS_OUTLIER_PARAMS_NULL = -4039,
  VTS_STATUS_SS_OUTLIER_PARAM_COUNT_NULL = -4040,
  VTS_STATUS_SS_OUTLIER_WEIGHTS_NULL = -4041,
  VTS_STATUS_SS_ROBUST_PARAMS_NULL = -4042,
  VTS_STATUS_SS_ROBUST_PARAM_COUNT_NULL = -4043,
  VTS_STATUS_SS_STORAGE_NULL = -4044,
  VTS_STATUS_SS_PARTIAL_INDICES_NULL = -4045,
  VTS_STATUS_SS_PARTIAL_COV_NULL = -4046,
  VTS_STATUS_SS_PARTIAL_COR_NULL = -4047,
  VTS_STATUS_SS_MISSING_PARAMS_NULL = -4048,
  VTS_STATUS_SS_MISSING_PARAM_COUNT_NULL = -4049,
  VTS_STATUS_SS_BAD_MISSING_PARAM_COUNT = -4050,
  VTS_STATUS_SS_BAD_IMPUTATION_COUNTS = -4051,
  VTS_STATUS_SS_INIT_COUNT_NULL = -4052,
  VTS_STATUS_SS_INIT_NULL = -4053,
  VTS_STATUS_SS_SIMULATIONS_NULL = -4054,
  VTS_STATUS_SS_SIMULATION_COUNT_NULL = -4055,
  VTS_STATUS_SS_ESTIMATE_COUNT_NULL = -4056,
  VTS_STATUS_SS_ESTIMATES_NULL = -4057,
  VTS_STATUS_SS_BAD_SIMULATION_COUNT = -4058,
  VTS_STATUS_SS_BAD_ESTIMATE_COUNT = -4059,
  VTS_STATUS_SS_NO_OUTPUT = -4060,
  VTS_STATUS_SS_PRIOR_COUNT_NULL = -4061,
  VTS_STATUS_SS_PRIORS_NULL = -4062,
  VTS_STATUS_SS_BAD_MISSING_COUNT = -4063,
  VTS_STATUS_SS_STREAM_PARAM_COUNT_NULL = -4064,
  VTS_STATUS_SS_STREAM_PARAMS_NULL = -4065,
  VTS_STATUS_SS_BAD_STREAM_PARAM_COUNT = -4066,
  VTS_STATUS_SS_BAD_EPSILON = -4067,
  VTS_STATUS_SS_STREAM_ORDERS_NULL = -4068,
  VTS_STATUS_SS_BAD_STREAM_ORDERS = -4069,
  VTS_STATUS_SS_STREAM_QUANTILES_NULL = -4070,
  VTS_STATUS_SS_COR_PARAM_NULL = -4071,
  VTS_STATUS_SS_COR_PARAM_FAILED = -4072,
  VTS_STATUS_SS_BAD_PARTIAL_INDICES = -4073,
  VTS_STATUS_SS_SUM_NULL = -4074,
  VTS_STATUS_SS_RAW_SUM2_NULL = -4075,
  VTS_STATUS_SS_RAW_SUM3_NULL = -4076,
  VTS_STATUS_SS_RAW_SUM4_NULL = -4077,
  VTS_STATUS_SS_CENTRAL_SUM2_NULL = -4078,
  VTS_STATUS_SS_CENTRAL_SUM3_NULL = -4079,
  VTS_STATUS_SS_CENTRAL_SUM4_NULL = -4080,
  VTS_STATUS_SS_CROSS_NULL = -4081,
  VTS_STATUS_SS_MEDIAN_DEV_NULL = -4082,
  VTS_STATUS_SS_MEAN_DEV_NULL = -4083,
  VTS_STATUS_SS_SORTED_NULL = -4084,
  VTS_STATUS_SS_SORT_INDICES_IN_PLACE = -4085,
  VTS_STATUS_SS_SPECTRAL_FAILED = -5000,
  VTS_STATUS_SS_PARTIAL_FACTOR_FAILED = -5010,
  VTS_STATUS_SS_PARTIAL_INVERSE_FAILED = -5011,
  VTS_STATUS_SS_ISTEP_FACTOR_FAILED = -5021,
  VTS_STATUS_SS_ISTEP_DRAW_FAILED = -5022,
  VTS_STATUS_SS_PSTEP_DRAW_FAILED = -5023,
  VTS_STATUS_SS_PSTEP_FACTOR_FAILED = -5024,
  VTS_STATUS_SS_PSTEP_INVERSE_FAILED = -5025,
  VTS_STATUS_SS_COR_EIGEN_FAILED = -5030,
  VTS_STATUS_SS_EIGEN_FAILED = -5040,
  VTS_STATUS_SS_FACTOR_FAILED = -5041,
  VTS_STATUS_SS_INVERSE_FAILED = -5042
};

/* Parameters of a task for __vts[ds]SSEditTask (reals) and __vtsiSSEditTask (integers). */
enum {
  VTS_SS_PARAM_DIMENSION = 1,
  VTS_SS_PARAM_OBSERVATIONS = 2,
  VTS_SS_PARAM_DATA = 3,
  VTS_SS_PARAM_DATA_STORAGE = 4,
  VTS_SS_PARAM_INDICES = 5,
  VTS_SS_PARAM_WEIGHTS = 6,
  VTS_SS_PARAM_MEAN = 7,
  VTS_SS_PARAM_RAW2 = 8,
  VTS_SS_PARAM_RAW3 = 9,
  VTS_SS_PARAM_RAW4 = 10,
  VTS_SS_PARAM_CENTRAL2 = 11,
  VTS_SS_PARAM_CENTRAL3 = 12,
  VTS_SS_PARAM_CENTRAL4 = 13,
  VTS_SS_PARAM_KURTOSIS = 14,
  VTS_SS_PARAM_SKEWNESS = 15,
  VTS_SS_PARAM_MINIMUM = 16,
  VTS_SS_PARAM_MAXIMUM = 17,
  VTS_SS_PARAM_VARIATION = 18,
  VTS_SS_PARAM_COV = 19,
  VTS_SS_PARAM_COV_STORAGE = 20,
  VTS_SS_PARAM_COR = 21,
  VTS_SS_PARAM_COR_STORAGE = 22,
  VTS_SS_PARAM_ACCUM_WEIGHT = 23,
  VTS_SS_PARAM_QUANTILE_ORDER_COUNT = 24,
  VTS_SS_PARAM_QUANTILE_ORDERS = 25,
  VTS_SS_PARAM_QUANTILES = 26,
  VTS_SS_PARAM_ORDER_STATS = 27,
  VTS_SS_PARAM_GROUP_OF_OBSERVATION = 28,
  VTS_SS_PARAM_POOLED_COV_STORAGE = 29,
  VTS_SS_PARAM_POOLED_MEAN = 30,
  VTS_SS_PARAM_POOLED_COV = 31,
  VTS_SS_PARAM_GROUP_ENABLE = 32,
  VTS_SS_PARAM_GROUP_MEAN = 33,
  VTS_SS_PARAM_GROUP_COV_STORAGE = 34,
  VTS_SS_PARAM_GROUP_COV = 35,
  VTS_SS_PARAM_ROBUST_COV_STORAGE = 36,
  VTS_SS_PARAM_ROBUST_PARAM_COUNT = 37,
  VTS_SS_PARAM_ROBUST_PARAMS = 38,
  VTS_SS_PARAM_ROBUST_COV = 39,
  VTS_SS_PARAM_ROBUST_MEAN = 40,
  VTS_SS_PARAM_OUTLIER_PARAM_COUNT = 41,
  VTS_SS_PARAM_OUTLIER_PARAMS = 42,
  VTS_SS_PARAM_OUTLIER_WEIGHTS = 43,
  VTS_SS_PARAM_ORDER_STATS_STORAGE = 44,
  VTS_SS_PARAM_PARTIAL_INDICES = 45,
  VTS_SS_PARAM_PARTIAL_COV = 46,
  VTS_SS_PARAM_PARTIAL_COV_STORAGE = 47,
  VTS_SS_PARAM_PARTIAL_COR = 48,
  VTS_SS_PARAM_PARTIAL_COR_STORAGE = 49,
  VTS_SS_PARAM_MISSING_PARAM_COUNT = 50,
  VTS_SS_PARAM_MISSING_PARAMS = 51,
  VTS_SS_PARAM_INIT_ESTIMATE_COUNT = 52,
  VTS_SS_PARAM_INIT_ESTIMATES = 53,
  VTS_SS_PARAM_SIMULATION_COUNT = 54,
  VTS_SS_PARAM_SIMULATIONS = 55,
  VTS_SS_PARAM_ESTIMATE_COUNT = 56,
  VTS_SS_PARAM_ESTIMATES = 57,
  VTS_SS_PARAM_PRIOR_COUNT = 58,
  VTS_SS_PARAM_PRIORS = 59,
  VTS_SS_PARAM_COR_PARAM_OUT = 60,
  VTS_SS_PARAM_COR_PARAM_STORAGE = 61,
  VTS_SS_PARAM_STREAM_PARAM_COUNT = 62,
  VTS_SS_PARAM_STREAM_PARAMS = 63,
  VTS_SS_PARAM_STREAM_ORDER_COUNT = 64,
  VTS_SS_PARAM_STREAM_ORDERS = 65,
  VTS_SS_PARAM_STREAM_QUANTILES = 66,
  VTS_SS_PARAM_SUM = 67,
  VTS_SS_PARAM_RAW_SUM2 = 68,
  VTS_SS_PARAM_RAW_SUM3 = 69,
  VTS_SS_PARAM_RAW_SUM4 = 70,
  VTS_SS_PARAM_CENTRAL_SUM2 = 71,
  VTS_SS_PARAM_CENTRAL_SUM3 = 72,
  VTS_SS_PARAM_CENTRAL_SUM4 = 73,
  VTS_SS_PARAM_CROSS = 74,
  VTS_SS_PARAM_CROSS_STORAGE = 75,
  VTS_SS_PARAM_MEDIAN_ABS_DEV = 76,
  VTS_SS_PARAM_MEAN_ABS_DEV = 77,
  VTS_SS_PARAM_SORTED = 78,
  VTS_SS_PARAM_SORTED_STORAGE = 79
};

/* Storage of the data, of sorted and of orderStats: value i of variable j is element j n + i or i p + j. */
enum { VTS_SS_ROWS = 0x10000, VTS_SS_COLUMNS = 0x20000 };
/* Storage of symmetric matrices: all p by p elements, or a triangle packed by rows. */
enum { VTS_SS_FULL = 0, VTS_SS_LOWER = 1, VTS_SS_UPPER = 2 };

/* Estimates of the low mask word. */
#define VTS_SS_ESTIMATE_MEAN 0x1u
#define VTS_SS_ESTIMATE_RAW2 0x2u
#define VTS_SS_ESTIMATE_RAW3 0x4u
#define VTS_SS_ESTIMATE_RAW4 0x8u
#define VTS_SS_ESTIMATE_CENTRAL2 0x10u
#define VTS_SS_ESTIMATE_CENTRAL3 0x20u
#define VTS_SS_ESTIMATE_CENTRAL4 0x40u
#define VTS_SS_ESTIMATE_KURTOSIS 0x80u
#define VTS_SS_ESTIMATE_SKEWNESS 0x100u
#define VTS_SS_ESTIMATE_VARIATION 0x200u
#define VTS_SS_ESTIMATE_MINIMUM 0x400u
#define VTS_SS_ESTIMATE_MAXIMUM 0x800u
#define VTS_SS_ESTIMATE_COV 0x1000u
#define VTS_SS_ESTIMATE_COR 0x2000u
#define VTS_SS_ESTIMATE_POOLED_COV 0x4000u
#define VTS_SS_ESTIMATE_GROUP_COV 0x8000u
#define VTS_SS_ESTIMATE_QUANTILES 0x10000u
#define VTS_SS_ESTIMATE_ORDER_STATS 0x20000u
#define VTS_SS_ESTIMATE_PARTIAL_COV 0x100000u
#define VTS_SS_ESTIMATE_PARTIAL_COR 0x200000u
#define VTS_SS_ESTIMATE_SUM 0x2000000u
#define VTS_SS_ESTIMATE_RAW_SUM2 0x4000000u
#define VTS_SS_ESTIMATE_RAW_SUM3 0x8000000u
#define VTS_SS_ESTIMATE_RAW_SUM4 0x10000000u
#define VTS_SS_ESTIMATE_CENTRAL_SUM2 0x20000000u
#define VTS_SS_ESTIMATE_CENTRAL_SUM3 0x40000000u
#define VTS_SS_ESTIMATE_CENTRAL_SUM4 0x80000000u
/* Of the high mask word. */
#define VTS_SS_ESTIMATE_HIGH_CROSS 0x1u
#define VTS_SS_ESTIMATE_HIGH_MEDIAN_DEV 0x2u
#define VTS_SS_ESTIMATE_HIGH_MEAN_DEV 0x4u
#define VTS_SS_ESTIMATE_HIGH_POOLED_MEAN 0x8u
#define VTS_SS_ESTIMATE_HIGH_GROUP_MEAN 0x10u

/* Methods of the low mask word. */
#define VTS_SS_METHOD_FAST 0x1u
#define VTS_SS_METHOD_ONE_PASS 0x2u
#define VTS_SS_METHOD_SPECTRAL 0x4u /* of CorParametrization */
#define VTS_SS_METHOD_TBS 0x8u      /* of RobustCovariance */
#define VTS_SS_METHOD_MULTIPLE_IMPUTATION 0x10u
#define VTS_SS_METHOD_BACON 0x20u            /* of OutliersDetection */
#define VTS_SS_METHOD_STREAM_QUANTILES 0x40u /* absorb the block and answer */
#define VTS_SS_METHOD_STREAM_ABSORB 0x80u    /* absorb the block */
#define VTS_SS_METHOD_TWO_PASS 0x100u        /* about the mean that the caller gives */
#define VTS_SS_METHOD_CROSS_TO_COV 0x200u    /* convert a cross-product */
#define VTS_SS_METHOD_SUMS_TO_MOMENTS 0x400u /* convert sums */
#define VTS_SS_METHOD_RADIX_SORT 0x100000u

typedef struct SSTask SSTask;

/* Frees the task and what it keeps, and nulls the pointer. One for both precisions. */
int32_t __vtsSSDeleteTask(SSTask** task);
int32_t __vtsiSSEditTask(SSTask* task, int64_t parameter, const void* value);
/* Frees the sketches that StreamQuantiles keeps in a task of either precision; the next block begins anew.
 * Deleting the task does it, too. */
void __vtsSQuantilesFreeBuffers(SSTask* task);

/* One quantile, of an order from 0 to 1, of a variable (from 0) in the sketches that StreamQuantiles keeps.
 * The number of values not above *value, in the order of the sorts (-0.0 below +0.0), lies from *lowest to
 * *highest, and these are at most 2 epsilon *count apart; NaN, 0 and 0 when *count is 0.
 * VTS_STATUS_SS_TASK_NULL, VTS_STATUS_SS_DATA_NULL when there was no block yet, VTS_STATUS_SS_BAD_DIMENSION
 * for a variable that does not exist, VTS_STATUS_SS_INDICES_NULL for one that is left out,
 * VTS_STATUS_SS_BAD_STREAM_ORDERS. */
int32_t tmk_ss_dstream_quantile(SSTask* task, int32_t variable, double order, double* value, int64_t* lowest,
                                int64_t* highest, int64_t* count);
int32_t tmk_ss_sstream_quantile(SSTask* task, int32_t variable, float order, float* value, int64_t* lowest,
                                int64_t* highest, int64_t* count);

/* What both precisions have, d for double and s for float.
 *
 * NewTask makes a task over p variables and n observations; with null data nothing but the dimension is
 * looked at. EditTask and its counterpart for integers set one field and refuse null; the functions
 * Edit<family> set every field whose value is not null.
 *
 * The compute functions take the masks of estimates and methods. Basic folds moments, sums and symmetric
 * matrices of a block into those of earlier blocks (accumWeight holds the weight so far and the sum of its
 * squares), by one method of fast, one-pass and two-pass, or converts without touching data. The one-pass
 * sums of lower orders that central sums rest on are kept in the task when the caller has no field for them:
 * continue with the same task and accumWeight, one accumulation at a time, or give the fields. Its central2
 * is the unbiased weighted variance while central3 and central4 divide by the weight alone; kurtosis is in
 * excess of 3; cor has variances on its diagonal. Minmax starts from what minimum and maximum hold. Quantiles
 * interpolate linearly between ranks 0 and n - 1; the rows of quantiles are packed over the selected
 * variables; those of no observations are NaN. WMedian gives the weighted quantile of the first order for
 * every variable; a cumulated weight within 4 roundings of its share of the total counts as equal to it.
 * StreamQuantiles keeps a sketch of the blocks that came by, whose ranks are true to epsilon times their
 * count; p stays that of the first block (VTS_STATUS_SS_BAD_DIMENSION).
 * MissingValues imputes under a normal model: EM, then data augmentation with a stream of its own, so that
 * equal calls give equal results. A hole is a NaN with the sign and the first bit of the fraction set; other
 * NaNs are data. missingParams: the most rounds of EM (below 1: 50), rounds of augmentation for each
 * imputation (below 1: 30), the change at which EM stops (not above 0: 0.001), the number of imputations, the
 * number of holes. Symmetric matrices are lower triangles packed by rows: initEstimates are p means and a
 * covariance; priors mean, inverse scale, tau and degrees of freedom; estimates mean and covariance of each
 * round of each imputation. simulations has the holes of each imputation, by observation and then by
 * variable; with a count of 0, or none, only estimates are wanted. The data hold the last imputation
 * afterwards. The trust in the prior grows by the observations in each round, so that the chain drifts to the
 * prior's mean; tmk_ss_impute (ss_impute.h) restores it.
 *
 * MAD gives the median of |x - median| and the weighted mean of |x - mean| of each selected variable, by the
 * fast method or, with the two-pass one, about the mean that the caller gives. PooledCovariance gives means
 * and covariances of groups (that of group g is g-th in groupMean and groupCov; groups whose groupEnable is 0
 * are left out) and those pooled over all groups: sums of the groups' cross-products over the sum of W_g -
 * W2_g / W_g. PartialCovariance gives the covariance of the variables whose partialIndices is not positive,
 * given the others, from cov or else from cor; the diagonal of partialCor holds the partial variances.
 * CorParametrization makes a correlation matrix of one whose eigenvalues are negative: these become 0, and
 * rows and columns are scaled to a unit diagonal; VTS_STATUS_SS_COR_PARAM_FAILED where a variable has nothing
 * left to scale.
 *
 * QSort sorts n reals in place; QSortStep elements that lie `stride` apart; QSortSelect puts in a[k] the
 * element of rank k, none greater before it and none less after it, and returns it. */
#define TMK_SS_COMPUTE(name)                                                                    \
  int32_t name(SSTask* task, uint32_t estimatesLow, uint32_t estimatesHigh, uint32_t methodLow, \
               uint32_t methodHigh, const ThreadingService* threading);
#define TMK_SS_TWIN(letter, Real)                                                                            \
  int32_t __vts##letter##SSNewTask(SSTask** task, const void* dimension, const void* observations,           \
                                   const void* dataStorage, const Real* data, const Real* weights,           \
                                   const void* indices, int32_t wideIntegers);                               \
  int32_t __vts##letter##SSEditTask(SSTask* task, int64_t parameter, Real* value);                           \
  int32_t __vts##letter##SSEditMoments(SSTask* task, Real* mean, Real* raw2, Real* raw3, Real* raw4,         \
                                       Real* central2, Real* central3, Real* central4);                      \
  int32_t __vts##letter##SSEditSums(SSTask* task, Real* sum, Real* rawSum2, Real* rawSum3, Real* rawSum4,    \
                                    Real* centralSum2, Real* centralSum3, Real* centralSum4);                \
  int32_t __vts##letter##SSEditCovCor(SSTask* task, Real* mean, Real* cov, const void* covStorage,           \
                                      Real* cor, const void* corStorage);                                    \
  int32_t __vts##letter##SSEditCP(SSTask* task, Real* mean, Real* sum, Real* cross,                          \
                                  const void* crossStorage);                                                 \
  int32_t __vts##letter##SSEditPartialCovCor(SSTask* task, const void* partialIndices, Real* cov,            \
                                             const void* covStorage, Real* cor, const void* corStorage,      \
                                             Real* partialCov, const void* partialCovStorage,                \
                                             Real* partialCor, const void* partialCorStorage);               \
  int32_t __vts##letter##SSEditPooledCovariance(SSTask* task, const void* groupOfObservation,                \
                                                Real* pooledMean, Real* pooledCov, const void* groupEnable,  \
                                                Real* groupMean, Real* groupCov);                            \
  int32_t __vts##letter##SSEditQuantiles(SSTask* task, const void* quantileOrderCount, Real* quantileOrders, \
                                         Real* quantiles, Real* orderStats, const void* orderStatsStorage);  \
  int32_t __vts##letter##SSEditStreamQuantiles(SSTask* task, const void* streamOrderCount,                   \
                                               Real* streamOrders, Real* streamQuantiles,                    \
                                               const void* streamParamCount, Real* streamParams);            \
  int32_t __vts##letter##SSEditRCov(SSTask* task, const void* robustCovStorage,                              \
                                    const void* robustParamCount, Real* robustParams, Real* robustCov,       \
                                    Real* robustMean);                                                       \
  int32_t __vts##letter##SSEditOutDetect(SSTask* task, const void* outlierParamCount, Real* outlierParams,   \
                                         Real* outlierWeights);                                              \
  int32_t __vts##letter##SSEditMissingVals(                                                                  \
      SSTask* task, const void* missingParamCount, Real* missingParams, const void* initEstimateCount,       \
      Real* initEstimates, const void* priorCount, Real* priors, const void* simulationCount,                \
      Real* simulations, const void* estimateCount, Real* estimates);                                        \
  int32_t __vts##letter##SSEditMtxParametrz(SSTask* task, Real* cor, const void* corStorage,                 \
                                            Real* corParamOut, const void* corParamStorage);                 \
  TMK_SS_COMPUTE(_vts##letter##SSBasic)                                                                      \
  TMK_SS_COMPUTE(_vts##letter##SSMinmax)                                                                     \
  TMK_SS_COMPUTE(_vts##letter##SSQuantiles)                                                                  \
  TMK_SS_COMPUTE(_vts##letter##SSSort)                                                                       \
  TMK_SS_COMPUTE(_vts##letter##SSStreamQuantiles)                                                            \
  TMK_SS_COMPUTE(_vts##letter##SSMAD)                                                                        \
  TMK_SS_COMPUTE(_vts##letter##SSPooledCovariance)                                                           \
  TMK_SS_COMPUTE(_vts##letter##SSPartialCovariance)                                                          \
  TMK_SS_COMPUTE(_vts##letter##SSCorParametrization)                                                         \
  TMK_SS_COMPUTE(_vts##letter##SSRobustCovariance)                                                           \
  TMK_SS_COMPUTE(_vts##letter##SSOutliersDetection)                                                          \
  TMK_SS_COMPUTE(_vts##letter##SSMissingValues)                                                              \
  int32_t _vts##letter##SSWMedian(SSTask* task);                                                             \
  void __vts##letter##QSort(int32_t n, Real* a);                                                             \
  void __vts##letter##QSortStep(int32_t n, Real* a, int32_t stride);                                         \
  Real __vts##letter##QSortSelect(int32_t n, Real* a, int32_t k);

TMK_SS_TWIN(d, double)
TMK_SS_TWIN(s, float)
#undef TMK_SS_TWIN

/* The correlation matrix nearest to a symmetric p by p matrix, of which the lower triangle by rows without
 * the diagonal is read, in the sum of squared differences. `result` takes all elements and may be `matrix`.
 * VTS_STATUS_SS_BAD_DIMENSION, VTS_STATUS_SS_COR_NULL, VTS_STATUS_SS_COR_PARAM_NULL (result);
 * VTS_STATUS_SS_COR_EIGEN_FAILED or VTS_STATUS_SS_COR_PARAM_FAILED for values that are not finite. */
int32_t tmk_ss_nearest_correlation(int32_t p, const double* matrix, double* result);
#undef TMK_SS_COMPUTE

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#include "tmk/abi/ss_impute.h"
#include "tmk/abi/ss_pooled.h"
#include "tmk/abi/ss_robust.h"
#endif
