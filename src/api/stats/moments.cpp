// SPDX-License-Identifier: Apache-2.0
// The accumulator of moments: what it takes in, and the estimates made of its sums.
#include <algorithm>
#include <cmath>
#include <limits>

#include "api/call/check.hpp"
#include "api/stats/blocks.hpp"

namespace tmk {

namespace {

using detail::joint_sums;
using detail::variable_sums;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// What a sum of squares about the mean is divided by: n - 1 where all weights are 1.
template <class Sums>
double degrees_of_freedom(const Sums& s) {
  const double f = s.weight - s.mean_weight;
  return s.n > 1 && f > 0 ? f : nan;
}

double variance_of(const variable_sums& v) { return v.c2 / degrees_of_freedom(v); }

template <class Estimate>
std::vector<double> each(const detail::moment_sums& sums, Estimate estimate) {
  std::vector<double> r;
  for (const variable_sums& v : sums.variables) r.push_back(v.n > 0 ? estimate(v) : nan);
  return r;
}

template <class Element>
matrix symmetric(std::size_t p, Element element) {
  matrix r(p, p);
  for (std::size_t i = 0; i < p; ++i)
    for (std::size_t j = 0; j <= i; ++j) r(i, j) = r(j, i) = element(i, j);
  return r;
}

const joint_sums& require_joint(const char* function, const moments_options& options,
                                const detail::moment_sums& sums) {
  if (!options.cross_product) detail::refuse(function, "options.cross_product", "false", "is false");
  return sums.joint;
}

double cross_of(const joint_sums& s, std::size_t i, std::size_t j) { return s.cross[i * (i + 1) / 2 + j]; }

// A sum of weights that leaves the range of double would leave no mean.
void check_total(const char* function, const char* argument, const detail::moment_sums& a,
                 const detail::moment_sums& b) {
  for (std::size_t j = 0; j < a.variables.size(); ++j)
    if (const double sum = a.variables[j].weight + b.variables[j].weight; !std::isfinite(sum))
      detail::refuse(function, argument, detail::number(sum),
                     "brings the sum of weights to " + detail::number(sum) + ", want a finite number");
}

void check_order(const char* function, int order) {
  if (order < 1 || order > 4)
    detail::refuse(function, "order", std::to_string(order), "is " + std::to_string(order) + ", want 1 to 4");
}

}  // namespace

moments::moments(std::size_t cols, const moments_options& options) : options_(options) {
  detail::check_policy("moments", "options.nan", options.nan);
  const std::size_t most = options.cross_product ? detail::most_matrix_cols : INT32_MAX;
  if (cols < 1 || cols > most)
    detail::refuse("moments", "cols", std::to_string(cols),
                   "is " + std::to_string(cols) + ", want 1 to " + std::to_string(most));
  sums_ = detail::no_sums(cols, options.cross_product);
}

void moments::add(const data_view& x, const weight_view& weights, int threads) {
  constexpr auto function = "moments::add";
  detail::check_data(function, x, true);
  if (detail::cols_of(x) != cols())
    detail::refuse(function, "x.cols", std::to_string(detail::cols_of(x)),
                   "is " + std::to_string(detail::cols_of(x)) + ", want " + std::to_string(cols()));
  detail::check_weights(function, weights, detail::rows_of(x), options_.weights_are_counts);
  detail::check_threads(function, threads);
  detail::refuse_nan(function, x, weights, options_.nan);
  const detail::moment_sums sums = detail::summarise(function, x, weights, options_, threads);
  check_total(function, "weights", sums_, sums);
  detail::merge(sums_, sums);
}

void moments::merge(const moments& other) {
  constexpr auto function = "moments::merge";
  if (other.cols() != cols())
    detail::refuse(function, "other.cols", std::to_string(other.cols()),
                   "is " + std::to_string(other.cols()) + ", want " + std::to_string(cols()));
  if (other.options_.cross_product != options_.cross_product)
    detail::refuse(function, "other.options.cross_product", other.options_.cross_product ? "true" : "false",
                   std::string("is not ") + (options_.cross_product ? "true" : "false"));
  if (other.options_.weights_are_counts != options_.weights_are_counts)
    detail::refuse(function, "other.options.weights_are_counts",
                   other.options_.weights_are_counts ? "true" : "false",
                   std::string("is not ") + (options_.weights_are_counts ? "true" : "false"));
  detail::check_same_policy(function, "other.options.nan", other.options_.nan, options_.nan);
  check_total(function, "other", sums_, other.sums_);
  detail::merge(sums_, &other == this ? detail::moment_sums(other.sums_) : other.sums_);
}

void moments::reset() { sums_ = detail::no_sums(cols(), options_.cross_product); }

std::vector<std::int64_t> moments::count() const {
  std::vector<std::int64_t> n;
  for (const variable_sums& v : sums_.variables) n.push_back(v.n);
  return n;
}

std::vector<double> moments::weight() const {
  std::vector<double> w;
  for (const variable_sums& v : sums_.variables) w.push_back(v.weight);
  return w;
}

std::vector<double> moments::mean() const {
  return each(sums_, [](const variable_sums& v) { return v.shift + v.offset; });
}
std::vector<double> moments::variance() const { return each(sums_, variance_of); }
std::vector<double> moments::sd() const {
  return each(sums_, [](const variable_sums& v) { return std::sqrt(variance_of(v)); });
}
std::vector<double> moments::skewness() const {
  return each(sums_, [](const variable_sums& v) {
    const double m2 = v.c2 / v.weight;
    return v.c3 / v.weight / m2 / std::sqrt(m2);
  });
}
std::vector<double> moments::kurtosis() const {
  return each(sums_, [](const variable_sums& v) {
    const double m2 = v.c2 / v.weight;
    return v.c4 / v.weight / m2 / m2 - 3;
  });
}
std::vector<double> moments::min() const {
  return each(sums_, [](const variable_sums& v) { return v.min; });
}
std::vector<double> moments::max() const {
  return each(sums_, [](const variable_sums& v) { return v.max; });
}

std::vector<double> moments::central(int order) const {
  check_order("moments::central", order);
  return each(sums_, [order](const variable_sums& v) {
    const double sum[] = {0, v.c2, v.c3, v.c4};
    return sum[order - 1] / v.weight;
  });
}

std::vector<double> moments::raw(int order) const {
  check_order("moments::raw", order);
  return each(sums_, [order](const variable_sums& v) {
    const double m = v.shift + v.offset, m2 = v.c2 / v.weight, m3 = v.c3 / v.weight, m4 = v.c4 / v.weight;
    const double moment[] = {m, m2 + m * m, m3 + m * (3 * m2 + m * m),
                             m4 + m * (4 * m3 + m * (6 * m2 + m * m))};
    return moment[order - 1];
  });
}

std::int64_t moments::complete() const { return require_joint("moments::complete", options_, sums_).n; }

matrix moments::cross_product() const {
  const joint_sums& s = require_joint("moments::cross_product", options_, sums_);
  return symmetric(cols(), [&](std::size_t i, std::size_t j) { return s.n > 0 ? cross_of(s, i, j) : nan; });
}

matrix moments::covariance() const {
  const joint_sums& s = require_joint("moments::covariance", options_, sums_);
  const double f = degrees_of_freedom(s);
  return symmetric(cols(), [&](std::size_t i, std::size_t j) { return cross_of(s, i, j) / f; });
}

matrix moments::correlation() const {
  const joint_sums& s = require_joint("moments::correlation", options_, sums_);
  const double defined = degrees_of_freedom(s) > 0 ? 1 : nan;
  // Of mean products: the root of a sum would round otherwise for weights twice as large.
  const auto mean_product = [&](std::size_t i, std::size_t j) { return cross_of(s, i, j) / s.weight; };
  std::vector<double> length;
  for (std::size_t j = 0; j < cols(); ++j) length.push_back(std::sqrt(mean_product(j, j)));
  return symmetric(cols(), [&](std::size_t i, std::size_t j) {
    if (i == j) return std::isfinite(length[i]) ? defined : nan;
    return defined * std::clamp(mean_product(i, j) / length[i] / length[j], -1.0, 1.0);
  });
}

}  // namespace tmk
