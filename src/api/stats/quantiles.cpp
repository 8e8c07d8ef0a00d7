// SPDX-License-Identifier: Apache-2.0
// Exact quantiles and the description of a data set, variable by variable.
#include <algorithm>

#include "api/call/check.hpp"
#include "api/stats/blocks.hpp"
#include "api/stats/sample.hpp"

namespace tmk {

namespace {

// Options of either kind.
template <class Options>
void check(const char* function, const data_view& x, std::span<const double> orders, const Options& options) {
  detail::check_data(function, x, false);
  detail::check_weights(function, options.weights, detail::rows_of(x), options.weights_are_counts);
  detail::check_orders(function, orders);
  detail::check_threads(function, options.threads);
  detail::check_policy(function, "nan", options.nan);
  if (detail::rows_of(x) > INT32_MAX)
    detail::refuse(function, "x.rows", std::to_string(detail::rows_of(x)),
                   "is above 2147483647, too many for exact quantiles");
  detail::refuse_nan(function, x, options.weights, options.nan);
}

// take(j, sample of variable j), on several threads.
template <class Options, class Take>
void for_each_sample(const char* function, const data_view& x, const Options& options, Take take) {
  detail::for_each_item(detail::cols_of(x), options.threads, [&](std::size_t j) {
    take(j, detail::sample::of(function, x, j, options.weights, {options.nan, options.weights_are_counts}));
  });
}

matrix exact_quantiles(const char* function, const data_view& x, std::span<const double> orders,
                       const quantile_options& options) {
  check(function, x, orders, options);
  matrix result(detail::cols_of(x), orders.size());
  for_each_sample(function, x, options, [&](std::size_t j, const detail::sample& s) {
    if (!orders.empty()) s.quantiles(orders, result.row(j));
  });
  return result;
}

}  // namespace

matrix quantiles(const data_view& x, std::span<const double> orders, const quantile_options& options) {
  return exact_quantiles("quantiles", x, orders, options);
}

std::vector<double> median(const data_view& x, const quantile_options& options) {
  constexpr double half[] = {0.5};
  return exact_quantiles("median", x, half, options).values();
}

summary describe(const data_view& x, const describe_options& options) {
  constexpr auto function = "describe";
  check(function, x, options.orders, options);
  const std::size_t cols = detail::cols_of(x);
  if (options.matrices && cols > detail::most_matrix_cols)
    detail::refuse(function, "x.cols", std::to_string(cols),
                   "is " + std::to_string(cols) + ", want at most " +
                       std::to_string(detail::most_matrix_cols) + " with matrices");
  moments m(cols, {options.matrices, options.nan, options.weights_are_counts});
  m.sums_ = detail::summarise(function, x, options.weights, m.options_, options.threads);
  summary s;
  s.n = m.count(), s.weight = m.weight();
  s.mean = m.mean(), s.variance = m.variance(), s.sd = m.sd();
  s.skewness = m.skewness(), s.kurtosis = m.kurtosis();
  s.min = m.min(), s.max = m.max();
  if (options.matrices) s.complete = m.complete(), s.cov = m.covariance(), s.cor = m.correlation();

  s.nans.resize(cols), s.median.resize(cols), s.mad.resize(cols);
  s.orders = options.orders;
  s.quantiles = matrix(cols, s.orders.size());
  // The median among the orders, or after them.
  std::vector<double> orders = options.orders;
  const auto half = static_cast<std::size_t>(std::find(orders.begin(), orders.end(), 0.5) - orders.begin());
  if (half == orders.size()) orders.push_back(0.5);
  for_each_sample(function, x, options, [&](std::size_t j, const detail::sample& of_variable) {
    std::vector<double> found(orders.size());
    of_variable.quantiles(orders, found);
    std::copy_n(found.begin(), s.orders.size(), s.quantiles.row(j).begin());
    s.nans[j] = of_variable.nans;
    s.median[j] = found[half];
    s.mad[j] = of_variable.deviation_from(found[half]);
  });
  return s;
}

}  // namespace tmk
