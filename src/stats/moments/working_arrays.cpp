// SPDX-License-Identifier: Apache-2.0
// The arrays that kernels work on: the caller's own where they can be, temporaries elsewhere. Before the
// first block they are zero; before a later one they hold the state of the blocks so far, raw orders as
// moments and central orders as sums.
#include <algorithm>
#include <limits>

#include "stats/moments/basic.hpp"
#include "stats/moments/pack.hpp"

namespace tmk::stats {
namespace {

// Bit k for working array k, by method and order number.
constexpr unsigned arrays_kept[3][order_kinds] = {
    {0x01, 0x03, 0x07, 0x0F}, {0x01, 0x11, 0x13, 0x7F}, {0x10, 0x30, 0x70, 0x7E}};

// The smallest order number that a moment or sum demands of a method.
constexpr int order_demanded[3][moment_arrays] = {
    {0, 1, 2, 3, 0, 0, 0}, {0, 2, 3, 3, 1, 3, 3}, {0, 3, 3, 3, 0, 1, 2}};

template <class Real>
int order_number(const demand& asked) {
  int q = 0;
  for (int k = 0; k < moment_arrays; ++k)
    if (asked.wants(mean_estimate + k) || asked.wants(sum_estimate + k))
      q = std::max(q, order_demanded[static_cast<int>(asked.by)][k]);
  return q;
}

template <class Real>
row_kernel<Real>* kernel_of(const basic_call<Real>& call) {
  const bool weighted = call.task.weights != nullptr;
  const int index = index_2pass(call.columns, weighted, call.q);
  switch (call.asked.by) {
    case method::fast:
      return fast_kernels_now<Real>().kernel_fast_funcs_table[index];
    case method::two_pass:
      return two_pass_kernels_now<Real>().kernel_2pass_funcs_table[index];
    default:
      return one_pass_kernels_now<Real>()
          .kernel_1pass_funcs_table[index_1pass(call.columns, weighted, call.q, call.asked.wants_matrix())];
  }
}

// What turns the caller's estimate into the working array's.
template <class Real>
Real state_factor(int k, bool is_sum, weight_pair<Real> w) {
  if (k < raw_arrays) return is_sum ? 1 / w.w : 1;
  if (is_sum) return 1;
  return k == raw_arrays ? (w.w * w.w - w.w2) / w.w : w.w;
}

// Working array k, in the caller's memory or at `temporary`.
template <class Real>
void place_array(basic_call<Real>& call, int k, Real* temporary) {
  const auto& task = call.task;
  const bool mean_given = call.two_pass() && k == 0;
  Real* const sum = mean_given ? nullptr : task.*sum_fields<Real>[k];
  Real* const source = sum != nullptr ? sum : task.*moment_fields<Real>[k];
  const auto w = call.weight();
  // A mask keeps the other variables' estimates as they are, while kernels compute them all.
  Real* const place = call.work[k] = source == nullptr || task.indices != nullptr ? temporary : source;
  if (source == nullptr || (!(w.w > 0) && !mean_given)) {
    std::fill_n(place, call.p, Real{0});
    return;
  }
  call.sourced |= 1u << k;
  const Real factor = mean_given ? 1 : state_factor(k, sum != nullptr, w);
  for (ptrdiff_t j = 0; j < call.p; ++j) place[j] = source[j] * factor;
}

// Central sums that the caller does not keep between blocks follow from raw moments: updating the higher ones
// takes the lower.
template <class Real>
void restore_central_sums(basic_call<Real>& call) {
  for (int k = raw_arrays; k < moment_arrays; ++k) {
    const int order = k - raw_arrays + 2;
    const unsigned needed = (1u << order) - 1;
    if (!call.keeps(k) || (call.sourced >> k & 1) != 0 || (call.sourced & needed) != needed) continue;
    for (ptrdiff_t j = 0; j < call.p; ++j) {
      Real raw[raw_arrays] = {};
      for (int i = 0; i < order; ++i) raw[i] = call.work[i][j];
      call.work[k][j] = call.weight().w * central_from_raw(order, raw);
    }
  }
}

// Central sums of orders 2 and 3 that updating the higher ones takes, and that the next block gets neither
// from a field nor from the raw moments.
template <class Real>
unsigned lost_between_blocks(const basic_call<Real>& call) {
  if (call.asked.by != method::one_pass || call.task.accumWeight == nullptr) return 0;
  unsigned fielded = 0;
  for (int k = 0; k < moment_arrays; ++k)
    if (call.task.*sum_fields<Real>[k] != nullptr || call.task.*moment_fields<Real>[k] != nullptr)
      fielded |= 1u << k;
  unsigned lost = 0;
  for (int order = 2; order <= 3; ++order) {
    const int k = raw_arrays + order - 2;
    const unsigned raw = (1u << order) - 1;
    const bool feeds_higher = (call.kept & fielded) >> (k + 1) != 0;
    if (call.keeps(k) && (fielded >> k & 1) == 0 && (fielded & raw) != raw && feeds_higher) lost |= 1u << k;
  }
  return lost;
}

template <class Real>
bool reserve_kept_sums(const basic_call<Real>& call) {
  kept_sums<Real>& kept = call.task.keptSums;
  if (call.lost == 0 || kept.variables == call.p) return true;
  Real* const sums = allocate_reals<Real>(2 * call.p);
  if (sums == nullptr) return false;
  tmk_serv_deallocate(kept.sums);
  kept = {.sums = sums, .variables = call.p, .accumulator = nullptr, .weight = 0, .weight2 = 0};
  return true;
}

template <class Real>
Real* kept_array(const basic_call<Real>& call, int k) {
  return call.task.keptSums.sums + (k - raw_arrays) * call.p;
}

template <class Real>
void restore_lost_sums(const basic_call<Real>& call) {
  const kept_sums<Real>& kept = call.task.keptSums;
  const auto w = call.weight();
  if (kept.accumulator != call.task.accumWeight || kept.weight != w.w || kept.weight2 != w.w2) return;
  for (int k = raw_arrays; k < moment_arrays; ++k)
    if ((call.lost >> k & 1) != 0) std::copy_n(kept_array(call, k), call.p, call.work[k]);
}

template <class Real>
void fill_cross(const basic_call<Real>& call) {
  const auto& task = call.task;
  const auto w = call.weight();
  const ptrdiff_t p = call.p;
  if (!(w.w > 0))
    std::fill_n(call.cross, p * p, Real{0});
  else if (call.cross == task.cross)
    return;
  else if (call.asked.wants(cross_estimate))
    expand(p, matrix_storage(task, task.crossStorage), task.cross, call.cross);
  else if (call.asked.wants(covariance_estimate))
    expand_cov(p, matrix_storage(task, task.covStorage), task.cov, w, call.cross);
  else
    expand_cor(p, matrix_storage(task, task.corStorage), task.cor, w, call.cross);
}

}  // namespace

template <class Real>
int32_t set_up(basic_call<Real>& call) {
  const auto& task = call.task;
  const ptrdiff_t p = call.p, arrays = moment_arrays * p;
  call.q = order_number<Real>(call.asked);
  call.kept = arrays_kept[static_cast<int>(call.asked.by)][call.q];
  call.kernel = kernel_of(call);

  const bool matrix = call.asked.wants_matrix();
  const bool in_place = call.asked.wants(cross_estimate) && task.indices == nullptr &&
                        matrix_storage(task, task.crossStorage) == VTS_SS_FULL;
  // Large matrices are worth one product of the whole data more than one a thread.
  const ptrdiff_t cached = std::max<ptrdiff_t>(262144 / (static_cast<ptrdiff_t>(sizeof(Real)) * p), 64);
  call.products_apart = matrix && call.threads > 1 && call.asked.by != method::one_pass &&
                        task.weights == nullptr && call.n <= std::numeric_limits<int>::max() &&
                        p > std::min(cached, call.n / call.threads);
  call.slice = arrays + (matrix && !call.products_apart ? p * p : 0);
  const ptrdiff_t temporaries = arrays, square = matrix && !in_place ? p * p : 0,
                  records = accumulators * ptrdiff_t{call.threads};
  call.memory =
      scratch<Real>(static_cast<size_t>(temporaries + square + records + call.slice * (call.threads - 1)));
  if (!call.memory) return VTS_STATUS_SS_MEMORY;

  Real* const temporary = call.memory.get();
  call.accum = temporary + temporaries + square;
  call.slices = call.accum + records;
  std::fill_n(call.accum, records + call.slice * (call.threads - 1), Real{0});
  if (task.accumWeight != nullptr) std::copy_n(task.accumWeight, 2, call.accum);
  for (int k = 0; k < moment_arrays; ++k)
    if (call.keeps(k) || k == 0) place_array(call, k, temporary + k * p);
  call.lost = lost_between_blocks(call);
  if (!reserve_kept_sums(call)) return VTS_STATUS_SS_MEMORY;
  if (call.asked.by == method::one_pass && call.weight().w > 0) {
    restore_central_sums(call);
    restore_lost_sums(call);
  }
  if (matrix) {
    call.cross = in_place ? task.cross : temporary + temporaries;
    fill_cross(call);
  }
  return 0;
}

template <class Real>
void keep_lost_sums(const basic_call<Real>& call) {
  if (call.lost == 0) return;
  for (int k = raw_arrays; k < moment_arrays; ++k)
    if ((call.lost >> k & 1) != 0) std::copy_n(call.work[k], call.p, kept_array(call, k));
  kept_sums<Real>& kept = call.task.keptSums;
  const auto w = call.weight();
  kept.accumulator = call.task.accumWeight;
  kept.weight = w.w, kept.weight2 = w.w2;
}

#define TMK_INSTANTIATE(Real)                 \
  template int32_t set_up(basic_call<Real>&); \
  template void keep_lost_sums(const basic_call<Real>&);
TMK_INSTANTIATE(double)
TMK_INSTANTIATE(float)
#undef TMK_INSTANTIATE

}  // namespace tmk::stats
