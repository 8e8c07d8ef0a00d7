// SPDX-License-Identifier: Apache-2.0
// What all constructors share: checks in order, the index into a family's table of kernels, the view of one
// function whatever its layout, and the way to the caller's threads.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "fitting/fields.hpp"
#include "platform/checks.hpp"
#include "platform/scratch.hpp"
#include "tmk/abi/threading.h"

namespace tmk::fitting {

// Boundary conditions as the tables of kernels order them.
enum boundary : int {
  not_a_knot,
  free_end,
  first_first,
  first_second,
  second_first,
  second_second,
  periodic,
  not_set,
  no_boundary = -1
};
constexpr int boundaries = 7;  // with kernels of their own; not_set is left to local cubics

struct boundary_row {
  int64_t bc_type;
  boundary index;
  bool needs_values;
};
// A local spline that does without conditions takes them all, the others the first seven.
constexpr boundary_row boundary_table[] = {{DF_BC_NOT_A_KNOT, not_a_knot, false},
                                           {DF_BC_FREE_END, free_end, false},
                                           {DF_BC_FIRST_LEFT + DF_BC_FIRST_RIGHT, first_first, true},
                                           {DF_BC_FIRST_LEFT + DF_BC_SECOND_RIGHT, first_second, true},
                                           {DF_BC_SECOND_LEFT + DF_BC_FIRST_RIGHT, second_first, true},
                                           {DF_BC_SECOND_LEFT + DF_BC_SECOND_RIGHT, second_second, true},
                                           {DF_BC_PERIODIC, periodic, false},
                                           {DF_BC_NONE, not_set, false}};

constexpr boundary boundary_of(int64_t bc_type) {
  for (const auto& row : boundary_table)
    if (row.bc_type == bc_type) return row.index;
  return no_boundary;
}

// Default (s_type 0) and Hermite (3) splines cannot know the derivative where a period closes.
template <class Real>
bool lacks_boundary_values(const task<Real>& t) {
  if (t.bc != nullptr) return false;
  if (t.bc_type == DF_BC_PERIODIC) return t.s_type == 0 || t.s_type == 3;
  const boundary index = boundary_of(t.bc_type);
  return index != no_boundary && boundary_table[index].needs_values;
}

// The checks of a cubic: points, layout, boundary code, boundary values.
template <class Real>
int32_t check_cubic(const task<Real>& t, int64_t least_nx, bool may_be_unset) {
  const boundary index = boundary_of(t.bc_type);
  return first_status({{t.nx < least_nx, DF_STATUS_BAD_NX},
                       {!is_storage_hint(t.yhint), DF_STATUS_BAD_YHINT},
                       {index == no_boundary || (index == not_set && !may_be_unset), DF_STATUS_BAD_BC_TYPE},
                       {lacks_boundary_values(t), DF_STATUS_NULL_BC}});
}

// The index of a task's kernel: rows * 2 + uniform in tables of four, and (rows * 2 + uniform) * 7 +
// boundary in tables of 28.
template <class Real>
int grid_index(const task<Real>& t) {
  return (t.columns() ? 0 : 2) + (t.uniform() ? 1 : 0);
}

template <class Real>
size_t boundary_index(const task<Real>& t) {
  return static_cast<size_t>(grid_index(t)) * boundaries + static_cast<size_t>(boundary_of(t.bc_type));
}

// A family's table of kernels: Maker's kernel<Real, Index> for each index.
template <class Maker, class Real, int... Index>
constexpr auto kernel_table(std::integer_sequence<int, Index...>) {
  return std::array{&Maker::template kernel<Real, Index>...};
}
template <class Maker, class Real, int Size>
constexpr auto dispatch_table = kernel_table<Maker, Real>(std::make_integer_sequence<int, Size>());

template <class Real>
ptrdiff_t points(const task<Real>& t) {
  return static_cast<ptrdiff_t>(t.nx);
}

// A task without functions counts as one with one.
template <class Real>
ptrdiff_t functions(const task<Real>& t) {
  return std::max<ptrdiff_t>(static_cast<ptrdiff_t>(t.ny), 1);
}

// The values of one function at the points.
template <class Real>
struct samples {
  const Real* first;
  ptrdiff_t stride;

  Real operator[](ptrdiff_t i) const { return first[i * stride]; }
};

template <class Real>
samples<Real> function_of(const task<Real>& t, ptrdiff_t j) {
  return t.columns() ? samples<Real>{t.y_rows[0] + j, functions(t)} : samples<Real>{t.y_rows[j], 1};
}

// Whether a function ends where it began; a NaN does not.
template <class Real>
bool closes(const samples<Real>& y, ptrdiff_t nx) {
  return y[0] == y[nx - 1];
}

template <class Real>
bool all_close(const task<Real>& t) {
  for (ptrdiff_t j = 0; j < functions(t); ++j)
    if (!closes(function_of(t, j), points(t))) return false;
  return true;
}

// Whether a cubic's coefficients are better written past the caches, which could not hold them; the stores
// that do so need 16-byte alignment.
template <class Real>
bool passes_caches(const task<Real>& t) {
  constexpr ptrdiff_t cached_elements = (ptrdiff_t{8} << 20) / static_cast<ptrdiff_t>(sizeof(Real));
  const auto is_aligned = [](const Real* c) { return reinterpret_cast<uintptr_t>(c) % 16 == 0; };
  return points(t) * 4 > cached_elements / functions(t) &&
         std::all_of(t.coeff_rows, t.coeff_rows + functions(t), is_aligned);
}

// A uniform partition is its two ends and as many steps as there are cells.
template <class Real>
Real uniform_step(const task<Real>& t) {
  return (t.x[1] - t.x[0]) / static_cast<Real>(t.nx - 1);
}
template <class Real>
Real uniform_rate(const task<Real>& t) {
  return static_cast<Real>(t.nx - 1) / (t.x[1] - t.x[0]);
}

// c[0..3] of a cell in powers of t - x[i] by the derivatives at its ends; `slope` is the divided difference,
// `rate` the reciprocal width. Value is a number or a register of them.
template <class Value>
[[gnu::always_inline]] inline void cubic_cell(const Value& y, const Value& left, const Value& right,
                                              const Value& slope, const Value& rate, Value (&c)[4]) {
  const Value bend = (left - slope) + (right - slope);
  c[0] = y;
  c[1] = left;
  c[2] = ((slope - left) - bend) * rate;
  c[3] = bend * rate * rate;
}

template <class Real>
bool any_missing(Real* const* rows, ptrdiff_t count) {
  return rows == nullptr || std::find(rows, rows + count, nullptr) != rows + count;
}

// From an exported constructor into a family: check(task, method) has the family's own conditions,
// construct(task, method, service) does the work. Pointers that a kernel would follow blindly are looked at
// last.
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

// work(item, thread) for each item on at most so many of the caller's threads.
template <class Work>
void parallel_for(const ThreadingService* service, ptrdiff_t items, ptrdiff_t threads, Work& work) {
  service->ParallelFor(static_cast<int32_t>(items), static_cast<int32_t>(threads), &work,
                       [](int32_t item, int32_t thread, int32_t, void* context) {
                         (*static_cast<Work*>(context))(item, thread);
                       });
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
