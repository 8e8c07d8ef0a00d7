// SPDX-License-Identifier: Apache-2.0
// EM for the task (A. Dempster, N. Laird and D. Rubin, JRSS B 39, 1977): holes take their expected values,
// and their products the conditional covariance in addition. It stops on an absolute change, whatever the
// units.
#include "stats/missing/sums.hpp"
#include "stats/missing/task_imputation.hpp"

namespace tmk::stats::missing {

template <class Real>
void run_em(const imputation_request<Real>& request, const data_rows<Real>& data,
            const square<Real>& observed, square<Real>& theta) {
  square<Real> half(data.p), sums(data.p), next(data.p);
  swept_model<Real> model(data.p);
  const auto add_covariance = [&](ptrdiff_t, const row_block<Real>& block, const square<Real>& swept, Real*) {
    const Real share = static_cast<Real>(block.count) / 2;
    for (ptrdiff_t a = 0; a < block.k; ++a)
      for (ptrdiff_t c = 0; c < block.k; ++c)
        half[block.holes[a]][block.holes[c]] += share * swept[block.holes[a]][block.holes[c]];
  };
  for (int64_t round = 0; round < request.em_rounds; ++round) {
    fill_holes(data, theta, model, half, add_covariance);
    complete_sums(observed, half, sums);
    maximise(sums, next);
    const bool settled = largest_difference(next, theta) < request.accuracy;
    std::swap(theta, next);
    if (settled) return;
  }
}

#define TMK_INSTANTIATE(Real)                                                                        \
  template void run_em(const imputation_request<Real>&, const data_rows<Real>&, const square<Real>&, \
                       square<Real>&);
TMK_INSTANTIATE(double)
TMK_INSTANTIATE(float)
#undef TMK_INSTANTIATE

}  // namespace tmk::stats::missing
