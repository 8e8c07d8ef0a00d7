// SPDX-License-Identifier: Apache-2.0
#include "stats/robust/ogk.hpp"

#include <cmath>

#include "linalg/blas.hpp"
#include "stats/robust/median.hpp"
#include "stats/robust/tau.hpp"
#include "tmk/abi/ss_robust.h"

namespace tmk::stats::robust {
namespace {

// job(k, work) for k below `count`, with 3 n reals of work to a thread.
template <class Job>
void with_work(size_t count, size_t n, const ThreadingService* threading, const Job& job) {
  const size_t workers = pooled::worker_count(threading, count);
  std::vector<double> memory(workers * 3 * n);
  pooled::for_each_item(threading, workers, count,
                        [&](size_t k, size_t worker) { job(k, memory.data() + worker * 3 * n); });
}

double squared_scale(const double* x, size_t n, double* work) {
  const double scale = tau_estimate(x, n, work).scale;
  return scale * scale;
}

// (scale(x / s_x + y / s_y)^2 - scale(x / s_x - y / s_y)^2) / 4
double pair_correlation(const double* x, double by_x, const double* y, double by_y, size_t n, double* work) {
  double *const z = work, *const rest = work + n;
  for (size_t i = 0; i < n; ++i) z[i] = x[i] * by_x + y[i] * by_y;
  const double sum = squared_scale(z, n, rest);
  for (size_t i = 0; i < n; ++i) z[i] = x[i] * by_x - y[i] * by_y;
  return (sum - squared_scale(z, n, rest)) * 0.25;
}

std::vector<double> pair_matrix(const double* x, size_t n, const std::vector<double>& inverse_scale,
                                const ThreadingService* threading) {
  const size_t p = inverse_scale.size();
  struct pair {
    size_t a, b;
  };
  std::vector<pair> pairs;
  for (size_t a = 0; a < p; ++a)
    for (size_t b = a + 1; b < p; ++b) pairs.push_back({a, b});
  std::vector<double> u(p * p, 1.0);
  with_work(pairs.size(), n, threading, [&](size_t k, double* work) {
    const auto [a, b] = pairs[k];
    u[a * p + b] = u[b * p + a] =
        pair_correlation(x + a * n, inverse_scale[a], x + b * n, inverse_scale[b], n, work);
  });
  return u;
}

}  // namespace

void eigenvectors(size_t p, std::vector<double>& matrix, std::vector<double>& values) {
  const int order = static_cast<int>(p), lwork = (order + 6) * order + 1, liwork = 5 * order + 3;
  std::vector<double> packed, work(static_cast<size_t>(lwork));
  std::vector<int> iwork(static_cast<size_t>(liwork));
  for (size_t j = 0; j < p; ++j)
    for (size_t i = j; i < p; ++i) {
      if (!std::isfinite(matrix[i * p + j])) throw failed{VTS_STATUS_SS_SPECTRAL_FAILED};
      packed.push_back(matrix[i * p + j]);
    }
  values.resize(p);
  int info = 0;
  linalg::serial<double>::spevd("V", "L", &order, packed.data(), values.data(), matrix.data(), &order,
                                work.data(), &lwork, iwork.data(), &liwork, &info);
  if (info != 0) throw failed{VTS_STATUS_SS_SPECTRAL_FAILED};
}

void measure_along(const double* x, size_t n, principal_axes& a, double* d2,
                   const ThreadingService* threading) {
  const size_t p = a.location.size();
  std::vector<double> z(n * p);
  const TmkSSData data = column_data(x, n, p);
  const size_t tiles = (n + tile_length - 1) / tile_length, workers = pooled::worker_count(threading, tiles);
  std::vector<double> memory(workers * 2 * p * tile_length);
  pooled::for_each_item(threading, workers, tiles, [&](size_t t, size_t worker) {
    double *const tile = memory.data() + worker * 2 * p * tile_length, *const y = tile + p * tile_length;
    const size_t first = t * tile_length, count = std::min(tile_length, n - first);
    read_tile(data, first, count, nullptr, tile);
    multiply_tile(p, tile, a.axes.data(), y);
    for (size_t j = 0; j < p; ++j) std::copy_n(y + j * tile_length, count, z.data() + j * n + first);
  });
  with_work(p, n, threading, [&](size_t k, double* work) {
    double* const zk = z.data() + k * n;
    const auto [mu, sigma] = tau_estimate(zk, n, work);
    a.location[k] = mu;
    a.scale[k] = sigma;
    // An axis along which nothing varies puts nothing far away.
    const double inverse = sigma > 0 ? 1 / sigma : 0;
    for (size_t i = 0; i < n; ++i) {
      const double t = (zk[i] - mu) * inverse;
      zk[i] = t * t;
    }
  });
  std::copy_n(z.data(), n, d2);
  for (size_t k = 1; k < p; ++k)
    for (size_t i = 0; i < n; ++i) d2[i] += z[k * n + i];
}

principal_axes ogk_step(const double* x, size_t n, size_t p, double* d2, const ThreadingService* threading) {
  std::vector<double> inverse_scale(p), values;
  with_work(p, n, threading, [&](size_t j, double* work) {
    const double scale = tau_estimate(x + j * n, n, work).scale;
    inverse_scale[j] = scale > 0 ? 1 / scale : 0;
  });
  principal_axes a{pair_matrix(x, n, inverse_scale, threading), std::vector<double>(p),
                   std::vector<double>(p)};
  eigenvectors(p, a.axes, values);
  for (size_t k = 0; k < p; ++k)
    for (size_t j = 0; j < p; ++j) a.axes[k * p + j] *= inverse_scale[j];
  measure_along(x, n, a, d2, threading);
  return a;
}

void reject_far(const std::vector<double>& d2, size_t p, double* weights) {
  std::vector<double> work(d2.size());
  const auto df = static_cast<double>(p);
  const double limit =
      median(d2.data(), d2.size(), work.data()) * __vtsdChi2ICDF(df, 0.9) / __vtsdChi2ICDF(df, 0.5);
  for (size_t i = 0; i < d2.size(); ++i) weights[i] = d2[i] <= limit ? 1 : 0;
}

}  // namespace tmk::stats::robust
