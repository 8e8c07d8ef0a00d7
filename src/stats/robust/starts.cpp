// SPDX-License-Identifier: Apache-2.0
#include "stats/robust/starts.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "stats/robust/median.hpp"
#include "stats/robust/ogk.hpp"
#include "stats/robust/tau.hpp"
#include "tmk/abi/vtm.h"

namespace tmk::stats::robust {
namespace {

using columns = std::vector<double>;

// Products of variables about 0, divided by n.
std::vector<double> scatter(const columns& x, size_t n, size_t p) {
  return weighted_estimate(column_data(x.data(), n, p), nullptr, nullptr, tmk_threading_serial()).covariance;
}

// Ranks from 1, the mean of them for equal values.
void rank(const double* x, size_t n, double* r) {
  std::vector<size_t> order(n);
  std::iota(order.begin(), order.end(), size_t{0});
  std::sort(order.begin(), order.end(),
            [x](size_t a, size_t b) { return x[a] < x[b] || (x[a] == x[b] && a < b); });
  for (size_t first = 0; first < n;) {
    size_t last = first;
    while (last < n && x[order[last]] == x[order[first]]) ++last;
    for (size_t i = first; i < last; ++i) r[order[i]] = 0.5 * static_cast<double>(first + last + 1);
    first = last;
  }
}

columns ranks(const columns& x, size_t n, size_t p) {
  columns r(x.size());
  for (size_t j = 0; j < p; ++j) rank(x.data() + j * n, n, r.data() + j * n);
  const double middle = 0.5 * static_cast<double>(n + 1), spread = static_cast<double>(n);
  for (double& value : r) value = (value - middle) / spread;
  return r;
}

columns normal_scores(const columns& centred_ranks, size_t n) {
  columns r(centred_ranks.size());
  const auto count = static_cast<double>(n);
  for (size_t i = 0; i < r.size(); ++i) {
    const double rank = centred_ranks[i] * count + 0.5 * (count + 1);
    r[i] = (rank - 1.0 / 3) / (count + 1.0 / 3);
  }
  auto* const kernel = reinterpret_cast<void (*)(int32_t, const double*, double*)>(
      tmk_vtm_kernel_dCdfNormInv_ttab.kernel[TMK_SLOT_LA]);
  for (size_t first = 0; first < r.size(); first += n)
    kernel(static_cast<int32_t>(n), r.data() + first, r.data() + first);
  return r;
}

columns hyperbolic_tangents(const columns& x) {
  columns r(x.size());
  std::transform(x.begin(), x.end(), r.begin(), [](double value) { return std::tanh(value); });
  return r;
}

std::vector<double> squared_norms(const columns& x, size_t n, size_t p) {
  std::vector<double> r(n);
  for (size_t j = 0; j < p; ++j)
    for (size_t i = 0; i < n; ++i) r[i] += x[j * n + i] * x[j * n + i];
  return r;
}

columns spatial_signs(const columns& x, const std::vector<double>& squared, size_t n, size_t p) {
  columns r(x.size());
  for (size_t j = 0; j < p; ++j)
    for (size_t i = 0; i < n; ++i) r[j * n + i] = squared[i] > 0 ? x[j * n + i] / std::sqrt(squared[i]) : 0;
  return r;
}

// Of the half nearest to the medians.
std::vector<double> inner_scatter(const columns& x, const std::vector<double>& squared, size_t n, size_t p) {
  std::vector<double> work(n), weights(n);
  const double limit = ranked(squared.data(), n, n / 2, work.data());
  for (size_t i = 0; i < n; ++i) weights[i] = squared[i] <= limit ? 1 : 0;
  return weighted_estimate(column_data(x.data(), n, p), weights.data(), nullptr, tmk_threading_serial())
      .covariance;
}

// A covariance matrix as one of correlations; a variable without variance has none.
void to_correlations(std::vector<double>& c, size_t p) {
  std::vector<double> inverse(p);
  for (size_t i = 0; i < p; ++i) inverse[i] = c[i * p + i] > 0 ? 1 / std::sqrt(c[i * p + i]) : 0;
  for (size_t i = 0; i < p; ++i)
    for (size_t j = 0; j < p; ++j) c[i * p + j] = i == j ? 1 : c[i * p + j] * inverse[i] * inverse[j];
}

}  // namespace

std::vector<std::vector<double>> start_distances(const columns& given, size_t n, size_t p,
                                                 const ThreadingService* threading) {
  columns x = given;
  std::vector<double> work(2 * n);
  for (size_t j = 0; j < p; ++j) {
    const auto [location, scale] = tau_estimate(x.data() + j * n, n, work.data());
    for (size_t i = 0; i < n; ++i) x[j * n + i] = (x[j * n + i] - location) / scale;
  }
  const std::vector<double> squared = squared_norms(x, n, p);
  const columns r = ranks(x, n, p);
  std::vector<std::vector<double>> matrices = {
      scatter(hyperbolic_tangents(x), n, p), scatter(r, n, p), scatter(normal_scores(r, n), n, p),
      scatter(spatial_signs(x, squared, n, p), n, p), inner_scatter(x, squared, n, p)};
  for (int correlations = 0; correlations < 3; ++correlations)
    to_correlations(matrices[static_cast<size_t>(correlations)], p);
  std::vector<std::vector<double>> all;
  std::vector<double> values;
  for (auto& matrix : matrices) {
    eigenvectors(p, matrix, values);
    principal_axes a{std::move(matrix), std::vector<double>(p), std::vector<double>(p)};
    measure_along(x.data(), n, a, all.emplace_back(n).data(), threading);
  }
  ogk_step(x.data(), n, p, all.emplace_back(n).data(), threading);
  return all;
}

}  // namespace tmk::stats::robust
