// SPDX-License-Identifier: Apache-2.0
// From an exported constructor into a family of splines. A family has
//   check(task, method)               its own conditions, as a status
//   construct(task, method, service)  the work: it chooses a variant by layout, partition and, for some
//                                     families, boundary, so that none of these is tested in an inner loop
//   variant<Real, Index>              the variants
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "fitting/construction/boundary.hpp"
#include "fitting/parallel_for.hpp"
#include "fitting/task_view.hpp"
#include "platform/checks.hpp"

namespace tmk::fitting {

// The index of a task's variant: rows * 2 + uniform in tables of four, and (rows * 2 + uniform) * 7 +
// boundary in tables of 28.
template <class Real>
int grid_index(const task<Real>& t) {
  return (t.columns() ? 0 : 2) + (t.uniform() ? 1 : 0);
}

template <class Real>
size_t boundary_index(const task<Real>& t) {
  return static_cast<size_t>(grid_index(t)) * boundaries + static_cast<size_t>(boundary_of(t.bc_type));
}

template <class Family, class Real, int... Index>
constexpr auto all_variants(std::integer_sequence<int, Index...>) {
  return std::array{&Family::template variant<Real, Index>...};
}
template <class Family, class Real, int Size>
constexpr auto variants = all_variants<Family, Real>(std::make_integer_sequence<int, Size>());

// Pointers that a variant reads unchecked are checked last.
template <class Family, class Real>
int32_t construct(DFTask* handle, int64_t method, const ThreadingService* service) {
  if (handle == nullptr) return DF_STATUS_NULL_TASK;
  const auto& t = task<Real>::of(handle);
  if (const int32_t bad = Family::check(t, method)) return bad;
  if (const int32_t bad =
          first_status({{any_missing(t.y_rows, t.columns() ? 1 : functions(t)), DF_STATUS_NULL_Y},
                        {any_missing(t.coeff_rows, functions(t)), DF_STATUS_NULL_COEFF}}))
    return bad;
  return Family::construct(t, method, service);
}

}  // namespace tmk::fitting

// Both precisions of an exported constructor.
#define TMK_DF_CONSTRUCTOR(name, family)                                                   \
  int32_t tmk_df_kernel_dDF##name##1D(DFTask * task, int64_t /*format*/, int64_t method,   \
                                      const ThreadingService* threading) {                 \
    return tmk::fitting::construct<tmk::fitting::family, double>(task, method, threading); \
  }                                                                                        \
  int32_t tmk_df_kernel_sDF##name##1D(DFTask * task, int64_t /*format*/, int64_t method,   \
                                      const ThreadingService* threading) {                 \
    return tmk::fitting::construct<tmk::fitting::family, float>(task, method, threading);  \
  }
