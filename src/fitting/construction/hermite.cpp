// SPDX-License-Identifier: Apache-2.0
// Hermite cubics: the caller gives the slopes at the inner points.
#include <algorithm>

#include "fitting/construction/local_cubic.hpp"

namespace tmk::fitting {
namespace {

// The slope where a period closes is the caller's too; without one, that of a parabola.
template <class Real>
Real periodic_end(const spline_end<Real>& e) {
  return e.bc != nullptr ? e.bc[0] : ends::periodic_parabola(e);
}

struct hermite {
  static constexpr int64_t least_nx = 3;
  static constexpr ptrdiff_t span = 3;
  template <class Real>
  static constexpr slope_kernels<Real> local_cubic_kernels<Real>::*rule = nullptr;
  template <class Real>
  static constexpr end_function<Real>* at_period = periodic_end<Real>;
  template <class Real>
  static constexpr end_function<Real>* at_unset = ends::end_cubic<Real>;
};

}  // namespace
}  // namespace tmk::fitting

TMK_DF_CONSTRUCTOR(HermiteCubicSpline, local_cubic<tmk::fitting::hermite>)
