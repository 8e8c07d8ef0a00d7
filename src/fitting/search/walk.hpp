// SPDX-License-Identifier: Apache-2.0
// Walks to the cell of a site from a start nearby: steps that double, then a bisection of the last one, so
// that the cost is the logarithm of the distance. Comparisons with a NaN end every walk.
#pragma once

#include <cstddef>

#include "platform/tier.hpp"

namespace tmk::fitting {
inline namespace TMK_TIER {

// The first i in [low, high) with x[i] > t, else high.
template <class Real>
ptrdiff_t bisect(const Real* x, ptrdiff_t low, ptrdiff_t high, Real t) {
  while (low < high) {
    const ptrdiff_t middle = low + (high - low) / 2;
    if (x[middle] <= t)
      low = middle + 1;
    else
      high = middle;
  }
  return low;
}

// The same for [start, end).
template <class Real>
ptrdiff_t walk_up(const Real* x, ptrdiff_t start, ptrdiff_t end, Real t) {
  ptrdiff_t low = start, step = 1;
  for (; step <= end - low; step *= 2) {
    if (!(x[low + step - 1] <= t)) return bisect(x, low, low + step - 1, t);
    low += step;
  }
  return bisect(x, low, end, t);
}

// The least b in [0, start] such that x[b] to x[start - 1] are above t.
template <class Real>
ptrdiff_t walk_down(const Real* x, ptrdiff_t start, Real t) {
  ptrdiff_t high = start, step = 1;
  for (; step <= high; step *= 2) {
    if (!(x[high - step] > t)) return bisect(x, high - step + 1, high, t);
    high -= step;
  }
  return bisect(x, 0, high, t);
}

// The cell of a site that no shortcut found, from any start in [0, nx].
template <class Real>
ptrdiff_t walk(const Real* x, ptrdiff_t nx, ptrdiff_t start, Real t) {
  if (t == x[nx - 1]) return nx - 1;
  if (start < nx && x[start] <= t) return walk_up(x, start + 1, nx, t);
  return walk_down(x, start, t);
}

}  // namespace TMK_TIER
}  // namespace tmk::fitting
