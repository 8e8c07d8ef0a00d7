// SPDX-License-Identifier: Apache-2.0
// The choice of a search method, and the state that the method needs.
#include <algorithm>
#include <cmath>
#include <limits>

#include "fitting/search/search.hpp"

namespace tmk::fitting {
namespace {

enum hint_element : int { kind = 1, peak_cell = 4 };

// Below this many points a bracket by buckets is no narrower than the partition.
constexpr int64_t points_without_index = 8;

template <class Real>
struct choice {
  const task<Real>& task_;
  int64_t site_hint;
  const Real* search_hint;
  bool hooked;

  // A method, or a negative status. The order is that of the interface: the array is read last.
  int32_t method() const {
    using enum search_method;
    const struct {
      bool holds;
      search_method method;
    } rows[] = {
        {hooked && task_.xhint == DF_PARTITION_UNIFORM, uniform_user_defined},
        {hooked, user_defined},
        {task_.xhint == DF_PARTITION_UNIFORM, uniform},
        {task_.xhint == DF_PARTITION_QUASI_UNIFORM, quasi_uniform},
        {site_hint == DF_SITES_SORTED, sorted},
        {search_hint == nullptr, task_.even ? quasi_uniform : hybrid},
    };
    for (const auto& row : rows)
      if (row.holds) return static_cast<int32_t>(row.method);
    const Real chosen = search_hint[kind];
    if (chosen == 0) return static_cast<int32_t>(hybrid);
    const bool cell_fits =
        chosen == 1 && search_hint[peak_cell] >= 0 && search_hint[peak_cell] <= static_cast<Real>(task_.nx);
    return cell_fits ? static_cast<int32_t>(peak) : DF_STATUS_BAD_SEARCH_HINT;
  }
};

// The place in proportion and the place of a point are each off by some roundings of the count of points and
// of the largest of them.
template <class Real>
Real trusted_distance(const task<Real>& t, Real rate) {
  const Real largest = std::max(std::abs(t.x[0]), std::abs(t.x[t.nx - 1]));
  return Real(0.5) - (even_within<Real> +
                      (4 * static_cast<Real>(t.nx) + largest * rate) * std::numeric_limits<Real>::epsilon());
}

// An index made for more points than there are now would point past them.
template <class Real>
bool index_usable(const task<Real>& task) {
  return task.nx > points_without_index && task.buckets != nullptr && task.nbuckets > 0 &&
         task.nbuckets < bucket_room && task.buckets[task.nbuckets - 1].hi < task.nx;
}

}  // namespace

template <class Real>
int32_t choose_search(const task<Real>& task, int64_t site_hint, const Real* search_hint,
                      typename hook_types<Real>::search hook, void* parameter, cell_search<Real>& search) {
  const int32_t method = choice<Real>{task, site_hint, search_hint, hook != nullptr}.method();
  if (method < 0) return method;
  search = {.nx = task.nx, .x = task.x};
  auto& state = search.state;
  state.method = static_cast<search_method>(method);
  state.hook = hook;
  state.parameter = parameter;
  const auto cells = static_cast<Real>(task.nx - 1);
  using enum search_method;
  switch (state.method) {
    case uniform:
    case uniform_user_defined:
      state.rate = cells / (task.x[1] - task.x[0]);
      break;
    case quasi_uniform:
      state.rate = cells / (task.x[task.nx - 1] - task.x[0]);
      if (task.even) state.trusted = trusted_distance(task, state.rate);
      break;
    case peak:
      // A single may have rounded the count of points up.
      state.peak = static_cast<int32_t>(std::min(static_cast<int64_t>(search_hint[peak_cell]), task.nx));
      break;
    case hybrid:
      if (!index_usable(task)) break;
      state.buckets = task.buckets;
      state.nbuckets = static_cast<int32_t>(task.nbuckets);
      state.bucket_scale = task.bucket_scale;
      break;
    case sorted:
    case user_defined:
      break;
  }
  return 0;
}

template int32_t choose_search(const task<double>&, int64_t, const double*, DFdSearchHook, void*,
                               cell_search<double>&);
template int32_t choose_search(const task<float>&, int64_t, const float*, DFsSearchHook, void*,
                               cell_search<float>&);

}  // namespace tmk::fitting
