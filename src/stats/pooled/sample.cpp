// SPDX-License-Identifier: Apache-2.0
#include "stats/pooled/sample.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "stats/pooled/run.hpp"

namespace tmk::stats::pooled {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// Next to an infinity the kernel's (1 - f) s[k] + f s[k + 1] is NaN even where f is 0.
double quantile_next_to_infinity(std::vector<double> values, double order) {
  std::sort(values.begin(), values.end());
  const double rank = order * static_cast<double>(values.size() - 1);
  const auto k = static_cast<size_t>(rank);
  const double f = rank - static_cast<double>(k);
  return f == 0 ? values[k] : (1 - f) * values[k] + f * values[k + 1];
}

void equal_quantiles(const sample& s, std::span<const double> orders, std::span<double> result) {
  constexpr int32_t p = 1;
  const auto n = static_cast<int32_t>(s.values.size()), count = static_cast<int32_t>(orders.size());
  const task_handle task = new_task(&p, &n, s.values.data(), nullptr);
  std::vector<double> own(orders.begin(), orders.end());
  __vtsdSSEditQuantiles(task.get(), &count, own.data(), result.data(), nullptr, nullptr);
  require(_vtsdSSQuantiles(task.get(), VTS_SS_ESTIMATE_QUANTILES, 0, VTS_SS_METHOD_FAST, 0,
                           tmk_threading_serial()));
  for (size_t k = 0; k < orders.size(); ++k)
    if (std::isnan(result[k])) result[k] = quantile_next_to_infinity(s.values, orders[k]);
}

// The values in order, and their cumulated weights, in extended precision so that roundings of the sums are
// far below those of the result.
struct distribution {
  std::vector<double> values;
  std::vector<long double> cumulated;

  explicit distribution(const sample& s) {
    std::vector<size_t> order(s.values.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return s.values[a] < s.values[b]; });
    long double total = 0;
    for (const size_t i : order) {
      values.push_back(s.values[i]);
      cumulated.push_back(total += s.weights[i]);
    }
  }

  // Mean of the inverse distribution function over [a, a + length]. A share as small as a rounding of the
  // sums is dropped, since the value it would weigh may be infinite.
  double mean_over(long double a, long double length) const {
    const long double b = a + length;
    const auto first = std::upper_bound(cumulated.begin(), cumulated.end() - 1, a);
    long double sum = 0, shares = 0;
    for (auto i = static_cast<size_t>(first - cumulated.begin()); i < values.size(); ++i) {
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

// Counts stay as they are. Other weights are scaled to a largest one near 1, which keeps squares in range,
// and dropped if they are all equal.
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

sample sample::of(const TmkSSData& data, size_t j, const TmkSSOptions& options) {
  sample s;
  const size_t rows = rows_of(data);
  const double* const weights = data.weights;
  // Every value is stored and kept by advancing k if it counts: nothing branches on the data.
  visit(data, [&](const auto& x) {
    const bool omit = options.nanPolicy == TMK_SS_NAN_OMIT;
    size_t k = 0;
    s.values.resize(rows);
    if (weights != nullptr) s.weights.resize(rows);
    for (size_t i = 0; i < rows; ++i) {
      const double value = x(i, j), weight = weights != nullptr ? weights[i] : 1;
      s.values[k] = value;
      if (weights != nullptr) s.weights[k] = weight;
      const bool counts = weight > 0, is_nan = std::isnan(value);
      s.nans += counts && is_nan ? 1 : 0;
      k += counts && !(omit && is_nan) ? 1 : 0;
    }
    s.values.resize(k);
    if (weights != nullptr) s.weights.resize(k);
  });
  s.defined = !s.values.empty() && (s.nans == 0 || options.nanPolicy == TMK_SS_NAN_OMIT);
  set_weights(s, options.weightsAreCounts != 0);
  return s;
}

void sample::quantiles(std::span<const double> orders, std::span<double> result) const {
  if (!defined) {
    std::fill(result.begin(), result.end(), nan);
  } else if (weights.empty()) {
    equal_quantiles(*this, orders, result);
  } else {
    const distribution d(*this);
    for (size_t k = 0; k < orders.size(); ++k) result[k] = d.quantile(orders[k], unit);
  }
}

double sample::quantile(double order) const {
  double result;
  quantiles({&order, 1}, {&result, 1});
  return result;
}

double sample::deviation_from(double centre) const {
  if (!defined || !std::isfinite(centre)) return nan;
  sample distances{.values = {}, .weights = weights, .unit = unit, .defined = true};
  distances.values.resize(values.size());
  std::transform(values.begin(), values.end(), distances.values.begin(),
                 [centre](double value) { return std::fabs(value - centre); });
  return distances.quantile(0.5);
}

}  // namespace tmk::stats::pooled
