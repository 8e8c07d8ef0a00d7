// SPDX-License-Identifier: Apache-2.0
// In which cell of a partition a site lies:
//   0 for t < x[0],  i for x[i-1] <= t < x[i],  nx - 1 for t = x[nx-1],  nx for t > x[nx-1].
// A caller chooses a method once, then finds cells in blocks:
//   cell_search<Real> search;
//   if (const int32_t status = choose_search(task, site_hint, search_hint, hook, parameter, search)) ...
//   status = search.find(n, sites, cells);
// The methods give the same cells (except for sites on x[g] that a hook starts at g), so they differ in cost
// alone. A NaN gets some cell from 0 to nx; only a hook's own cells may lie outside that range.
#pragma once

#include "fitting/task.hpp"

namespace tmk::fitting {

enum class search_method {
  uniform,
  quasi_uniform,
  sorted,
  peak,
  hybrid,
  user_defined,
  uniform_user_defined,
};
constexpr int search_methods = 7;

template <class Real>
struct hook_types;
template <>
struct hook_types<double> {
  using search = DFdSearchHook;
};
template <>
struct hook_types<float> {
  using search = DFsSearchHook;
};

// What a method needs in addition to the partition. Each thread that searches has its own copy of the state.
template <class Real>
struct search_state {
  search_method method{};
  // Uniform and quasi-uniform: cells per unit of x, (nx - 1) / (last - first).
  Real rate{};
  // Quasi-uniform: how far from the middle between two places of a grid, in steps, a site is known to lie
  // between the points at these places; 0 where they may be anywhere.
  Real trusted{};
  // Sorted: the cell of the site before, 0 at first. Sites below their predecessor get wrong cells.
  int32_t cell = 0;
  int32_t peak = 0;
  // Hybrid: the bucket index of the task. Without one (nbuckets = 0) the whole partition is one bucket.
  int32_t nbuckets = 0;
  const bucket* buckets = nullptr;
  Real bucket_scale{};
  typename hook_types<Real>::search hook = nullptr;
  void* parameter = nullptr;
};

// Cells of n sites. With a uniform partition x holds its two ends. Returns 0, or what the hook returned:
// negative when it ended the search. n is any number: 32 keeps a caller's buffers small, some hundreds cost
// less a site, and a hook gets at most 1024 at a time.
template <class Real>
using search_kernel = int32_t (*)(int64_t nx, const Real* x, int64_t n, const Real* sites,
                                  search_state<Real>* state, int32_t* cells);

// By search_method. The two tables name the same functions, one for interpolation and the batch search, one
// for integration.
template <class Real>
struct search_kernels {
  static const search_kernel<Real> _Search1D32Dispatch[search_methods];
  static const search_kernel<Real> _Search1DDispatch[search_methods];
};
template <>
const search_kernel<double> search_kernels<double>::_Search1D32Dispatch[search_methods];
template <>
const search_kernel<double> search_kernels<double>::_Search1DDispatch[search_methods];
template <>
const search_kernel<float> search_kernels<float>::_Search1D32Dispatch[search_methods];
template <>
const search_kernel<float> search_kernels<float>::_Search1DDispatch[search_methods];

template <class Real>
struct cell_search {
  int64_t nx = 0;
  const Real* x = nullptr;
  search_state<Real> state{};

  int32_t find(int64_t n, const Real* sites, int32_t* cells) {
    return run(search_kernels<Real>::_Search1D32Dispatch, n, sites, cells);
  }
  // Of limits of integration.
  int32_t find_limits(int64_t n, const Real* limits, int32_t* cells) {
    return run(search_kernels<Real>::_Search1DDispatch, n, limits, cells);
  }

 private:
  int32_t run(const search_kernel<Real> (&dispatch)[search_methods], int64_t n, const Real* sites,
              int32_t* cells) {
    return dispatch[static_cast<int>(state.method)](nx, x, n, sites, &state, cells);
  }
};

// The method for a task and a batch of sites, ready to find; DF_STATUS_BAD_SEARCH_HINT where search_hint is
// read and malformed: search_hint[1] is 0, or 1 where sites crowd around the cell search_hint[4].
template <class Real>
int32_t choose_search(const task<Real>& task, int64_t site_hint, const Real* search_hint,
                      typename hook_types<Real>::search hook, void* parameter, cell_search<Real>& search);

// Sites given by their two ends, those from `first` on.
template <class Real>
void expand_uniform_sites(const Real* ends, int64_t n, int64_t first, int64_t count, Real* sites) {
  const auto intervals = static_cast<Real>(n > 1 ? n - 1 : 1);
  for (int64_t i = 0; i < count; ++i)
    sites[i] = static_cast<Real>(first + i) * (ends[1] - ends[0]) / intervals + ends[0];
}

}  // namespace tmk::fitting
