// SPDX-License-Identifier: Apache-2.0
// The kinds of spline that interpolation and integration distinguish, and the partition their sites lie in.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "fitting/fields.hpp"
#include "fitting/task_view.hpp"
#include "platform/checks.hpp"

namespace tmk::fitting {

enum class spline_kind {
  linear,
  quadratic,
  cubic,
  subbotin,
  by_caller,  // no polynomial: the caller's hooks evaluate
  step_left,
  step_right,
  lookup,
  none
};
constexpr int spline_kinds = 8;

inline spline_kind kind_of(int64_t order, int64_t type, bool all_hooks) {
  constexpr int64_t any = -1;
  static constexpr struct {
    int64_t order, type;
    spline_kind kind;
  } kinds[] = {
      {DF_ORDER_LINEAR, any, spline_kind::linear},
      {DF_ORDER_QUADRATIC, DF_TYPE_STANDARD, spline_kind::quadratic},
      {DF_ORDER_QUADRATIC, DF_TYPE_SUBBOTIN, spline_kind::subbotin},
      {DF_ORDER_CUBIC, DF_TYPE_STANDARD, spline_kind::cubic},
      {DF_ORDER_NONE, DF_TYPE_LOOKUP, spline_kind::lookup},
      {DF_ORDER_NONE, DF_TYPE_STEP_RIGHT, spline_kind::step_right},
      {DF_ORDER_NONE, DF_TYPE_STEP_LEFT, spline_kind::step_left},
  };
  if (order == DF_ORDER_CUBIC && is_cubic_family(type)) return spline_kind::cubic;
  const auto* row = std::find_if(std::begin(kinds), std::end(kinds), [&](const auto& r) {
    return r.order == order && (r.type == any || r.type == type);
  });
  if (row != std::end(kinds)) return row->kind;
  return all_hooks && (order == DF_ORDER_NONE || order > DF_ORDER_CUBIC) ? spline_kind::by_caller
                                                                         : spline_kind::none;
}

constexpr bool has_pieces(spline_kind kind) { return kind <= spline_kind::subbotin; }
constexpr bool reads_y(spline_kind kind) { return kind >= spline_kind::step_left; }

// The points of a task, given or at equal steps between its two ends.
template <class Real>
struct partition {
  int64_t nx;
  const Real* given;  // null where uniform
  Real first, last, step;

  explicit partition(const task<Real>& t) : nx(t.nx), given(t.uniform() ? nullptr : t.x), first(t.x[0]) {
    last = t.x[t.uniform() ? 1 : nx - 1];
    step = t.uniform() ? (last - first) / static_cast<Real>(nx - 1) : Real(0);
  }
  Real operator[](int64_t k) const {
    return given != nullptr ? given[k] : first + static_cast<Real>(k) * step;
  }
};

// The status of the first row of pointers that a kind needs and the task has not.
template <class Real>
int32_t missing_rows(const task<Real>& t, spline_kind kind) {
  return first_status({
      {reads_y(kind) && any_missing(t.y_rows, t.columns() ? 1 : functions(t)), DF_STATUS_NULL_Y},
      {has_pieces(kind) && any_missing(t.coeff_rows, functions(t)), DF_STATUS_NULL_COEFF},
  });
}

}  // namespace tmk::fitting
