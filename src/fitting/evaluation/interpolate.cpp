// SPDX-License-Identifier: Apache-2.0
// Interpolation: the arguments are checked and arranged once, then blocks of sites are searched and
// evaluated.
#include <algorithm>
#include <cstdint>

#include "fitting/evaluation/interpolation.hpp"
#include "fitting/search/search.hpp"

namespace tmk::fitting {
namespace {

// Cells in the caller's array, in the width that the task gives.
struct cell_array {
  void* cells;
  bool wide;

  void write(int64_t first, int count, const int32_t* from) const {
    if (wide)
      std::copy_n(from, count, static_cast<int64_t*>(cells) + first);
    else
      std::copy_n(from, count, static_cast<int32_t*>(cells) + first);
  }
  // Cells that no search can give count as the nearest one that it can.
  void read(int64_t first, int count, int64_t nx, int32_t* to) const {
    const auto nearest = [&](const auto* from) {
      for (int i = 0; i < count; ++i)
        to[i] = static_cast<int32_t>(std::clamp<int64_t>(from[first + i], 0, nx));
    };
    if (wide)
      nearest(static_cast<const int64_t*>(cells));
    else
      nearest(static_cast<const int32_t*>(cells));
  }
};

template <class Real>
struct block_walk {
  const interpolation<Real>& call;
  const cell_search<Real>& search;
  evaluator<Real> evaluate;
  site_source<Real> sites;
  cell_array cells;
  int64_t type;
  Real* result;

  int32_t operator()(int64_t begin, int64_t end) const {
    cell_search<Real> own_search = search;
    alignas(64) Real made[site_block];
    int32_t cell[site_block];
    for (int64_t first = begin; first < end; first += site_block) {
      const int count = static_cast<int>(std::min<int64_t>(site_block, end - first));
      const Real* site = sites.block(first, count, made);
      int32_t status = DF_STATUS_OK;
      if (type == DF_INTERPOLATE_FROM_CELLS)
        cells.read(first, count, call.points.nx, cell);
      else
        status = own_search.find(count, site, cell);
      if (status >= 0 && (type & DF_INTERPOLATE_CELLS) != 0) cells.write(first, count, cell);
      if (status >= 0 && evaluate != nullptr) {
        Real* to = result + static_cast<ptrdiff_t>(first) * call.layout.site;
        status = evaluate(call, {count, site, cell, to, nullptr});
      }
      if (status < 0) return status;
    }
    return DF_STATUS_OK;
  }
};

// Sites between two ends are merged with the points where they ascend, unless they are few among many points.
template <class Real>
bool ascend_among_points(const Real* site, int64_t site_hint, int64_t nsite, int64_t nx) {
  constexpr int64_t most_points_between = 4;
  return (site_hint & DF_SITES_UNIFORM) != 0 && nsite > 1 && nsite >= nx / most_points_between &&
         site[0] <= site[1];
}
bool searches_each_site(search_method method) {
  return method == search_method::hybrid || method == search_method::peak;
}

template <class Real>
int32_t interpolate(DFTask* handle, int64_t type, int64_t nsite, const Real* site, int64_t site_hint,
                    int64_t ndorder, const void* dorder, const Real* search_hint, Real* result, int64_t rhint,
                    void* cell, const evaluation_hook<Real> (&hooks)[regions],
                    typename hook_types<Real>::search search_hook, void* search_parameter,
                    const ThreadingService* threading) {
  if (handle == nullptr) return DF_STATUS_NULL_TASK;
  const auto& t = task<Real>::of(handle);
  const auto given = [](const auto& hook) { return hook.function != nullptr; };
  const bool any_hook = std::any_of(hooks, hooks + regions, given);
  const auto kind = kind_of(t.s_order, t.s_type, std::all_of(hooks, hooks + regions, given));
  if (kind == spline_kind::none) return DF_STATUS_BAD_TYPE;

  cell_search<Real> search;
  if (type != DF_INTERPOLATE_FROM_CELLS) {
    const int32_t status = choose_search(t, site_hint, search_hint, search_hook, search_parameter, search);
    if (status < 0) return status;
    if (ascend_among_points(site, site_hint, nsite, t.nx) && searches_each_site(search.state.method))
      search.state.method = search_method::sorted;
  }
  const auto request = requested(ndorder, dorder, t.wide_ints != 0);
  result_layout layout;
  if (const int32_t status = layout_of(rhint, nsite, functions(t), request.stride, layout); status < 0)
    return status;
  const bool values = (type & DF_INTERPOLATE_VALUES) != 0 || type == DF_INTERPOLATE_FROM_CELLS;
  if (values)
    if (const int32_t status = missing_rows(t, kind); status < 0) return status;
  if (nsite <= 0) return DF_STATUS_OK;

  const interpolation<Real> call = {
      t, partition<Real>(t), kind, request, layout, {hooks[0], hooks[1], hooks[2]}};
  const auto& table =
      any_hook ? evaluators<Real>::_Interpolate1D32DispatchCB : evaluators<Real>::_Interpolate1D32Dispatch;
  const block_walk<Real> walk = {call,
                                 search,
                                 values && request.stride > 0 ? table[static_cast<int>(kind)] : nullptr,
                                 site_source<Real>(site, site_hint, nsite),
                                 {cell, t.wide_ints != 0},
                                 type,
                                 result};
  // A search hook is called by the calling thread alone.
  if (search_hook != nullptr) return walk(0, nsite);
  return run_shares(nsite, nsite * functions(t), threading, walk);
}

}  // namespace
}  // namespace tmk::fitting

#define TMK_DF_INTERPOLATE(letter, Real)                                                                  \
  extern "C" int32_t tmk_df_kernel_##letter##DFInterpolate1D(                                             \
      DFTask* task, int64_t type, int64_t, int64_t nsite, const Real* site, int64_t site_hint,            \
      int64_t ndorder, int32_t, const void* dorder, const Real* search_hint, Real* result, int64_t rhint, \
      void* cell, DF##letter##Hook left, void* left_parameter, DF##letter##Hook right,                    \
      void* right_parameter, DF##letter##Hook interior, void* interior_parameter,                         \
      DF##letter##SearchHook search, void* search_parameter, const ThreadingService* threading) {         \
    return tmk::fitting::interpolate<Real>(                                                               \
        task, type, nsite, site, site_hint, ndorder, dorder, search_hint, result, rhint, cell,            \
        {{left, left_parameter}, {interior, interior_parameter}, {right, right_parameter}}, search,       \
        search_parameter, threading);                                                                     \
  }
TMK_DF_INTERPOLATE(d, double)
TMK_DF_INTERPOLATE(s, float)
