// SPDX-License-Identifier: Apache-2.0
// The C entry point of exact quantiles, variable by variable.
#include <algorithm>
#include <span>
#include <vector>

#include "platform/checks.hpp"
#include "stats/pooled/run.hpp"
#include "stats/pooled/sample.hpp"

namespace {

using namespace tmk::stats::pooled;

int32_t check(const TmkSSData* data, const TmkSSOptions* options, std::span<const double> orders) {
  if (const int32_t bad = check_shape(data, 1); bad != 0) return bad;
  if (options == nullptr || !is_nan_policy(options->nanPolicy)) return TMK_SS_BAD_OPTIONS;
  if (data->rows > INT32_MAX) return VTS_STATUS_SS_BAD_OBSERVATIONS;
  const auto outside = [](double q) { return !(q >= 0 && q <= 1); };
  if (std::any_of(orders.begin(), orders.end(), outside)) return VTS_STATUS_SS_BAD_ORDERS;
  if (const int32_t bad = check_weights(*data, options->weightsAreCounts != 0); bad != 0) return bad;
  return check_nans(*data, options->nanPolicy);
}

// The median is among the orders where deviations from it are wanted and it costs no second selection.
double median_of(const sample& s, std::span<const double> orders, const double* quantiles) {
  const auto half = std::find(orders.begin(), orders.end(), 0.5);
  return half != orders.end() ? quantiles[half - orders.begin()] : s.quantile(0.5);
}

}  // namespace

int32_t tmk_ss_pooled_quantiles(const TmkSSData* data, const TmkSSOptions* options, int64_t orderCount,
                                const double* orders, double* quantiles, double* deviations, int64_t* nans,
                                const ThreadingService* threading) {
  const int32_t bad =
      tmk::first_status({{orderCount < 0, VTS_STATUS_SS_BAD_ORDERS},
                         {orderCount > 0 && orders == nullptr, VTS_STATUS_SS_ORDERS_NULL},
                         {orderCount > 0 && quantiles == nullptr, VTS_STATUS_SS_QUANTILES_NULL}});
  if (bad != 0) return bad;
  const std::span wanted(orders, static_cast<size_t>(orderCount));
  if (const int32_t refused = check(data, options, wanted); refused != 0) return refused;
  return tmk::guarded(VTS_STATUS_SS_MEMORY, [&] {
    const size_t columns = columns_of(*data);
    for_each_item(threading, worker_count(threading, columns), columns, [&](size_t j, size_t) {
      const sample s = sample::of(*data, j, *options);
      double* const own = quantiles + j * wanted.size();
      if (!wanted.empty()) s.quantiles(wanted, {own, wanted.size()});
      if (nans != nullptr) nans[j] = s.nans;
      if (deviations != nullptr) deviations[j] = s.deviation_from(median_of(s, wanted, own));
    });
    return 0;
  });
}
