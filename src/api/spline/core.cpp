// SPDX-License-Identifier: Apache-2.0
// Tasks of the C interface, threads, and partitions as splines keep them.
#include "api/spline/core.hpp"

#include <tmk/abi/status.h>

#include <new>

#include "api/call/first_where.hpp"
#include "api/call/state.hpp"
#include "fitting/task.hpp"

namespace tmk::detail {

namespace {

int32_t allowed_threads() { return static_cast<int32_t>(state.threads); }

}  // namespace

void check_fitting(const char* function, int32_t status) {
  if (status == DF_STATUS_NO_MEMORY) throw std::bad_alloc();
  if (status < 0)
    throw error(status, function, "x", std::to_string(status),
                std::string("failed: ") + tmk_status_text(status));
}

const ThreadingService* fitting_threads() {
  static const ThreadingService table = [] {
    ThreadingService openmp = *tmk_threading_openmp();
    openmp.MaxThreads = allowed_threads;
    return openmp;
  }();
  return state.threads == 1 ? tmk_threading_serial() : &table;
}

// A grid is not indexed; so points that need no index come as one, and the hint is edited afterwards.
template <class Real>
fitting_task<Real>::fitting_task(const char* function, const partition<Real>& p, bool searched)
    : function_(function) {
  const bool indexed = searched && !p.grid;
  DFTask* task = nullptr;
  const int32_t status = twin<Real>(tmk_df_kernel_dNewTask1D, tmk_df_kernel_sNewTask1D)(
      &task, static_cast<int64_t>(p.points), p.x, indexed ? DF_PARTITION_NON_UNIFORM : DF_PARTITION_UNIFORM,
      0, nullptr, 0, 0);
  task_.reset(task);
  check_fitting(function, status);
  if (!searched && !p.grid) set(DF_XHINT, DF_PARTITION_UNKNOWN);
}

// By the kernels' own formula, so that its rounding counts, too. The grid gives cells alone: distances are
// from the points.
template <class Real>
bool evenly_spaced(std::span<const Real> x) {
  const Real first = x.front(), step = (x.back() - first) / static_cast<Real>(x.size() - 1);
  const Real reach = fitting::even_within<Real> * step;
  const auto far = [&](std::size_t i) {
    return !(std::abs(x[i] - (first + static_cast<Real>(static_cast<int32_t>(i)) * step)) <= reach);
  };
  return first_where<Real>(x.size(), far) == x.size();
}

template <class Real>
std::vector<Real> expand(const uniform_grid& grid) {
  const Real first = static_cast<Real>(grid.first), last = static_cast<Real>(grid.last);
  std::vector<Real> x(grid.size);
  if (grid.size == 0) return x;
  const Real step = grid.size == 1 ? Real(0) : (last - first) / static_cast<Real>(grid.size - 1);
  for (std::size_t i = 0; i < grid.size; ++i) x[i] = first + static_cast<Real>(i) * step;
  if (grid.size != 1) x.back() = last;
  return x;
}

template <class Real>
site_order look_at(std::span<const Real> sites, Real first, Real last, bool inside_wanted) {
  const std::size_t n = sites.size();
  if (n == 0) return {true, true};
  const auto falls = [&](std::size_t i) { return !(sites[i] <= sites[i + 1]); };
  const auto outside = [&](std::size_t i) { return !(sites[i] >= first && sites[i] <= last); };
  if (first_where<Real>(n - 1, falls) == n - 1) return {true, !outside(0) && !outside(n - 1)};
  return {false, inside_wanted && first_where<Real>(n, outside) == n};
}

template class fitting_task<double>;
template class fitting_task<float>;
template bool evenly_spaced(std::span<const double>);
template bool evenly_spaced(std::span<const float>);
template std::vector<double> expand(const uniform_grid&);
template std::vector<float> expand(const uniform_grid&);
template site_order look_at(std::span<const double>, double, double, bool);
template site_order look_at(std::span<const float>, float, float, bool);

}  // namespace tmk::detail
