// SPDX-License-Identifier: Apache-2.0
#include "api/stats/sample.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace tmk::detail {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// With an infinity for a neighbour the kernel's (1 - f) s[k] + f s[k + 1] has no value even where f is 0.
double quantile_next_to_infinity(std::vector<double> values, double order) {
  std::sort(values.begin(), values.end());
  const double rank = order * static_cast<double>(values.size() - 1);
  const auto k = static_cast<std::size_t>(rank);
  const double f = rank - static_cast<double>(k);
  return f == 0 ? values[k] : (1 - f) * values[k] + f * values[k + 1];
}

void equal_quantiles(const sample& s, std::span<const double> orders, std::span<double> result) {
  constexpr int32_t p = 1;
  const auto n = static_cast<int32_t>(s.values.size()), count = static_cast<int32_t>(orders.size());
  const task_handle task = new_task(s.function, &p, &n, s.values.data(), nullptr);
  std::vector<double> own(orders.begin(), orders.end());
  __vtsdSSEditQuantiles(task.get(), &count, own.data(), result.data(), nullptr, nullptr);
  check_status(s.function, _vtsdSSQuantiles(task.get(), VTS_SS_ESTIMATE_QUANTILES, 0, VTS_SS_METHOD_FAST, 0,
                                            tmk_threading_serial()));
  for (std::size_t k = 0; k < orders.size(); ++k)
    if (std::isnan(result[k])) result[k] = quantile_next_to_infinity(s.values, orders[k]);
}

// The values in order, and the weights cumulated over them; 64 bits, so that roundings of the sums are far
// below those of the result.
struct distribution {
  std::vector<double> values;
  std::vector<long double> cumulated;

  explicit distribution(const sample& s) {
    std::vector<std::size_t> order(s.values.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return s.values[a] < s.values[b]; });
    long double total = 0;
    for (const std::size_t i : order) {
      values.push_back(s.values[i]);
      cumulated.push_back(total += s.weights[i]);
    }
  }

  // Mean of the inverse distribution function over [a, a + length]. A share that is a rounding of the sums is
  // dropped: it could be that of an infinity.
  double mean_over(long double a, long double length) const {
    const long double b = a + length;
    const auto first = std::upper_bound(cumulated.begin(), cumulated.end() - 1, a);
    long double sum = 0, shares = 0;
    for (auto i = static_cast<std::size_t>(first - cumulated.begin()); i < values.size(); ++i) {
      const long double before = i == 0 ? 0 : cumulated[i - 1];
      if (before >= b) break;
      const long double share = (std::min(cumulated[i], b) - std::max(before, a)) / length;
      if (share <= 0x1p-52L) continue;
      sum += share * values[i];
      shares += share;
    }
    return static_cast<double>(sum / shares);
  }

  double quantile(double order, long double unit) const {
    if (order == 0) return values.front();
    if (order == 1) return values.back();
    return mean_over(order * (cumulated.back() - unit), unit);
  }
};

// Weights as they are if they are counts; else the largest near 1, which keeps squares in range, and none if
// they are all equal.
void set_weights(sample& s, bool counts) {
  const auto [least, most] = std::minmax_element(s.weights.begin(), s.weights.end());
  if (s.weights.empty() || (*least == *most && (!counts || *most == 1))) {
    s.weights.clear();
    return;
  }
  if (counts) return;
  const double factor = std::ldexp(1.0, -std::clamp(std::ilogb(*most), -1000, 1000));
  long double sum = 0, squares = 0;
  for (double& w : s.weights) {
    w *= factor;
    sum += w;
    squares += static_cast<long double>(w) * w;
  }
  s.unit = static_cast<double>(squares / sum);
}

}  // namespace

sample sample::of(const char* function, const data_view& x, std::size_t j, const weight_view& weights,
                  const sample_options& options) {
  sample s{.function = function, .values = {}, .weights = {}};
  // Every value is stored and passed by if it counts: nothing branches on the data.
  const auto take = [&](const auto& view) {
    const bool omit = options.nan == nan_policy::omit;
    std::size_t k = 0;
    s.values.resize(view.rows());
    if (weights) s.weights.resize(view.rows());
    for (std::size_t i = 0; i < view.rows(); ++i) {
      const double value = view(i, j), weight = weights ? (*weights)[i] : 1;
      s.values[k] = value;
      if (weights) s.weights[k] = weight;
      const bool counts = weight > 0, is_nan = std::isnan(value);
      s.nans += counts && is_nan ? 1 : 0;
      k += counts && !(omit && is_nan) ? 1 : 0;
    }
    s.values.resize(k);
    if (weights) s.weights.resize(k);
  };
  std::visit(take, x);
  s.defined = !s.values.empty() && (s.nans == 0 || options.nan == nan_policy::omit);
  set_weights(s, options.weights_are_counts);
  return s;
}

void sample::quantiles(std::span<const double> orders, std::span<double> result) const {
  if (!defined) {
    std::fill(result.begin(), result.end(), nan);
  } else if (weights.empty()) {
    equal_quantiles(*this, orders, result);
  } else {
    const distribution d(*this);
    for (std::size_t k = 0; k < orders.size(); ++k) result[k] = d.quantile(orders[k], unit);
  }
}

double sample::quantile(double order) const {
  double result;
  quantiles({&order, 1}, {&result, 1});
  return result;
}

double sample::deviation_from(double centre) const {
  if (!defined || !std::isfinite(centre)) return nan;
  sample distances{.function = function, .values = {}, .weights = weights, .unit = unit, .defined = true};
  distances.values.resize(values.size());
  std::transform(values.begin(), values.end(), distances.values.begin(),
                 [centre](double value) { return std::fabs(value - centre); });
  return distances.quantile(0.5);
}

}  // namespace tmk::detail
