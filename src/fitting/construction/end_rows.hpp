// SPDX-License-Identifier: Apache-2.0
// The first and the last row of a natural cubic's system, by boundary condition: diagonal, its neighbour,
// right side.
#pragma once

#include <cstddef>

#include "fitting/construction/boundary.hpp"

namespace tmk::fitting {

enum class end_condition { not_a_knot, free, slope_given, bend_given, divided_difference };

struct both_ends {
  end_condition side[2];
  constexpr end_condition operator[](int s) const { return side[s]; }
};

// A single cell with free ends is its chord.
constexpr both_ends end_conditions(boundary index, ptrdiff_t cells) {
  using enum end_condition;
  constexpr both_ends table[boundaries] = {{{not_a_knot, not_a_knot}},
                                           {{free, free}},
                                           {{slope_given, slope_given}},
                                           {{slope_given, bend_given}},
                                           {{bend_given, slope_given}},
                                           {{bend_given, bend_given}},
                                           {{divided_difference, divided_difference}}};
  return index == free_end && cells == 1 ? table[periodic] : table[index];
}

// The cell at an end and its neighbour: widths w in any unit, divided differences d. `reach` is the width
// in the unit of x, negative at the left end.
template <class Real>
struct outer_cells {
  Real w, next_w, d, next_d, reach;
};

template <class Real>
struct end_row_elements {
  Real diagonal, neighbour;
};

template <class Real>
end_row_elements<Real> end_row(end_condition condition, Real w, Real next_w) {
  switch (condition) {
    case end_condition::not_a_knot:
      return {next_w, w + next_w};
    case end_condition::free:
    case end_condition::bend_given:
      return {2, 1};
    default:
      return {1, 0};
  }
}

template <class Real>
Real end_value(end_condition condition, const outer_cells<Real>& c, const Real* given, int side) {
  const Real w = c.w + c.next_w;
  switch (condition) {
    case end_condition::not_a_knot:
      return (c.w * c.w * c.next_d + (c.w + 2 * w) * c.next_w * c.d) / w;
    case end_condition::free:
      return 3 * c.d;
    case end_condition::slope_given:
      return given[side];
    case end_condition::bend_given:
      return 3 * c.d + c.reach * given[side] / 2;
    default:
      return c.d;
  }
}

}  // namespace tmk::fitting
