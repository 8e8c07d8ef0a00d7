// SPDX-License-Identifier: Apache-2.0
// Quantiles of a stream.
#include "api/stats/sketch.hpp"

#include <cmath>
#include <limits>

#include "api/call/check.hpp"

namespace tmk {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

detail::variable_sketch& variable_of(const char* function, std::vector<detail::variable_sketch>& variables,
                                     std::size_t j) {
  if (j >= variables.size())
    detail::refuse(function, "variable", std::to_string(j),
                   "is " + std::to_string(j) + ", want 0 to " + std::to_string(variables.size() - 1));
  return variables[j];
}

void check_order(const char* function, double order) {
  if (!(order >= 0 && order <= 1))
    detail::refuse(function, "order", detail::number(order), "is " + detail::number(order) + ", want 0 to 1");
}

// Gathers the numbers of rows [first, last) of a column.
template <class View>
void gather(std::vector<double>& values, const View& view, std::size_t j, std::size_t first,
            std::size_t last) {
  values.clear();
  for (std::size_t i = first; i < last; ++i)
    if (const double value = view(i, j); !std::isnan(value)) values.push_back(value);
}

template <class View>
std::int64_t count_numbers(const View& view, std::size_t j) {
  std::int64_t count = 0;
  for (std::size_t i = 0; i < view.rows(); ++i) count += !std::isnan(view(i, j));
  return count;
}

}  // namespace

quantile_sketch::quantile_sketch(std::size_t cols, double epsilon, nan_policy nan) {
  constexpr auto function = "quantile_sketch";
  if (cols < 1) detail::refuse(function, "cols", "0", "is 0, want 1 or more");
  if (!(epsilon > 0 && epsilon <= 1))
    detail::refuse(function, "epsilon", detail::number(epsilon),
                   "is " + detail::number(epsilon) + ", want more than 0, at most 1");
  detail::check_policy(function, "nan", nan);
  state_ = std::make_unique<state>(state{epsilon, nan, std::vector<detail::variable_sketch>(cols)});
}

quantile_sketch::quantile_sketch(std::unique_ptr<state> s) : state_(std::move(s)) {}
quantile_sketch::quantile_sketch(const quantile_sketch& other)
    : state_(other.state_ == nullptr ? nullptr : std::make_unique<state>(*other.state_)) {}
quantile_sketch::quantile_sketch(quantile_sketch&& other) noexcept = default;
quantile_sketch& quantile_sketch::operator=(const quantile_sketch& other) {
  if (this != &other) *this = quantile_sketch(other);
  return *this;
}
quantile_sketch& quantile_sketch::operator=(quantile_sketch&& other) noexcept = default;
quantile_sketch::~quantile_sketch() = default;

quantile_sketch::state& quantile_sketch::here(const char* function) const {
  if (state_ == nullptr) detail::refuse(function, "sketch", "moved from", "was moved from");
  return *state_;
}

std::size_t quantile_sketch::cols() const noexcept {
  return state_ == nullptr ? 0 : state_->variables.size();
}
double quantile_sketch::epsilon() const { return here("quantile_sketch::epsilon").epsilon; }

// All memory is found before the first value is taken in.
void quantile_sketch::add(const data_view& x) {
  constexpr auto function = "quantile_sketch::add";
  state& s = here(function);
  detail::check_data(function, x, true);
  if (detail::cols_of(x) != cols())
    detail::refuse(function, "x.cols", std::to_string(detail::cols_of(x)),
                   "is " + std::to_string(detail::cols_of(x)) + ", want " + std::to_string(cols()));
  detail::refuse_nan(function, x, {}, s.nan);
  constexpr std::size_t length = 8192;
  std::vector<double> values;
  values.reserve(length);
  const auto add_view = [&](const auto& view) {
    for (std::size_t j = 0; j < view.cols(); ++j)
      detail::check_status(function,
                           stats::reserve(s.variables[j].values, count_numbers(view, j), s.epsilon));
    for (std::size_t first = 0; first < view.rows(); first += length)
      for (std::size_t j = 0; j < view.cols(); ++j) {
        const std::size_t last = std::min(view.rows(), first + length);
        gather(values, view, j, first, last);
        if (values.size() != last - first) s.variables[j].has_nan = true;
        detail::check_status(function, stats::absorb(s.variables[j].values, values.data(), 1,
                                                     static_cast<std::int64_t>(values.size()), s.epsilon));
      }
  };
  std::visit(add_view, x);
}

// Into a copy, which takes the sketch's place when all is well.
void quantile_sketch::merge(const quantile_sketch& other) {
  constexpr auto function = "quantile_sketch::merge";
  const state &own = here(function), &from = other.here(function);
  if (other.cols() != cols())
    detail::refuse(function, "other.cols", std::to_string(other.cols()),
                   "is " + std::to_string(other.cols()) + ", want " + std::to_string(cols()));
  detail::check_same_policy(function, "other.nan", from.nan, own.nan);
  auto merged = std::make_unique<state>(own);
  merged->epsilon = std::max(own.epsilon, from.epsilon);
  for (std::size_t j = 0; j < cols(); ++j) {
    detail::variable_sketch& v = merged->variables[j];
    detail::check_status(function, stats::merge(v.values, from.variables[j].values, merged->epsilon));
    v.has_nan |= from.variables[j].has_nan;
  }
  state_ = std::move(merged);
}

void quantile_sketch::reset() {
  const state& s = here("quantile_sketch::reset");
  *this = quantile_sketch(cols(), s.epsilon, s.nan);
}

std::int64_t quantile_sketch::count(std::size_t variable) const {
  constexpr auto function = "quantile_sketch::count";
  return variable_of(function, here(function).variables, variable).values.count;
}

double quantile_sketch::quantile(std::size_t variable, double order) const {
  constexpr auto function = "quantile_sketch::quantile";
  variable_of(function, here(function).variables, variable);
  check_order(function, order);
  return bounds(variable, order).value;
}

quantile_sketch::estimate quantile_sketch::bounds(std::size_t variable, double order) const {
  constexpr auto function = "quantile_sketch::bounds";
  state& s = here(function);
  detail::variable_sketch& v = variable_of(function, s.variables, variable);
  check_order(function, order);
  if (v.has_nan && s.nan == nan_policy::propagate) return {nan, 0, 0, v.values.count};
  const auto r = stats::answer(v.values, order);
  return {r.value, r.lowest, r.highest, v.values.count};
}

quantile_sketch::estimate quantile_sketch::rank(std::size_t variable, double value) const {
  constexpr auto function = "quantile_sketch::rank";
  state& s = here(function);
  detail::variable_sketch& v = variable_of(function, s.variables, variable);
  if (std::isnan(value)) detail::refuse(function, "value", "nan", "is not a number");
  if (v.has_nan && s.nan == nan_policy::propagate) return {nan, 0, 0, v.values.count};
  const auto r = stats::rank(v.values, value);
  return {r.value, r.lowest, r.highest, v.values.count};
}

}  // namespace tmk
