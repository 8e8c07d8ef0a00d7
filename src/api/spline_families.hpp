// The families as the C interface builds them, and what the field takes as their usual ends.
#pragma once

#include <algorithm>
#include <cmath>

#include "api/spline.hpp"

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
  std::size_t least;  // points
  int64_t order, type;
  spline_constructor* construct;
  Real (*usual_slope)(const outer_cells<Real>&);  // null where a usual end is free
  bool local;                                     // slopes come from neighbours alone
  bool unset;  // told no condition at either end, the constructor makes the usual ones
  int smooth;  // the highest derivative that does not jump at points
};

// In the order of `family`.
template <class Real>
const family_row<Real>& family_of(family kind) {
  static constexpr auto
      linear = twin<Real>(tmk_df_kernel_dDFLinearSpline1D, tmk_df_kernel_sDFLinearSpline1D),
      quadratic = twin<Real>(tmk_df_kernel_dDFQuadraticSpline1D, tmk_df_kernel_sDFQuadraticSpline1D),
      natural = twin<Real>(tmk_df_kernel_dDFNaturalCubicSpline1D, tmk_df_kernel_sDFNaturalCubicSpline1D),
      hermite = twin<Real>(tmk_df_kernel_dDFHermiteCubicSpline1D, tmk_df_kernel_sDFHermiteCubicSpline1D),
      by_second = twin<Real>(tmk_df_kernel_dDFDefaultCubicSpline1D, tmk_df_kernel_sDFDefaultCubicSpline1D),
      bessel = twin<Real>(tmk_df_kernel_dDFBesselCubicSpline1D, tmk_df_kernel_sDFBesselCubicSpline1D),
      akima = twin<Real>(tmk_df_kernel_dDFAkimaCubicSpline1D, tmk_df_kernel_sDFAkimaCubicSpline1D),
      hyman = twin<Real>(tmk_df_kernel_dDFHymanCubicSpline1D, tmk_df_kernel_sDFHymanCubicSpline1D);
  static constexpr family_row<Real> table[] = {
      {"spline::linear", 2, DF_ORDER_LINEAR, DF_TYPE_STANDARD, linear, nullptr, false, false, 0},
      {"spline::step", 2, DF_ORDER_NONE, DF_TYPE_STEP_RIGHT, nullptr, nullptr, false, false, -1},
      {"spline::step", 2, DF_ORDER_NONE, DF_TYPE_STEP_LEFT, nullptr, nullptr, false, false, -1},
      {"spline::quadratic", 2, DF_ORDER_QUADRATIC, DF_TYPE_STANDARD, quadratic, parabola_slope<Real>, false,
       false, 1},
      {"spline::subbotin", 3, DF_ORDER_QUADRATIC, DF_TYPE_SUBBOTIN, quadratic, parabola_slope<Real>, false,
       false, 1},
      {"spline::natural", 2, DF_ORDER_CUBIC, DF_TYPE_STANDARD, natural, nullptr, false, false, 2},
      {"spline::hermite", 2, DF_ORDER_CUBIC, DF_TYPE_STANDARD, hermite, nullptr, false, false, 1},
      {"spline::from_second_derivatives", 2, DF_ORDER_CUBIC, DF_TYPE_STANDARD, by_second, nullptr, false,
       false, 0},
      {"spline::bessel", 4, DF_ORDER_CUBIC, DF_TYPE_STANDARD, bessel, parabola_slope<Real>, true, true, 1},
      {"spline::akima", 5, DF_ORDER_CUBIC, DF_TYPE_STANDARD, akima, akima_slope<Real>, true, true, 1},
      {"spline::hyman", 4, DF_ORDER_CUBIC, DF_TYPE_STANDARD, hyman, hyman_slope<Real>, true, false, 1},
  };
  return table[static_cast<std::size_t>(kind)];
}

}  // namespace tmk::detail
