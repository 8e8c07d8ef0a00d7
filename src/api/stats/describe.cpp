// SPDX-License-Identifier: Apache-2.0
// Exact quantiles and the description of a data set.
#include <algorithm>
#include <tmk/robust.hpp>

#include "api/stats/checks.hpp"

namespace tmk {

namespace {

// Options of quantiles or of describe.
template <class Options>
void check(const char* function, const data_view& x, std::span<const double> orders, const Options& options) {
  detail::check_data(function, x, false);
  detail::check_weights(function, options.weights, detail::rows_of(x));
  detail::check_orders(function, orders);
  detail::refuse_below(function, "threads", options.threads, 1);
  detail::check_policy(function, "nan", options.nan);
  if (detail::rows_of(x) > INT32_MAX)
    detail::refuse(function, "x.rows", std::to_string(detail::rows_of(x)),
                   "is above 2147483647, too many for exact quantiles");
}

template <class Options>
TmkSSOptions c_options(const Options& options) {
  return {0, static_cast<int32_t>(options.nan), options.weights_are_counts};
}

matrix exact_quantiles(const char* function, const data_view& x, std::span<const double> orders,
                       const quantile_options& options) {
  check(function, x, orders, options);
  matrix result(detail::cols_of(x), orders.size());
  const TmkSSOptions o = c_options(options);
  const detail::data_call c(x, options.weights, options.threads);
  c.check(function,
          tmk_ss_pooled_quantiles(c.data(), &o, static_cast<int64_t>(orders.size()), orders.data(),
                                  result.row(0).data(), nullptr, nullptr, c.threading()),
          options.weights_are_counts);
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

std::vector<double> mad(const data_view& x, const quantile_options& options) {
  constexpr auto function = "mad";
  check(function, x, {}, options);
  std::vector<double> deviations(detail::cols_of(x));
  const TmkSSOptions o = c_options(options);
  const detail::data_call c(x, options.weights, options.threads);
  c.check(
      function,
      tmk_ss_pooled_quantiles(c.data(), &o, 0, nullptr, nullptr, deviations.data(), nullptr, c.threading()),
      options.weights_are_counts);
  return deviations;
}

summary describe(const data_view& x, const describe_options& options) {
  constexpr auto function = "describe";
  check(function, x, options.orders, options);
  const std::size_t cols = detail::cols_of(x);
  if (options.matrices && cols > detail::most_matrix_cols)
    detail::refuse_value(function, "x.cols", detail::number(cols),
                         "at most " + detail::number(detail::most_matrix_cols) + " with matrices");
  const detail::data_call c(x, options.weights, options.threads);
  moments m(cols, {options.matrices, options.nan, options.weights_are_counts});
  c.check(function, tmk_ss_pooled_moments_add(m.sums_.get(), c.data(), c.threading()),
          options.weights_are_counts);
  summary s;
  s.n = m.count(), s.weight = m.weight();
  s.mean = m.mean(), s.variance = m.variance(), s.sd = m.sd();
  s.skewness = m.skewness(), s.kurtosis = m.kurtosis();
  s.min = m.min(), s.max = m.max();
  if (options.matrices) s.complete = m.complete(), s.cov = m.covariance(), s.cor = m.correlation();

  // The median is among the orders, or follows them.
  std::vector<double> orders = options.orders;
  const auto half = static_cast<std::size_t>(std::find(orders.begin(), orders.end(), 0.5) - orders.begin());
  if (half == orders.size()) orders.push_back(0.5);
  matrix found(cols, orders.size());
  s.nans.resize(cols), s.median.resize(cols), s.mad.resize(cols);
  const TmkSSOptions o = c_options(options);
  c.check(function,
          tmk_ss_pooled_quantiles(c.data(), &o, static_cast<int64_t>(orders.size()), orders.data(),
                                  found.row(0).data(), s.mad.data(), s.nans.data(), c.threading()),
          options.weights_are_counts);
  s.orders = options.orders;
  s.quantiles = matrix(cols, s.orders.size());
  for (std::size_t j = 0; j < cols; ++j) {
    std::copy_n(found.row(j).begin(), s.orders.size(), s.quantiles.row(j).begin());
    s.median[j] = found(j, half);
  }
  return s;
}

}  // namespace tmk
