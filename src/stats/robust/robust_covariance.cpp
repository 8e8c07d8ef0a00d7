// SPDX-License-Identifier: Apache-2.0
// The task's robust covariance: one OGK step, then the translated biweight with a scale that puts the middle
// distance where that of normal data is.
#include <cmath>
#include <vector>

#include "platform/checks.hpp"
#include "stats/robust/biweight.hpp"
#include "stats/robust/matrix.hpp"
#include "stats/robust/median.hpp"
#include "stats/robust/ogk.hpp"
#include "stats/robust/task_data.hpp"

namespace tmk::stats::robust {
namespace {

struct parameters {
  double breakdown, rejection = 0.001, accuracy = 0.001;
  int64_t rounds = 100;
};

template <class Real>
int32_t check(const task<Real>& t, uint32_t method) {
  const bool dimension = has_dimension(t), code = t.robustCovStorage != nullptr;
  const auto is_matrix_storage = [](int64_t value) { return value >= VTS_SS_FULL && value <= VTS_SS_UPPER; };
  return first_status({
      {!dimension, VTS_STATUS_SS_BAD_DIMENSION},
      {dimension && (t.observations == nullptr || t.n() / 2 < t.p() || t.n() == 2 * t.p()),
       VTS_STATUS_SS_BAD_OBSERVATIONS},
      {t.dataStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL},
      {t.dataStorage != nullptr && !has_storage(t), VTS_STATUS_SS_BAD_STORAGE},
      {t.robustCov == nullptr, VTS_STATUS_SS_ROBUST_COV_NULL},
      {t.robustMean == nullptr, VTS_STATUS_SS_ROBUST_MEAN_NULL},
      {!code, VTS_STATUS_SS_STORAGE_NULL},
      {code && !is_matrix_storage(t.integer(t.robustCovStorage)), VTS_STATUS_SS_BAD_STORAGE},
      {(method & VTS_SS_METHOD_TBS) == 0, VTS_STATUS_SS_BAD_METHOD},
      {t.data == nullptr, VTS_STATUS_SS_DATA_NULL},
  });
}

// Parameters count only if there are exactly four; each that is out of its range takes its default.
template <class Real>
parameters parameters_of(const task<Real>& t) {
  const auto n = static_cast<double>(t.n()), p = static_cast<double>(t.p());
  parameters r{.breakdown = (n - p) / (2 * n)};
  const Real* const given = t.robustParams;
  if (given == nullptr || t.robustParamCount == nullptr || t.integer(t.robustParamCount) != 4) return r;
  if (given[0] < r.breakdown) r.breakdown = given[0];
  if (given[1] > 0 && given[1] < 1) r.rejection = given[1];
  if (given[2] > 0) r.accuracy = given[2];
  if (given[3] >= 0) r.rounds = given[3] < 1e9f ? static_cast<int64_t>(given[3]) : int64_t{1000000000};
  return r;
}

// The data variable by variable in double: the caller's, or a copy.
template <class Real>
const double* columns_of(const TmkSSData& data, std::vector<double>& copy) {
  const size_t n = pooled::rows_of(data), p = pooled::columns_of(data);
  if constexpr (sizeof(Real) == sizeof(double))
    if (data.rowStride == 1) return static_cast<const double*>(data.values);
  copy.resize(n * p);
  const pooled::values_of<Real> x(data);
  for (size_t from = 0; from < n; from += 64)
    for (size_t j = 0; j < p; ++j)
      for (size_t i = from; i < std::min(n, from + 64); ++i) copy[j * n + i] = x(i, j);
  return copy.data();
}

estimate ogk_estimate(const TmkSSData& data, const ThreadingService* threading) {
  const size_t n = pooled::rows_of(data), p = pooled::columns_of(data);
  const auto* const x = static_cast<const double*>(data.values);
  std::vector<double> d2(n), weights(n), centre(p), work(n);
  ogk_step(x, n, p, d2.data(), threading);
  reject_far(d2, p, weights.data());
  // Any point among the data serves as the centre of the sums.
  for (size_t j = 0; j < p; ++j) centre[j] = median(x + j * n, n, work.data());
  return weighted_estimate(data, weights.data(), centre.data(), threading);
}

estimate translated_biweight(const TmkSSData& data, estimate e, const parameters& by,
                             const ThreadingService* threading) {
  const size_t n = pooled::rows_of(data), p = pooled::columns_of(data);
  const auto order = static_cast<int32_t>(p);
  const biweight w = task_biweight(order, by.breakdown, by.rejection);
  const size_t h = (p + 1 + n) / 2;
  const double middle = std::sqrt(__vtsdChi2ICDF(order, static_cast<double>(h) / static_cast<double>(n + 1)));
  std::vector<double> weights(n, 1.0), d(n), work(n);
  const double enough = by.accuracy * by.accuracy;
  double change = 2 * enough;
  for (int64_t round = 0; round < by.rounds && change > enough; ++round) {
    std::vector<double> inverse = e.covariance;
    require(make_invertible(order, inverse.data()));
    require(invert(order, inverse.data()));
    mirror(order, inverse.data());
    distances(data, e.mean.data(), inverse.data(), d.data(), threading);
    const double scale = middle / ranked(d.data(), n, h - 1, work.data());
    double squares = 0;
    change = 0;
    for (size_t i = 0; i < n; ++i) {
      const double distance = d[i] * scale, weight = w.weight(distance), moved = weight - weights[i];
      squares += weight * distance * distance;
      change += moved * moved;
      weights[i] = weight;
    }
    if (!(squares > 0)) throw failed{VTS_STATUS_SS_TOO_FEW_REGULAR};
    e = weighted_estimate(data, weights.data(), e.mean.data(), threading);
    const double factor = static_cast<double>(p) * e.weight / squares;
    for (double& x : e.covariance) x *= factor;
  }
  return e;
}

// A packed triangle goes by rows, as the matrix does.
template <class Real>
void write(const std::vector<double>& matrix, size_t p, int64_t storage, Real* r) {
  for (size_t i = 0; i < p; ++i) {
    const size_t first = storage == VTS_SS_UPPER ? i : 0, last = storage == VTS_SS_LOWER ? i + 1 : p;
    for (size_t j = first; j < last; ++j) *r++ = static_cast<Real>(matrix[i * p + j]);
  }
}

template <class Real>
int32_t compute(SSTask* handle, uint32_t method, const ThreadingService* threading) {
  const auto& t = task<Real>::of(handle);
  if (const int32_t status = check(t, method); status != 0) return status;
  return guarded(VTS_STATUS_SS_MEMORY, [&] {
    const TmkSSData given = data_of(t);
    const size_t n = pooled::rows_of(given), p = pooled::columns_of(given);
    std::vector<double> copy;
    const TmkSSData data = column_data(columns_of<Real>(given, copy), n, p);
    const estimate e = translated_biweight(data, ogk_estimate(data, threading), parameters_of(t), threading);
    std::copy(e.mean.begin(), e.mean.end(), t.robustMean);
    write(e.covariance, p, t.integer(t.robustCovStorage), t.robustCov);
    return 0;
  });
}

}  // namespace
}  // namespace tmk::stats::robust

int32_t _vtsdSSRobustCovariance(SSTask* task, uint32_t, uint32_t, uint32_t methodLow, uint32_t,
                                const ThreadingService* threading) {
  return tmk::stats::robust::compute<double>(task, methodLow, threading);
}
int32_t _vtssSSRobustCovariance(SSTask* task, uint32_t, uint32_t, uint32_t methodLow, uint32_t,
                                const ThreadingService* threading) {
  return tmk::stats::robust::compute<float>(task, methodLow, threading);
}
