// SPDX-License-Identifier: Apache-2.0
// Mahalanobis distances of a range of observations: sqrt((x - m)' C (x - m)).
#include <cmath>
#include <vector>

#include "stats/robust/matrix.hpp"
#include "stats/robust/scan.hpp"
#include "stats/robust/task_data.hpp"

namespace tmk::stats::robust {
namespace {

template <class Real>
int32_t distances_of_range(SSTask* handle) {
  const auto& t = task<Real>::of(handle);
  return guarded(VTS_STATUS_SS_MEMORY, [&] {
    TmkSSData data = data_of(t);
    const auto p = static_cast<size_t>(data.columns);
    const int64_t first = t.integer(t.distanceFirst);
    data.values = t.data + first * data.rowStride;
    data.rows = std::max<int64_t>(0, t.integer(t.distanceLast) - first);
    const std::vector<double> mean(t.distanceMean, t.distanceMean + p);
    std::vector<double> inverse(t.distanceInvCov, t.distanceInvCov + p * p);
    mirror(static_cast<int32_t>(p), inverse.data());
    scan(data, mean.data(), inverse.data(), false, tmk_threading_serial(),
         [&](size_t from, size_t count, const double* d2, double*) {
           for (size_t k = 0; k < count; ++k) t.distanceOut[from + k] = static_cast<Real>(std::sqrt(d2[k]));
         });
    return 0;
  });
}

}  // namespace
}  // namespace tmk::stats::robust

int32_t _vtsdSSMahDistance(SSTask* task) { return tmk::stats::robust::distances_of_range<double>(task); }
int32_t _vtssSSMahDistance(SSTask* task) { return tmk::stats::robust::distances_of_range<float>(task); }
