// SPDX-License-Identifier: Apache-2.0
// Moments of a block of observations, folded into those of the blocks before it.
#include "stats/moments/basic.hpp"

#include <algorithm>

#include "stats/moments/pack.hpp"
#include "stats/moments/products.hpp"

namespace tmk::stats {
namespace {

// Small problems stay in one thread.
int thread_count(int64_t n, int64_t p, bool matrix, int most) {
  const int64_t work = matrix ? n * p * p : n * p;
  return static_cast<int>(std::max<int64_t>(1, std::min({int64_t{most}, work >> 13, n >> 4})));
}

template <class Real>
int32_t keep_means(basic_call<Real>& call) {
  auto& task = call.task;
  if (task.savedMeanCount != call.p) {
    Real* const means = allocate_reals<Real>(call.p);
    if (means == nullptr) return VTS_STATUS_SS_MEMORY;
    tmk_serv_deallocate(task.savedMeans);
    task.savedMeans = means;
    task.savedMeanCount = call.p;
  }
  std::copy_n(call.work[0], call.p, task.savedMeans);
  return 0;
}

template <class Real>
int32_t run(task<Real>& task, const demand& asked, const ThreadingService& threading) {
  const auto p = static_cast<ptrdiff_t>(task.p()), n = static_cast<ptrdiff_t>(task.n());
  basic_call<Real> call = {
      .task = task,
      .asked = asked,
      .p = p,
      .n = n,
      .columns = p != 1 && (task.integer(task.dataStorage) & VTS_SS_ROWS) == 0,
      .threads = thread_count(n, p, asked.wants_matrix(), threading.MaxThreads()),
  };
  if (const int32_t status = set_up(call); status != 0) return status;

  if (call.products_apart && call.weight().w != 0)
    add_outer_product(p, call.weight().w, call.earlier_means(call.work[0]), call.cross, false);
  threading.ParallelRun(call.threads, &call, &work_on_range<Real>);
  if (call.status < 0) return call.status;
  merge_threads(call);
  if (call.products_apart) {
    add_products<Real>({call.columns, n, p, n, task.data}, call.cross, false);
    add_outer_product(p, -call.weight().w, call.work[0], call.cross, false);
  }

  if (call.cross != nullptr)
    if (const int32_t status = write_matrices(task, asked, p, call.weight(), call.cross); status != 0)
      return status;
  if (task.accumWeight != nullptr) std::copy_n(call.accum, 2, task.accumWeight);
  // The working means may be the field of the sums.
  const int32_t status = call.two_pass() ? keep_means(call) : 0;
  keep_lost_sums(call);
  write_back(call);
  write_derived(task, asked, p);
  return status;
}

template <class Real>
int32_t compute(SSTask* handle, uint32_t estimates_low, uint32_t estimates_high, uint32_t method_low,
                const ThreadingService* threading) {
  auto& task = stats::task<Real>::of(handle);
  demand asked;
  if (const int32_t status = check_demand(task, estimates_low, estimates_high, method_low, asked);
      status != 0)
    return status;
  return asked.by == method::convert ? convert(task, asked) : run(task, asked, *threading);
}

}  // namespace
}  // namespace tmk::stats

int32_t _vtsdSSBasic(SSTask* task, uint32_t estimatesLow, uint32_t estimatesHigh, uint32_t methodLow,
                     uint32_t, const ThreadingService* threading) {
  return tmk::stats::compute<double>(task, estimatesLow, estimatesHigh, methodLow, threading);
}

int32_t _vtssSSBasic(SSTask* task, uint32_t estimatesLow, uint32_t estimatesHigh, uint32_t methodLow,
                     uint32_t, const ThreadingService* threading) {
  return tmk::stats::compute<float>(task, estimatesLow, estimatesHigh, methodLow, threading);
}
