// SPDX-License-Identifier: Apache-2.0
#include "stats/robust/bacon.hpp"

#include <atomic>
#include <cmath>
#include <utility>

#include "stats/robust/matrix.hpp"
#include "stats/robust/median.hpp"
#include "stats/robust/scan.hpp"
#include "tmk/abi/ss_robust.h"

namespace tmk::stats::robust {
namespace {

constexpr int64_t most_rounds = 1000;

double weighted_median(const double* x, const double* weights, size_t n) {
  constexpr int32_t p = 1;
  if (n > static_cast<size_t>(INT32_MAX)) throw failed{VTS_STATUS_SS_BAD_OBSERVATIONS};
  const auto count = static_cast<int32_t>(n);
  double half = 0.5, result = 0;
  const auto task = pooled::new_task(&p, &count, x, weights);
  __vtsdSSEditQuantiles(task.get(), nullptr, &half, &result, nullptr, nullptr);
  require(_vtsdSSWMedian(task.get()));
  return result;
}

std::vector<double> medians(const TmkSSData& data, const double* weights, const ThreadingService* threading) {
  const size_t n = pooled::rows_of(data), p = pooled::columns_of(data);
  const size_t workers = pooled::worker_count(threading, p);
  std::vector<double> memory(workers * 2 * n), result(p);
  pooled::for_each_item(threading, workers, p, [&](size_t j, size_t worker) {
    double *const x = memory.data() + worker * 2 * n, *const work = x + n;
    pooled::visit(data, [&](const auto& value) {
      for (size_t i = 0; i < n; ++i) x[i] = value(i, j);
    });
    result[j] = weights != nullptr ? weighted_median(x, weights, n) : median(x, n, work);
  });
  return result;
}

// The inverse of the covariance, with both triangles; false if there is none and no ridge.
bool invert_covariance(const estimate& e, bool ridge, std::vector<double>& inverse) {
  const auto p = static_cast<int32_t>(e.mean.size());
  inverse = e.covariance;
  for (double& x : inverse) x /= e.unbiased();
  if (!ridge && !well_conditioned(p, inverse.data())) return false;
  if (ridge) require(make_invertible(p, inverse.data()));
  require(invert(p, inverse.data()));
  mirror(p, inverse.data());
  return true;
}

// The observations of the `count` smallest distances get their weights, all others 0. A later observation
// takes the place of the farthest only if it is nearer, and of several farthest that of the first place.
void choose_nearest(const double* d, size_t n, size_t count, const double* own, double* weights) {
  using entry = std::pair<double, size_t>;  // distance and place among those kept
  const auto nearer = [](const entry& a, const entry& b) {
    return a.first < b.first || (a.first == b.first && a.second > b.second);
  };
  std::vector<entry> heap;
  std::vector<size_t> kept;
  for (size_t i = 0; i < n; ++i) {
    const double distance = std::isnan(d[i]) ? HUGE_VAL : d[i];
    size_t place = kept.size();
    if (place < count) {
      kept.push_back(i);
    } else {
      if (!(distance < heap.front().first)) continue;
      std::pop_heap(heap.begin(), heap.end(), nearer);
      place = heap.back().second;
      heap.pop_back();
      kept[place] = i;
    }
    heap.emplace_back(distance, place);
    std::push_heap(heap.begin(), heap.end(), nearer);
  }
  std::fill_n(weights, n, 0.0);
  for (const size_t i : kept) weights[i] = own != nullptr ? own[i] : 1;
}

struct basic_subset {
  size_t size;
  estimate moments;
  std::vector<double> inverse;
};

basic_subset first_subset(const TmkSSData& data, const bacon_rules& rules, double* weights, double* d,
                          const ThreadingService* threading) {
  const size_t n = pooled::rows_of(data);
  std::vector<double> inverse;
  std::vector<double> centre =
      rules.medians != nullptr ? std::vector<double>(rules.medians, rules.medians + pooled::columns_of(data))
                               : medians(data, rules.weights, threading);
  if (rules.start == bacon_start::mahalanobis) {
    const estimate all = weighted_estimate(data, rules.weights, centre.data(), threading);
    if (!invert_covariance(all, rules.ridge, inverse)) throw failed{VTS_STATUS_SS_NOT_POSITIVE};
    centre = all.mean;
  }
  distances(data, centre.data(), inverse.empty() ? nullptr : inverse.data(), d, threading);
  for (size_t size = rules.subset;; size *= 2) {
    size = std::min(size, n);
    choose_nearest(d, n, size, rules.weights, weights);
    estimate e = weighted_estimate(data, weights, centre.data(), threading);
    if (invert_covariance(e, rules.ridge, inverse)) return {size, std::move(e), std::move(inverse)};
    if (size == n) throw failed{VTS_STATUS_SS_NOT_POSITIVE};
  }
}

// How much wider the cut-off is than the chi-square quantile, for a subset of r among n observations.
double correction(double n, double p, double r) {
  const double h = (p + 1 + n) * 0.5;
  return std::max(0.0, (h - r) / (h + r)) + (p + 1) / (n - p) + 1 + 2 / ((n - 1) - 3 * p);
}

}  // namespace

bacon_result bacon(const TmkSSData& data, const bacon_rules& rules, double* weights, double* d,
                   const ThreadingService* threading, const progress& report) {
  const size_t n = pooled::rows_of(data), p = pooled::columns_of(data);
  std::vector<double> own(d == nullptr ? n : 0);
  if (d == nullptr) d = own.data();
  const double chi = std::sqrt(__vtsdChi2ICDF(static_cast<double>(p), 1 - rules.tail));
  auto [before, e, inverse] = first_subset(data, rules, weights, d, threading);
  bacon_result result;
  for (;;) {
    result.cutoff =
        correction(static_cast<double>(n), static_cast<double>(p), static_cast<double>(before)) * chi;
    std::atomic<size_t> regular = 0;
    const auto sums = scan(data, e.mean.data(), inverse.data(), true, threading,
                           [&](size_t first, size_t count, const double* d2, double* w) {
                             size_t below = 0;
                             for (size_t k = 0; k < count; ++k) {
                               const double distance = d[first + k] = std::sqrt(d2[k]);
                               const bool keep = distance < result.cutoff;
                               below += keep ? 1 : 0;
                               w[k] = !keep ? 0 : rules.weights != nullptr ? rules.weights[first + k] : 1;
                               weights[first + k] = w[k];
                             }
                             regular += below;
                           });
    result.regular = regular;
    ++result.rounds;
    const double grown = std::fabs(static_cast<double>(regular) - static_cast<double>(before));
    const double change = grown / static_cast<double>(before);
    result.converged = regular >= n || regular == before || change < rules.growth;
    const bool go_on = report(result.rounds, change);
    // Where nothing regular is left, the next rounds would find nothing either.
    if (result.converged || !go_on || regular == 0 || result.rounds == most_rounds) break;
    e = finish(p, sums, e.mean.data());
    before = regular;
    if (!invert_covariance(e, rules.ridge, inverse)) throw failed{VTS_STATUS_SS_NOT_POSITIVE};
  }
  return result;
}

}  // namespace tmk::stats::robust
