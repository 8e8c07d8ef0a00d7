// SPDX-License-Identifier: Apache-2.0
// The loops of natural cubics that are cut into panels. A lane per panel: an array's row has the same knot or
// cell of all panels of a group, and fills 64 bytes.
#pragma once

#include <cstddef>
#include <type_traits>

#include "platform/by_tier.hpp"

namespace tmk {

template <class Real>
constexpr int panel_lanes = 64 / static_cast<int>(sizeof(Real));

// Row i of the system, divided by its pivot:
//   e[i] s[i-1] + s[i] + g[i] s[i+1] = 3 (e[i] d[i-1] + g[i] d[i])  before elimination takes e[i] away,
// with r the reciprocals of widths in the unit of x, and d[i] = (y[i+1] - y[i]) r[i].
template <class Real>
struct panel_group {
  ptrdiff_t knots;
  Real *r, *e, *g;
  Real *y, *s;
};

template <class Real>
struct natural_loops {
  // Rows to[0], to[1] ... from the arrays of the lanes, and back.
  void (*interleave)(const Real* const* from, ptrdiff_t rows, Real* to);
  void (*separate)(const Real* from, ptrdiff_t rows, Real* const* to);
  // to[i] = from[i + 1] - from[i], by rows.
  void (*differences)(const Real* from, ptrdiff_t rows, Real* to);
  // Rows first ... end - 1 of e, g and r by widths w (an array of rows, in any unit), the least of which
  // lowers *least. False when a pivot is zero.
  bool (*factor)(const panel_group<Real>& group, const Real* w, ptrdiff_t first, ptrdiff_t end, Real* least);
  // The same rows of s, forward from row first - 1.
  void (*forward)(const panel_group<Real>& group, ptrdiff_t first, ptrdiff_t end);
  // Rows end - 1 ... first of s, backward from row end.
  void (*backward)(const panel_group<Real>& group, ptrdiff_t first, ptrdiff_t end);
  // Four coefficients a cell from values and slopes at the knots. Past the caches c is aligned to 16 bytes,
  // and settle follows the last call.
  void (*cells)(const Real* y, const Real* s, const Real* r, ptrdiff_t count, bool past_caches, Real* c);
  void (*settle)();
};

}  // namespace tmk

TMK_DECLARE_TWIN_LOOPS(natural)
