// SPDX-License-Identifier: Apache-2.0
// A spline is made: checks, then the C interface.
#include "api/call/settings.hpp"
#include "api/spline/core.hpp"

namespace tmk {

namespace {

// In the order of `family`.
constexpr const char* function_names[] = {
    "spline::linear",   "spline::step",    "spline::step",    "spline::quadratic",
    "spline::subbotin", "spline::natural", "spline::hermite", "spline::from_second_derivatives",
    "spline::bessel",   "spline::akima",   "spline::hyman",   "spline::not_a_knot",
    "spline::periodic"};

// Families, conditions and rules have the numbers of the C interface.
static_assert(static_cast<int>(detail::family::periodic) == TMK_DF_PERIODIC);
static_assert(static_cast<int>(detail::family::natural) == TMK_DF_NATURAL);
static_assert(static_cast<int>(detail::family::step_right) == TMK_DF_STEP_RIGHT);
static_assert(static_cast<int>(boundary::condition::periodic) == TMK_DF_END_PERIODIC);
static_assert(static_cast<int>(extrapolation::nan) == TMK_DF_OUTSIDE_NAN);

}  // namespace

detail::family detail::step_family(side from) {
  check_side("spline::step", "from", from);
  return from == side::left ? family::step_left : family::step_right;
}

template <class Real>
basic_spline<Real>::basic_spline(detail::family kind, const abscissae<Real>& x, const function_set<Real>& y,
                                 const details& more) {
  const char* const function = function_names[static_cast<std::size_t>(kind)];
  const char* const given = kind == detail::family::hermite ? "first_derivatives" : "second_derivatives";
  detail::select_first_tier();
  const auto least = tmk_df_textbook_least_points(static_cast<int32_t>(kind));
  detail::check_points(function, x, static_cast<std::size_t>(least));
  detail::check_functions(function, "y", y, x.size(), y.functions);
  if (more.given != nullptr) detail::check_functions(function, given, *more.given, x.size(), y.functions);
  detail::check_conditions<Real>(function, kind, x.size(), more.left, more.right);
  if (more.left.what == boundary::condition::periodic) detail::check_periodic(function, y);

  const Real ends[2] = {static_cast<Real>(x.grid().first), static_cast<Real>(x.grid().last)};
  typename detail::textbook<Real>::points p{};
  p.family = static_cast<int32_t>(kind);
  p.xhint = x.is_grid() ? DF_PARTITION_UNIFORM : DF_PARTITION_NON_UNIFORM;
  p.nx = static_cast<int64_t>(x.size());
  p.x = x.is_grid() ? ends : x.array().data();
  p.ny = static_cast<int64_t>(y.functions);
  p.y = y.data, p.functionStride = y.function_stride, p.pointStride = y.point_stride;
  if (more.given != nullptr) {
    p.derivatives = more.given->data;
    p.derivativesFunctionStride = more.given->function_stride;
    p.derivativesPointStride = more.given->point_stride;
  }
  p.left = static_cast<int32_t>(more.left.what), p.leftValue = static_cast<Real>(more.left.value);
  p.right = static_cast<int32_t>(more.right.what), p.rightValue = static_cast<Real>(more.right.value);

  auto core = std::make_shared<detail::spline_core<Real>>(function);
  typename detail::textbook<Real>::spline* handle = nullptr;
  detail::check_status(function, detail::textbook<Real>::make(&handle, &p, detail::call_threads()));
  core->handle.reset(handle);
  detail::textbook<Real>::query(handle, &core->properties);
  detail::check_coefficients(*core, x, y);
  core_ = std::move(core);
}

template <class Real>
std::size_t basic_spline<Real>::functions() const {
  return core_->functions();
}
template <class Real>
std::size_t basic_spline<Real>::points() const {
  return static_cast<std::size_t>(core_->properties.nx);
}
template <class Real>
Real basic_spline<Real>::first() const {
  return core_->properties.first;
}
template <class Real>
Real basic_spline<Real>::last() const {
  return core_->properties.last;
}

template <class Real>
std::span<const Real> basic_spline<Real>::coefficients() const {
  const auto& p = core_->properties;
  return {p.coefficients, static_cast<std::size_t>(p.row * p.ny)};
}

template <class Real>
std::span<const Real> basic_spline<Real>::coefficients(std::size_t function) const {
  detail::refuse_unless_in("spline::coefficients", "function", function, 0, functions() - 1);
  const auto row = static_cast<std::size_t>(core_->properties.row);
  return coefficients().subspan(function * row, row);
}

template class basic_spline<double>;
template class basic_spline<float>;

}  // namespace tmk
