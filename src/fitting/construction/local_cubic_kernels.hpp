// SPDX-License-Identifier: Apache-2.0
// The kernels of local cubics, over arrays with a number for each cell or knot.
#pragma once

#include <cstdint>
#include <type_traits>

#include "platform/by_tier.hpp"

namespace tmk::fitting {

// Akima's weights whose sum is below this count as none in the C interface: the slope is then the mean of its
// neighbours.
template <class Real>
constexpr Real akima_flat = Real(1e-10);

// The slopes s at `count` knots. h, d and noise (widths, divided differences, and bounds of what rounding did
// to these) point to the cell right of the first knot; rules read up to two cells left and one right of that
// of each knot. Arrays have room for a register more on either side, of any content.
template <class Real>
using slope_rule = void(const Real* h, const Real* d, const Real* noise, int count, Real* s);

template <class Real>
struct strip_pointers {
  Real *h, *r, *d, *s, *noise;
};

// Where three stages of a strip work at once, some lag apart:
//   cells  ... | last: coefficients | ... | middle: slopes of knots | ... | ahead: widths, differences | ...
template <class Real>
struct strip_stages {
  const Real *x, *y, *y_last;  // x and y are of `ahead`; x is null where the partition is uniform
  strip_pointers<Real> ahead, middle, last;
  Real* c;
  bool past_caches;
};

template <class Real>
struct slope_kernels {
  // Bounds of the rounding in `count` divided differences, null where the rule needs none. x is null where
  // the partition is uniform, and so exact.
  void (*noise)(const Real* x, const Real* y, const Real* r, const Real* d, int count, Real* bounds);
  slope_rule<Real>* knots;
  // All stages for `count` cells, a multiple of every register: with widths that are known, or to be
  // computed.
  void (*together[2])(const strip_stages<Real>& stages, int count);
};

template <class Real>
struct local_cubic_kernels {
  void (*widths)(const Real* x, int count, Real* h, Real* r);  // and their reciprocals
  void (*slopes)(const Real* y, const Real* r, int count, Real* d);
  slope_kernels<Real> bessel, hyman, akima, akima_by_noise;
  // Four coefficients a cell. Past the caches c is aligned to 16 bytes, and settle follows the last call.
  void (*cells)(const Real* y, const Real* s, const Real* d, const Real* r, int count, bool past_caches,
                Real* c);
  void (*settle)();
};

TMK_DECLARE_TIER_KERNEL_PAIR(local_cubic)

}  // namespace tmk::fitting
