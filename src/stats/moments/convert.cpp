// SPDX-License-Identifier: Apache-2.0
// Estimates from sums and cross-products that are there already.
#include "stats/moments/basic.hpp"
#include "stats/moments/pack.hpp"

namespace tmk::stats {

template <class Real>
int32_t convert(task<Real>& task, const demand& asked) {
  const auto p = static_cast<ptrdiff_t>(task.p());
  weight_pair<Real> w;
  if (task.accumWeight != nullptr)
    w = {task.accumWeight[0], task.accumWeight[1]};
  else
    w.w = w.w2 = static_cast<Real>(task.n());

  scratch<Real> expanded;
  const Real* cross = task.cross;
  const int storage = matrix_storage(task, task.crossStorage);
  if (asked.wants_matrix() && storage != VTS_SS_FULL) {
    expanded = scratch<Real>(static_cast<size_t>(p * p));
    if (!expanded) return VTS_STATUS_SS_MEMORY;
    expand(p, storage, task.cross, expanded.get());
    cross = expanded.get();
  }
  for (int k = 0; k < moment_arrays; ++k) {
    const Real* const sum = task.*sum_fields<Real>[k];
    if (!asked.wants(mean_estimate + k) || sum == nullptr) continue;
    const Real factor = k == raw_arrays ? w.w / (w.w * w.w - w.w2) : 1 / w.w;
    for (ptrdiff_t j = 0; j < p; ++j)
      if (task.selects(j)) (task.*moment_fields<Real>[k])[j] = sum[j] * factor;
  }
  write_derived(task, asked, p);
  demand matrices = asked;
  matrices.wanted &= ~(1u << cross_estimate);
  return write_matrices(task, matrices, p, w, cross);
}

template int32_t convert(task<double>&, const demand&);
template int32_t convert(task<float>&, const demand&);

}  // namespace tmk::stats
