// SPDX-License-Identifier: Apache-2.0
// Akima's cubics: the slope at a point is a mean of its two neighbours, each weighted by how little the
// differences change on its own side (Akima, J. ACM 17, 1970). At the second and the last but one point,
// where an outer difference is missing, the continuation by equal changes takes its place.
#include "fitting/construction/akima.hpp"

#include <cmath>

#include "fitting/construction/local_cubic.hpp"

namespace tmk::fitting {
namespace {

// The rule at an end with two differences continued by equal changes: both weights are equal.
template <class Real>
Real continued_end(const spline_end<Real>& e) {
  return (3 * e.cell.slope - e.next.slope) / 2;
}

template <class Real>
Real periodic_end(const spline_end<Real>& e) {
  const Real w_across = std::abs(e.next.slope - e.cell.slope);
  const Real w_cell = std::abs(e.across.slope - e.inside_across.slope), w = w_across + w_cell;
  if (w < akima_flat<Real>) return (e.cell.slope + e.across.slope) / 2;
  return (w_across * e.across.slope + w_cell * e.cell.slope) / w;
}

struct akima {
  static constexpr int64_t least_nx = 5;
  static constexpr ptrdiff_t span = 5;
  template <class Real>
  static constexpr slope_kernels<Real> local_cubic_kernels<Real>::*rule = &local_cubic_kernels<Real>::akima;
  template <class Real>
  static constexpr end_function<Real>* at_period = periodic_end<Real>;
  template <class Real>
  static constexpr end_function<Real>* at_unset = continued_end<Real>;
};

// The interface's fixed 1e-10 depends on the scale of the slopes: where they are large, rounding decides at a
// corner between two straight parts; where they are small, all weights count as none.
struct akima_of_any_scale : akima {
  template <class Real>
  static constexpr slope_kernels<Real> local_cubic_kernels<Real>::*rule =
      &local_cubic_kernels<Real>::akima_by_noise;
};

}  // namespace

template <class Real>
int32_t construct_akima_of_any_scale(DFTask* task, int64_t /*format*/, int64_t method,
                                     const ThreadingService* threading) {
  return construct<local_cubic<akima_of_any_scale>, Real>(task, method, threading);
}
template int32_t construct_akima_of_any_scale<double>(DFTask*, int64_t, int64_t, const ThreadingService*);
template int32_t construct_akima_of_any_scale<float>(DFTask*, int64_t, int64_t, const ThreadingService*);

}  // namespace tmk::fitting

TMK_DF_CONSTRUCTOR(AkimaCubicSpline, local_cubic<tmk::fitting::akima>)
