// SPDX-License-Identifier: Apache-2.0
// The loops of local cubics: rows of numbers per cell, one after the other.
#pragma once

#include <cstdint>
#include <type_traits>

#include "platform/by_tier.hpp"

namespace tmk {

// Akima's weights that sum to less count as none in the C interface: the slope is then the mean of its
// neighbours.
template <class Real>
constexpr Real akima_flat = Real(1e-10);

// The slopes s at `count` knots. h, d and noise (widths, divided differences, and bounds of what rounding did
// to these) are at the first knot's right cell; rules look at up to two cells left and one right of a knot's
// right cell. Rows hold a register more on either side of what is asked for, of any content.
template <class Real>
using slope_rule = void(const Real* h, const Real* d, const Real* noise, int count, Real* s);

template <class Real>
struct row_places {
  Real *h, *r, *d, *s, *noise;
};

// Places in the rows of a strip for three stages at once, some lag apart: widths and divided differences of
// the cells ahead, slopes of the knots in the middle, coefficients of the last cells.
template <class Real>
struct strip_rows {
  const Real *x, *y, *y_last;  // x and y go with `ahead`; x is null where the partition is uniform
  row_places<Real> ahead, middle, last;
  Real* c;
  bool past_caches;
};

template <class Real>
struct slope_loops {
  // Bounds of the rounding in `count` divided differences, null where the rule needs none. x is null where
  // the partition is uniform, and so exact.
  void (*noise)(const Real* x, const Real* y, const Real* r, const Real* d, int count, Real* bounds);
  slope_rule<Real>* knots;
  // All stages for `count` cells, a multiple of every register: with widths that are known, or not.
  void (*together[2])(const strip_rows<Real>& rows, int count);
};

template <class Real>
struct local_cubic_loops {
  void (*widths)(const Real* x, int count, Real* h, Real* r);  // and their reciprocals
  void (*slopes)(const Real* y, const Real* r, int count, Real* d);
  slope_loops<Real> bessel, hyman, akima, akima_by_noise;
  // Four coefficients a cell. Past the caches c is aligned to 16 bytes, and settle follows the last call.
  void (*cells)(const Real* y, const Real* s, const Real* d, const Real* r, int count, bool past_caches,
                Real* c);
  void (*settle)();
};

}  // namespace tmk

TMK_DECLARE_TWIN_LOOPS(local_cubic)
