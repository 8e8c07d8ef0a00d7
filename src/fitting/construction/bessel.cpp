// Bessel's cubics: the slope at a point is that of the parabola through it and its neighbours (de Boor, A
// Practical Guide to Splines, ch. IV). With no condition the parabola of the last three points has the end.
#include "fitting/construction/local_cubic.hpp"

namespace tmk::fitting {
namespace {

struct bessel {
  static constexpr int64_t least_nx = 4;
  static constexpr ptrdiff_t span = 3;
  template <class Real>
  static constexpr end_function<Real>* at_period = ends::periodic_parabola<Real>;
  template <class Real>
  static constexpr end_function<Real>* at_unset = ends::end_cubic<Real>;

  template <class Real>
  static int32_t lacks(const task<Real>&) {
    return DF_STATUS_OK;
  }

  template <class Real>
  static void slopes(const local_cubic_loops<Real>& loops, const knot_range<Real>& k) {
    loops.bessel(k.h, k.d, static_cast<int>(k.count), k.s);
  }
};

}  // namespace
}  // namespace tmk::fitting

extern "C" {
int32_t tmk_df_kernel_dDFBesselCubicSpline1D(DFTask* task, int64_t, int64_t method,
                                             const ThreadingService* threading) {
  using namespace tmk::fitting;
  return local_cubic<bessel>::construct(tmk::fitting::task<double>::of(task), method, threading);
}
int32_t tmk_df_kernel_sDFBesselCubicSpline1D(DFTask* task, int64_t, int64_t method,
                                             const ThreadingService* threading) {
  using namespace tmk::fitting;
  return local_cubic<bessel>::construct(tmk::fitting::task<float>::of(task), method, threading);
}
}
