// SPDX-License-Identifier: Apache-2.0
// Integration: the arguments are checked and arranged once, running sums are made where they pay, then blocks
// of limits are searched and integrated.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <tuple>

#include "fitting/evaluation/integration.hpp"
#include "fitting/evaluation/sites.hpp"
#include "fitting/search/search.hpp"
#include "platform/scratch.hpp"

namespace tmk::fitting {
namespace {

template <class Real>
struct block_walk {
  const integration<Real>& call;
  const cell_search<Real>&left_search, &right_search;
  integrator<Real> integrate;
  site_source<Real> left, right;
  Real* result;

  int32_t operator()(int64_t begin, int64_t end) const {
    cell_search<Real> own_left = left_search, own_right = right_search;
    alignas(64) Real made_left[site_block], made_right[site_block];
    int32_t left_cells[site_block], right_cells[site_block];
    for (int64_t first = begin; first < end; first += site_block) {
      const int count = static_cast<int>(std::min<int64_t>(site_block, end - first));
      const Real* l = left.block(first, count, made_left);
      const Real* r = right.block(first, count, made_right);
      if (const int32_t status = own_left.find_limits(count, l, left_cells); status < 0) return status;
      if (const int32_t status = own_right.find_limits(count, r, right_cells); status < 0) return status;
      Real* to = result + static_cast<ptrdiff_t>(first) * call.pair_stride;
      for (ptrdiff_t f = call.first_function; f < call.end_function; ++f)
        for (int i = 0; i < count; ++i) to[f * call.function_stride + i * call.pair_stride] = 0;
      const int32_t status = integrate(call, {count, l, r, left_cells, right_cells, to, nullptr});
      if (status < 0) return status;
    }
    return DF_STATUS_OK;
  }
};

// Whether running sums cost less than adding up the span of each pair. The spans are known from some of the
// pairs, as shares of the partition: no cells are needed, and the answer does not depend on the threads. Few
// limits over few points go without the memory.
template <class Real>
bool running_sums_pay(const block_walk<Real>& walk, int64_t n) {
  constexpr int64_t most_samples = 256, few_pairs = 32, few_points = 4096;
  constexpr double cells_per_pair = 16;  // what a span costs besides its cells
  const auto& x = walk.call.points;
  if (n < few_pairs && x.nx < few_points) return false;
  const int64_t samples = std::min(n, most_samples);
  double share = 0;
  for (int64_t k = 0; k < samples; ++k) {
    // Multiples of the golden section, scattered evenly: no period of the limits hides long spans.
    const double at = std::fmod(static_cast<double>(k) * 0.6180339887498949, 1);
    const auto i = static_cast<int64_t>(at * static_cast<double>(n));
    Real l, r;
    const Real width =
        std::abs(*walk.right.block(i, 1, &r) - *walk.left.block(i, 1, &l)) / (x.last - x.first);
    share += width < 1 ? static_cast<double>(width) : 1.0;
  }
  const double pairs = static_cast<double>(n), cells = static_cast<double>(x.nx);
  return pairs * (cells * share / static_cast<double>(samples) + cells_per_pair) > 2 * cells;
}

// How many functions have running sums in memory at a time.
template <class Real>
ptrdiff_t functions_at_a_time(const integration<Real>& call) {
  constexpr ptrdiff_t most_bytes = ptrdiff_t{64} << 20;
  const ptrdiff_t bytes = call.entries() * static_cast<ptrdiff_t>(sizeof(running_sum<Real>));
  return std::clamp<ptrdiff_t>(most_bytes / bytes, 1, functions(call.spline));
}

template <class Real>
int32_t with_running_sums(integration<Real>& call, const block_walk<Real>& walk, int64_t n,
                          const ThreadingService* threading) {
  const ptrdiff_t count = functions(call.spline), group = functions_at_a_time(call);
  const scratch<running_sum<Real>> sums(static_cast<size_t>(group * call.entries()));
  if (!sums) return DF_STATUS_NO_MEMORY;
  call.sums = sums.get();
  for (ptrdiff_t first = 0; first < count; first += group) {
    call.first_function = first;
    call.end_function = std::min(first + group, count);
    const ptrdiff_t size = call.end_function - first;
    auto add_up = [&](int32_t item, int32_t) { integrators<Real>::add_up(call, first + item); };
    parallel_for(threading, size, std::min<ptrdiff_t>(size, threading->MaxThreads()), add_up);
    const int32_t status = run_shares(n, n * size, threading, walk);
    if (status < 0) return status;
  }
  return DF_STATUS_OK;
}

template <class Real>
int32_t integrate(DFTask* handle, int64_t nlim, const Real* left, int64_t left_hint, const Real* right,
                  int64_t right_hint, const Real* left_search_hint, const Real* right_search_hint,
                  Real* result, int64_t rhint, const integration_hook<Real> (&hooks)[regions],
                  typename hook_types<Real>::search search_hook, void* search_parameter,
                  const ThreadingService* threading) {
  if (handle == nullptr) return DF_STATUS_NULL_TASK;
  const auto& t = task<Real>::of(handle);
  const auto given = [](const auto& hook) { return hook.function != nullptr; };
  const auto kind = kind_of(t.s_order, t.s_type, std::all_of(hooks, hooks + regions, given));
  if (static_cast<int>(kind) >= integrable_kinds) return DF_STATUS_BAD_TYPE;

  cell_search<Real> left_search, right_search;
  for (const auto& [hint, array, search] : {std::tuple(left_hint, left_search_hint, &left_search),
                                            std::tuple(right_hint, right_search_hint, &right_search)}) {
    const int32_t status = choose_search(t, hint, array, search_hook, search_parameter, *search);
    if (status < 0) return status;
  }
  const bool rows = rhint == DF_ROWS || rhint == DF_SEPARATE;
  if (!rows && rhint != DF_COLUMNS && rhint != 0) return DF_STATUS_BAD_INTEGRAL_HINT;
  if (const int32_t status = missing_rows(t, kind); status < 0) return status;
  if (nlim <= 0) return DF_STATUS_OK;

  const ptrdiff_t count = functions(t);
  integration<Real> call = {t,
                            partition<Real>(t),
                            kind,
                            rows ? static_cast<ptrdiff_t>(nlim) : 1,
                            rows ? 1 : count,
                            {hooks[0], hooks[1], hooks[2]},
                            0,
                            count,
                            nullptr};
  const bool any_hook = std::any_of(hooks, hooks + regions, given);
  const auto& table =
      any_hook ? integrators<Real>::_Integrate1DDispatchCB : integrators<Real>::_Integrate1DDispatch;
  const block_walk<Real> walk = {call,
                                 left_search,
                                 right_search,
                                 table[static_cast<int>(kind)],
                                 site_source<Real>(left, left_hint, nlim),
                                 site_source<Real>(right, right_hint, nlim),
                                 result};
  // A search hook is called by the calling thread alone. Evaluation hooks compute all functions at a time.
  if (search_hook != nullptr) return walk(0, nlim);
  const bool at_once = !any_hook || functions_at_a_time(call) == count;
  if (!given(hooks[within_partition]) && at_once && running_sums_pay(walk, nlim))
    return with_running_sums(call, walk, nlim, threading);
  return run_shares(nlim, nlim * count, threading, walk);
}

}  // namespace
}  // namespace tmk::fitting

#define TMK_DF_INTEGRATE(letter, Real)                                                                     \
  extern "C" int32_t tmk_df_kernel_##letter##DFIntegrate1D(                                                \
      DFTask* task, int64_t, int64_t nlim, const Real* left_limit, int64_t left_hint,                      \
      const Real* right_limit, int64_t right_hint, const Real* left_search_hint,                           \
      const Real* right_search_hint, Real* result, int64_t rhint, DF##letter##IntegrationHook left,        \
      void* left_parameter, DF##letter##IntegrationHook right, void* right_parameter,                      \
      DF##letter##IntegrationHook interior, void* interior_parameter, DF##letter##SearchHook search,       \
      void* search_parameter, const ThreadingService* threading) {                                         \
    return tmk::fitting::integrate<Real>(                                                                  \
        task, nlim, left_limit, left_hint, right_limit, right_hint, left_search_hint, right_search_hint,   \
        result, rhint, {{left, left_parameter}, {interior, interior_parameter}, {right, right_parameter}}, \
        search, search_parameter, threading);                                                              \
  }
TMK_DF_INTEGRATE(d, double)
TMK_DF_INTEGRATE(s, float)
