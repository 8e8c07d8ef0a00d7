// SPDX-License-Identifier: Apache-2.0
// One constructor of the C interface called for all functions at once, or one by one where conditions differ
// between functions.
#include <algorithm>

#include "api/spline/construct.hpp"

namespace tmk::detail {

namespace {

using condition = boundary::condition;

template <class Real>
bool leaves_ends_unset(const construction<Real>& c) {
  return family_of<Real>(c.kind).unset && c.left.what == condition::usual && c.right.what == condition::usual;
}

template <class Real>
int64_t boundary_code(const construction<Real>& c) {
  const auto of_an_end = [&](condition what, int64_t first, int64_t second) {
    const bool slope =
        what == condition::first || (what == condition::usual && family_of<Real>(c.kind).usual_slope);
    return slope ? first : second;
  };
  switch (c.kind) {
    case family::linear:
      return DF_BC_NONE;
    case family::quadratic:
      return DF_BC_QUADRATIC_VALUE;
    case family::hermite:
      return DF_BC_FIRST_LEFT + DF_BC_FIRST_RIGHT;
    default:
      if (leaves_ends_unset(c)) return DF_BC_NONE;
      if (c.left.what == condition::not_a_knot) return DF_BC_NOT_A_KNOT;
      if (c.left.what == condition::periodic) return DF_BC_PERIODIC;
      return of_an_end(c.left.what, DF_BC_FIRST_LEFT, DF_BC_SECOND_LEFT) +
             of_an_end(c.right.what, DF_BC_FIRST_RIGHT, DF_BC_SECOND_RIGHT);
  }
}

template <class Real>
bool needs_usual_slope(const construction<Real>& c) {
  return family_of<Real>(c.kind).usual_slope != nullptr && !leaves_ends_unset(c) &&
         (c.left.what == condition::usual || c.right.what == condition::usual);
}

// Cells 0 and 1 from an end inwards; where there is one cell, twice that.
template <class Real>
outer_cells<Real> cells_at(const construction<Real>& c, const Real* y, side which) {
  const std::size_t n = c.over.points;
  const auto cell = [&](std::size_t k) {
    const std::size_t from_end = std::min(k, n - 2), i = which == side::left ? from_end : n - 2 - from_end;
    const Real h = point(c.over, i + 1) - point(c.over, i);
    return std::pair(h, (y[i + 1] - y[i]) / h);
  };
  const auto [h0, d0] = cell(0);
  const auto [h1, d1] = cell(1);
  return {h0, d0, h1, d1};
}

// One call for `count` functions in a block, or for one at a time where conditions differ between functions.
template <class Real>
class caller {
 public:
  explicit caller(const construction<Real>& c)
      : c_(c),
        family_(family_of<Real>(c.kind)),
        code_(boundary_code(c)),
        task_(c.function, c.over, false),
        constructor_(family_.construct) {
    // Two points leave no interior derivative to give, and the constructors for given ones need it.
    const auto natural = family_of<Real>(family::natural).construct;
    if (c.over.points == 2 && c.given != nullptr) constructor_ = natural;
  }

  void all(const Real* y, std::size_t count, int64_t layout, Real* coefficients) {
    const Real values[2] = {static_cast<Real>(c_.left.value), static_cast<Real>(c_.right.value)};
    call(y, count, layout, values, nullptr, coefficients);
  }

  void one(const Real* y, const Real* given, Real* coefficients) {
    Real values[2] = {static_cast<Real>(c_.left.value), static_cast<Real>(c_.right.value)};
    if (given != nullptr) {
      values[0] = given[0], values[1] = given[c_.over.points - 1];
    } else if (family_.usual_slope != nullptr) {
      if (c_.left.what == condition::usual) values[0] = family_.usual_slope(cells_at(c_, y, side::left));
      if (c_.right.what == condition::usual) values[1] = family_.usual_slope(cells_at(c_, y, side::right));
    }
    call(y, 1, DF_ROWS, values, given, coefficients);
  }

 private:
  void call(const Real* y, std::size_t count, int64_t layout, const Real* values, const Real* given,
            Real* coefficients) {
    const bool inner = given != nullptr && c_.over.points > 2;
    const int64_t ic_type = c_.knots != nullptr          ? DF_IC_KNOTS
                            : !inner                     ? DF_IC_NONE
                            : c_.kind == family::hermite ? DF_IC_FIRST
                                                         : DF_IC_SECOND;
    const Real* ic = c_.knots != nullptr ? c_.knots : inner ? given + 1 : nullptr;
    task_.set(DF_NY, static_cast<int64_t>(count));
    task_.set(DF_YHINT, layout);
    task_.set(DF_Y, y);
    check_fitting(c_.function,
                  twin<Real>(tmk_df_kernel_dEditPPSpline1D, tmk_df_kernel_sEditPPSpline1D)(
                      task_.get(), family_.order, family_.type, code_, values, ic_type, ic, coefficients, 0));
    check_fitting(c_.function, constructor_(task_.get(), 0, 0, fitting_threads()));
  }

  const construction<Real>& c_;
  const family_row<Real>& family_;
  int64_t code_;
  fitting_task<Real> task_;
  spline_constructor* constructor_;
};

}  // namespace

template <class Real>
void call_constructor(const construction<Real>& c, Real* coefficients) {
  const bool singly = c.given != nullptr || needs_usual_slope(c);
  const auto functions = static_cast<std::ptrdiff_t>(c.y.functions);
  if (!singly && functions > 1 && c.y.function_stride == 1 && c.y.point_stride == functions)
    return caller<Real>(c).all(c.y.data, c.y.functions, DF_COLUMNS, coefficients);

  std::vector<Real> copy, given_copy;
  function_set<Real> y = c.y;
  if (y.point_stride != 1) copy = by_rows(y), y = rows_in(copy, y.functions);
  const bool block = functions == 1 || y.function_stride == static_cast<std::ptrdiff_t>(y.points);
  if (!singly && block) return caller<Real>(c).all(y.data, y.functions, DF_ROWS, coefficients);

  std::optional<function_set<Real>> given;
  if (c.given != nullptr) given = *c.given;
  if (given && given->point_stride != 1)
    given_copy = by_rows(*given), given = rows_in(given_copy, y.functions);
  caller<Real> each(c);
  for (std::ptrdiff_t f = 0; f < functions; ++f)
    each.one(y.data + f * y.function_stride, given ? given->data + f * given->function_stride : nullptr,
             coefficients + static_cast<std::size_t>(f) * row_length(c));
}

template void call_constructor(const construction<double>&, double*);
template void call_constructor(const construction<float>&, float*);

}  // namespace tmk::detail
