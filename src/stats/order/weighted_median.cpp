// SPDX-License-Identifier: Apache-2.0
// The weighted quantile of one order for every variable: where the weights, cumulated over the sorted values,
// reach their share of the total.
#include <cmath>

#include "stats/order/order.hpp"

namespace tmk::stats {
namespace {

// Sorts a, and b along with it.
template <class Real>
void quick_map_sort(ptrdiff_t n, Real* a, Real* b) {
  quick_sort(paired<Real>{a, b}, n);
}
constexpr auto* _vdSSQuickMapSort = quick_map_sort<double>;
constexpr auto* _vsSSQuickMapSort = quick_map_sort<float>;

// A sum whose error does not grow with the count of terms: what each addition rounds off is added up apart
// (Knuth's exact sum of two).
template <class Real>
struct compensated_sum {
  Real high = 0, low = 0;

  void operator+=(Real x) {
    const Real sum = high + x, from_x = sum - high;
    low += (high - (sum - from_x)) + (x - from_x);
    high = sum;
  }
  Real value() const { return high + low; }
};

template <class Real>
Real sum_of(const Real* weight, ptrdiff_t n) {
  compensated_sum<Real> sum;
  for (ptrdiff_t i = 0; i < n; ++i) sum += weight[i];
  return sum.value();
}

// Of sorted values. Sums and target are rounded, and equal weights need not be numbers that add up to their
// multiples: a sum within a few roundings of the target is taken to be on it. Order 1 needs no tolerance,
// which would make it miss a last value of small weight.
template <class Real>
Real weighted_quantile(const Real* value, const Real* weight, ptrdiff_t n, Real order, Real total) {
  if (n < 1) return std::numeric_limits<Real>::quiet_NaN();
  constexpr Real few_roundings = 4 * std::numeric_limits<Real>::epsilon();
  const Real target = order * total, tolerance = order < 1 ? few_roundings * std::abs(target) : Real{0};
  compensated_sum<Real> so_far;
  ptrdiff_t i = 0;
  for (; i < n; ++i) {
    so_far += weight[i];
    if (!(so_far.value() < target - tolerance)) break;
  }
  // Rounding, a negative weight or a NaN can keep the sum below the target to the end.
  if (i == n) return value[n - 1];
  const Real sum = so_far.value();
  const Real v = value[i];
  const auto has_weight = [&](ptrdiff_t k) { return weight[k] > 0; };
  if (!(sum > target + tolerance)) {
    if (n % 2 == 1 || i == n - 1) return v;
    ptrdiff_t next = i + 1;
    while (next < n - 1 && !has_weight(next)) ++next;
    return (v + value[next]) * static_cast<Real>(0.5);
  }
  const Real before = sum - weight[i];
  if (!(before > 0)) return v;
  ptrdiff_t previous = i - 1;
  while (previous > 0 && !has_weight(previous)) --previous;
  if (n % 2 == 1 && std::abs(before - (total - weight[i]) * order) <= tolerance)
    return v;  // as much on either side
  const Real u = value[previous];
  return u + (target - before) / (sum - before) * (v - u);
}

template <class Real>
int32_t weighted_medians(SSTask* handle, void (*map_sort)(ptrdiff_t, Real*, Real*)) {
  const auto& t = task<Real>::of(handle);
  const ptrdiff_t p = t.p(), n = t.n();
  const bool rows = storage_is(t, t.dataStorage, VTS_SS_ROWS);
  const Real total = sum_of(t.weights, n);
  const scratch<Real> memory(2 * static_cast<size_t>(n));
  if (!memory) return VTS_STATUS_SS_MEMORY;
  Real *const values = memory.get(), *const weights = values + n;
  for (ptrdiff_t j = 0; j < p; ++j) {
    copy(variable<Real>(t.data, rows, j, p, n), variable<Real>(values, true, 0, 1, n), n);
    std::copy_n(t.weights, n, weights);
    map_sort(n, values, weights);
    t.quantiles[j] = weighted_quantile(values, weights, n, t.quantileOrders[0], total);
  }
  return 0;
}

}  // namespace
}  // namespace tmk::stats

int32_t _vtsdSSWMedian(SSTask* task) {
  return tmk::stats::weighted_medians<double>(task, tmk::stats::_vdSSQuickMapSort);
}
int32_t _vtssSSWMedian(SSTask* task) {
  return tmk::stats::weighted_medians<float>(task, tmk::stats::_vsSSQuickMapSort);
}
