// SPDX-License-Identifier: Apache-2.0
// Pairwise formulas fold the threads' estimates together.
#include "stats/moments/basic.hpp"

namespace tmk::stats {
namespace {

// c_a += c_b + factor d d', with d the difference of the means.
template <class Real>
void merge_cross(const row_range<Real>& a, const row_range<Real>& b, Real factor) {
  for (ptrdiff_t i = 0; i < a.p; ++i) {
    const Real scaled = factor * (b.work[0][i] - a.work[0][i]);
    Real *const into = a.cross + i * a.p, *const from = b.cross + i * a.p;
    for (ptrdiff_t j = 0; j <= i; ++j) into[j] += from[j] + scaled * (b.work[0][j] - a.work[0][j]);
  }
}

}  // namespace

template <class Real>
void merge_threads(basic_call<Real>& call) {
  const auto a = range_of_thread(call, 0);
  for (int s = 1; s < call.threads; ++s) {
    const auto b = range_of_thread(call, s);
    const Real wa = a.accum[sum_of_weights], wb = b.accum[sum_of_weights];
    if (wb != 0) {
      if (b.cross != nullptr) merge_cross(a, b, wa == 0 ? Real{0} : wa * wb / (wa + wb));
      one_pass_kernels_now<Real>().merge(call.p, wa, wb, a.work, b.work);
    }
    for (int i = 0; i < accumulators; ++i) a.accum[i] += b.accum[i];
  }
}

template void merge_threads(basic_call<double>&);
template void merge_threads(basic_call<float>&);

}  // namespace tmk::stats
