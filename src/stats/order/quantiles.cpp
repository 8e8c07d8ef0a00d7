// SPDX-License-Identifier: Apache-2.0
// Quantiles by linear interpolation between ranks 0 and n - 1, and order statistics, one selected variable to
// an item. Order statistics sort the variable in their output, and its quantiles are read off; quantiles
// alone select their ranks in a copy.
#include <algorithm>

#include "stats/order/order.hpp"

namespace tmk::stats {
namespace {

template <class Real>
struct quantiles_call {
  const task<Real>& t;
  bool with_quantiles, with_order_stats;
  Real* workspace;
  const int32_t* variables;
};

// A quantile's place between the values of ranks k and next.
template <class Real>
struct place {
  ptrdiff_t k, next;
  Real fraction;

  place(Real order, ptrdiff_t n) {
    const Real x = order * static_cast<Real>(n - 1);
    k = std::min(static_cast<ptrdiff_t>(x), n - 1);  // n - 1 may have been rounded up
    fraction = x - static_cast<Real>(k);
    next = std::min(k + 1, n - 1);
  }
  Real between(Real low, Real high) const { return (1 - fraction) * low + fraction * high; }
};

// Quantiles of the ascending orders [first, last). The middle one parts the range for those on either side;
// ranks next to the range are in place already.
template <class Real>
void select_quantiles(Real* values, ptrdiff_t n, range whole, const Real* orders, ptrdiff_t first,
                      ptrdiff_t last, Real* quantiles) {
  if (first >= last) return;
  const ptrdiff_t middle = first + (last - first) / 2;
  const place<Real> at(orders[middle], n);
  if (whole.holds(at.k)) quick_select(contiguous<Real>{values}, whole, at.k);
  // The next rank is the least of the values after it.
  if (at.next > at.k && whole.holds(at.next))
    std::iter_swap(values + at.next, std::min_element(values + at.next, values + whole.r + 1));
  quantiles[middle] = at.between(values[at.k], values[at.next]);
  select_quantiles(values, n, {whole.l, at.k - 1}, orders, first, middle, quantiles);
  select_quantiles(values, n, {at.k + 1, whole.r}, orders, middle + 1, last, quantiles);
}

template <class Real>
void _vSSQuantilesThreader(int32_t item, int32_t thread, int32_t, void* context) {
  const auto& call = *static_cast<const quantiles_call<Real>*>(context);
  const task<Real>& t = call.t;
  const ptrdiff_t p = t.p(), n = t.n(), j = call.variables[item];
  const ptrdiff_t count = call.with_quantiles ? t.integer(t.quantileOrderCount) : 0;
  const Real* const orders = t.quantileOrders;
  Real* const quantiles = t.quantiles + item * count;
  Real* const mine = call.workspace + thread * n;
  const variable<Real> in(t.data, storage_is(t, t.dataStorage, VTS_SS_ROWS), j, p, n);
  if (n == 0) {
    std::fill_n(quantiles, count, std::numeric_limits<Real>::quiet_NaN());
  } else if (call.with_order_stats) {
    const variable<Real> out(t.orderStats, storage_is(t, t.orderStatsStorage, VTS_SS_ROWS), j, p, n);
    copy(in, out, n);
    if (out.stride == 1)
      sort_values(out.first, mine, n);
    else
      quick_sort(strided<Real>{out.first, out.stride}, n);
    for (ptrdiff_t i = 0; i < count; ++i) {
      const place<Real> at(orders[i], n);
      quantiles[i] = at.between(out.first[at.k * out.stride], out.first[at.next * out.stride]);
    }
  } else if (count > 0) {
    copy(in, variable<Real>(mine, true, 0, 1, n), n);
    if (std::is_sorted(orders, orders + count))
      select_quantiles(mine, n, {0, n - 1}, orders, 0, count, quantiles);
    else
      for (ptrdiff_t i = 0; i < count; ++i)
        select_quantiles(mine, n, {0, n - 1}, orders, i, i + 1, quantiles);
  }
}

template <class Real>
int32_t check(const task<Real>& t, bool with_quantiles, bool with_order_stats, uint32_t method) {
  constexpr int64_t any_storage = VTS_SS_ROWS | VTS_SS_COLUMNS;
  const int64_t count = t.quantileOrderCount != nullptr ? t.integer(t.quantileOrderCount) : -1;
  const auto outside = [](Real order) { return !(order >= 0 && order <= 1); };  // NaN too
  return first_status({
      {!storage_is(t, t.dataStorage, any_storage), VTS_STATUS_SS_BAD_STORAGE},
      {with_quantiles && t.quantiles == nullptr, VTS_STATUS_SS_QUANTILES_NULL},
      {with_quantiles && t.quantileOrders == nullptr, VTS_STATUS_SS_ORDERS_NULL},
      {with_quantiles && count < 0, VTS_STATUS_SS_BAD_ORDERS},
      {with_quantiles && t.quantileOrders != nullptr && count > 0 &&
           std::any_of(t.quantileOrders, t.quantileOrders + count, outside),
       VTS_STATUS_SS_BAD_ORDERS},
      {with_order_stats && t.orderStats == nullptr, VTS_STATUS_SS_ORDER_STATS_NULL},
      {with_order_stats && t.orderStatsStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL},
      {with_order_stats && t.orderStatsStorage != nullptr && !storage_is(t, t.orderStatsStorage, any_storage),
       VTS_STATUS_SS_BAD_STORAGE},
      {(method & VTS_SS_METHOD_FAST) == 0, VTS_STATUS_SS_BAD_METHOD},
  });
}

template <class Real>
int32_t quantiles(SSTask* handle, uint32_t estimates, uint32_t method, const ThreadingService* threading) {
  const auto& t = task<Real>::of(handle);
  const bool with_quantiles = (estimates & VTS_SS_ESTIMATE_QUANTILES) != 0;
  const bool with_order_stats = (estimates & VTS_SS_ESTIMATE_ORDER_STATS) != 0;
  if (const int32_t status = check(t, with_quantiles, with_order_stats, method); status != 0) return status;
  if (const int32_t status = counts_status(t); status != 0) return status;

  const int64_t p = t.p(), n = t.n();
  const int64_t affordable = std::max<int64_t>(
      1, (int64_t{1} << 30) / (std::max<int64_t>(1, n) * static_cast<int64_t>(sizeof(Real))));
  const auto threads = static_cast<int32_t>(std::min({int64_t{threading->MaxThreads()}, p, affordable}));
  const scratch<Real> workspace(static_cast<size_t>(n) * static_cast<size_t>(threads));
  const scratch<int32_t> variables(static_cast<size_t>(p));
  if (!workspace || !variables) return VTS_STATUS_SS_MEMORY;
  quantiles_call<Real> call = {t, with_quantiles, with_order_stats, workspace.get(), variables.get()};
  threading->ParallelFor(list_selected(t, variables.get()), threads, &call, _vSSQuantilesThreader<Real>);
  return 0;
}

}  // namespace
}  // namespace tmk::stats

int32_t _vtsdSSQuantiles(SSTask* task, uint32_t estimatesLow, uint32_t, uint32_t methodLow, uint32_t,
                         const ThreadingService* threading) {
  return tmk::stats::quantiles<double>(task, estimatesLow, methodLow, threading);
}
int32_t _vtssSSQuantiles(SSTask* task, uint32_t estimatesLow, uint32_t, uint32_t methodLow, uint32_t,
                         const ThreadingService* threading) {
  return tmk::stats::quantiles<float>(task, estimatesLow, methodLow, threading);
}
