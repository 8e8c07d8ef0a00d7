// SPDX-License-Identifier: Apache-2.0
// What makes a cubic spline one, checked in extended precision.
#pragma once

#include "fitting/construction_case.hpp"

namespace tmk::tests {

using wide = long double;

inline constexpr int64_t every_boundary[] = {DF_BC_NOT_A_KNOT, DF_BC_FREE_END, 12, 36, 24, 48,
                                             DF_BC_PERIODIC};

// A cell in extended precision; `scale` is the size of what its bends are differences of.
struct wide_cell {
  wide h, c0, c1, c2, c3, slope, scale;

  template <class Real>
  wide_cell(const construction_case<Real>& s, int64_t j, int64_t i) {
    const Real* c = s.cell(j, i);
    const auto& y = s.values[static_cast<size_t>(j)];
    const auto at = static_cast<size_t>(i);
    h = wide(s.points[at + 1]) - wide(s.points[at]);
    c0 = c[0], c1 = c[1], c2 = c[2], c3 = c[3];
    slope = (wide(y[at + 1]) - wide(y[at])) / h;
    scale = std::fabs(slope) + std::fabs(c1) + std::fabs(end_slope()) + (std::fabs(wide(y[at])) + 1) / h;
  }
  wide end_value() const { return c0 + h * (c1 + h * (c2 + h * c3)); }
  wide end_slope() const { return c1 + h * (2 * c2 + h * 3 * c3); }
  wide bend() const { return 2 * c2; }
  wide end_bend() const { return 2 * c2 + 6 * h * c3; }
};

// Values at the points, slopes and second derivatives that agree on both sides, and the boundary conditions:
// together they leave one spline. Errors are in units of rounding of what is in a cell.
template <class Real>
void expect_spline(const construction_case<Real>& s, int64_t j, wide allowed) {
  const wide unit = allowed * std::numeric_limits<Real>::epsilon();
  const int64_t last = s.cells() - 1;
  const wide_cell first_cell(s, j, 0), last_cell(s, j, last);
  const auto near = [&](wide a, wide b, wide scale, const char* what, int64_t i) {
    ASSERT_LE(std::fabs(a - b), unit * scale)
        << what << " at " << i << " of function " << j << ": " << (double)a << " for " << (double)b;
  };
  for (int64_t i = 0; i <= last; ++i) {
    const wide_cell c(s, j, i);
    const auto& y = s.values[static_cast<size_t>(j)];
    ASSERT_EQ(s.cell(j, i)[0], y[static_cast<size_t>(i)]);
    near(c.end_value(), y[static_cast<size_t>(i + 1)], c.scale * c.h, "value", i);
    if (i == last) break;
    const wide_cell next(s, j, i + 1);
    near(c.end_slope(), next.c1, c.scale + next.scale, "slope", i);
    near(c.end_bend(), next.bend(), c.scale / c.h + next.scale / next.h, "bend", i);
  }
  const auto& bc = s.bc;
  const wide first_scale = first_cell.scale / first_cell.h, last_scale = last_cell.scale / last_cell.h;
  switch (s.bc_type) {
    case DF_BC_NOT_A_KNOT: {
      const wide_cell second(s, j, 1), before(s, j, last - 1);
      near(first_cell.c3, second.c3, first_scale / first_cell.h + second.scale / second.h / second.h, "left",
           0);
      near(last_cell.c3, before.c3, last_scale / last_cell.h + before.scale / before.h / before.h, "right",
           last);
      return;
    }
    case DF_BC_PERIODIC:
      near(first_cell.c1, last_cell.end_slope(), first_cell.scale + last_cell.scale, "period", 0);
      near(first_cell.bend(), last_cell.end_bend(), first_scale + last_scale, "period's bend", 0);
      return;
    case DF_BC_FREE_END:
      near(first_cell.bend(), 0, first_scale, "free left", 0);
      near(last_cell.end_bend(), 0, last_scale, "free right", last);
      return;
  }
  if ((s.bc_type & DF_BC_FIRST_LEFT) != 0)
    ASSERT_EQ(s.cell(j, 0)[1], bc[0]);
  else
    near(first_cell.bend(), bc[0], first_scale, "left bend", 0);
  if ((s.bc_type & DF_BC_FIRST_RIGHT) != 0)
    near(last_cell.end_slope(), bc[1], last_cell.scale, "right slope", last);
  else
    near(last_cell.end_bend(), bc[1], last_scale, "right bend", last);
}

}  // namespace tmk::tests
