// SPDX-License-Identifier: Apache-2.0
// Moments by plain sums in long double, and a task over arrays of a test's own.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <set>
#include <vector>

#include "stats/task.hpp"
#include "threading/shuffled_threads.hpp"
#include "tmk/abi/serv.h"
#include "tmk/abi/ss.h"

namespace tmk::moments_tests {

// Observations by variables, with weights from 1/2 to 3/2 or none.
template <class Real>
struct sample {
  ptrdiff_t n, p;
  std::vector<Real> x, w;

  sample(ptrdiff_t n, ptrdiff_t p, bool weighted, uint32_t seed) : n(n), p(p), x(n * p) {
    std::mt19937 engine(seed);
    const auto uniform = [&] { return static_cast<Real>(engine() * 0x1p-32); };
    for (Real& value : x) value = Real{0.25} + Real{1.5} * uniform();
    if (weighted) w.resize(n);
    for (Real& value : w) value = Real{0.5} + uniform();
  }
  Real& at(ptrdiff_t i, ptrdiff_t j) { return x[i * p + j]; }
  Real at(ptrdiff_t i, ptrdiff_t j) const { return x[i * p + j]; }
  sample block(ptrdiff_t first, ptrdiff_t end) const {
    sample r = *this;
    r.n = end - first;
    r.x.assign(x.begin() + first * p, x.begin() + end * p);
    if (!w.empty()) r.w.assign(w.begin() + first, w.begin() + end);
    return r;
  }
};

struct reference {
  ptrdiff_t n, p;
  long double weight = 0, weight2 = 0, cov_scale = 0;
  std::array<std::vector<long double>, 7> moment, scale;  // scale: the mean of the terms' absolute values
  std::vector<long double> cov;

  template <class Real>
  explicit reference(const sample<Real>& data) : n(data.n), p(data.p), cov(p * p) {
    const auto w = [&](ptrdiff_t i) { return data.w.empty() ? 1.0L : static_cast<long double>(data.w[i]); };
    for (ptrdiff_t i = 0; i < n; ++i) weight += w(i), weight2 += w(i) * w(i);
    for (int k = 0; k < 7; ++k) {
      moment[k].resize(p);
      scale[k].resize(p);
      for (ptrdiff_t j = 0; j < p; ++j) {
        long double sum = 0, size = 0;
        for (ptrdiff_t i = 0; i < n; ++i) {
          const long double x = data.at(i, j) - (k < 4 ? 0 : moment[0][j]);
          sum += w(i) * std::pow(x, k < 4 ? k + 1 : k - 2);
          size += std::abs(w(i)) *
                  std::pow(std::abs(static_cast<long double>(data.at(i, j))) + 1, k < 4 ? k + 1 : k - 2);
        }
        const long double divisor = k == 4 ? weight - weight2 / weight : weight;
        moment[k][j] = sum / divisor;
        scale[k][j] = size / std::abs(divisor);
      }
    }
    for (ptrdiff_t i = 0; i < p; ++i)
      for (ptrdiff_t j = 0; j < p; ++j)
        for (ptrdiff_t o = 0; o < n; ++o)
          cov[i * p + j] += w(o) * (data.at(o, i) - moment[0][i]) * (data.at(o, j) - moment[0][j]) /
                            (weight - weight2 / weight);
    for (const long double s : scale[4]) cov_scale = std::max(cov_scale, s);
  }
  // Central order 2 divided by the weight, as the others are.
  long double plain_moment(int k, ptrdiff_t j) const {
    return moment[k][j] * (k == 4 ? (weight - weight2 / weight) / weight : 1);
  }
};

// The caller's side of a task.
template <class Real>
struct results {
  static constexpr Real untouched = 77;
  std::array<std::vector<Real>, 7> moment, sum;
  std::vector<Real> kurtosis, skewness, variation, cov, cor, cross, weight{0, 0};
  std::vector<int64_t> mask;
  std::set<int> leave_out, leave_out_sums;  // moments and sums that have no field
  bool keep_weight = false, wide = false;
  int matrix_storage = VTS_SS_FULL, threads = 1;
  stats::task<Real> task{};  // what it keeps is used by the next block
  ptrdiff_t p;

  explicit results(ptrdiff_t p)
      : kurtosis(p), skewness(p), variation(p), cov(p * p, untouched), cor(cov), cross(cov), p(p) {
    for (auto* arrays : {&moment, &sum})
      for (auto& array : *arrays) array.assign(p, untouched);
  }
  results(const results&) = delete;
  results& operator=(const results&) = delete;
  ~results() {
    tmk_serv_deallocate(task.savedMeans);
    tmk_serv_deallocate(task.keptSums.sums);
  }

  void give_means(const reference& from) { moment[0].assign(from.moment[0].begin(), from.moment[0].end()); }

  // Packed triangles to full matrices, by counting through the rows of the triangle.
  void unpack() {
    if (matrix_storage == VTS_SS_FULL) return;
    for (auto* matrix : {&cov, &cor, &cross}) {
      std::vector<Real> full(p * p);
      size_t next = 0;
      for (ptrdiff_t i = 0; i < p; ++i)
        for (ptrdiff_t j = matrix_storage == VTS_SS_LOWER ? 0 : i;
             j < (matrix_storage == VTS_SS_LOWER ? i + 1 : p); ++j)
          full[i * p + j] = full[j * p + i] = (*matrix)[next++];
      *matrix = full;
    }
  }
};

// Fields for what is requested, and no others; with `cross`, the cross-product and all sums.
template <class Real>
int32_t compute(const sample<Real>& data, int storage, uint32_t asked, uint32_t method, results<Real>& r,
                uint32_t high = 0) {
  stats::task<Real> task{};
  task.savedMeans = r.task.savedMeans;
  task.savedMeanCount = r.task.savedMeanCount;
  task.keptSums = r.task.keptSums;
  task.wideIntegers = r.wide;
  std::vector<int32_t> narrow;
  // The upper halves of a wide mask do not count.
  std::vector<int64_t> wide_mask;
  struct {
    int64_t wide;
    int32_t narrow;
  } p = {data.p, static_cast<int32_t>(data.p)}, n = {data.n, static_cast<int32_t>(data.n)},
    layout = {storage, storage}, form = {r.matrix_storage, r.matrix_storage};
  const auto integer = [&](auto& value) {
    return r.wide ? static_cast<const void*>(&value.wide) : static_cast<const void*>(&value.narrow);
  };
  narrow.assign(r.mask.begin(), r.mask.end());
  for (const int64_t entry : r.mask) wide_mask.push_back(entry | int64_t{1} << 40);
  if (!r.mask.empty())
    task.indices =
        r.wide ? static_cast<const void*>(wide_mask.data()) : static_cast<const void*>(narrow.data());
  task.dimension = integer(p);
  task.observations = integer(n);
  task.dataStorage = integer(layout);
  task.covStorage = task.corStorage = task.crossStorage = integer(form);
  std::vector<Real> x(data.x);
  if (storage == VTS_SS_ROWS)
    for (ptrdiff_t i = 0; i < data.n; ++i)
      for (ptrdiff_t j = 0; j < data.p; ++j) x[j * data.n + i] = data.at(i, j);
  std::vector<Real> w(data.w);
  task.data = x.data();
  task.weights = w.empty() ? nullptr : w.data();
  task.accumWeight = r.keep_weight ? r.weight.data() : nullptr;
  Real** const moments[] = {&task.mean,     &task.raw2,     &task.raw3,    &task.raw4,
                            &task.central2, &task.central3, &task.central4};
  Real** const sums[] = {&task.sum,         &task.rawSum2,     &task.rawSum3,    &task.rawSum4,
                         &task.centralSum2, &task.centralSum3, &task.centralSum4};
  const bool with_sums = (asked & 0xFE000000u) != 0 || (method & 0x103) == 0;
  for (int k = 0; k < 7; ++k) {
    if (!r.leave_out.contains(k)) *moments[k] = r.moment[k].data();
    if (with_sums && !r.leave_out_sums.contains(k)) *sums[k] = r.sum[k].data();
  }
  task.kurtosis = r.kurtosis.data();
  task.skewness = r.skewness.data();
  task.variation = r.variation.data();
  task.cov = r.cov.data();
  task.cor = r.cor.data();
  task.cross = r.cross.data();
  const auto basic = [] {
    if constexpr (sizeof(Real) == 8)
      return _vtsdSSBasic;
    else
      return _vtssSSBasic;
  }();
  const int32_t status = basic(task.handle(), asked, high, method, 0, tests::shuffled_threads(r.threads));
  r.task = task;
  return status;
}

}  // namespace tmk::moments_tests
