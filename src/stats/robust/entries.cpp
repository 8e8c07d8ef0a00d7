// SPDX-License-Identifier: Apache-2.0
// The C functions beneath the C++ API. Nothing is written before all checks have passed.
#include <cmath>

#include "platform/checks.hpp"
#include "stats/robust/bacon.hpp"
#include "stats/robust/matrix.hpp"
#include "stats/robust/ogk.hpp"
#include "stats/robust/s_estimate.hpp"
#include "stats/robust/standardise.hpp"
#include "tmk/abi/ss_robust.h"

namespace tmk::stats::robust {
namespace {

template <class Real>
bool find_not_finite(const pooled::values_of<Real>& value, size_t n, size_t p, size_t& row, size_t& column) {
  for (row = 0; row < n; ++row)
    for (column = 0; column < p; ++column)
      if (!std::isfinite(value(row, column))) return true;
  return false;
}

bool find_not_finite(const TmkSSData& data, size_t& row, size_t& column) {
  return pooled::visit(data, [&](const auto& value) {
    return find_not_finite(value, pooled::rows_of(data), pooled::columns_of(data), row, column);
  });
}

int32_t check(const TmkSSData* data, int64_t rows_per_column, int64_t more_rows) {
  if (const int32_t bad = pooled::check_shape(data, 1); bad != 0) return bad;
  const int32_t bad =
      first_status({{data->columns > pooled::most_matrix_columns, VTS_STATUS_SS_BAD_DIMENSION},
                    {data->rows < rows_per_column * data->columns + more_rows || data->rows > INT32_MAX,
                     VTS_STATUS_SS_BAD_OBSERVATIONS},
                    {data->weights != nullptr, TMK_SS_BAD_WEIGHTS},
                    {data->rows > INT64_MAX / 64 / data->columns ||
                         data->rows * data->columns > static_cast<int64_t>(SIZE_MAX / 64),
                     VTS_STATUS_SS_MEMORY}});
  if (bad != 0) return bad;
  size_t row, column;
  return find_not_finite(*data, row, column) ? int32_t{TMK_SS_NAN} : 0;
}

standardised copy_of(const TmkSSData& data, const ThreadingService* threading) {
  standardised copy;
  if (standardise(data, copy, threading) != copy.p) throw failed{TMK_SS_FLAT};
  return copy;
}

std::vector<double> inverse_of(const double* covariance, size_t p) {
  std::vector<double> inverse(covariance, covariance + p * p);
  const auto order = static_cast<int32_t>(p);
  if (!well_conditioned(order, inverse.data()) || invert(order, inverse.data()) != 0)
    throw failed{VTS_STATUS_SS_NOT_POSITIVE};
  mirror(order, inverse.data());
  return inverse;
}

struct outcome {
  estimate e;
  std::vector<double> weights;
  int64_t rounds;
  bool converged;
};

// Mean and covariance of the rows that have weight, which are those of normal data within a quantile: they
// vary less than all do.
estimate within_quantile(const standardised& copy, const std::vector<double>& weights, double kept,
                         const ThreadingService* threading) {
  estimate e = weighted_estimate(copy.data(), weights.data(), nullptr, threading);
  const auto p = static_cast<double>(copy.p);
  const double factor = kept / __vtsdChi2CDF(p + 2, __vtsdChi2ICDF(p, kept));
  for (double& x : e.covariance) x *= factor;
  return e;
}

outcome ogk(const standardised& copy, TmkSSRobustEstimate& result, const ThreadingService* threading) {
  constexpr double kept = 0.9;
  std::vector<double> d2(copy.n), weights(copy.n);
  ogk_step(copy.x.data(), copy.n, copy.p, d2.data(), threading);
  reject_far(d2, copy.p, weights.data());
  result.breakdown = 0.5;
  result.rejection = 1 - kept;
  return {within_quantile(copy, weights, kept, threading), std::move(weights), 1, true};
}

outcome reweighted(const standardised& copy, s_result s, TmkSSRobustEstimate& result,
                   const ThreadingService* threading) {
  constexpr double kept = 0.975;
  const double limit = std::sqrt(__vtsdChi2ICDF(static_cast<double>(copy.p), kept));
  const std::vector<double> inverse = inverse_of(s.e.covariance.data(), copy.p);
  distances(copy.data(), s.e.mean.data(), inverse.data(), s.weights.data(), threading);
  for (double& value : s.weights) value = value <= limit ? 1 : 0;
  result.rejection = 1 - kept;
  return {within_quantile(copy, s.weights, kept, threading), std::move(s.weights), s.rounds, s.converged};
}

outcome tbs(const standardised& copy, const TmkSSRobustOptions& by, TmkSSRobustEstimate& result,
            const ThreadingService* threading) {
  const auto n = static_cast<double>(copy.n), p = static_cast<double>(copy.p);
  const tuned_biweight w =
      tune_biweight(static_cast<int32_t>(copy.p), std::min(by.breakdown, (n - p) / (2 * n)), by.rejection);
  s_result s =
      s_estimate(copy.x, copy.n, copy.p, w, {by.tolerance, by.rounds}, threading, {by.progress, by.context});
  result.breakdown = w.breakdown;
  result.rejection = w.rejection;
  if (by.reweight != 0) return reweighted(copy, std::move(s), result, threading);
  return {std::move(s.e), std::move(s.weights), s.rounds, s.converged};
}

int32_t check_options(const TmkSSRobustOptions* o) {
  const bool good = o != nullptr && (o->method == TMK_SS_TBS || o->method == TMK_SS_OGK) &&
                    o->breakdown > 0 && o->breakdown <= 0.5 && o->rejection > 0 && o->rejection < 1 &&
                    o->tolerance >= 0 && o->rounds >= 1;
  return good ? 0 : int32_t{TMK_SS_BAD_OPTIONS};
}

}  // namespace
}  // namespace tmk::stats::robust

using namespace tmk::stats::robust;
using namespace tmk::stats;

int32_t tmk_ss_robust_covariance(const TmkSSData* data, const TmkSSRobustOptions* options,
                                 TmkSSRobustEstimate* result, const ThreadingService* threading) {
  if (const int32_t bad = check(data, 2, 1); bad != 0) return bad;
  if (const int32_t bad = check_options(options); bad != 0) return bad;
  if (result == nullptr || result->location == nullptr || result->covariance == nullptr ||
      result->distances == nullptr || result->weights == nullptr)
    return VTS_STATUS_SS_DATA_NULL;
  return tmk::guarded(VTS_STATUS_SS_MEMORY, [&] {
    const standardised copy = copy_of(*data, threading);
    TmkSSRobustEstimate r = *result;
    const outcome found =
        options->method == TMK_SS_OGK ? ogk(copy, r, threading) : tbs(copy, *options, r, threading);
    const std::vector<double> inverse = inverse_of(found.e.covariance.data(), copy.p);
    distances(copy.data(), found.e.mean.data(), inverse.data(), r.distances, threading);
    copy.undo(found.e, r.location, r.covariance);
    std::copy(found.weights.begin(), found.weights.end(), r.weights);
    r.rounds = found.rounds;
    r.converged = found.converged ? 1 : 0;
    *result = r;
    return 0;
  });
}

int32_t tmk_ss_robust_outliers(const TmkSSData* data, const TmkSSOutlierOptions* options,
                               TmkSSOutliers* result, const ThreadingService* threading) {
  if (const int32_t bad = check(data, 3, 2); bad != 0) return bad;
  if (options == nullptr || !(options->alpha > 0 && options->alpha < 1) ||
      (options->start != TMK_SS_START_MAHALANOBIS && options->start != TMK_SS_START_MEDIAN))
    return TMK_SS_BAD_OPTIONS;
  if (result == nullptr || result->weights == nullptr || result->distances == nullptr)
    return VTS_STATUS_SS_DATA_NULL;
  return tmk::guarded(VTS_STATUS_SS_MEMORY, [&] {
    const standardised copy = copy_of(*data, threading);
    const size_t first = std::max(copy.p + 1, std::min(5 * copy.p, copy.n / 2));
    const std::vector<double> medians(copy.p, 0.0);
    const bacon_rules rules{.start = static_cast<bacon_start>(options->start),
                            .tail = options->alpha / static_cast<double>(copy.n),
                            .growth = 0,
                            .subset = first,
                            .medians = medians.data(),
                            .weights = nullptr,
                            .ridge = false};
    std::vector<double> weights(copy.n), d(copy.n);
    const bacon_result found =
        bacon(copy.data(), rules, weights.data(), d.data(), threading, {options->progress, options->context});
    std::copy(weights.begin(), weights.end(), result->weights);
    std::copy(d.begin(), d.end(), result->distances);
    result->cutoff = found.cutoff;
    result->rounds = found.rounds;
    result->regular = static_cast<int64_t>(found.regular);
    result->converged = found.converged ? 1 : 0;
    return 0;
  });
}

int32_t tmk_ss_robust_distances(const TmkSSData* data, const double* location, const double* covariance,
                                double* d, const ThreadingService* threading) {
  if (const int32_t bad = pooled::check_shape(data, 0); bad != 0) return bad;
  if (data->columns > pooled::most_matrix_columns) return VTS_STATUS_SS_BAD_DIMENSION;
  if (location == nullptr || covariance == nullptr || (d == nullptr && data->rows > 0))
    return VTS_STATUS_SS_DATA_NULL;
  return tmk::guarded(VTS_STATUS_SS_MEMORY, [&] {
    const std::vector<double> inverse = inverse_of(covariance, pooled::columns_of(*data));
    if (data->rows > 0) distances(*data, location, inverse.data(), d, threading);
    return 0;
  });
}

int32_t tmk_ss_robust_find_not_finite(const TmkSSData* data, int64_t* row, int64_t* column) {
  if (const int32_t bad = pooled::check_shape(data, 0); bad != 0) return bad;
  size_t i, j;
  if (!find_not_finite(*data, i, j)) return 0;
  *row = static_cast<int64_t>(i);
  *column = static_cast<int64_t>(j);
  return 1;
}

int32_t tmk_ss_robust_find_flat(const TmkSSData* data, int64_t* column, const ThreadingService* threading) {
  if (const int32_t bad = pooled::check_shape(data, 1); bad != 0) return bad;
  return tmk::guarded(VTS_STATUS_SS_MEMORY, [&] {
    standardised copy;
    const size_t j = standardise(*data, copy, threading);
    if (j == copy.p) return 0;
    *column = static_cast<int64_t>(j);
    return 1;
  });
}
