// SPDX-License-Identifier: Apache-2.0
#include "stats/robust/standardise.hpp"

#include <atomic>
#include <cmath>

#include "stats/robust/median.hpp"

namespace tmk::stats::robust {
namespace {

// The MAD of normal data is this share of their standard deviation: the copy's scales are near 1.
constexpr double mad_of_normal = 0.67448975019608171;

void copy_columns(const TmkSSData& data, double* x) {
  const size_t n = pooled::rows_of(data), p = pooled::columns_of(data);
  pooled::visit(data, [&](const auto& value) {
    for (size_t from = 0; from < n; from += 16)
      for (size_t j = 0; j < p; ++j)
        for (size_t i = from; i < std::min(n, from + 16); ++i) x[j * n + i] = value(i, j);
  });
}

}  // namespace

size_t standardise(const TmkSSData& data, standardised& copy, const ThreadingService* threading) {
  const size_t n = pooled::rows_of(data), p = pooled::columns_of(data);
  copy = {n, p, std::vector<double>(n * p), std::vector<double>(p), std::vector<double>(p)};
  copy_columns(data, copy.x.data());
  const size_t workers = pooled::worker_count(threading, p);
  std::vector<double> memory(workers * 2 * n);
  pooled::for_each_item(threading, workers, p, [&](size_t j, size_t worker) {
    double* const x = copy.x.data() + j * n;
    const auto [median, mad] = median_and_mad(x, n, memory.data() + worker * 2 * n);
    copy.centre[j] = median;
    copy.scale[j] = mad / mad_of_normal;
    for (size_t i = 0; i < n; ++i) x[i] = (x[i] - median) / copy.scale[j];
  });
  for (size_t j = 0; j < p; ++j)
    if (!(copy.scale[j] > 0 && std::isfinite(copy.scale[j]))) return j;
  return p;
}

void standardised::undo(const estimate& e, double* location, double* covariance) const {
  for (size_t i = 0; i < p; ++i) {
    location[i] = centre[i] + scale[i] * e.mean[i];
    for (size_t j = 0; j < p; ++j) covariance[i * p + j] = scale[i] * e.covariance[i * p + j] * scale[j];
  }
}

}  // namespace tmk::stats::robust
