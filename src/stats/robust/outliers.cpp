// SPDX-License-Identifier: Apache-2.0
// The task's outlier detection.
#include <vector>

#include "platform/checks.hpp"
#include "platform/guarded.hpp"
#include "stats/robust/bacon.hpp"
#include "stats/robust/task_data.hpp"

namespace tmk::stats::robust {
namespace {

template <class Real>
int32_t check(const task<Real>& t, uint32_t method) {
  const bool dimension = has_dimension(t);
  return first_status({
      {!dimension, VTS_STATUS_SS_BAD_DIMENSION},
      {dimension && (t.observations == nullptr || t.n() / 5 < t.p()), VTS_STATUS_SS_BAD_OBSERVATIONS},
      {t.dataStorage == nullptr || !has_storage(t), VTS_STATUS_SS_BAD_STORAGE},
      {t.outlierWeights == nullptr, VTS_STATUS_SS_OUTLIER_WEIGHTS_NULL},
      {(method & VTS_SS_METHOD_BACON) == 0, VTS_STATUS_SS_BAD_METHOD},
      {t.data == nullptr, VTS_STATUS_SS_DATA_NULL},
  });
}

// Parameters count only if there are exactly three; each that is out of its range takes its default.
template <class Real>
bacon_rules rules_of(const task<Real>& t) {
  bacon_rules rules{
      bacon_start::medians, 0.05, 0.005, 5 * static_cast<size_t>(t.p()), nullptr, nullptr, true};
  const Real* const given = t.outlierParams;
  if (given == nullptr || t.outlierParamCount == nullptr || t.integer(t.outlierParamCount) != 3) return rules;
  if (given[0] >= 1 && given[0] < 2) rules.start = bacon_start::mahalanobis;
  if (given[1] >= 0 && given[1] <= 1) rules.tail = given[1];
  if (given[2] > 0) rules.growth = given[2];
  return rules;
}

template <class Real>
int32_t detect(SSTask* handle, uint32_t method, const ThreadingService* threading) {
  const auto& t = task<Real>::of(handle);
  if (const int32_t status = check(t, method); status != 0) return status;
  return guarded(VTS_STATUS_SS_MEMORY, [&] {
    const auto n = static_cast<size_t>(t.n());
    bacon_rules rules = rules_of(t);
    std::vector<double> own, weights(n);
    if (t.weights != nullptr) {
      own.assign(t.weights, t.weights + n);
      rules.weights = own.data();
    }
    const bacon_result result = bacon(data_of(t), rules, weights.data(), nullptr, threading, {});
    std::copy(weights.begin(), weights.end(), t.outlierWeights);
    const bool enough = result.converged && result.regular > 4 * static_cast<size_t>(t.p());
    return enough ? 0 : int32_t{VTS_STATUS_SS_TOO_FEW_REGULAR};
  });
}

}  // namespace
}  // namespace tmk::stats::robust

int32_t _vtsdSSOutliersDetection(SSTask* task, uint32_t, uint32_t, uint32_t methodLow, uint32_t,
                                 const ThreadingService* threading) {
  return tmk::stats::robust::detect<double>(task, methodLow, threading);
}
int32_t _vtssSSOutliersDetection(SSTask* task, uint32_t, uint32_t, uint32_t methodLow, uint32_t,
                                 const ThreadingService* threading) {
  return tmk::stats::robust::detect<float>(task, methodLow, threading);
}
