// SPDX-License-Identifier: Apache-2.0
// Splines made and freed.
#include "fitting/textbook/spline.hpp"

#include <algorithm>
#include <utility>

#include "fitting/task.hpp"
#include "fitting/textbook/construct.hpp"
#include "platform/checks.hpp"

namespace tmk::fitting::textbook {

namespace {

constexpr bool has_derivatives(int32_t family) {
  return family == TMK_DF_HERMITE || family == TMK_DF_SECOND_DERIVATIVES;
}
constexpr bool holds_at_both_ends(int32_t condition) {
  return condition == TMK_DF_END_NOT_A_KNOT || condition == TMK_DF_END_PERIODIC;
}
constexpr bool is_condition(int32_t condition) {
  return condition >= TMK_DF_END_USUAL && condition <= TMK_DF_END_PERIODIC;
}

// The two families that are natural splines with a condition at both ends; and usual ends have no value.
template <class Points>
Points with_ends_of_family(Points p) {
  if (p.family == TMK_DF_NOT_A_KNOT) p.left = p.right = TMK_DF_END_NOT_A_KNOT;
  if (p.family == TMK_DF_PERIODIC) p.left = p.right = TMK_DF_END_PERIODIC;
  if (p.left == TMK_DF_END_USUAL) p.leftValue = 0;
  if (p.right == TMK_DF_END_USUAL) p.rightValue = 0;
  return p;
}

template <class Points>
int32_t check(const Points& p) {
  if (p.family < 0 || p.family >= family_count) return TMK_DF_BAD_FAMILY;
  const bool both = holds_at_both_ends(p.left) || holds_at_both_ends(p.right);
  const int64_t family_least = tmk_df_textbook_least_points(p.family);
  const int64_t least = both ? std::max<int64_t>(family_least, 3) : family_least;
  const auto is_outside = [](int64_t value, int64_t low, int64_t high) {
    return value < low || value > high;
  };
  const bool quadratic = p.family == TMK_DF_QUADRATIC, subbotin = p.family == TMK_DF_SUBBOTIN;
  return first_status({
      {is_outside(p.nx, least, INT32_MAX - 1), DF_STATUS_BAD_NX},
      {p.x == nullptr, DF_STATUS_NULL_X},
      {is_outside(p.ny, 1, INT32_MAX), DF_STATUS_BAD_NY},
      {p.y == nullptr, DF_STATUS_NULL_Y},
      {has_derivatives(p.family) && p.derivatives == nullptr, DF_STATUS_NULL_IC},
      {!is_condition(p.left) || !is_condition(p.right), DF_STATUS_BAD_BC_TYPE},
      {both && p.left != p.right, DF_STATUS_BAD_BC_TYPE},
      {quadratic && p.left != TMK_DF_END_USUAL && p.left != TMK_DF_END_FIRST, DF_STATUS_BAD_BC_TYPE},
      {subbotin && both, DF_STATUS_BAD_BC_TYPE},
  });
}

template <class Real>
void require_period(const function_values<Real>& y) {
  for (size_t f = 0; f < y.functions; ++f)
    if (y(f, 0) != y(f, y.points - 1)) throw failed{DF_STATUS_PERIODIC_MISMATCH};
}

template <class Real>
std::vector<Real> midpoints(const std::vector<Real>& x) {
  std::vector<Real> knots{x.front()};
  for (size_t i = 1; i < x.size(); ++i) knots.push_back(x[i - 1] + (x[i] - x[i - 1]) / 2);
  knots.push_back(x.back());
  return knots;
}

template <class Real>
void make(spline<Real>& s, const typename types<Real>::points& p, const ThreadingService* threading) {
  const family_row<Real>& family = family_of<Real>(p.family);
  const bool grid = p.xhint == DF_PARTITION_UNIFORM;
  s.points = static_cast<size_t>(p.nx), s.functions = static_cast<size_t>(p.ny);
  s.order = static_cast<size_t>(family.order);
  s.x.assign(p.x, p.x + (grid ? 2 : s.points));
  s.first = s.x.front(), s.last = s.x.back();
  const partition<Real> over{s.points, s.x.data(), grid};
  if (p.family == TMK_DF_SUBBOTIN) s.knots = midpoints(grid ? expand(s.first, s.last, s.points) : s.x);
  const Real* const knots = s.knots.empty() ? nullptr : s.knots.data();

  const auto values = [&](const Real* data, int64_t function_stride, int64_t point_stride) {
    return function_values<Real>{data, s.functions, s.points, static_cast<ptrdiff_t>(function_stride),
                                 static_cast<ptrdiff_t>(point_stride)};
  };
  const function_values<Real> y = values(p.y, p.functionStride, p.pointStride);
  const function_values<Real> derivatives =
      values(p.derivatives, p.derivativesFunctionStride, p.derivativesPointStride);
  if (p.left == TMK_DF_END_PERIODIC) require_period(y);
  const construction<Real> c{.family = p.family,
                             .over = over,
                             .y = y,
                             .left = {p.left, p.leftValue},
                             .right = {p.right, p.rightValue},
                             .derivatives = has_derivatives(p.family) ? &derivatives : nullptr,
                             .knots = knots,
                             .threading = threading};
  s.row = row_length(c);
  s.coefficients = std::make_unique_for_overwrite<Real[]>(s.row * s.functions);
  if (family.construct != nullptr)
    construct(c, s.coefficients.get());
  else
    s.y = by_rows(y);

  s.task = {over, true};
  s.task.set(DF_NY, p.ny);
  if (!s.y.empty()) s.task.set(DF_Y, s.y.data());
  s.task.describe(family.order, family.type, DF_BC_NONE, nullptr, knots == nullptr ? DF_IC_NONE : DF_IC_KNOTS,
                  knots, s.row != 0 ? s.coefficients.get() : nullptr);
  s.even = grid || evenly_spaced<Real>(s.x);
  if (s.even && !grid) points_are_even<Real>(s.task.get());
}

template <class Real>
int32_t make_handle(typename types<Real>::spline** place, const typename types<Real>::points* points,
                    const ThreadingService* threading) {
  if (place == nullptr || points == nullptr) return DF_STATUS_NULL_TASK;
  const auto p = with_ends_of_family(*points);
  if (const int32_t bad = check(p); bad != 0) return bad;
  return guarded(DF_STATUS_NO_MEMORY, [&] {
    auto s = std::make_unique<typename types<Real>::spline>();
    make<Real>(*s, p, threading);
    *place = s.release();
    return 0;
  });
}

template <class Spline>
int32_t delete_handle(Spline** place) {
  if (place == nullptr) return DF_STATUS_NULL_TASK;
  delete std::exchange(*place, nullptr);
  return 0;
}

template <class Spline, class Properties>
int32_t query(const Spline* s, Properties* p) {
  if (s == nullptr || p == nullptr) return DF_STATUS_NULL_TASK;
  *p = {static_cast<int64_t>(s->points),
        static_cast<int64_t>(s->functions),
        static_cast<int64_t>(s->order),
        s->first,
        s->last,
        s->coefficients.get(),
        static_cast<int64_t>(s->row)};
  return 0;
}

}  // namespace

}  // namespace tmk::fitting::textbook

using namespace tmk::fitting::textbook;

int32_t tmk_df_textbook_least_points(int32_t family) {
  return family < 0 || family >= family_count ? int32_t{TMK_DF_BAD_FAMILY} : family_of<double>(family).least;
}

#define TMK_DF_TEXTBOOK(letter, Real)                                                                       \
  int32_t tmk_df_textbook_##letter##new (DF##letter##Spline * *spline, const DF##letter##Points* points,    \
                                         const ThreadingService* threading) {                               \
    return make_handle<Real>(spline, points, threading);                                                    \
  }                                                                                                         \
  int32_t tmk_df_textbook_##letter##delete (DF##letter##Spline * *spline) { return delete_handle(spline); } \
  int32_t tmk_df_textbook_##letter##query(const DF##letter##Spline* spline,                                 \
                                          DF##letter##SplineProperties* properties) {                       \
    return query(spline, properties);                                                                       \
  }
TMK_DF_TEXTBOOK(d, double)
TMK_DF_TEXTBOOK(s, float)
