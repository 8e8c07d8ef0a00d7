/* SPDX-License-Identifier: Apache-2.0 */
/* Splines as the literature defines them: families with conditions at the ends, evaluation, integration and
 * rules outside the partition. Included by tmk/abi/df.h, whose constructors have some end formulas of their
 * own.
 *
 * A spline is made once, holds copies of what it needs and never changes: any number of threads may use it.
 * Values are not checked: the points ascend and are finite, the functions are finite, and coefficients may
 * leave the range of the type. Every function returns 0 or a negative status (tmk_status_text has a sentence
 * for each); DF_STATUS_NULL_TASK: a spline, or the place for one, is null; DF_STATUS_NO_MEMORY.
 * <tmk/spline.hpp> is the checked C++ API over these functions.
 */
#ifndef TMK_ABI_DF_TEXTBOOK_H
#define TMK_ABI_DF_TEXTBOOK_H

#include "tmk/abi/df.h"

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

enum {
  TMK_DF_BAD_FAMILY = -1600,
  TMK_DF_BAD_ORDERS = -1601, /* orders of derivatives that do not ascend, or are not from 0 to 15 */
  TMK_DF_BAD_RULE = -1602,   /* a rule outside that does not exist, or without its terms or function */
  TMK_DF_BAD_SITES = -1603   /* a negative count of sites or limits, or none of them in memory */
};

/* Families; the numbers of points that they need, from 2 to 5, are given by tmk_df_textbook_least_points. */
enum {
  TMK_DF_LINEAR = 0,
  TMK_DF_STEP_LEFT = 1,          /* the value of the point to the left of a site */
  TMK_DF_STEP_RIGHT = 2,         /* to its right */
  TMK_DF_QUADRATIC = 3,          /* knots at the points; the left end may have a first derivative */
  TMK_DF_SUBBOTIN = 4,           /* quadratic, knots midway between the points */
  TMK_DF_NATURAL = 5,            /* cubic, twice continuously differentiable */
  TMK_DF_HERMITE = 6,            /* cubic, of first derivatives given at all points */
  TMK_DF_SECOND_DERIVATIVES = 7, /* cubic, of second derivatives given at all points */
  TMK_DF_BESSEL = 8,
  TMK_DF_AKIMA = 9, /* at every scale alike */
  TMK_DF_HYMAN = 10,
  TMK_DF_NOT_A_KNOT = 11, /* TMK_DF_NATURAL with that condition at both ends */
  TMK_DF_PERIODIC = 12    /* likewise */
};

/* What holds at an end. The usual condition of a natural spline is a second derivative of 0, that of the
 * other families a slope from the outer points. The last two hold at both ends or at none. */
enum {
  TMK_DF_END_USUAL = 0,
  TMK_DF_END_FIRST = 1, /* the first derivative has the given value, or the second */
  TMK_DF_END_SECOND = 2,
  TMK_DF_END_NOT_A_KNOT = 3, /* the outer cell's polynomial passes through the third point, too */
  TMK_DF_END_PERIODIC = 4    /* the spline continues at the other end; first and last value are equal */
};

/* What holds outside the partition, t being a site there and e the nearest end. */
enum {
  TMK_DF_OUTSIDE_POLYNOMIAL = 0, /* the outermost polynomial */
  TMK_DF_OUTSIDE_CONSTANT = 1,   /* the value at e */
  TMK_DF_OUTSIDE_LINEAR = 2,     /* the tangent at e */
  TMK_DF_OUTSIDE_PERIODIC = 3,   /* the value whole periods away */
  TMK_DF_OUTSIDE_NAN = 4,
  TMK_DF_OUTSIDE_FUNCTION = 5
};

/* The number of points that a family needs, or TMK_DF_BAD_FAMILY. */
int32_t tmk_df_textbook_least_points(int32_t family);

/* What both precisions have, d for double and s for float.
 *
 * DFdPoints is what a spline is made of. Function f at point i is y[f functionStride + i pointStride];
 * strides count elements and may be negative. `derivatives`, for two of the families, are laid out by strides
 * of their own. With xhint DF_PARTITION_UNIFORM x holds the two ends of an even partition, else its nx
 * points.
 *
 * DFdRule is one side's rule. The rules constant, linear and periodic need 2 ny terms, which `terms` computes
 * and the caller keeps. A function gives the value (derivative 0) or a derivative at a site outside, and for
 * derivative -1 the integral from e to the site; it is called in the thread of the call. `outside` points to
 * the rules of the left and the right side, or is null: polynomials.
 *
 * new: TMK_DF_BAD_FAMILY, DF_STATUS_BAD_NX, DF_STATUS_NULL_X, DF_STATUS_BAD_NY, DF_STATUS_NULL_Y,
 * DF_STATUS_NULL_IC (no derivatives), DF_STATUS_BAD_BC_TYPE (a condition that the family does not have, or at
 * one end alone), DF_STATUS_PERIODIC_MISMATCH, DF_STATUS_SOLVER_FAILED. query: what a spline has. A row of
 * coefficients belongs to a function: for each cell those of (t - x[i])^0, (t - x[i])^1 and so on. They live
 * as long as the spline. evaluate: the derivatives whose orders are listed, ascending from 0 to 15, at every
 * site. site_hint DF_SITES_UNIFORM: `site` holds the two ends of nsite even sites; else nsite sites in any
 * order. rhint is that of an interpolation. A NaN gives NaN. integrate: ny by n integrals from lo[k] to
 * hi[k], function by function. cells: those of Search1D, and -1 for a NaN. */
#define TMK_DF_TEXTBOOK(letter, Real)                                                                        \
  typedef struct DF##letter##Spline DF##letter##Spline;                                                      \
  typedef struct DF##letter##Points {                                                                        \
    int32_t family;                                                                                          \
    int32_t xhint;                                                                                           \
    int64_t nx;                                                                                              \
    const Real* x;                                                                                           \
    int64_t ny;                                                                                              \
    const Real* y;                                                                                           \
    int64_t functionStride, pointStride;                                                                     \
    const Real* derivatives;                                                                                 \
    int64_t derivativesFunctionStride, derivativesPointStride;                                               \
    int32_t left, right; /* TMK_DF_END_... */                                                                \
    Real leftValue, rightValue;                                                                              \
  } DF##letter##Points;                                                                                      \
  typedef Real (*DF##letter##OutsideFunction)(Real site, int64_t function, int32_t derivative,               \
                                              void* parameter);                                              \
  typedef struct DF##letter##Rule {                                                                          \
    int32_t rule; /* TMK_DF_OUTSIDE_... */                                                                   \
    const Real* terms;                                                                                       \
    DF##letter##OutsideFunction function;                                                                    \
    void* parameter;                                                                                         \
  } DF##letter##Rule;                                                                                        \
  typedef struct DF##letter##SplineProperties {                                                              \
    int64_t nx, ny, order; /* order: coefficients per cell */                                                \
    Real first, last;      /* ends of the partition */                                                       \
    const Real* coefficients;                                                                                \
    int64_t row; /* coefficients per function */                                                             \
  } DF##letter##SplineProperties;                                                                            \
  int32_t tmk_df_textbook_##letter##new (DF##letter##Spline * *spline, const DF##letter##Points* points,     \
                                         const ThreadingService* threading);                                 \
  int32_t tmk_df_textbook_##letter##delete (DF##letter##Spline * *spline);                                   \
  int32_t tmk_df_textbook_##letter##query(const DF##letter##Spline* spline,                                  \
                                          DF##letter##SplineProperties* properties);                         \
  int32_t tmk_df_textbook_##letter##terms(const DF##letter##Spline* spline, int32_t right, int32_t rule,     \
                                          Real* terms, const ThreadingService* threading);                   \
  int32_t tmk_df_textbook_##letter##evaluate(                                                                \
      const DF##letter##Spline* spline, const DF##letter##Rule* outside, int64_t nsite, const Real* site,    \
      int64_t site_hint, int64_t order_count, const int32_t* orders, Real* result, int64_t rhint,            \
      const ThreadingService* threading);                                                                    \
  int32_t tmk_df_textbook_##letter##integrate(                                                               \
      const DF##letter##Spline* spline, const DF##letter##Rule* outside, int64_t n, const Real* lo,          \
      const Real* hi, Real* result, const ThreadingService* threading);                                      \
  int32_t tmk_df_textbook_##letter##cells(const DF##letter##Spline* spline, int64_t nsite, const Real* site, \
                                          int64_t site_hint, int32_t* cell,                                  \
                                          const ThreadingService* threading);
TMK_DF_TEXTBOOK(d, double)
TMK_DF_TEXTBOOK(s, float)
#undef TMK_DF_TEXTBOOK

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif
#endif
