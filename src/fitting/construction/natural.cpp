// Natural cubics: the constructor, its kernels, and the roads of one thread and of many.
#include "fitting/construction/natural.hpp"

namespace tmk::fitting {

namespace {

constexpr ptrdiff_t least_parallel = 300, least_for_few = 600, few_threads = 8;

template <class Real>
int32_t construct_alone(const task<Real>& t, natural_spline<Real>& spline, bool closed) {
  const ptrdiff_t matrices = panels_at_once * spline.matrix_elements();
  const scratch<Real> memory(static_cast<size_t>(matrices + panels_at_once * spline.work_elements()));
  if (!memory) return DF_STATUS_NO_MEMORY;
  if (closed && !all_close(t)) return DF_STATUS_PERIODIC_MISMATCH;
  return spline.each_quad([&](ptrdiff_t p, ptrdiff_t count) {
    const int32_t status = spline.factor(p, count, memory.get());
    for (ptrdiff_t j = 0; status == 0 && j < functions(t); ++j)
      spline.construct(p, count, memory.get(), memory.get() + matrices, j);
    return status;
  });
}

// All panels are factored first, and the factors are what the workers share.
template <class Real>
int32_t construct_parallel(const task<Real>& t, natural_spline<Real>& spline, bool closed, ptrdiff_t threads,
                           const ThreadingService* service) {
  const ptrdiff_t ny = functions(t), matrix = spline.matrix_elements();
  const ptrdiff_t matrices = spline.panels() * matrix, slice = panels_at_once * spline.work_elements();
  const scratch<Real> memory(static_cast<size_t>(matrices + threads * slice));
  const scratch<int32_t> statuses(static_cast<size_t>(ny));
  if (!memory || !statuses) return DF_STATUS_NO_MEMORY;
  std::fill_n(statuses.get(), ny, DF_STATUS_OK);
  const int32_t status = spline.each_quad(
      [&](ptrdiff_t p, ptrdiff_t count) { return spline.factor(p, count, memory.get() + p * matrix); });
  if (status != 0 || !spline.forgets_ends()) return status;
  auto work = [&](int32_t j, int32_t thread) {
    if (closed && !closes(function_of(t, j), points(t)))
      statuses.get()[j] = DF_STATUS_PERIODIC_MISMATCH;
    else
      spline.each_quad([&](ptrdiff_t p, ptrdiff_t count) {
        spline.construct(p, count, memory.get() + p * matrix, memory.get() + matrices + thread * slice, j);
        return DF_STATUS_OK;
      });
  };
  parallel_for(service, ny, threads, work);
  const int32_t* failed = std::find_if(statuses.get(), statuses.get() + ny, [](int32_t s) { return s != 0; });
  return failed != statuses.get() + ny ? *failed : DF_STATUS_OK;
}

struct natural_family {
  // Table of 28 kernels: layout, grid, boundary.
  template <class Real, int Index>
  static int32_t kernel(const task<Real>& t, int64_t /*method*/, const ThreadingService* service) {
    constexpr auto index = static_cast<boundary>(Index % boundaries);
    const ptrdiff_t n = points(t), ny = functions(t);
    const ptrdiff_t threads = std::min<ptrdiff_t>(service->MaxThreads(), ny);
    const bool alone = threads <= 1 || n < least_parallel || (n < least_for_few && threads < few_threads);
    for (const bool divided : {true, false}) {
      natural_spline<Real> spline(t, Index / boundaries % 2 == 1, index, divided);
      const int32_t status = alone ? construct_alone(t, spline, index == periodic)
                                   : construct_parallel(t, spline, index == periodic, threads, service);
      if (status != 0 || spline.forgets_ends()) return status;
    }
    return DF_STATUS_OK;
  }

  template <class Real>
  static int32_t construct(DFTask* handle, int64_t method, const ThreadingService* service) {
    const auto& t = task<Real>::of(handle);
    if (method != 0) return DF_STATUS_BAD_METHOD;
    const int64_t least_nx = t.bc_type == DF_BC_NOT_A_KNOT ? 3 : 2;
    if (const int32_t bad = check_cubic(t, least_nx, false)) return bad;
    const auto& kernels = dispatch_table<natural_family, Real, 4 * boundaries>;
    return kernels[static_cast<size_t>(grid_index(t) * boundaries + boundary_of(t.bc_type))](t, 0, service);
  }
};

}  // namespace

}  // namespace tmk::fitting

int32_t tmk_df_kernel_dDFNaturalCubicSpline1D(DFTask* task, int64_t /*format*/, int64_t method,
                                              const ThreadingService* threading) {
  return tmk::fitting::natural_family::construct<double>(task, method, threading);
}
int32_t tmk_df_kernel_sDFNaturalCubicSpline1D(DFTask* task, int64_t /*format*/, int64_t method,
                                              const ThreadingService* threading) {
  return tmk::fitting::natural_family::construct<float>(task, method, threading);
}
