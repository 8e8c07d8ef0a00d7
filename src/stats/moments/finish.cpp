// SPDX-License-Identifier: Apache-2.0
// From working arrays to the caller's estimates.
#include <cmath>

#include "stats/moments/basic.hpp"

namespace tmk::stats {
namespace {

// A central sum times this is the moment: unbiased for order 2, and divided by the weight alone above it.
template <class Real>
Real moment_factor(int order, weight_pair<Real> w) {
  return order == 2 ? w.w / (w.w * w.w - w.w2) : 1 / w.w;
}

template <class Real, class Write>
void for_selected(const task<Real>& task, ptrdiff_t p, Write write) {
  for (ptrdiff_t j = 0; j < p; ++j)
    if (task.selects(j)) write(j);
}

// Central estimates by way of raw moments.
template <class Real>
void write_fast_central(const basic_call<Real>& call, int order) {
  const auto& task = call.task;
  const int k = raw_arrays + order - 2;
  const bool sum = call.asked.wants(central_sum2_estimate + order - 2);
  const bool moment = call.asked.wants(central2_estimate + order - 2);
  if (!sum && !moment) return;
  const auto w = call.weight();
  const Real factor = order == 2 ? w.w * w.w / (w.w * w.w - w.w2) : 1;
  for_selected(task, call.p, [&](ptrdiff_t j) {
    Real raw[raw_arrays] = {};
    for (int i = 0; i < order; ++i) raw[i] = call.work[i][j];
    const Real central = central_from_raw(order, raw);
    if (sum) (task.*sum_fields<Real>[k])[j] = central * w.w;
    if (moment) (task.*moment_fields<Real>[k])[j] = central * factor;
  });
}

}  // namespace

template <class Real>
void write_back(const basic_call<Real>& call) {
  const auto& task = call.task;
  const auto w = call.weight();
  // Before raw working arrays, which may be the fields of their sums.
  if (call.asked.by == method::fast)
    for (int order = 2; order <= 4; ++order) write_fast_central(call, order);
  for (int k = 0; k < moment_arrays; ++k) {
    const bool is_raw = k < raw_arrays;
    Real* const sum = task.*sum_fields<Real>[k];
    Real* const moment = call.two_pass() && k == 0 ? nullptr : task.*moment_fields<Real>[k];
    if (!call.keeps(k) && !(call.two_pass() && call.asked.wants(sum_estimate + k))) continue;
    const Real to_sum = is_raw ? w.w : 1;
    const Real to_moment = is_raw ? 1 : moment_factor(k - raw_arrays + 2, w);
    for_selected(task, call.p, [&](ptrdiff_t j) {
      const Real value = call.work[k][j];
      if (moment != nullptr) moment[j] = value * to_moment;
      if (sum != nullptr) sum[j] = value * to_sum;
    });
  }
}

template <class Real>
void write_derived(const task<Real>& task, const demand& asked, ptrdiff_t p) {
  for_selected(task, p, [&](ptrdiff_t j) {
    if (asked.wants(kurtosis_estimate))
      task.kurtosis[j] = task.central4[j] / (task.central2[j] * task.central2[j]) - 3;
    if (asked.wants(skewness_estimate))
      task.skewness[j] = task.central3[j] / std::sqrt(task.central2[j] * task.central2[j] * task.central2[j]);
    if (asked.wants(variation_estimate)) task.variation[j] = std::sqrt(task.central2[j]) / task.mean[j];
  });
}

#define TMK_INSTANTIATE(Real)                        \
  template void write_back(const basic_call<Real>&); \
  template void write_derived(const task<Real>&, const demand&, ptrdiff_t);
TMK_INSTANTIATE(double)
TMK_INSTANTIATE(float)
#undef TMK_INSTANTIATE

}  // namespace tmk::stats
