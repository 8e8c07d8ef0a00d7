/* SPDX-License-Identifier: Apache-2.0 */
/* Spline fitting in one dimension: a task that points to the caller's partition, functions and coefficients,
 * and the functions that construct, search, interpolate and integrate.
 *
 * A task holds pointers: x, y, boundary values, internal conditions and coefficients stay the caller's. Every
 * function returns 0 or a negative status (tmk_status_text has a sentence for each). Values are checked only
 * as documented below; nothing tests that x ascends. Construction, search, interpolation and
 * integration only read the task, so several may run at once; edits may not run together with any other use.
 * <tmk/spline.hpp> is the checked C++ API. */
#ifndef TMK_ABI_DF_H
#define TMK_ABI_DF_H

#include <stdint.h>

#include "tmk/abi/threading.h"

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

enum {
  DF_STATUS_OK = 0,
  DF_STATUS_NULL_TASK = -1000,
  DF_STATUS_NO_MEMORY = -1001,
  DF_STATUS_BAD_METHOD = -1002,
  DF_STATUS_BAD_NX = -1004,
  DF_STATUS_NULL_X = -1005,
  DF_STATUS_BAD_XHINT = -1006,
  DF_STATUS_BAD_NY = -1007,
  DF_STATUS_NULL_Y = -1008,
  DF_STATUS_BAD_YHINT = -1009,
  DF_STATUS_BAD_ORDER = -1010,
  DF_STATUS_BAD_TYPE = -1011,
  DF_STATUS_BAD_IC_TYPE = -1012,
  DF_STATUS_NULL_IC = -1013,
  DF_STATUS_BAD_BC_TYPE = -1014,
  DF_STATUS_NULL_BC = -1015,
  DF_STATUS_NULL_COEFF = -1016,
  DF_STATUS_BAD_S_HINT = -1017,
  DF_STATUS_PERIODIC_MISMATCH = -1018,
  DF_STATUS_BAD_ATTRIBUTE = -1019,
  DF_STATUS_BAD_INDEX = -1020,
  DF_STATUS_LOOKUP_OFF_GRID = -1022,
  DF_STATUS_LOOKUP_BAD_DORDER = -1024,
  DF_STATUS_LOOKUP_NO_VALUE = -1025,
  DF_STATUS_BAD_SEARCH_HINT = -1026,
  DF_STATUS_BAD_RESULT_HINT = -1028,
  DF_STATUS_BAD_INTEGRAL_HINT = -1034,
  DF_STATUS_BAD_AUX_FLAG = -1036,
  DF_STATUS_NULL_RESULT = -1037,
  DF_STATUS_SOLVER_FAILED = -1500
};

/* Attributes of a task: pointers to reals, and values. */
enum {
  DF_X = 1,
  DF_Y = 2,
  DF_IC = 3,
  DF_BC = 4,
  DF_COEFF = 5,
  DF_NX = 14,
  DF_XHINT = 15,
  DF_NY = 16,
  DF_YHINT = 17,
  DF_ORDER = 18,
  DF_TYPE = 19,
  DF_IC_TYPE = 20,
  DF_BC_TYPE = 21,
  DF_COEFF_HINT = 22,
  DF_AUX_FLAG = 23
};

/* xhint. A uniform partition is given by its two ends. */
enum {
  DF_PARTITION_UNKNOWN = 0,
  DF_PARTITION_NON_UNIFORM = 1,
  DF_PARTITION_QUASI_UNIFORM = 2,
  DF_PARTITION_UNIFORM = 4
};

/* yhint and s_hint: functions one after the other in a block; the values of all functions at a point
 * together; one array per function. */
enum { DF_ROWS = 16, DF_COLUMNS = 32, DF_SEPARATE = 128 };

/* Spline orders, and types where an order has several kinds. */
enum { DF_ORDER_NONE = 0, DF_ORDER_LINEAR = 2, DF_ORDER_QUADRATIC = 3, DF_ORDER_CUBIC = 4 };
enum {
  DF_TYPE_STANDARD = 0, /* quadratic, or a cubic, whose constructor the call names */
  DF_TYPE_SUBBOTIN = 1, /* quadratic with knots between the points */
  DF_TYPE_LOOKUP = 6,   /* with order 0 */
  DF_TYPE_STEP_RIGHT = 7,
  DF_TYPE_STEP_LEFT = 8
};

/* Internal conditions, ic_type: bit 8 means that ic holds the knots of a Subbotin spline, bit 4 that they are
 * uniform and ic holds their two ends. For cubic splines 1 and 2 mean that ic holds derivatives of that order
 * at the interior points. */
enum { DF_IC_NONE = 0, DF_IC_FIRST = 1, DF_IC_SECOND = 2, DF_IC_KNOTS_UNIFORM = 4, DF_IC_KNOTS = 8 };

/* Boundary conditions: whole codes, and flags of one end that are added. */
enum {
  DF_BC_NONE = 0,
  DF_BC_NOT_A_KNOT = 1,
  DF_BC_FREE_END = 2,
  DF_BC_FIRST_LEFT = 4,
  DF_BC_FIRST_RIGHT = 8,
  DF_BC_SECOND_LEFT = 16,
  DF_BC_SECOND_RIGHT = 32,
  DF_BC_PERIODIC = 64,
  DF_BC_QUADRATIC_VALUE = 128
};

/* Hints of sites and of limits. */
enum { DF_SITES_UNKNOWN = 0, DF_SITES_UNIFORM = 4, DF_SITES_SORTED = 64 };

/* The request of an interpolation: values, cells in addition, or values from the caller's cells alone. */
enum { DF_INTERPOLATE_VALUES = 1, DF_INTERPOLATE_CELLS = 2, DF_INTERPOLATE_FROM_CELLS = 4 };

/* rhint of an integration: DF_ROWS (also 128) has the pairs of one function together, DF_COLUMNS (also 0) the
 * functions of one pair. rhint of an interpolation, the slowest index first: */
enum {
  DF_FUNCTION_SITE_DERIVATIVE = 16, /* also 0 and 128 */
  DF_FUNCTION_DERIVATIVE_SITE = 32,
  DF_SITE_FUNCTION_DERIVATIVE = 256,
  DF_SITE_DERIVATIVE_FUNCTION = 512
};

typedef struct DFTask DFTask;

/* A search hook answers a block of `*count` sites: cells, and a flag per site that its cell is final; where
 * the flag is zero the library continues from the cell as a start. A negative result ends the search, 1000
 * means that all cells are final. */
typedef int32_t (*DFdSearchHook)(const int64_t* count, const double* sites, int64_t* cells, int32_t* flags,
                                 void* parameter, void* reserved);
typedef int32_t (*DFsSearchHook)(const int64_t* count, const float* sites, int64_t* cells, int32_t* flags,
                                 void* parameter, void* reserved);
/* An evaluation hook writes the results of a block of `*count` sites in the given cells, all of which lie in
 * its region: function by function, site by site, derivative by derivative. They are zero at first. A
 * negative result ends the call. Several threads may be in it at a time; a search hook has one. */
typedef int32_t (*DFdHook)(const int64_t* count, const int64_t* cells, const double* sites, double* results,
                           void* parameter, void* reserved);
typedef int32_t (*DFsHook)(const int64_t* count, const int64_t* cells, const float* sites, float* results,
                           void* parameter, void* reserved);
/* An integration hook adds up its share of `*count` pairs of limits, function by function, pair by pair, to
 * results that are zero at first. A pair is cut at the ends of the partition: limits outside the hook's
 * region are moved to its end, and their cells with them (0, 1 to nx - 1, or nx). */
typedef int32_t (*DFdIntegrationHook)(const int64_t* count, const int64_t* left_cells,
                                      const double* left_limits, const int64_t* right_cells,
                                      const double* right_limits, double* results, void* parameter,
                                      void* reserved);
typedef int32_t (*DFsIntegrationHook)(const int64_t* count, const int64_t* left_cells,
                                      const float* left_limits, const int64_t* right_cells,
                                      const float* right_limits, float* results, void* parameter,
                                      void* reserved);

/* Edits and queries of both precisions. iQueryVal writes 8 bytes where the task was made with wide_ints set,
 * else 4. */
int32_t tmk_df_kernel_iEditVal(DFTask* task, int64_t attribute, int64_t value);
int32_t tmk_df_kernel_iQueryVal(DFTask* task, int64_t attribute, void* value);
int32_t tmk_df_kernel_DeleteTask(DFTask** task);

#define TMK_DF_CONSTRUCTOR(name) \
  int32_t name(DFTask* task, int64_t format, int64_t method, const ThreadingService* threading);

/* What both precisions have, d for double and s for float.
 *
 * The constructors fill the coefficient rows: s_order coefficients per cell, ascending powers of t - x[i].
 * Search1D writes the cell of each site: 0 below x[0], i for x[i-1] <= t < x[i], nx - 1 at x[nx-1], nx above;
 * 64-bit cells where the task was made with wide_ints set. Interpolate1D evaluates every function at every
 * site, the derivatives whose entry in dorder is not zero; sites outside the partition take the nearest
 * polynomial, or the hook of their side. Integrate1D integrates every function between pairs of limits. */
#define TMK_DF_TWIN(letter, Real)                                                                          \
  int32_t tmk_df_kernel_##letter##NewTask1D(DFTask** task, int64_t nx, const Real* x, int64_t xhint,       \
                                            int64_t ny, const Real* y, int64_t yhint, uint32_t wide_ints); \
  int32_t tmk_df_kernel_##letter##EditPPSpline1D(DFTask* task, int64_t s_order, int64_t s_type,            \
                                                 int64_t bc_type, const Real* bc, int64_t ic_type,         \
                                                 const Real* ic, Real* s_coeff, int64_t s_hint);           \
  int32_t tmk_df_kernel_##letter##EditPtr(DFTask* task, int64_t attribute, const Real* pointer);           \
  int32_t tmk_df_kernel_##letter##EditIdxPtr(DFTask* task, int64_t attribute, int64_t index,               \
                                             const Real* pointer);                                         \
  int32_t tmk_df_kernel_##letter##QueryPtr(DFTask* task, int64_t attribute, Real** pointer);               \
  int32_t tmk_df_kernel_##letter##QueryIdxPtr(DFTask* task, int64_t attribute, int64_t index,              \
                                              Real** pointer);                                             \
  TMK_DF_CONSTRUCTOR(tmk_df_kernel_##letter##DFLinearSpline1D)                                             \
  TMK_DF_CONSTRUCTOR(tmk_df_kernel_##letter##DFQuadraticSpline1D)                                          \
  TMK_DF_CONSTRUCTOR(tmk_df_kernel_##letter##DFNaturalCubicSpline1D)                                       \
  TMK_DF_CONSTRUCTOR(tmk_df_kernel_##letter##DFDefaultCubicSpline1D)                                       \
  TMK_DF_CONSTRUCTOR(tmk_df_kernel_##letter##DFHermiteCubicSpline1D)                                       \
  TMK_DF_CONSTRUCTOR(tmk_df_kernel_##letter##DFBesselCubicSpline1D)                                        \
  TMK_DF_CONSTRUCTOR(tmk_df_kernel_##letter##DFAkimaCubicSpline1D)                                         \
  TMK_DF_CONSTRUCTOR(tmk_df_kernel_##letter##DFHymanCubicSpline1D)                                         \
  int32_t tmk_df_kernel_##letter##DFSearch1D(DFTask* task, int64_t type, int64_t nsite, const Real* site,  \
                                             int64_t site_hint, const Real* search_hint, void* cell,       \
                                             DF##letter##SearchHook hook, void* parameter,                 \
                                             const ThreadingService* threading);                           \
  int32_t tmk_df_kernel_##letter##DFInterpolate1D(                                                         \
      DFTask* task, int64_t type, int64_t method, int64_t nsite, const Real* site, int64_t site_hint,      \
      int64_t ndorder, int32_t reserved, const void* dorder, const Real* search_hint, Real* result,        \
      int64_t rhint, void* cell, DF##letter##Hook left, void* left_parameter, DF##letter##Hook right,      \
      void* right_parameter, DF##letter##Hook interior, void* interior_parameter,                          \
      DF##letter##SearchHook search, void* search_parameter, const ThreadingService* threading);           \
  int32_t tmk_df_kernel_##letter##DFIntegrate1D(                                                           \
      DFTask* task, int64_t method, int64_t nlim, const Real* left_limit, int64_t left_hint,               \
      const Real* right_limit, int64_t right_hint, const Real* left_search_hint,                           \
      const Real* right_search_hint, Real* result, int64_t rhint, DF##letter##IntegrationHook left,        \
      void* left_parameter, DF##letter##IntegrationHook right, void* right_parameter,                      \
      DF##letter##IntegrationHook interior, void* interior_parameter, DF##letter##SearchHook search,       \
      void* search_parameter, const ThreadingService* threading);
TMK_DF_TWIN(d, double)
TMK_DF_TWIN(s, float)
#undef TMK_DF_TWIN
#undef TMK_DF_CONSTRUCTOR

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#include "tmk/abi/df_textbook.h"
#endif
