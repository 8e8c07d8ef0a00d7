// SPDX-License-Identifier: Apache-2.0
// The C interface's constructors, so called that what comes out is what the field's books say. Where one of
// its end formulas is another (see docs/decisions/spline-api.md), the slope is set here, points of the period
// are added past the ends, or the polynomials are written.
#include "api/spline/construct.hpp"

#include <algorithm>
#include <cmath>

namespace tmk::detail {

namespace {

using condition = boundary::condition;

template <class Real>
std::vector<Real> points_of(const partition<Real>& p) {
  std::vector<Real> x(p.points);
  for (std::size_t i = 0; i < p.points; ++i) x[i] = point(p, i);
  return x;
}

bool both_ends(condition what) { return what == condition::not_a_knot || what == condition::periodic; }

// Not-a-knot leaves a cubic through three points one freedom; the field takes the parabola.
template <class Real>
void parabola(const construction<Real>& c, Real* coefficients) {
  const Real h0 = point(c.over, 1) - point(c.over, 0), h1 = point(c.over, 2) - point(c.over, 1);
  for (std::size_t f = 0; f < c.y.functions; ++f, coefficients += 8) {
    const Real d0 = (c.y(f, 1) - c.y(f, 0)) / h0, d1 = (c.y(f, 2) - c.y(f, 1)) / h1;
    const Real bend = (d1 - d0) / (h0 + h1);
    const Real row[8] = {c.y(f, 0), d0 - bend * h0, bend, 0, c.y(f, 1), d0 + bend * h0, bend, 0};
    std::copy(row, row + 8, coefficients);
  }
}

// A local family looks as far as two points: with two of the period's added past each end, its inner rule
// makes the ends, too.
template <class Real>
void periodic_by_overlap(const construction<Real>& c, Real* coefficients) {
  constexpr std::size_t overlap = 2;
  const std::size_t n = c.over.points, wide = n + 2 * overlap;
  const Real period = point(c.over, n - 1) - point(c.over, 0);
  std::vector<Real> x(wide), y(c.y.functions * wide);
  for (std::size_t i = 0; i < wide; ++i) {
    const std::size_t from = (i + n - 1 - overlap) % (n - 1);
    const Real periods = i < overlap ? Real(-1) : i < overlap + n - 1 ? Real(0) : Real(1);
    x[i] = i == overlap + n - 1 ? point(c.over, n - 1) : point(c.over, from) + periods * period;
    for (std::size_t f = 0; f < c.y.functions; ++f) y[f * wide + i] = c.y(f, from);
  }
  construction<Real> wider{c.function,
                           c.kind,
                           given_points(x),
                           rows_in(y, c.y.functions),
                           boundary::not_a_knot(),
                           boundary::not_a_knot()};
  const std::size_t wide_row = row_length(wider), row = row_length(c);
  std::vector<Real> rows(wide_row * c.y.functions);
  construct(wider, rows.data());
  for (std::size_t f = 0; f < c.y.functions; ++f)
    std::copy_n(rows.data() + f * wide_row + 4 * overlap, row, coefficients + f * row);
}

template <class Real>
void check_conditions(const construction<Real>& c) {
  for (const auto& [argument, b] : {std::pair("left", c.left), std::pair("right", c.right)}) {
    const auto code = std::to_string(static_cast<int>(b.what));
    if (b.what < condition::usual || b.what > condition::periodic)
      refuse(c.function, argument, code, "holds condition " + code + ", want a boundary::condition");
    if (!std::isfinite(static_cast<Real>(b.value)))
      refuse(c.function, argument, number(b.value), "holds " + number(b.value) + ", want a finite number");
  }
  const bool whole = both_ends(c.left.what) || both_ends(c.right.what);
  const std::string points = std::to_string(c.over.points);
  const struct {
    bool holds;
    const char* argument;
    std::string value;
    std::string complaint;
  } rows[] = {
      {whole && c.left.what != c.right.what, "right", "",
       "is not the condition of argument left, and not_a_knot and periodic hold at both ends or at none"},
      {c.kind == family::quadratic && c.left.what != condition::usual && c.left.what != condition::first,
       "left", "", "is not a first derivative, the one condition that the family has"},
      {c.kind == family::subbotin && whole, "left", "",
       "is neither a first nor a second derivative, the conditions that the family has"},
      {whole && c.over.points < 3, "x", points, "has " + points + " points, want 3 or more"},
  };
  for (const auto& row : rows)
    if (row.holds) refuse(c.function, row.argument, row.value, row.complaint);
}

}  // namespace

template <class Real>
void construct(const construction<Real>& c, Real* coefficients) {
  const auto& f = family_of<Real>(c.kind);
  check_conditions(c);
  if (c.left.what == condition::periodic) check_periodic(c.function, c.y);
  if (f.local && c.left.what == condition::periodic) return periodic_by_overlap(c, coefficients);
  if (c.kind == family::natural && c.left.what == condition::not_a_knot && c.over.points == 3)
    return parabola(c, coefficients);
  if (f.local && c.left.what == condition::not_a_knot && c.over.grid) {
    const std::vector<Real> x = points_of(c.over);
    construction<Real> given = c;
    given.over = given_points(x);
    return construct(given, coefficients);
  }
  call_constructor(c, coefficients);
}

template void construct(const construction<double>&, double*);
template void construct(const construction<float>&, float*);

}  // namespace tmk::detail
