// SPDX-License-Identifier: Apache-2.0
// The kernels of natural cubics that are cut into panels. The panels of a group are interleaved: row i of an
// array has knot or cell i of each, panel by panel, and fills 64 bytes.
//   panel 0:  x0 x1 x2 ...        row 0:  x0 y0 z0 ...
//   panel 1:  y0 y1 y2 ...   <->  row 1:  x1 y1 z1 ...
//   panel 2:  z0 z1 z2 ...        row 2:  x2 y2 z2 ...
#pragma once

#include <cstddef>
#include <type_traits>

#include "platform/by_tier.hpp"

namespace tmk::fitting {

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
struct natural_kernels {
  // Rows to[0], to[1] ... from the panels' own arrays, and back.
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

TMK_DECLARE_TIER_KERNEL_PAIR(natural)

}  // namespace tmk::fitting
