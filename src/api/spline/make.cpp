// SPDX-License-Identifier: Apache-2.0
// A spline is made: checks, copies of what it needs, construction.
#include <algorithm>

#include "api/math/settings.hpp"
#include "api/spline/construct.hpp"
#include "fitting/task.hpp"

namespace tmk {

namespace {

template <class Real>
std::vector<Real> midpoints(const std::vector<Real>& x) {
  std::vector<Real> knots{x.front()};
  for (std::size_t i = 1; i < x.size(); ++i) knots.push_back(x[i - 1] + (x[i] - x[i - 1]) / 2);
  knots.push_back(x.back());
  return knots;
}

}  // namespace

detail::family detail::step_family(side from) {
  check_side("spline::step", "from", from);
  return from == side::left ? family::step_left : family::step_right;
}

template <class Real>
basic_spline<Real>::basic_spline(detail::family kind, const abscissae<Real>& x, const function_set<Real>& y,
                                 const details& more) {
  const auto& family = detail::family_of<Real>(kind);
  const char* const given = kind == detail::family::hermite ? "first_derivatives" : "second_derivatives";
  detail::select_first_tier();
  detail::check_points(family.name, x, family.least);
  detail::check_functions(family.name, "y", y, x.size(), y.functions);
  if (more.given != nullptr) detail::check_functions(family.name, given, *more.given, x.size(), y.functions);

  auto core = std::make_shared<detail::spline_core<Real>>();
  core->name = family.name;
  core->points = x.size(), core->functions = y.functions;
  core->order = static_cast<int>(family.order);
  if (x.is_grid())
    core->x = {static_cast<Real>(x.grid().first), static_cast<Real>(x.grid().last)};
  else
    core->x.assign(x.array().begin(), x.array().end());
  core->first = core->x.front(), core->last = core->x.back();
  const detail::partition<Real> over{core->points, core->x.data(), x.is_grid()};
  if (kind == detail::family::subbotin)
    core->knots = midpoints(x.is_grid() ? detail::expand<Real>(x.grid()) : core->x);

  const auto& knots = core->knots;
  core->row = static_cast<std::size_t>(core->order) * (core->points - (knots.empty() ? 1 : 0));
  core->coefficients = std::make_unique_for_overwrite<Real[]>(core->row * core->functions);
  if (family.construct != nullptr)
    detail::construct<Real>({family.name, family.kind, over, y, more.left, more.right, more.given,
                             knots.empty() ? nullptr : knots.data()},
                            core->coefficients.get());
  else
    core->y = detail::by_rows(y);
  detail::check_coefficients(*core, y);

  detail::fitting_task<Real>& task = core->task;
  task = {family.name, over, true};
  task.set(DF_NY, static_cast<int64_t>(core->functions));
  if (!core->y.empty()) task.set(DF_Y, core->y.data());
  detail::check_fitting(family.name,
                        detail::twin<Real>(tmk_df_kernel_dEditPPSpline1D, tmk_df_kernel_sEditPPSpline1D)(
                            task.get(), family.order, family.type, DF_BC_NONE, nullptr,
                            knots.empty() ? DF_IC_NONE : DF_IC_KNOTS, knots.empty() ? nullptr : knots.data(),
                            core->row != 0 ? core->coefficients.get() : nullptr, 0));
  core->even = x.is_grid() || detail::evenly_spaced<Real>(x.array());
  if (core->even && !x.is_grid()) fitting::points_are_even<Real>(task.get());
  core_ = std::move(core);
}

template <class Real>
std::size_t basic_spline<Real>::functions() const {
  return core_->functions;
}
template <class Real>
std::size_t basic_spline<Real>::points() const {
  return core_->points;
}
template <class Real>
Real basic_spline<Real>::first() const {
  return core_->first;
}
template <class Real>
Real basic_spline<Real>::last() const {
  return core_->last;
}

template <class Real>
std::span<const Real> basic_spline<Real>::coefficients() const {
  return {core_->coefficients.get(), core_->row * core_->functions};
}

template <class Real>
std::span<const Real> basic_spline<Real>::coefficients(std::size_t function) const {
  if (function >= core_->functions)
    detail::refuse("spline::coefficients", "function", std::to_string(function),
                   "is " + std::to_string(function) + ", want 0 to " + std::to_string(core_->functions - 1));
  return coefficients().subspan(function * core_->row, core_->row);
}

template class basic_spline<double>;
template class basic_spline<float>;

}  // namespace tmk
