// SPDX-License-Identifier: Apache-2.0
// The families: their constructors, and what the literature takes as their usual ends.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "fitting/construction/akima.hpp"
#include "platform/by_precision.hpp"
#include "tmk/abi/df.h"

namespace tmk::fitting::textbook {

enum class end_of_partition { left, right };

// The outer cell of an end and the one next to it: widths and divided differences.
template <class Real>
struct outer_cells {
  Real h0, d0, h1, d1;
};

// The slope at the end of the parabola through the outer three points.
template <class Real>
Real parabola_slope(const outer_cells<Real>& c) {
  return c.d0 + (c.d0 - c.d1) * (c.h0 / (c.h0 + c.h1));
}

// Akima's: two slopes past the end that continue the outer two in arithmetic progression have equal weights.
template <class Real>
Real akima_slope(const outer_cells<Real>& c) {
  return (3 * c.d0 - c.d1) / 2;
}

// Hyman's filter, which has one neighbour at an end.
template <class Real>
Real hyman_slope(const outer_cells<Real>& c) {
  const Real slope = parabola_slope(c);
  return std::signbit(slope) != std::signbit(c.d0)
             ? Real(0)
             : std::copysign(std::min(std::abs(slope), 3 * std::abs(c.d0)), slope);
}

using spline_constructor = int32_t(DFTask*, int64_t, int64_t, const ThreadingService*);

template <class Real>
struct family_row {
  int32_t kind;   // TMK_DF_NATURAL also for natural splines with another name
  int32_t least;  // points
  int64_t order, type;
  spline_constructor* construct;
  Real (*usual_slope)(const outer_cells<Real>&);  // null where a usual end is free
  bool local;                                     // slopes come from neighbours alone
  bool unset;  // when neither end has a condition, the constructor itself makes the usual ends
};

constexpr int32_t family_count = TMK_DF_PERIODIC + 1;

template <class Real>
const family_row<Real>& family_of(int32_t family) {
  static constexpr auto make_linear = by_precision<Real>(tmk_df_kernel_dDFLinearSpline1D,
                                                         tmk_df_kernel_sDFLinearSpline1D),
                        make_quadratic = by_precision<Real>(tmk_df_kernel_dDFQuadraticSpline1D,
                                                            tmk_df_kernel_sDFQuadraticSpline1D),
                        make_natural = by_precision<Real>(tmk_df_kernel_dDFNaturalCubicSpline1D,
                                                          tmk_df_kernel_sDFNaturalCubicSpline1D),
                        make_hermite = by_precision<Real>(tmk_df_kernel_dDFHermiteCubicSpline1D,
                                                          tmk_df_kernel_sDFHermiteCubicSpline1D),
                        make_default = by_precision<Real>(tmk_df_kernel_dDFDefaultCubicSpline1D,
                                                          tmk_df_kernel_sDFDefaultCubicSpline1D),
                        make_bessel = by_precision<Real>(tmk_df_kernel_dDFBesselCubicSpline1D,
                                                         tmk_df_kernel_sDFBesselCubicSpline1D),
                        make_hyman = by_precision<Real>(tmk_df_kernel_dDFHymanCubicSpline1D,
                                                        tmk_df_kernel_sDFHymanCubicSpline1D);
  static constexpr family_row<Real> table[family_count] = {
      {TMK_DF_LINEAR, 2, DF_ORDER_LINEAR, DF_TYPE_STANDARD, make_linear, nullptr, false, false},
      {TMK_DF_STEP_LEFT, 2, DF_ORDER_NONE, DF_TYPE_STEP_RIGHT, nullptr, nullptr, false, false},
      {TMK_DF_STEP_RIGHT, 2, DF_ORDER_NONE, DF_TYPE_STEP_LEFT, nullptr, nullptr, false, false},
      {TMK_DF_QUADRATIC, 2, DF_ORDER_QUADRATIC, DF_TYPE_STANDARD, make_quadratic, parabola_slope<Real>, false,
       false},
      {TMK_DF_SUBBOTIN, 3, DF_ORDER_QUADRATIC, DF_TYPE_SUBBOTIN, make_quadratic, parabola_slope<Real>, false,
       false},
      {TMK_DF_NATURAL, 2, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_natural, nullptr, false, false},
      {TMK_DF_HERMITE, 2, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_hermite, nullptr, false, false},
      {TMK_DF_SECOND_DERIVATIVES, 2, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_default, nullptr, false, false},
      {TMK_DF_BESSEL, 4, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_bessel, parabola_slope<Real>, true, true},
      {TMK_DF_AKIMA, 5, DF_ORDER_CUBIC, DF_TYPE_STANDARD, construct_akima_of_any_scale<Real>,
       akima_slope<Real>, true, true},
      {TMK_DF_HYMAN, 4, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_hyman, hyman_slope<Real>, true, false},
      {TMK_DF_NATURAL, 3, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_natural, nullptr, false, false},
      {TMK_DF_NATURAL, 3, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_natural, nullptr, false, false},
  };
  return table[family];
}

}  // namespace tmk::fitting::textbook
