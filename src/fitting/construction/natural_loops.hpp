// The loops of natural cubics beside those of local cubics: a tridiagonal row for each inner knot of a run of
// cells, w its widths in any unit, r reciprocals in the unit of x.
#pragma once

#include <type_traits>

#include "platform/by_tier.hpp"

namespace tmk {

template <class Real>
struct natural_loops {
  // Returns the least width.
  // w[k+1] s[k] + 2 (w[k] + w[k+1]) s[k+1] + w[k] s[k+2] = b[k+1] for k + 1 < cells: dl[k], d[k+1], du[k+1].
  Real (*rows)(const Real* w, int cells, Real* dl, Real* d, Real* du);
  // The divided difference of each cell, and b[k+1] = 3 (w[k+1] slope[k] + w[k] slope[k+1]).
  void (*right_sides)(const Real* y, const Real* w, const Real* r, int cells, Real* slope, Real* b);
};
struct natural_doubles : natural_loops<double> {};
struct natural_singles : natural_loops<float> {};

}  // namespace tmk

TMK_DECLARE_LOOPS(natural_doubles)
TMK_DECLARE_LOOPS(natural_singles)

namespace tmk {

template <class Real>
const natural_loops<Real>& natural_loops_now() {
  if constexpr (std::is_same_v<Real, double>)
    return natural_doubles_now();
  else
    return natural_singles_now();
}

}  // namespace tmk
