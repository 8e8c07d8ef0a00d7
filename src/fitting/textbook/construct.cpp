// SPDX-License-Identifier: Apache-2.0
// Splines by the task's constructors, called so that the result is the one that the literature defines. Where
// one of their end formulas differs (see docs/decisions/spline-api.md), the slope is set here, points of the
// period are added past the ends, or the polynomials are written directly.
#include "fitting/textbook/construct.hpp"

#include <algorithm>
#include <vector>

namespace tmk::fitting::textbook {

namespace {

template <class Real>
partition<Real> given_points(const std::vector<Real>& x) {
  return {x.size(), x.data(), false};
}

template <class Real>
std::vector<Real> points_of(const partition<Real>& p) {
  std::vector<Real> x(p.points);
  for (size_t i = 0; i < p.points; ++i) x[i] = p.point(i);
  return x;
}

// Not-a-knot through three points leaves the cubic undetermined; the literature takes the parabola.
template <class Real>
void parabola(const construction<Real>& c, Real* coefficients) {
  const Real h0 = c.over.point(1) - c.over.point(0), h1 = c.over.point(2) - c.over.point(1);
  for (size_t f = 0; f < c.y.functions; ++f, coefficients += 8) {
    const Real d0 = (c.y(f, 1) - c.y(f, 0)) / h0, d1 = (c.y(f, 2) - c.y(f, 1)) / h1;
    const Real bend = (d1 - d0) / (h0 + h1);
    const Real row[8] = {c.y(f, 0), d0 - bend * h0, bend, 0, c.y(f, 1), d0 + bend * h0, bend, 0};
    std::copy(row, row + 8, coefficients);
  }
}

// The slope of a local family depends on two points to each side. With two points of the period added past
// each end, the rule for inner points makes the ends as well.
template <class Real>
void periodic_by_overlap(const construction<Real>& c, Real* coefficients) {
  constexpr size_t overlap = 2;
  const size_t n = c.over.points, wide = n + 2 * overlap;
  const Real period = c.over.point(n - 1) - c.over.point(0);
  std::vector<Real> x(wide), y(c.y.functions * wide);
  for (size_t i = 0; i < wide; ++i) {
    const size_t from = (i + n - 1 - overlap) % (n - 1);
    const Real periods = i < overlap ? Real(-1) : i < overlap + n - 1 ? Real(0) : Real(1);
    x[i] = i == overlap + n - 1 ? c.over.point(n - 1) : c.over.point(from) + periods * period;
    for (size_t f = 0; f < c.y.functions; ++f) y[f * wide + i] = c.y(f, from);
  }
  const end_condition<Real> not_a_knot{TMK_DF_END_NOT_A_KNOT, 0};
  const construction<Real> wider{.family = c.family,
                                 .over = given_points(x),
                                 .y = rows_in(y, c.y.functions),
                                 .left = not_a_knot,
                                 .right = not_a_knot,
                                 .threading = c.threading};
  const size_t wide_row = row_length(wider), row = row_length(c);
  std::vector<Real> rows(wide_row * c.y.functions);
  call_constructor(wider, rows.data());
  for (size_t f = 0; f < c.y.functions; ++f)
    std::copy_n(rows.data() + f * wide_row + 4 * overlap, row, coefficients + f * row);
}

}  // namespace

template <class Real>
void construct(const construction<Real>& c, Real* coefficients) {
  const auto& f = family_of<Real>(c.family);
  if (f.local && c.left.what == TMK_DF_END_PERIODIC) return periodic_by_overlap(c, coefficients);
  if (f.kind == TMK_DF_NATURAL && c.left.what == TMK_DF_END_NOT_A_KNOT && c.over.points == 3)
    return parabola(c, coefficients);
  if (f.local && c.left.what == TMK_DF_END_NOT_A_KNOT && c.over.even) {
    const std::vector<Real> x = points_of(c.over);
    construction<Real> given = c;
    given.over = given_points(x);
    return call_constructor(given, coefficients);
  }
  call_constructor(c, coefficients);
}

template void construct(const construction<double>&, double*);
template void construct(const construction<float>&, float*);

}  // namespace tmk::fitting::textbook
