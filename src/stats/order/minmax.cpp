// SPDX-License-Identifier: Apache-2.0
// Running minima and maxima of the selected variables.
//
// A row of n values and the columns of a matrix of n observations are the same thing: values that repeat with
// a period. Few columns are read several observations at a time, each with extrema of its own, which are
// folded together at the end.
#include "stats/order/minmax.hpp"

#include <algorithm>

#include "stats/order/order.hpp"

namespace tmk::stats {
namespace {

// Columns that are folded at once: enough vectors of any tier to hide their latency.
constexpr int most_columns = 256;

// One more value: a running value that is NaN stays, and so does any that the value is not beyond.
template <class Real>
void fold_value(Real x, Real& low, Real& high) {
  if (x < low) low = x;
  if (x > high) high = x;
}

// `count` columns, at most most_columns, of n observations that lie `step` apart.
template <class Real>
void fold_columns(const Real* x, ptrdiff_t n, ptrdiff_t step, int count, Real* low, Real* high) {
  const int at_once = step == count ? most_columns / count : 1;
  const int length = at_once * count;
  Real lows[most_columns], highs[most_columns];
  for (int i = 0; i < length; ++i) {
    lows[i] = low[i % count];
    highs[i] = high[i % count];
  }
  const ptrdiff_t periods = n / at_once;
  extrema_kernels_now<Real>().fold(x, periods, at_once * step, length, lows, highs);
  // Minima into minima and maxima into maxima: where there was less than a period, both still hold the
  // initial values.
  for (int i = 0; i < length; ++i) {
    if (lows[i] < low[i % count]) low[i % count] = lows[i];
    if (highs[i] > high[i % count]) high[i % count] = highs[i];
  }
  for (ptrdiff_t i = periods * at_once; i < n; ++i)
    for (int j = 0; j < count; ++j) fold_value(x[i * step + j], low[j], high[j]);
}

// Variables first to first + count - 1, of which the selected ones are written. An extremum that is not
// requested starts from any value.
template <class Real>
void fold_variables(const task<Real>& t, bool with_minimum, bool with_maximum, const Real* x, ptrdiff_t step,
                    ptrdiff_t first, int count) {
  Real low[most_columns], high[most_columns];
  for (int j = 0; j < count; ++j) {
    low[j] = with_minimum ? t.minimum[first + j] : Real{0};
    high[j] = with_maximum ? t.maximum[first + j] : Real{0};
  }
  fold_columns(x, t.n(), step, count, low, high);
  for (int j = 0; j < count; ++j) {
    if (!t.selects(first + j)) continue;
    if (with_minimum) t.minimum[first + j] = low[j];
    if (with_maximum) t.maximum[first + j] = high[j];
  }
}

template <class Real>
int32_t minmax(SSTask* handle, uint32_t estimates, uint32_t method) {
  const auto& t = task<Real>::of(handle);
  const bool with_minimum = (estimates & VTS_SS_ESTIMATE_MINIMUM) != 0;
  const bool with_maximum = (estimates & VTS_SS_ESTIMATE_MAXIMUM) != 0;
  const int32_t status = first_status({
      {!storage_is(t, t.dataStorage, VTS_SS_ROWS | VTS_SS_COLUMNS), VTS_STATUS_SS_BAD_STORAGE},
      {with_minimum && t.minimum == nullptr, VTS_STATUS_SS_MIN_NULL},
      {with_maximum && t.maximum == nullptr, VTS_STATUS_SS_MAX_NULL},
      {(method & (VTS_SS_METHOD_FAST | VTS_SS_METHOD_ONE_PASS)) == 0, VTS_STATUS_SS_BAD_METHOD},
  });
  if (status != 0) return status;
  if (const int32_t counts = counts_status(t); counts != 0) return counts;
  const ptrdiff_t p = t.p(), n = t.n();
  if (storage_is(t, t.dataStorage, VTS_SS_ROWS)) {
    for (ptrdiff_t j = 0; j < p; ++j)
      if (t.selects(j)) fold_variables(t, with_minimum, with_maximum, t.data + j * n, 1, j, 1);
  } else {
    for (ptrdiff_t j = 0; j < p; j += most_columns)
      fold_variables(t, with_minimum, with_maximum, t.data + j, p, j,
                     static_cast<int>(std::min<ptrdiff_t>(p - j, most_columns)));
  }
  return 0;
}

}  // namespace
}  // namespace tmk::stats

int32_t _vtsdSSMinmax(SSTask* task, uint32_t estimatesLow, uint32_t, uint32_t methodLow, uint32_t,
                      const ThreadingService*) {
  return tmk::stats::minmax<double>(task, estimatesLow, methodLow);
}
int32_t _vtssSSMinmax(SSTask* task, uint32_t estimatesLow, uint32_t, uint32_t methodLow, uint32_t,
                      const ThreadingService*) {
  return tmk::stats::minmax<float>(task, estimatesLow, methodLow);
}
