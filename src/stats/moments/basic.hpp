// SPDX-License-Identifier: Apache-2.0
// The state of one call of the moments, which basic.cpp and its steps share.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/scratch.hpp"
#include "stats/moments/demand.hpp"
#include "stats/moments/kernels.hpp"
#include "stats/task.hpp"
#include "tmk/abi/serv.h"

namespace tmk::stats {

template <class Real>
Real* allocate_reals(ptrdiff_t count) {
  return static_cast<Real*>(tmk_serv_allocate(static_cast<size_t>(count) * sizeof(Real), 128));
}

// The fields of the task for a working array's estimates.
template <class Real>
constexpr Real* task<Real>::*sum_fields[moment_arrays] = {
    &task<Real>::sum,         &task<Real>::rawSum2,     &task<Real>::rawSum3,    &task<Real>::rawSum4,
    &task<Real>::centralSum2, &task<Real>::centralSum3, &task<Real>::centralSum4};
template <class Real>
constexpr Real* task<Real>::*moment_fields[moment_arrays] = {
    &task<Real>::mean,     &task<Real>::raw2,     &task<Real>::raw3,    &task<Real>::raw4,
    &task<Real>::central2, &task<Real>::central3, &task<Real>::central4};

// The sum of weights and that of their squares.
template <class Real>
struct weight_pair {
  Real w, w2;
  // A central sum of order 2 times this is the unbiased variance.
  Real variance_factor() const { return w > 0 ? 1 / (w - w2 / w) : Real{1}; }
};

template <class Real>
struct basic_call {
  stats::task<Real>& task;
  const stats::demand& asked;
  ptrdiff_t p, n;
  bool columns;
  int threads;
  int q = 0;                    // order number: a column of the kernel tables
  unsigned kept = 0;            // working arrays that the kernel keeps, as a mask
  unsigned sourced = 0;         // those whose earlier state the caller holds
  unsigned lost = 0;            // central sums that no field of the caller keeps for the next block
  bool products_apart = false;  // the cross-product waits for the merge
  row_kernel<Real>* kernel = nullptr;
  Real* accum = nullptr;  // a record a thread
  Real* work[moment_arrays] = {};
  Real* cross = nullptr;   // working matrix, or null
  Real* slices = nullptr;  // working arrays and matrices of threads 1 and up
  ptrdiff_t slice = 0;
  scratch<Real> memory{};
  int32_t status = 0;

  bool keeps(int k) const { return (kept >> k & 1) != 0; }
  bool two_pass() const { return asked.by == method::two_pass; }
  // About which mean the blocks before were summed; `now` is the current one.
  const Real* earlier_means(const Real* now) const {
    return two_pass() && task.savedMeanCount == p ? task.savedMeans : now;
  }
  weight_pair<Real> weight() const { return {accum[sum_of_weights], accum[sum_of_squared_weights]}; }
};

// The kernel, working arrays and matrices of a call, holding what earlier blocks left. 0 or a status.
template <class Real>
int32_t set_up(basic_call<Real>& call);

// Copies the central sums of `lost` to the task, in memory that set_up has allocated.
template <class Real>
void keep_lost_sums(const basic_call<Real>& call);

// The range of thread s, with its working arrays; what ParallelRun runs, context a basic_call.
template <class Real>
row_range<Real> range_of_thread(const basic_call<Real>& call, int s);
template <class Real>
void work_on_range(int32_t s, int32_t unused, int32_t threads, void* context);

// Folds the working arrays of threads 1 and up into those of thread 0, in their order.
template <class Real>
void merge_threads(basic_call<Real>& call);

// Working arrays to the fields of the task, and the estimates that derive from moments.
template <class Real>
void write_back(const basic_call<Real>& call);
template <class Real>
void write_derived(const task<Real>& task, const demand& asked, ptrdiff_t p);

// Moments from sums, cov and cor from the cross-product; data is not touched.
template <class Real>
int32_t convert(task<Real>& task, const demand& asked);

// The central moment of order 2 to 4 about the mean r[0] from raw moments r[0], r[1], ...
template <class Real>
Real central_from_raw(int order, const Real* r) {
  const Real m = r[0], m2 = m * m;
  if (order == 2) return r[1] - m2;
  if (order == 3) return r[2] - 3 * r[1] * m + 2 * m2 * m;
  return r[3] - 4 * r[2] * m + 6 * r[1] * m2 - 3 * m2 * m2;
}

}  // namespace tmk::stats
