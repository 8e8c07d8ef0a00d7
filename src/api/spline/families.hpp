// SPDX-License-Identifier: Apache-2.0
// The families as the C interface builds them, and what the field takes as their usual ends.
#pragma once

#include <algorithm>
#include <cmath>

#include "api/spline/core.hpp"
#include "fitting/construction/akima.hpp"

namespace tmk::detail {

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

// Akima's: two slopes beyond the end in arithmetic progression with the outer two weigh the same.
template <class Real>
Real akima_slope(const outer_cells<Real>& c) {
  return (3 * c.d0 - c.d1) / 2;
}

// Hyman's filter at an end has one neighbour.
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
  const char* name;
  family kind;        // that of the constructor: not_a_knot and periodic are names of natural splines
  std::size_t least;  // points
  int64_t order, type;
  spline_constructor* construct;
  Real (*usual_slope)(const outer_cells<Real>&);  // null where a usual end is free
  bool local;                                     // slopes come from neighbours alone
  bool unset;  // without a condition at either end the constructor makes the usual ones
};

// In the order of `family`.
template <class Real>
const family_row<Real>& family_of(family kind) {
  static constexpr auto
      make_linear = twin<Real>(tmk_df_kernel_dDFLinearSpline1D, tmk_df_kernel_sDFLinearSpline1D),
      make_quadratic = twin<Real>(tmk_df_kernel_dDFQuadraticSpline1D, tmk_df_kernel_sDFQuadraticSpline1D),
      make_natural = twin<Real>(tmk_df_kernel_dDFNaturalCubicSpline1D, tmk_df_kernel_sDFNaturalCubicSpline1D),
      make_hermite = twin<Real>(tmk_df_kernel_dDFHermiteCubicSpline1D, tmk_df_kernel_sDFHermiteCubicSpline1D),
      make_default = twin<Real>(tmk_df_kernel_dDFDefaultCubicSpline1D, tmk_df_kernel_sDFDefaultCubicSpline1D),
      make_bessel = twin<Real>(tmk_df_kernel_dDFBesselCubicSpline1D, tmk_df_kernel_sDFBesselCubicSpline1D),
      make_hyman = twin<Real>(tmk_df_kernel_dDFHymanCubicSpline1D, tmk_df_kernel_sDFHymanCubicSpline1D);
  using enum family;
  static constexpr family_row<Real> table[] = {
      {"spline::linear", linear, 2, DF_ORDER_LINEAR, DF_TYPE_STANDARD, make_linear, nullptr, false, false},
      {"spline::step", step_left, 2, DF_ORDER_NONE, DF_TYPE_STEP_RIGHT, nullptr, nullptr, false, false},
      {"spline::step", step_right, 2, DF_ORDER_NONE, DF_TYPE_STEP_LEFT, nullptr, nullptr, false, false},
      {"spline::quadratic", quadratic, 2, DF_ORDER_QUADRATIC, DF_TYPE_STANDARD, make_quadratic,
       parabola_slope<Real>, false, false},
      {"spline::subbotin", subbotin, 3, DF_ORDER_QUADRATIC, DF_TYPE_SUBBOTIN, make_quadratic,
       parabola_slope<Real>, false, false},
      {"spline::natural", natural, 2, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_natural, nullptr, false, false},
      {"spline::hermite", hermite, 2, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_hermite, nullptr, false, false},
      {"spline::from_second_derivatives", second_derivatives, 2, DF_ORDER_CUBIC, DF_TYPE_STANDARD,
       make_default, nullptr, false, false},
      {"spline::bessel", bessel, 4, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_bessel, parabola_slope<Real>, true,
       true},
      {"spline::akima", akima, 5, DF_ORDER_CUBIC, DF_TYPE_STANDARD,
       fitting::construct_akima_of_any_scale<Real>, akima_slope<Real>, true, true},
      {"spline::hyman", hyman, 4, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_hyman, hyman_slope<Real>, true,
       false},
      {"spline::not_a_knot", natural, 3, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_natural, nullptr, false,
       false},
      {"spline::periodic", natural, 3, DF_ORDER_CUBIC, DF_TYPE_STANDARD, make_natural, nullptr, false, false},
  };
  return table[static_cast<std::size_t>(kind)];
}

}  // namespace tmk::detail
