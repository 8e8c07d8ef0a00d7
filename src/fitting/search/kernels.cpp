// SPDX-License-Identifier: Apache-2.0
// The exported searches of blocks of sites: their names, the tables that list them, and the searches by a
// caller's hook.
#include <algorithm>

#include "fitting/search/cell_kernels.hpp"
#include "fitting/search/walk.hpp"

namespace tmk::fitting {
namespace {

// A site on x[g] stays in the cell g at which the hook started it, one below that of a search without a hook.
template <class Real>
ptrdiff_t from_start(const Real* x, ptrdiff_t nx, int64_t start, Real t) {
  const auto g = static_cast<ptrdiff_t>(std::clamp<int64_t>(start, 0, nx));
  const bool stays = g < nx && t <= x[g] && (g == 0 || x[g - 1] <= t);
  return stays ? g : walk(x, nx, g, t);
}

constexpr int32_t all_found = 1000;
constexpr int64_t most_sites = 1024;

template <bool Uniform, class Real>
int32_t hooked(int64_t nx, const Real* x, int64_t n, const Real* sites, search_state<Real>* state,
               int32_t* cells) {
  int32_t status = 0;
  for (int64_t i = 0; i < n; i += most_sites) {
    const int64_t count = std::min(n - i, most_sites);
    int64_t found[most_sites];
    int32_t final[most_sites];
    std::fill_n(found, count, 0);
    std::fill_n(final, count, 0);
    status = state->hook(&count, sites + i, found, final, state->parameter, nullptr);
    if (status < 0) return status;
    if (status == all_found)
      std::fill_n(final, count, 1);
    else if (Uniform)
      cell_kernels_now<Real>().by_method[static_cast<int>(search_method::uniform)](nx, x, count, sites + i,
                                                                                   state, cells + i);
    for (int64_t k = 0; k < count; ++k)
      if (final[k] != 0)
        cells[i + k] = static_cast<int32_t>(found[k]);
      else if (!Uniform)
        cells[i + k] = static_cast<int32_t>(from_start(x, nx, found[k], sites[i + k]));
  }
  return status;
}

template <search_method Method, class Real>
int32_t find_block(int64_t nx, const Real* x, int64_t n, const Real* sites, search_state<Real>* state,
                   int32_t* cells) {
  if constexpr (Method == search_method::user_defined || Method == search_method::uniform_user_defined)
    return hooked<Method == search_method::uniform_user_defined>(nx, x, n, sites, state, cells);
  cell_kernels_now<Real>().by_method[static_cast<int>(Method)](nx, x, n, sites, state, cells);
  return 0;
}

}  // namespace
}  // namespace tmk::fitting

// In the order of search_method.
#define TMK_SEARCH_METHODS(ROW)    \
  ROW(uniform, Uniform)            \
  ROW(quasi_uniform, QuasiUniform) \
  ROW(sorted, Sorted)              \
  ROW(peak, Peak)                  \
  ROW(hybrid, Hybrid)              \
  ROW(user_defined, UserDef)       \
  ROW(uniform_user_defined, UniUserDef)

#define TMK_KERNEL(method, Real, name)                                               \
  extern "C" int32_t name(int64_t nx, const Real* x, int64_t n, const Real* sites,   \
                          tmk::fitting::search_state<Real>* state, int32_t* cells) { \
    using enum tmk::fitting::search_method;                                          \
    return tmk::fitting::find_block<method>(nx, x, n, sites, state, cells);          \
  }
#define TMK_KERNELS(method, stem)                                 \
  TMK_KERNEL(method, double, tmk_df_kernel_dDF##stem##Search1D32) \
  TMK_KERNEL(method, double, tmk_df_kernel_dDF##stem##Search1D)   \
  TMK_KERNEL(method, float, tmk_df_kernel_sDF##stem##Search1D32)  \
  TMK_KERNEL(method, float, tmk_df_kernel_sDF##stem##Search1D)
TMK_SEARCH_METHODS(TMK_KERNELS)

namespace tmk::fitting {

#define TMK_D32(method, stem) tmk_df_kernel_dDF##stem##Search1D32,
#define TMK_D(method, stem) tmk_df_kernel_dDF##stem##Search1D,
#define TMK_S32(method, stem) tmk_df_kernel_sDF##stem##Search1D32,
#define TMK_S(method, stem) tmk_df_kernel_sDF##stem##Search1D,
template <>
const search_kernel<double> search_kernels<double>::_Search1D32Dispatch[] = {TMK_SEARCH_METHODS(TMK_D32)};
template <>
const search_kernel<double> search_kernels<double>::_Search1DDispatch[] = {TMK_SEARCH_METHODS(TMK_D)};
template <>
const search_kernel<float> search_kernels<float>::_Search1D32Dispatch[] = {TMK_SEARCH_METHODS(TMK_S32)};
template <>
const search_kernel<float> search_kernels<float>::_Search1DDispatch[] = {TMK_SEARCH_METHODS(TMK_S)};

}  // namespace tmk::fitting
