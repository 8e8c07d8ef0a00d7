// SPDX-License-Identifier: Apache-2.0
// Boundary conditions: their order in the tables of variants, what each of them needs, and the checks that
// all cubics share.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fitting/fields.hpp"
#include "platform/checks.hpp"

namespace tmk::fitting {

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
constexpr int boundaries = 7;  // with variants of their own; not_set is for local cubics alone

struct boundary_row {
  int64_t bc_type;
  boundary index;
  bool needs_values;
};
// A local spline that does without conditions accepts all of them, the others the first seven.
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

// Splines of the standard and of the Hermite type cannot know the derivative where a period closes.
template <class Real>
bool lacks_boundary_values(const task<Real>& t) {
  if (t.bc != nullptr) return false;
  if (t.bc_type == DF_BC_PERIODIC) return t.s_type == DF_TYPE_STANDARD || t.s_type == hermite_type;
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

}  // namespace tmk::fitting
