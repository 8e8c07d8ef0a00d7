// SPDX-License-Identifier: Apache-2.0
// The pieces of a quadratic spline whose knots lie between the points (Subbotin 1967).
//
// nx points have nx pieces, one around each point, and nx + 1 knots:
//   knot 0 <= x[0] < knot 1 < x[1] < ... < knot nx-1 < x[nx-1] <= knot nx
// Piece k lies from knot k to knot k+1 and is based at its point, as in every other family:
//   s(t) = c[3k] + c[3k+1] (t - x[k]) + c[3k+2] (t - x[k])^2,   k = 0 ... nx-1,   c[3k] = y[k]
// so t - x[k] is negative in the piece's left part. The first and last pieces extend outwards without end:
// the outer knots 0 and nx are no bounds, and their values do not change the spline.
//
// ic holds the nx + 1 knots; with DF_IC_KNOTS_UNIFORM knots 0 and nx alone, the others at equal steps between
// them. Points and knots may each be uniform or not.
#pragma once

#include <cstdint>
#include <type_traits>

#include "platform/tier.hpp"
#include "tmk/abi/df.h"

namespace tmk::fitting {
inline namespace TMK_TIER {

template <class Real>
struct subbotin_knots {
  int64_t nx;
  const Real* given;  // null where the knots are uniform
  Real first, step;

  [[gnu::always_inline]] Real operator[](int64_t k) const {
    return given != nullptr ? given[k] : first + static_cast<Real>(k) * step;
  }

  // The piece of site t, whose cell a search gives: 0 below x[0], i for x[i-1] <= t < x[i], nx-1 at x[nx-1],
  // nx above. One knot divides the cell between two points.
  [[gnu::always_inline]] int64_t piece(int64_t cell, Real t) const {
    if (cell <= 0) return 0;
    if (cell >= nx) return nx - 1;
    return t < (*this)[cell] ? cell - 1 : cell;
  }
};

// The knots of a task, or of any record with nx, ic and ic_type.
template <class Task>
[[gnu::always_inline]] inline auto subbotin_knots_of(const Task& task) {
  using Real = std::remove_cvref_t<decltype(*task.ic)>;
  const bool uniform = (task.ic_type & DF_IC_KNOTS_UNIFORM) != 0;
  const Real step = uniform ? (task.ic[1] - task.ic[0]) / static_cast<Real>(task.nx) : Real(0);
  return subbotin_knots<Real>{task.nx, uniform ? nullptr : task.ic, task.ic[0], step};
}

}  // namespace TMK_TIER
}  // namespace tmk::fitting
