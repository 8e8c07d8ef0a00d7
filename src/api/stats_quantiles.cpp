// Exact quantiles, variable by variable, and the description of a data set.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "api/check.hpp"
#include "api/stats_blocks.hpp"

namespace tmk {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct weighted_value {
  double value, weight;
};

// The observations of variable j that count.
std::vector<weighted_value> weighted_column(const data_view& x, std::size_t j, const weight_view& weights) {
  std::vector<weighted_value> r;
  std::visit(
      [&](const auto& view) {
        for (std::size_t i = 0; i < view.rows(); ++i)
          if ((*weights)[i] > 0) r.push_back({view(i, j), (*weights)[i]});
      },
      x);
  return r;
}

std::vector<double> column(const data_view& x, std::size_t j) {
  std::vector<double> r;
  std::visit(
      [&](const auto& view) {
        r.resize(view.rows());
        for (std::size_t i = 0; i < view.rows(); ++i) r[i] = view(i, j);
      },
      x);
  return r;
}

// Whether the policy leaves values to look at, NaNs erased if it is to omit them.
template <class Value, class Of>
bool settle_nan(std::vector<Value>& values, nan_policy policy, Of value_of) {
  const auto is_nan = [&](const Value& v) { return std::isnan(value_of(v)); };
  if (policy == nan_policy::omit) std::erase_if(values, is_nan);
  return !values.empty() &&
         (policy == nan_policy::omit || std::none_of(values.begin(), values.end(), is_nan));
}

// Beside an infinity the kernel's (1 - f) s[k] + f s[k + 1] has no value even where f is 0.
double quantile_beside_infinity(std::vector<double> values, double order) {
  std::sort(values.begin(), values.end());
  const double rank = order * static_cast<double>(values.size() - 1);
  const auto k = static_cast<std::size_t>(rank);
  const double f = rank - static_cast<double>(k);
  return f == 0 ? values[k] : (1 - f) * values[k] + f * values[k + 1];
}

void quantiles_of(const char* function, std::vector<double>& values, std::span<double> orders,
                  std::span<double> result) {
  const auto n = static_cast<int32_t>(values.size()), count = static_cast<int32_t>(orders.size());
  constexpr int32_t p = 1;
  const detail::task_handle task = detail::new_task(function, &p, &n, values.data(), nullptr);
  __vtsdSSEditQuantiles(task.get(), &count, orders.data(), result.data(), nullptr, nullptr);
  detail::check_status(function, _vtsdSSQuantiles(task.get(), VTS_SS_ESTIMATE_QUANTILES, 0,
                                                  VTS_SS_METHOD_FAST, 0, tmk_threading_serial()));
  for (std::size_t k = 0; k < orders.size(); ++k)
    if (std::isnan(result[k])) result[k] = quantile_beside_infinity(values, orders[k]);
}

// The inverse of the weighted distribution function. Sums have 64 bits so that equal weights meet their
// targets; the tolerance is for what is left.
void weighted_quantiles_of(std::vector<weighted_value>& values, std::span<const double> orders,
                           std::span<double> result) {
  std::sort(values.begin(), values.end(),
            [](const weighted_value& a, const weighted_value& b) { return a.value < b.value; });
  std::vector<long double> cumulated;
  cumulated.reserve(values.size());
  long double total = 0;
  for (const weighted_value& v : values) cumulated.push_back(total += v.weight);
  const long double tolerance = 0x1p-50L * total;
  for (std::size_t k = 0; k < orders.size(); ++k) {
    const long double target = orders[k] * total;
    const auto reached = std::lower_bound(cumulated.begin(), cumulated.end() - 1, target - tolerance);
    const auto i = static_cast<std::size_t>(reached - cumulated.begin());
    const bool hit = *reached <= target + tolerance && i + 1 < values.size();
    result[k] = hit ? std::midpoint(values[i].value, values[i + 1].value) : values[i].value;
  }
}

matrix exact_quantiles(const char* function, const data_view& x, std::span<const double> orders,
                       const weight_view& weights, nan_policy policy, int threads) {
  matrix result(detail::cols_of(x), orders.size());
  if (orders.empty()) return result;
  if (detail::rows_of(x) > INT32_MAX)
    detail::refuse(function, "x.rows", std::to_string(detail::rows_of(x)),
                   "is above 2147483647, too many for exact quantiles");
  std::vector<double> all_orders(orders.begin(), orders.end());
  detail::for_each_item(result.rows(), threads, [&](std::size_t j) {
    const std::span<double> row = result.row(j);
    std::fill(row.begin(), row.end(), nan);
    if (weights) {
      std::vector<weighted_value> values = weighted_column(x, j, weights);
      if (settle_nan(values, policy, [](const weighted_value& v) { return v.value; }))
        weighted_quantiles_of(values, orders, row);
    } else {
      std::vector<double> values = column(x, j);
      if (settle_nan(values, policy, [](double v) { return v; }))
        quantiles_of(function, values, all_orders, row);
    }
  });
  return result;
}

void check(const char* function, const data_view& x, const weight_view& weights,
           std::span<const double> orders, int threads, nan_policy policy) {
  detail::check_data(function, x, false);
  detail::check_weights(function, weights, detail::rows_of(x));
  detail::check_orders(function, orders);
  detail::check_threads(function, threads);
  detail::refuse_nan(function, x, weights, policy);
}

}  // namespace

matrix quantiles(const data_view& x, std::span<const double> orders, const quantile_options& options) {
  check("quantiles", x, options.weights, orders, options.threads, options.nan);
  return exact_quantiles("quantiles", x, orders, options.weights, options.nan, options.threads);
}

std::vector<double> median(const data_view& x, const quantile_options& options) {
  constexpr double half[] = {0.5};
  check("median", x, options.weights, half, options.threads, options.nan);
  return exact_quantiles("median", x, half, options.weights, options.nan, options.threads).values();
}

summary describe(const data_view& x, const describe_options& options) {
  check("describe", x, options.weights, options.orders, options.threads, options.nan);
  moments m(detail::cols_of(x), {options.matrices, options.nan});
  m.sums_ = detail::summarise("describe", x, options.weights, m.options_, options.threads);
  summary s;
  s.n = m.count(), s.weight = m.weight();
  s.mean = m.mean(), s.sd = m.sd(), s.skewness = m.skewness(), s.kurtosis = m.kurtosis();
  s.min = m.min(), s.max = m.max();
  s.orders = options.orders;
  s.quantiles = exact_quantiles("describe", x, options.orders, options.weights, options.nan, options.threads);
  if (options.matrices) s.complete = m.complete(), s.cov = m.covariance(), s.cor = m.correlation();
  return s;
}

}  // namespace tmk
