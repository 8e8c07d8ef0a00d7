// SPDX-License-Identifier: Apache-2.0
// Bessel's cubics: the slope at a point is that of the parabola through it and its neighbours (de Boor, A
// Practical Guide to Splines, ch. IV). With no condition the slope at an end is that of the parabola through
// the last three points.
#include "fitting/construction/local_cubic.hpp"

namespace tmk::fitting {
namespace {

struct bessel {
  static constexpr int64_t least_nx = 4;
  static constexpr ptrdiff_t span = 3;
  template <class Real>
  static constexpr slope_kernels<Real> local_cubic_kernels<Real>::*rule = &local_cubic_kernels<Real>::bessel;
  template <class Real>
  static constexpr end_function<Real>* at_period = ends::periodic_parabola<Real>;
  template <class Real>
  static constexpr end_function<Real>* at_unset = ends::end_cubic<Real>;
};

}  // namespace
}  // namespace tmk::fitting

TMK_DF_CONSTRUCTOR(BesselCubicSpline, local_cubic<tmk::fitting::bessel>)
