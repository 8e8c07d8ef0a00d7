// Hermite cubics: the caller gives the slopes at the inner points.
#include <algorithm>

#include "fitting/construction/local_cubic.hpp"

namespace tmk::fitting {
namespace {

// The slope where a period closes is the caller's too; for want of one, that of a parabola.
template <class Real>
Real periodic_end(const spline_end<Real>& e) {
  return e.bc != nullptr ? e.bc[0] : ends::periodic_parabola(e);
}

struct hermite {
  static constexpr int64_t least_nx = 3;
  static constexpr ptrdiff_t span = 3;
  template <class Real>
  static constexpr end_function<Real>* at_period = periodic_end<Real>;
  template <class Real>
  static constexpr end_function<Real>* at_unset = ends::end_cubic<Real>;

  template <class Real>
  static int32_t lacks(const task<Real>& t) {
    return t.ic == nullptr ? DF_STATUS_NULL_IC : DF_STATUS_OK;
  }

  template <class Real>
  static void slopes(const local_cubic_loops<Real>&, const knot_range<Real>& k) {
    const ptrdiff_t first = std::max<ptrdiff_t>(k.first, 1),
                    end = std::min(k.first + k.count, points(k.t) - 1);
    if (first < end) std::copy(k.t.ic + first - 1, k.t.ic + end - 1, k.s + (first - k.first));
  }
};

}  // namespace
}  // namespace tmk::fitting

extern "C" {
int32_t tmk_df_kernel_dDFHermiteCubicSpline1D(DFTask* task, int64_t, int64_t method,
                                              const ThreadingService* threading) {
  using namespace tmk::fitting;
  return local_cubic<hermite>::construct(tmk::fitting::task<double>::of(task), method, threading);
}
int32_t tmk_df_kernel_sDFHermiteCubicSpline1D(DFTask* task, int64_t, int64_t method,
                                              const ThreadingService* threading) {
  using namespace tmk::fitting;
  return local_cubic<hermite>::construct(tmk::fitting::task<float>::of(task), method, threading);
}
}
