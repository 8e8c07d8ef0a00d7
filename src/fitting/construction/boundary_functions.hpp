// SPDX-License-Identifier: Apache-2.0
// The slope at an end of a local cubic, by boundary condition: tables of functions whose argument
// describes an end from the outside in, so that one function serves both ends.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "fitting/construction/boundary.hpp"

namespace tmk::fitting {

template <class Real>
struct cell_slope {
  Real width, slope;  // slope: the divided difference of the cell
};

template <class Real>
struct spline_end {
  int side;                     // 0 left, 1 right
  cell_slope<Real> cell, next;  // the outermost cell, and the one inside it
  Real inner;                   // the slope at the knot between them
  const Real* bc;
  bool uniform;
  cell_slope<Real> across, inside_across;  // the cells at the other end, where a period joins the two
};

template <class Real>
using end_function = Real(const spline_end<Real>&);

namespace ends {

template <class Real>
Real first_derivative(const spline_end<Real>& e) {
  return e.bc[e.side];
}

template <class Real>
Real free_end(const spline_end<Real>& e) {
  return Real(1.5) * e.cell.slope - Real(0.5) * e.inner;
}

template <class Real>
Real second_derivative(const spline_end<Real>& e) {
  const Real bend = Real(0.25) * e.cell.width * e.bc[e.side];
  return free_end(e) + (e.side == 0 ? -bend : bend);
}

// Of the cubic through the last three points with the inner slope at the second.
template <class Real>
Real end_cubic(const spline_end<Real>& e) {
  const Real h0 = e.cell.width, h1 = e.next.width, w = h0 + h1;
  return ((h0 * h0 * e.next.slope + (h0 + 2 * w) * h1 * e.cell.slope) / w - e.inner * w) / h1;
}

// On a uniform partition the interface fixes a formula that differs from that for equal widths.
template <class Real>
Real not_a_knot(const spline_end<Real>& e) {
  return e.uniform ? (e.cell.slope + e.next.slope) * Real(0.5) - 2 * e.inner : end_cubic(e);
}

// The slope of the parabola through the last point, its neighbour, and that across the period.
template <class Real>
Real periodic_parabola(const spline_end<Real>& e) {
  const auto& [h0, d0] = e.cell;
  const auto& [h1, d1] = e.across;
  return (d0 * h1 + d1 * h0) / (h0 + h1);
}

}  // namespace ends

// Left and right functions by boundary index; a family provides its own for periods and for no condition.
template <class Real, end_function<Real>* Periodic, end_function<Real>* NotSet>
constexpr end_function<Real>* boundary_functions[2][boundaries + 1] = {
    {ends::not_a_knot, ends::free_end, ends::first_derivative, ends::first_derivative,
     ends::second_derivative, ends::second_derivative, Periodic, NotSet},
    {ends::not_a_knot, ends::free_end, ends::first_derivative, ends::second_derivative,
     ends::first_derivative, ends::second_derivative, Periodic, NotSet}};

}  // namespace tmk::fitting
