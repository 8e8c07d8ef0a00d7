// SPDX-License-Identifier: Apache-2.0
// Absolute deviations: the median of |x - median| and the mean of |x - mean|, one variable to an item.
#include <atomic>
#include <cmath>

#include "stats/order/median.hpp"
#include "stats/order/order.hpp"

namespace tmk::stats {
namespace {

template <class Real>
struct deviations_call {
  const task<Real>& t;
  bool given_means;
  Real* workspace;
  std::atomic<int32_t> status{0};

  variable<Real> values_of(ptrdiff_t j) const {
    const ptrdiff_t p = t.p();
    return {t.data, p == 1 || storage_is(t, t.dataStorage, VTS_SS_ROWS), j, p, static_cast<ptrdiff_t>(t.n())};
  }
  // Of a copy in the thread's scratch, which the caller may change.
  Real* copy_of(ptrdiff_t j, int32_t thread) const {
    const auto n = static_cast<ptrdiff_t>(t.n());
    Real* const mine = workspace + thread * n;
    copy(values_of(j), variable<Real>(mine, true, 0, 1, n), n);
    return mine;
  }
};

template <class Real>
void _vSSMdADThreader(int32_t j, int32_t thread, int32_t, void* context) {
  const auto& call = *static_cast<const deviations_call<Real>*>(context);
  if (!call.t.selects(j)) return;
  const auto n = static_cast<ptrdiff_t>(call.t.n());
  Real* const x = call.copy_of(j, thread);
  const Real median = median_in_place(x, n);
  for (ptrdiff_t i = 0; i < n; ++i) x[i] = std::abs(x[i] - median);
  call.t.medianAbsDev[j] = median_in_place(x, n);
}

template <class Real>
constexpr auto basic = _vtsdSSBasic;
template <>
constexpr auto basic<float> = _vtssSSBasic;

// The mean of one variable under the weights of the whole task.
template <class Real>
int32_t mean_of(const task<Real>& whole, Real* x, Real* mean) {
  constexpr int32_t one = 1;
  constexpr int64_t wide_one = 1, wide_rows = VTS_SS_ROWS;
  constexpr int32_t rows = VTS_SS_ROWS;
  const bool wide = whole.wideIntegers != 0;
  task<Real> single{};
  single.wideIntegers = whole.wideIntegers;
  single.dimension = wide ? static_cast<const void*>(&wide_one) : &one;
  single.observations = whole.observations;
  single.dataStorage = wide ? static_cast<const void*>(&wide_rows) : &rows;
  single.data = x;
  single.weights = whole.weights;
  single.mean = mean;
  return basic<Real>(single.handle(), VTS_SS_ESTIMATE_MEAN, 0, VTS_SS_METHOD_FAST, 0, tmk_threading_serial());
}

template <class Real>
void _vSSMnADThreader(int32_t j, int32_t thread, int32_t, void* context) {
  auto& call = *static_cast<deviations_call<Real>*>(context);
  const task<Real>& t = call.t;
  if (!t.selects(j)) return;
  const auto n = static_cast<ptrdiff_t>(t.n());
  Real* const x = call.copy_of(j, thread);
  Real mean = call.given_means ? t.mean[j] : Real{0};
  if (!call.given_means)
    if (const int32_t status = mean_of(t, x, &mean); status < 0) return void(call.status = status);
  for (ptrdiff_t i = 0; i < n; ++i) x[i] = std::abs(x[i] - mean);
  if (const int32_t status = mean_of(t, x, t.meanAbsDev + j); status < 0) call.status = status;
}

template <class Real>
int32_t check(const task<Real>& t, uint32_t estimates_high, uint32_t method) {
  const bool with_median = (estimates_high & VTS_SS_ESTIMATE_HIGH_MEDIAN_DEV) != 0;
  const bool with_mean = (estimates_high & VTS_SS_ESTIMATE_HIGH_MEAN_DEV) != 0;
  const bool fast = (method & VTS_SS_METHOD_FAST) != 0, two_pass = (method & VTS_SS_METHOD_TWO_PASS) != 0;
  return first_status({
      {t.p() < 1, VTS_STATUS_SS_BAD_DIMENSION},
      {t.observations == nullptr || t.n() < 1, VTS_STATUS_SS_BAD_OBSERVATIONS},
      {t.dataStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL},
      {t.dataStorage != nullptr && !is_layout(t, t.dataStorage), VTS_STATUS_SS_BAD_STORAGE},
      {with_median && t.medianAbsDev == nullptr, VTS_STATUS_SS_MEDIAN_DEV_NULL},
      {with_median && !fast, VTS_STATUS_SS_BAD_METHOD},
      {with_mean && t.meanAbsDev == nullptr, VTS_STATUS_SS_MEAN_DEV_NULL},
      {with_mean && !fast && !two_pass, VTS_STATUS_SS_BAD_METHOD},
      {with_mean && two_pass && t.mean == nullptr, VTS_STATUS_SS_MEAN_NULL},
  });
}

template <class Real>
int32_t deviations(SSTask* handle, uint32_t estimates_high, uint32_t method,
                   const ThreadingService* threading) {
  const auto& t = task<Real>::of(handle);
  if (const int32_t status = check(t, estimates_high, method); status != 0) return status;
  const auto p = static_cast<int32_t>(t.p());
  const int32_t threads = std::min(p, threading->MaxThreads());
  const scratch<Real> workspace(static_cast<size_t>(t.n()) * static_cast<size_t>(threads));
  if (!workspace) return VTS_STATUS_SS_MEMORY;
  deviations_call<Real> call = {t, (method & VTS_SS_METHOD_TWO_PASS) != 0, workspace.get()};
  if ((estimates_high & VTS_SS_ESTIMATE_HIGH_MEDIAN_DEV) != 0)
    threading->ParallelFor(p, threads, &call, _vSSMdADThreader<Real>);
  if ((estimates_high & VTS_SS_ESTIMATE_HIGH_MEAN_DEV) != 0)
    threading->ParallelFor(p, threads, &call, _vSSMnADThreader<Real>);
  return call.status;
}

}  // namespace
}  // namespace tmk::stats

int32_t _vtsdSSMAD(SSTask* task, uint32_t, uint32_t estimatesHigh, uint32_t methodLow, uint32_t,
                   const ThreadingService* threading) {
  return tmk::stats::deviations<double>(task, estimatesHigh, methodLow, threading);
}
int32_t _vtssSSMAD(SSTask* task, uint32_t, uint32_t estimatesHigh, uint32_t methodLow, uint32_t,
                   const ThreadingService* threading) {
  return tmk::stats::deviations<float>(task, estimatesHigh, methodLow, threading);
}
