// SPDX-License-Identifier: Apache-2.0
// Hyman's monotone cubics: Bessel's slopes, cut to zero at extrema of the data and to three times the smaller
// difference elsewhere (Hyman, SIAM J. Sci. Stat. Comput. 4, 1983).
#include <algorithm>
#include <cmath>

#include "fitting/construction/local_cubic.hpp"

namespace tmk::fitting {
namespace {

// With no condition the end keeps its cell monotone too; given conditions are not filtered.
template <class Real>
Real filtered_end(const spline_end<Real>& e) {
  const Real s = ends::end_cubic(e), d = e.cell.slope;
  const bool turns = (s <= 0 && d >= 0) || (s >= 0 && d <= 0);
  return turns ? Real(0) : std::copysign(std::min(std::abs(s), 3 * std::abs(d)), s);
}

struct hyman {
  static constexpr int64_t least_nx = 4;
  static constexpr ptrdiff_t span = 3;
  template <class Real>
  static constexpr slope_kernels<Real> local_cubic_kernels<Real>::*rule = &local_cubic_kernels<Real>::hyman;
  template <class Real>
  static constexpr end_function<Real>* at_period = ends::periodic_parabola<Real>;
  template <class Real>
  static constexpr end_function<Real>* at_unset = filtered_end<Real>;
};

}  // namespace
}  // namespace tmk::fitting

TMK_DF_CONSTRUCTOR(HymanCubicSpline, local_cubic<tmk::fitting::hyman>)
