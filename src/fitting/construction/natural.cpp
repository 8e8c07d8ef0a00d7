// SPDX-License-Identifier: Apache-2.0
// Natural cubics: the constructor, its variants, and the work by one thread or by many. They are twice
// continuously differentiable; their slopes s at the knots solve a tridiagonal system,
//   h[i] s[i-1] + 2 (h[i-1] + h[i]) s[i] + h[i-1] s[i+1] = 3 (h[i] d[i-1] + h[i-1] d[i])
// with widths h and divided differences d; the boundary conditions are the first
// and the last row.
#include "fitting/construction/constructor.hpp"
#include "fitting/construction/natural_panels.hpp"
#include "fitting/construction/natural_whole.hpp"
#include "platform/scratch.hpp"

namespace tmk::fitting {

namespace {

constexpr ptrdiff_t least_parallel = 300, least_for_few = 600, few_threads = 8;

struct construction {
  bool must_close;  // the functions end where they began
  ptrdiff_t threads;
  const ThreadingService* service;
};

// A Spline, natural_panels or natural_whole, is factored group by group and solved for each function by the
// factors. A result of factor() other than 0 ends the construction.
template <class Real, class Spline>
int32_t construct_alone(const task<Real>& t, Spline& spline, const construction& c) {
  const ptrdiff_t factors = spline.factor_elements();
  const scratch<Real> memory(static_cast<size_t>(factors + spline.work_elements()));
  if (!memory) return DF_STATUS_NO_MEMORY;
  Real* const work = memory.get() + factors;
  if (c.must_close && !all_close(t)) return DF_STATUS_PERIODIC_MISMATCH;
  for (ptrdiff_t group = 0; group < spline.groups(); ++group) {
    if (const int32_t status = spline.factor(group, memory.get(), work)) return status;
    for (ptrdiff_t j = 0; j < functions(t); j += Spline::functions_at_once)
      spline.construct(group, memory.get(), work, j, std::min(functions(t) - j, Spline::functions_at_once));
  }
  return DF_STATUS_OK;
}

// All groups are factored first; the threads share the factors.
template <class Real, class Spline>
int32_t construct_parallel(const task<Real>& t, Spline& spline, const construction& c) {
  const ptrdiff_t ny = functions(t), slice = spline.work_elements(), factors = spline.factor_elements();
  const scratch<Real> memory(static_cast<size_t>(spline.groups() * factors + c.threads * slice));
  const scratch<int32_t> statuses(static_cast<size_t>(ny));
  if (!memory || !statuses) return DF_STATUS_NO_MEMORY;
  Real* const work = memory.get() + spline.groups() * factors;
  for (ptrdiff_t group = 0; group < spline.groups(); ++group)
    if (const int32_t status = spline.factor(group, memory.get() + group * factors, work)) return status;
  auto construct_function = [&](int32_t j, int32_t thread) {
    statuses.get()[j] = DF_STATUS_PERIODIC_MISMATCH;
    if (c.must_close && !closes(function_of(t, j), points(t))) return;
    for (ptrdiff_t group = 0; group < spline.groups(); ++group)
      spline.construct(group, memory.get() + group * factors, work + thread * slice, j, 1);
    statuses.get()[j] = DF_STATUS_OK;
  };
  parallel_for(c.service, ny, c.threads, construct_function);
  const int32_t* end = statuses.get() + ny;
  const int32_t* failed = std::find_if(end - ny, end, [](int32_t s) { return s != 0; });
  return failed != end ? *failed : DF_STATUS_OK;
}

template <class Real, class Spline>
int32_t construct_by(const task<Real>& t, Spline& spline, const construction& c) {
  const ptrdiff_t n = points(t);
  const bool alone = c.threads <= 1 || n < least_parallel || (n < least_for_few && c.threads < few_threads);
  return alone ? construct_alone(t, spline, c) : construct_parallel(t, spline, c);
}

struct natural_family {
  // 28 variants: layout, grid, boundary.
  template <class Real, int Index>
  static int32_t variant(const task<Real>& t, int64_t /*method*/, const ThreadingService* service) {
    constexpr auto index = static_cast<boundary>(Index % boundaries);
    constexpr bool uniform = Index / boundaries % 2 == 1;
    const construction c = {index == periodic, std::min<ptrdiff_t>(service->MaxThreads(), functions(t)),
                            service};
    if (points(t) > natural_panels<Real>::least_cells) {
      natural_panels<Real> panels(t, uniform, index);
      const int32_t status = construct_by(t, panels, c);
      if (status != needs_whole_system) return status;
    }
    natural_whole<Real> whole(t, uniform, index);
    return construct_by(t, whole, c);
  }

  template <class Real>
  static int32_t check(const task<Real>& t, int64_t method) {
    if (method != 0) return DF_STATUS_BAD_METHOD;
    return check_cubic(t, t.bc_type == DF_BC_NOT_A_KNOT ? 3 : 2, false);
  }

  template <class Real>
  static int32_t construct(const task<Real>& t, int64_t method, const ThreadingService* service) {
    return variants<natural_family, Real, 4 * boundaries>[boundary_index(t)](t, method, service);
  }
};

}  // namespace

}  // namespace tmk::fitting

TMK_DF_CONSTRUCTOR(NaturalCubicSpline, natural_family)
