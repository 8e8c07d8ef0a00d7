// SPDX-License-Identifier: Apache-2.0
// The task's outlier detection and robust covariance: direct computations in extended precision, values of
// other programs, statuses in their order, layouts, precisions, wide integers and threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "stats/robust/biweight.hpp"
#include "stats/robust_sets.hpp"
#include "threading/shuffled_threads.hpp"
#include "tmk/abi/ss.h"

namespace {

using tmk::tests::data_set;
using tmk::tests::shuffled_threads;
using compute = int32_t(SSTask*, uint32_t, uint32_t, uint32_t, uint32_t, const ThreadingService*);

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

template <class Real>
struct names;
#define TMK_NAMES(letter, Real)                                             \
  template <>                                                               \
  struct names<Real> {                                                      \
    static constexpr auto make = __vts##letter##SSNewTask;                  \
    static constexpr auto edit_robust = __vts##letter##SSEditRCov;          \
    static constexpr auto edit_outliers = __vts##letter##SSEditOutDetect;   \
    static constexpr compute *robust = _vts##letter##SSRobustCovariance,    \
                             *outliers = _vts##letter##SSOutliersDetection; \
  };
TMK_NAMES(d, double)
TMK_NAMES(s, float)

// A task over data given by rows, and what its pointers point to, in either width of integers.
template <class Real>
struct job {
  using name = names<Real>;
  int32_t wide;
  int64_t big[5];
  int32_t small[5];
  std::vector<Real> data, weights, mean, cov, parameters, flags;
  SSTask* task = nullptr;

  job(const std::vector<double>& x, int32_t p, int32_t layout, int32_t storage, std::vector<Real> given,
      int32_t wide_integers = 0, std::vector<Real> own = {})
      : wide(wide_integers), weights(std::move(own)), parameters(std::move(given)) {
    const auto n = static_cast<int32_t>(x.size()) / p;
    const int32_t values[] = {p, n, layout, storage, static_cast<int32_t>(parameters.size())};
    std::copy_n(values, 5, big);
    std::copy_n(values, 5, small);
    data.resize(x.size());
    for (int32_t i = 0; i < n; ++i)
      for (int32_t j = 0; j < p; ++j)
        data[layout == VTS_SS_ROWS ? j * n + i : i * p + j] = static_cast<Real>(x[i * p + j]);
    mean.assign(p, -1), cov.assign(p * p, -1), flags.assign(n, -1);
    EXPECT_EQ(name::make(&task, at(0), at(1), at(2), data.data(), weights.empty() ? nullptr : weights.data(),
                         nullptr, wide),
              0);
    name::edit_robust(task, at(3), at(4), parameters.data(), cov.data(), mean.data());
    name::edit_outliers(task, at(4), parameters.data(), flags.data());
  }
  job(const job&) = delete;
  ~job() { __vtsSSDeleteTask(&task); }
  const void* at(int k) const { return wide != 0 ? static_cast<const void*>(big + k) : small + k; }
  int32_t robust(const ThreadingService* threads = tmk_threading_serial()) {
    return name::robust(task, 0, 0, VTS_SS_METHOD_TBS, 0, threads);
  }
  int32_t outliers(const ThreadingService* threads = tmk_threading_serial()) {
    return name::outliers(task, 0, 0, VTS_SS_METHOD_BACON, 0, threads);
  }
};

// Normal rows of which the first share lies around (shift, ..., shift), some correlated.
std::vector<double> spoiled(size_t n, size_t p, double share, double shift, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::normal_distribution<double> normal;
  std::vector<double> x(n * p);
  for (size_t i = 0; i < n; ++i)
    for (size_t j = 0; j < p; ++j) {
      x[i * p + j] = normal(engine) + (j > 0 ? 0.5 * x[i * p + j - 1] : 0);
      if (static_cast<double>(i) < share * static_cast<double>(n)) x[i * p + j] = 0.3 * x[i * p + j] + shift;
    }
  return x;
}

// BACON as its paper has it, by sums in extended precision and Gauss-Jordan elimination.
struct direct_bacon {
  using real = long double;
  size_t n, p;
  const std::vector<double>& x;
  std::vector<double> own;

  std::vector<real> distances(const std::vector<double>& w) const {
    real total = 0, squares = 0;
    std::vector<real> m(p), c(p * p), inverse(p * p), d(n);
    for (size_t i = 0; i < n; ++i) {
      total += w[i], squares += static_cast<real>(w[i]) * w[i];
      for (size_t j = 0; j < p; ++j) m[j] += static_cast<real>(w[i]) * x[i * p + j];
    }
    for (real& value : m) value /= total;
    for (size_t i = 0; i < n; ++i)
      for (size_t a = 0; a < p; ++a)
        for (size_t b = 0; b < p; ++b)
          c[a * p + b] += w[i] * (x[i * p + a] - m[a]) * (x[i * p + b] - m[b]) / (total - squares / total);
    for (size_t k = 0; k < p; ++k) inverse[k * p + k] = 1;
    for (size_t k = 0; k < p; ++k) {
      const real pivot = c[k * p + k];
      for (size_t j = 0; j < p; ++j) c[k * p + j] /= pivot, inverse[k * p + j] /= pivot;
      for (size_t i = 0; i < p; ++i)
        if (const real f = c[i * p + k]; i != k)
          for (size_t j = 0; j < p; ++j)
            c[i * p + j] -= f * c[k * p + j], inverse[i * p + j] -= f * inverse[k * p + j];
    }
    for (size_t i = 0; i < n; ++i) {
      real sum = 0;
      for (size_t a = 0; a < p; ++a)
        for (size_t b = 0; b < p; ++b)
          sum += (x[i * p + a] - m[a]) * inverse[a * p + b] * (x[i * p + b] - m[b]);
      d[i] = std::sqrt(sum);
    }
    return d;
  }
  std::vector<real> from_medians() const {
    std::vector<real> d(n);
    for (size_t j = 0; j < p; ++j) {
      std::vector<double> v;
      for (size_t i = 0; i < n; ++i) v.push_back(x[i * p + j]);
      std::sort(v.begin(), v.end());
      const double median = (v[(n - 1) / 2] + v[n / 2]) / 2;
      for (size_t i = 0; i < n; ++i)
        d[i] += (x[i * p + j] - static_cast<real>(median)) * (x[i * p + j] - median);
    }
    return d;
  }
  std::vector<double> weights(bool medians, double alpha, double beta) const {
    const std::vector<real> d0 = medians ? from_medians() : distances(own);
    std::vector<size_t> order(n);
    std::iota(order.begin(), order.end(), size_t{0});
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return d0[a] < d0[b]; });
    std::vector<double> w(n);
    for (size_t k = 0; k < 5 * p; ++k) w[order[k]] = own[order[k]];
    const double N = static_cast<double>(n), P = static_cast<double>(p), h = (P + 1 + N) / 2;
    for (double r = 5 * P;;) {
      const double cutoff = (std::max(0.0, (h - r) / (h + r)) + (P + 1) / (N - P) + 1 + 2 / (N - 1 - 3 * P)) *
                            std::sqrt(__vtsdChi2ICDF(P, 1 - alpha));
      const auto d = distances(w);
      double kept = 0;
      for (size_t i = 0; i < n; ++i) w[i] = d[i] < cutoff ? own[i] : 0, kept += d[i] < cutoff;
      if (kept >= N || std::fabs(kept - r) / r < beta) return w;
      r = kept;
    }
  }
};

TEST(robust_task, outliers_agree_with_a_direct_computation) {
  for (const auto& [n, p, share] :
       {std::tuple<size_t, size_t, double>{15, 3, 0}, {300, 1, 0.2}, {700, 4, 0.2}, {2500, 6, 0.1}})
    for (const bool medians : {true, false})
      for (const bool weighted : {false, true}) {
        if (weighted && medians) continue;  // the weighted median has tests of its own
        const auto x = spoiled(n, p, share, 7, 11);
        std::vector<double> own(n, 1);
        for (size_t i = 0; weighted && i < n; ++i) own[i] = 0.5 + static_cast<double>(i % 3);
        const auto want = direct_bacon{n, p, x, own}.weights(medians, 0.02, 0.001);
        job<double> j(x, static_cast<int32_t>(p), VTS_SS_COLUMNS, 0, {medians ? 2.0 : 1.9, 0.02, 0.001}, 0,
                      weighted ? own : std::vector<double>());
        EXPECT_EQ(j.outliers(), 0);
        EXPECT_EQ(j.flags, want) << n << ' ' << p << ' ' << medians << weighted;
      }
}

TEST(robust_task, ends_and_statuses_of_the_search) {
  const auto x = spoiled(40, 2, 0, 0, 3);
  const auto outliers = [](const std::vector<double>& values, int32_t p, std::vector<double> parameters) {
    job<double> j(values, p, VTS_SS_COLUMNS, 0, std::move(parameters));
    const int32_t status = j.outliers();
    const auto left = std::count(j.flags.begin(), j.flags.end(), 1.0);
    return std::pair<int32_t, ptrdiff_t>(status, left);
  };
  using pair = std::pair<int32_t, ptrdiff_t>;
  EXPECT_EQ(outliers(x, 2, {2, 1, 0.005}), (pair{VTS_STATUS_SS_TOO_FEW_REGULAR, 0}));  // nothing is below 0
  auto holes = x;
  holes[31] = nan;
  EXPECT_EQ(outliers(holes, 2, {}), (pair{VTS_STATUS_SS_TOO_FEW_REGULAR, 0}));
  EXPECT_EQ(outliers(std::vector<double>(40, 3.0), 2, {}).first, VTS_STATUS_SS_NOT_POSITIVE);
  auto flat = x;  // the second variable twice the first: a ridge, and no end of the search by failure
  for (size_t i = 0; i < flat.size(); i += 2) flat[i + 1] = 2 * flat[i];
  EXPECT_EQ(outliers(flat, 2, {}), (pair{0, 40}));
  const auto large = spoiled(400, 2, 0.2, 9, 4);  // parameters count if there are three, each by its own rule
  const auto defaults = outliers(large, 2, {});
  EXPECT_EQ(outliers(large, 2, {1, 0.5}), defaults);
  EXPECT_EQ(outliers(large, 2, {7, -0.1, -1}), defaults);
  EXPECT_EQ(outliers(large, 2, {nan, nan, nan}), defaults);
  EXPECT_NE(outliers(large, 2, {2, 0.5, 0.005}), defaults);
}

// Weighted centre and covariance of R 4.2.2, robustbase 0.95: covOGK(x, n.iter = 1, sigmamu = scaleTau2).
TEST(robust_task, without_rounds_the_estimate_is_that_of_covOGK) {
  struct row {
    const data_set& set;
    std::vector<double> centre, lower;
  };
  const row rows[] = {
      {tmk::tests::hbk,
       {1.5377049180327869, 1.7803278688524589, 1.6868852459016395},
       {1.1134963719430262, 0.049922063961300722, 1.133383499059393, 0.11541252351518412, 0.1384305294275732,
        1.0526148884708408}},
      {tmk::tests::stackloss,
       {56.375, 20, 85.4375, 13.0625},
       {21.609375, 6.25, 5.375, 15.5859375, 5, 32.24609375, 18.1015625, 7.25, 12.97265625, 17.30859375}},
      {tmk::tests::wood,
       {0.58235714285714291, 0.12292857142857143, 0.52907142857142853, 0.54349999999999998,
        0.89378571428571429, 0.52000000000000002},
       {0.0046946581632653058,   0.00078855408163265323, 0.00022022346938775522,  0.0015014030612244904,
        0.00054324081632653074,  0.0029712091836734691,  -0.00057132142857142885, 2.4857142857142788e-05,
        -0.00051132142857142815, 0.0016166785714285706,  -0.00083435204081632602, 2.8027551020408271e-05,
        0.00010880102040816331,  0.00093939285714285674, 0.0012698826530612246,   -0.00011200000000000009,
        -0.00013983571428571436, -0.001145642857142857,  0.00011500000000000018,  0.00017771428571428566,
        0.00076057142857142838}},
      {tmk::tests::starscyg,
       {4.41275, 4.9335000000000004},
       {0.011219937499999992, 0.037550374999999976, 0.23498775000000011}},
  };
  for (const auto& r : rows)
    for (const int32_t layout : {VTS_SS_ROWS, VTS_SS_COLUMNS}) {
      job<double> j(r.set.values, static_cast<int32_t>(r.set.cols), layout, VTS_SS_LOWER,
                    {0.5, 0.001, 0.001, 0});
      ASSERT_EQ(j.robust(), 0);
      for (size_t i = 0; i < r.centre.size(); ++i)
        EXPECT_NEAR(j.mean[i] / r.centre[i], 1, 1e-13) << r.set.name;
      for (size_t i = 0; i < r.lower.size(); ++i)
        EXPECT_NEAR(j.cov[i], r.lower[i], 1e-13 * r.lower[0]) << r.set.name;
    }
}

// At the end of the rounds weights by the distances from the estimate, scaled to the middle one, give it
// again.
TEST(robust_task, the_estimate_is_a_fixed_point) {
  for (const int32_t p : {2, 6, 12}) {
    const size_t n = 600, order = static_cast<size_t>(p);
    const auto x = spoiled(n, order, 0.2, 20, 5);
    job<double> j(x, p, VTS_SS_COLUMNS, VTS_SS_FULL, {0.4, 0.01, 1e-9, 300});
    ASSERT_EQ(j.robust(), 0);
    const auto w = tmk::stats::robust::task_biweight(p, 0.4, 0.01);
    std::vector<double> d(n);
    const TmkSSData data{x.data(), 0, static_cast<int64_t>(n), p, p, 1, nullptr};
    ASSERT_EQ(tmk_ss_robust_distances(&data, j.mean.data(), j.cov.data(), d.data(), tmk_threading_serial()),
              0);
    std::vector<double> sorted = d;
    std::sort(sorted.begin(), sorted.end());
    const size_t h = (order + 1 + n) / 2;
    const double scale = std::sqrt(__vtsdChi2ICDF(p, static_cast<double>(h) / (n + 1.0))) / sorted[h - 1];
    double total = 0, squares = 0;
    std::vector<double> weight, mean(order);
    for (size_t i = 0; i < n; ++i) {
      const double t = d[i] * scale;
      weight.push_back(w.weight(t));
      total += weight[i], squares += weight[i] * t * t;
      for (size_t a = 0; a < order; ++a) mean[a] += weight[i] * x[i * order + a];
      if (i < n / 5) {
        EXPECT_EQ(weight[i], 0);
      }
    }
    for (size_t a = 0; a < order; ++a) EXPECT_NEAR(j.mean[a], mean[a] /= total, 1e-8);
    for (size_t a = 0; a < order; ++a)
      for (size_t b = 0; b < order; ++b) {
        double sum = 0;
        for (size_t i = 0; i < n; ++i)
          sum += weight[i] * (x[i * order + a] - mean[a]) * (x[i * order + b] - mean[b]);
        EXPECT_NEAR(j.cov[a * order + b], sum * p / squares, 1e-7) << p;
      }
  }
}

// Of the checks in their order the first `good` pass and all others would fail.
TEST(robust_task, statuses_in_their_order) {
  const std::vector<double> x{1, 2, 4, 3, 5, 9, 7, 6, 8, 0, 2, 1, 5, 3, 8, 4, 4, 9, 6, 1};
  const auto status = [&](bool robust, int good) {
    std::vector<double> data = x, mean(2), cov(4), flags(10);
    int32_t p = 2, n = robust ? 5 : 10, layout = VTS_SS_ROWS, code = VTS_SS_FULL;
    if (good <= 1) n = robust ? 4 : 9;
    if (good <= 3) layout = VTS_SS_ROWS | VTS_SS_COLUMNS;
    SSTask* task = nullptr;
    __vtsdSSNewTask(&task, &p, &n, good > 2 ? &layout : nullptr, nullptr, nullptr, nullptr, 0);
    if (robust) {
      if (good <= 7) code = 3;
      __vtsdSSEditRCov(task, good > 6 ? &code : nullptr, nullptr, nullptr, good > 4 ? cov.data() : nullptr,
                       good > 5 ? mean.data() : nullptr);
    } else {
      __vtsdSSEditOutDetect(task, nullptr, nullptr, good > 4 ? flags.data() : nullptr);
    }
    const bool method = good > (robust ? 8 : 5), with_data = good > (robust ? 9 : 6);
    if (with_data) __vtsdSSEditTask(task, VTS_SS_PARAM_DATA, data.data());
    if (good <= 0) p = 0;
    const uint32_t mask = robust ? VTS_SS_METHOD_TBS : VTS_SS_METHOD_BACON;
    const int32_t r = (robust ? _vtsdSSRobustCovariance : _vtsdSSOutliersDetection)(
        task, 0, 0, method ? mask : ~mask, 0, tmk_threading_serial());
    __vtsSSDeleteTask(&task);
    return r;
  };
  const int32_t robust[] = {VTS_STATUS_SS_BAD_DIMENSION,
                            VTS_STATUS_SS_BAD_OBSERVATIONS,
                            VTS_STATUS_SS_STORAGE_NULL,
                            VTS_STATUS_SS_BAD_STORAGE,
                            VTS_STATUS_SS_ROBUST_COV_NULL,
                            VTS_STATUS_SS_ROBUST_MEAN_NULL,
                            VTS_STATUS_SS_STORAGE_NULL,
                            VTS_STATUS_SS_BAD_STORAGE,
                            VTS_STATUS_SS_BAD_METHOD,
                            VTS_STATUS_SS_DATA_NULL,
                            0};
  const int32_t outliers[] = {VTS_STATUS_SS_BAD_DIMENSION,
                              VTS_STATUS_SS_BAD_OBSERVATIONS,
                              VTS_STATUS_SS_BAD_STORAGE,
                              VTS_STATUS_SS_BAD_STORAGE,
                              VTS_STATUS_SS_OUTLIER_WEIGHTS_NULL,
                              VTS_STATUS_SS_BAD_METHOD,
                              VTS_STATUS_SS_DATA_NULL,
                              0};
  for (int good = 0; good < 11; ++good) EXPECT_EQ(status(true, good), robust[good]) << good;
  for (int good = 0; good < 8; ++good) EXPECT_EQ(status(false, good), outliers[good]) << good;
}

TEST(robust_task, threads_layouts_and_wide_integers_change_no_bit) {
  const auto x = spoiled(9000, 5, 0.25, 8, 7);
  job<double> first(x, 5, VTS_SS_ROWS, VTS_SS_FULL, {0.5, 0.001, 1e-6, 50});
  ASSERT_EQ(first.robust(), 0);
  job<double> flagged(x, 5, VTS_SS_ROWS, VTS_SS_FULL, {});
  ASSERT_EQ(flagged.outliers(), 0);
  for (const int32_t layout : {VTS_SS_ROWS, VTS_SS_COLUMNS})
    for (const int32_t wide : {0, 1})
      for (const int32_t threads : {1, 3, 16}) {
        job<double> j(x, 5, layout, VTS_SS_FULL, {0.5, 0.001, 1e-6, 50}, wide);
        EXPECT_EQ(j.robust(shuffled_threads(threads)), 0);
        EXPECT_EQ(j.cov, first.cov);
        EXPECT_EQ(j.mean, first.mean);
        job<double> o(x, 5, layout, VTS_SS_FULL, {}, wide);
        EXPECT_EQ(o.outliers(shuffled_threads(threads)), 0);
        EXPECT_EQ(o.flags, flagged.flags);
      }
  for (const int32_t storage : {VTS_SS_LOWER, VTS_SS_UPPER}) {
    job<float> j(x, 5, VTS_SS_COLUMNS, storage, {0.5f, 0.001f, 1e-6f, 50});
    EXPECT_EQ(j.robust(), 0);
    size_t k = 0;
    for (size_t a = 0; a < 5; ++a)
      for (size_t b = storage == VTS_SS_UPPER ? a : 0; b < (storage == VTS_SS_UPPER ? 5 : a + 1); ++b, ++k)
        EXPECT_NEAR(j.cov[k], first.cov[a * 5 + b], 2e-6) << storage;
    EXPECT_EQ(j.cov[k], -1);
    job<float> o(x, 5, VTS_SS_COLUMNS, 0, {});
    EXPECT_EQ(o.outliers(), 0);
    EXPECT_TRUE(std::equal(o.flags.begin(), o.flags.end(), flagged.flags.begin()));
  }
}

TEST(robust_task, data_that_no_estimate_can_serve_end) {
  auto holes = spoiled(60, 3, 0, 0, 9);
  holes[100] = nan;
  struct row {
    std::vector<double> x;
    int32_t status;
  };
  const row rows[] = {{holes, VTS_STATUS_SS_EIGEN_FAILED},
                      {std::vector<double>(180, 2.0), VTS_STATUS_SS_NOT_POSITIVE}};
  for (const auto& r : rows) {
    job<double> j(r.x, 3, VTS_SS_COLUMNS, 0, {});
    EXPECT_EQ(j.robust(), r.status);
    EXPECT_EQ(j.mean[0], -1);
  }
}

}  // namespace
