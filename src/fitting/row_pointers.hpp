// SPDX-License-Identifier: Apache-2.0
// A task's arrays of row pointers: one pointer per function, and a null one after the last, since a query may
// read the slot of index ny.
#pragma once

#include <algorithm>
#include <cstddef>

#include "fitting/task.hpp"
#include "tmk/abi/serv.h"

namespace tmk::fitting {

// Before the pointers is their number, so that ny may be edited down and up again.
constexpr size_t rows_alignment = 128;
constexpr int64_t most_rows = int64_t{PTRDIFF_MAX / 2} / static_cast<int64_t>(sizeof(void*));

inline int64_t* capacity_of(void* rows) {
  return reinterpret_cast<int64_t*>(static_cast<char*>(rows) - rows_alignment);
}

template <class Pointer>
void free_rows(Pointer* rows) {
  if (rows != nullptr) tmk_serv_deallocate(capacity_of(rows));
}

// Null pointers for ny functions; null when there is no memory. One slot at least can be set.
template <class Pointer>
Pointer* new_rows(int64_t ny) {
  if (ny < 0 || ny > most_rows) return nullptr;
  const auto slots = static_cast<size_t>(std::max<int64_t>(ny, 1) + 1);
  void* memory = tmk_serv_allocate(rows_alignment + slots * sizeof(Pointer), rows_alignment);
  if (memory == nullptr) return nullptr;
  auto* rows = reinterpret_cast<Pointer*>(static_cast<char*>(memory) + rows_alignment);
  *capacity_of(rows) = static_cast<int64_t>(slots) - 1;
  return std::fill_n(rows, slots, nullptr) - slots;
}

// New rows in the place of the old: `count` of them, `stride` elements apart.
template <class Pointer>
int32_t place_rows(Pointer*& rows, int64_t ny, Pointer first, int64_t count, int64_t stride) {
  free_rows(rows);
  rows = new_rows<Pointer>(ny);
  if (rows == nullptr) return DF_STATUS_NO_MEMORY;
  for (int64_t j = 0; j < count; ++j) rows[j] = first + static_cast<ptrdiff_t>(j * stride);
  return 0;
}

// Columns are one array under one pointer; of separate functions the first is given.
template <class Real>
int32_t place_functions(task<Real>& t, int64_t ny, const Real* y) {
  const bool contiguous = t.yhint != DF_COLUMNS && t.yhint != DF_SEPARATE;
  return place_rows(t.y_rows, ny, y, contiguous ? ny : 1, t.nx);
}

// A Subbotin spline has a piece more than the others, one around each point.
template <class Real>
int32_t place_coefficients(task<Real>& t, Real* coefficients, int64_t s_hint) {
  const int64_t pieces = t.s_type == DF_TYPE_SUBBOTIN ? t.nx : t.nx - 1;
  const bool single = (s_hint & DF_SEPARATE) != 0;
  return place_rows(t.coeff_rows, t.ny, coefficients, single ? 1 : t.ny, t.s_order * pieces);
}

// Slots for more functions, the old pointers kept.
template <class Pointer>
int32_t extend_rows(Pointer*& rows, int64_t ny) {
  if (rows == nullptr || ny <= *capacity_of(rows)) return 0;
  auto* longer = new_rows<Pointer>(ny);
  if (longer == nullptr) return DF_STATUS_NO_MEMORY;
  std::copy_n(rows, *capacity_of(rows), longer);
  free_rows(rows);
  rows = longer;
  return 0;
}

}  // namespace tmk::fitting
