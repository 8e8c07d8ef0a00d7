// SPDX-License-Identifier: Apache-2.0
// One of the task's constructors, called for all functions at once, or one by one where conditions differ
// between functions.
#include <algorithm>
#include <optional>
#include <utility>

#include "fitting/textbook/construct.hpp"
#include "fitting/textbook/task.hpp"

namespace tmk::fitting::textbook {

namespace {

template <class Real>
bool leaves_ends_unset(const construction<Real>& c) {
  return family_of<Real>(c.family).unset && c.left.what == TMK_DF_END_USUAL &&
         c.right.what == TMK_DF_END_USUAL;
}

template <class Real>
int64_t boundary_code(const construction<Real>& c) {
  const auto of_an_end = [&](int32_t what, int64_t first, int64_t second) {
    const bool slope =
        what == TMK_DF_END_FIRST || (what == TMK_DF_END_USUAL && family_of<Real>(c.family).usual_slope);
    return slope ? first : second;
  };
  switch (family_of<Real>(c.family).kind) {
    case TMK_DF_LINEAR:
      return DF_BC_NONE;
    case TMK_DF_QUADRATIC:
      return DF_BC_QUADRATIC_VALUE;
    case TMK_DF_HERMITE:
      return DF_BC_FIRST_LEFT + DF_BC_FIRST_RIGHT;
    default:
      if (leaves_ends_unset(c)) return DF_BC_NONE;
      if (c.left.what == TMK_DF_END_NOT_A_KNOT) return DF_BC_NOT_A_KNOT;
      if (c.left.what == TMK_DF_END_PERIODIC) return DF_BC_PERIODIC;
      return of_an_end(c.left.what, DF_BC_FIRST_LEFT, DF_BC_SECOND_LEFT) +
             of_an_end(c.right.what, DF_BC_FIRST_RIGHT, DF_BC_SECOND_RIGHT);
  }
}

template <class Real>
bool needs_usual_slope(const construction<Real>& c) {
  return family_of<Real>(c.family).usual_slope != nullptr && !leaves_ends_unset(c) &&
         (c.left.what == TMK_DF_END_USUAL || c.right.what == TMK_DF_END_USUAL);
}

// Cells 0 and 1 from an end inwards; where there is one cell, the same one twice.
template <class Real>
outer_cells<Real> cells_at(const construction<Real>& c, const Real* y, end_of_partition which) {
  const size_t n = c.over.points;
  const auto cell = [&](size_t k) {
    const size_t from_end = std::min(k, n - 2),
                 i = which == end_of_partition::left ? from_end : n - 2 - from_end;
    const Real h = c.over.point(i + 1) - c.over.point(i);
    return std::pair(h, (y[i + 1] - y[i]) / h);
  };
  const auto [h0, d0] = cell(0);
  const auto [h1, d1] = cell(1);
  return {h0, d0, h1, d1};
}

template <class Real>
class constructor_call {
 public:
  explicit constructor_call(const construction<Real>& c)
      : c_(c),
        family_(family_of<Real>(c.family)),
        code_(boundary_code(c)),
        task_(c.over, false),
        constructor_(family_.construct) {
    // Between two points there is no inner derivative, which the constructors for given derivatives require.
    const auto natural = family_of<Real>(TMK_DF_NATURAL).construct;
    if (c.over.points == 2 && c.derivatives != nullptr) constructor_ = natural;
  }

  // For `count` functions in a block.
  void all(const Real* y, size_t count, int64_t layout, Real* coefficients) {
    const Real values[2] = {c_.left.value, c_.right.value};
    call(y, count, layout, values, nullptr, coefficients);
  }

  // For one function with conditions of its own.
  void one(const Real* y, const Real* given, Real* coefficients) {
    Real values[2] = {c_.left.value, c_.right.value};
    if (given != nullptr) {
      values[0] = given[0], values[1] = given[c_.over.points - 1];
    } else if (family_.usual_slope != nullptr) {
      if (c_.left.what == TMK_DF_END_USUAL)
        values[0] = family_.usual_slope(cells_at(c_, y, end_of_partition::left));
      if (c_.right.what == TMK_DF_END_USUAL)
        values[1] = family_.usual_slope(cells_at(c_, y, end_of_partition::right));
    }
    call(y, 1, DF_ROWS, values, given, coefficients);
  }

 private:
  void call(const Real* y, size_t count, int64_t layout, const Real* values, const Real* given,
            Real* coefficients) {
    const bool inner = given != nullptr && c_.over.points > 2;
    const int64_t ic_type = c_.knots != nullptr              ? DF_IC_KNOTS
                            : !inner                         ? DF_IC_NONE
                            : family_.kind == TMK_DF_HERMITE ? DF_IC_FIRST
                                                             : DF_IC_SECOND;
    const Real* ic = c_.knots != nullptr ? c_.knots : inner ? given + 1 : nullptr;
    task_.set(DF_NY, static_cast<int64_t>(count));
    task_.set(DF_YHINT, layout);
    task_.set(DF_Y, y);
    task_.describe(family_.order, family_.type, code_, values, ic_type, ic, coefficients);
    require(constructor_(task_.get(), 0, 0, c_.threading));
  }

  const construction<Real>& c_;
  const family_row<Real>& family_;
  int64_t code_;
  owned_task<Real> task_;
  spline_constructor* constructor_;
};

}  // namespace

template <class Real>
void call_constructor(const construction<Real>& c, Real* coefficients) {
  const bool singly = c.derivatives != nullptr || needs_usual_slope(c);
  const auto functions = static_cast<ptrdiff_t>(c.y.functions);
  if (!singly && functions > 1 && c.y.function_stride == 1 && c.y.point_stride == functions)
    return constructor_call<Real>(c).all(c.y.data, c.y.functions, DF_COLUMNS, coefficients);

  std::vector<Real> copy, given_copy;
  function_values<Real> y = c.y;
  if (y.point_stride != 1) copy = by_rows(y), y = rows_in(copy, y.functions);
  const bool block = functions == 1 || y.function_stride == static_cast<ptrdiff_t>(y.points);
  if (!singly && block) return constructor_call<Real>(c).all(y.data, y.functions, DF_ROWS, coefficients);

  std::optional<function_values<Real>> given;
  if (c.derivatives != nullptr) given = *c.derivatives;
  if (given && given->point_stride != 1)
    given_copy = by_rows(*given), given = rows_in(given_copy, y.functions);
  constructor_call<Real> each(c);
  for (ptrdiff_t f = 0; f < functions; ++f)
    each.one(y.data + f * y.function_stride, given ? given->data + f * given->function_stride : nullptr,
             coefficients + static_cast<size_t>(f) * row_length(c));
}

template void call_constructor(const construction<double>&, double*);
template void call_constructor(const construction<float>&, float*);

}  // namespace tmk::fitting::textbook
