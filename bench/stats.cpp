// SPDX-License-Identifier: Apache-2.0
// tmk-bench-stats: moments, covariances, sorts, quantiles and the quantile sketch compared with what a
// program would otherwise take, in one process on one thread. The peers are compiled for AVX2, as is this
// program.
#include <benchmark/benchmark.h>
#include <hwy/contrib/sort/vqsort.h>
#include <omp.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <tmk/stats.hpp>

#include "common/kernels.hpp"
#include "runner.hpp"
#include "stats_peers.hpp"
#include "tmk/abi/ss.h"
#include "tmk/abi/tpp.h"
#include "tmk/abi/vtm.h"
#include "tmk/abi/vts.h"

using namespace tmk::bench;

namespace {

// n observations of p uniform variables between 1 and 5, weights between 0 and 1, and a task over them.
struct problem {
  int32_t p, n, storage;
  std::vector<double> data, weights, moments, matrix, accumulated{0, 0};
  SSTask* task = nullptr;

  problem(int32_t variables, int32_t observations, bool rows, bool weighted = false)
      : p(variables),
        n(observations),
        storage(rows ? VTS_SS_ROWS : VTS_SS_COLUMNS),
        data(static_cast<size_t>(p) * n),
        weights(weighted ? n : 0),
        moments(10 * static_cast<size_t>(p)),
        matrix(static_cast<size_t>(p) * p) {
    VtsStreamHandle stream = nullptr;
    const uint32_t seed = 7;
    expect_success(__vtsNewStreamEx(&stream, VTS_BRNG_MT19937, 1, &seed));
    expect_success(_vtsdRngUniform(0, stream, static_cast<int32_t>(data.size()), data.data(), 1, 5));
    if (weighted) expect_success(_vtsdRngUniform(0, stream, n, weights.data(), 0, 1));
    expect_success(__vtsDeleteStream(&stream));
    expect_success(__vtsdSSNewTask(&task, &p, &n, &storage, data.data(), w(), nullptr, 0));
    double* m = moments.data();
    expect_success(
        __vtsdSSEditMoments(task, m, m + p, m + 2 * p, m + 3 * p, m + 4 * p, m + 5 * p, m + 6 * p));
    expect_success(__vtsdSSEditTask(task, VTS_SS_PARAM_SKEWNESS, m + 7 * p));
    expect_success(__vtsdSSEditTask(task, VTS_SS_PARAM_KURTOSIS, m + 8 * p));
    static const int32_t full = VTS_SS_FULL;
    expect_success(__vtsdSSEditCovCor(task, nullptr, matrix.data(), &full, nullptr, nullptr));
  }
  ~problem() { __vtsSSDeleteTask(&task); }
  problem(const problem&) = delete;
  problem& operator=(const problem&) = delete;

  bool rows() const { return storage == VTS_SS_ROWS; }
  const double* w() const { return weights.empty() ? nullptr : weights.data(); }
  void basic(uint32_t estimates, uint32_t method) const {
    expect_success(_vtsdSSBasic(task, estimates, 0, method, 0, tmk_threading_serial()));
  }
};
using shared = std::shared_ptr<problem>;

std::vector<subject> with_peers(std::vector<subject> ours, std::vector<subject> peers) {
  ours.insert(ours.end(), peers.begin(), peers.end());
  return ours;
}

constexpr int64_t most_values_for_slow_peers = 10'000'000;

void add_moments(std::vector<group>& groups, int32_t p, int32_t n, bool rows, bool weighted) {
  const std::string shape = " n=" + std::to_string(n) + " p=" + std::to_string(p) +
                            (rows ? " rows" : " columns") + (weighted ? " weighted" : "");
  const int64_t count = int64_t{p} * n;
  groups.push_back(
      {"variance" + shape, count, [=] {
         const auto d = std::make_shared<problem>(p, n, rows, weighted);
         double* r = d->moments.data();
         std::vector<subject> all =
             by_tier([d] { d->basic(VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_CENTRAL2, VTS_SS_METHOD_FAST); });
         all.push_back({"sum", [d, r, count] { *r = plain_sum(d->data.data(), count); }});
         if (!weighted) all.push_back({"Eigen", [=] { eigen_variance(d->data.data(), n, p, rows, r); }});
         if (!weighted) all.push_back({"GSL", [=] { gsl_variance(d->data.data(), n, p, rows, r); }});
         if (count <= most_values_for_slow_peers)
           all.push_back({"Boost", [=] { boost_variance(d->data.data(), d->w(), n, p, rows, r); }});
         return all;
       }});
  if (count > most_values_for_slow_peers) return;
  groups.push_back({"order 4" + shape, count, [=] {
                      const auto d = std::make_shared<problem>(p, n, rows, weighted);
                      double* r = d->moments.data();
                      std::vector<subject> all = by_tier([d] {
                        d->basic(VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_SKEWNESS | VTS_SS_ESTIMATE_KURTOSIS,
                                 VTS_SS_METHOD_ONE_PASS);
                      });
                      if (weighted) return all;
                      return with_peers(all,
                                        {{"Eigen", [=] { eigen_moments(d->data.data(), n, p, rows, r); }},
                                         {"GSL running", [=] { gsl_moments(d->data.data(), n, p, rows, r); }},
                                         {"Boost", [=] { boost_moments(d->data.data(), n, p, rows, r); }}});
                    }});
}

void add_covariance(std::vector<group>& groups, int32_t p, int32_t n, bool rows, bool weighted) {
  const std::string shape = " n=" + std::to_string(n) + " p=" + std::to_string(p) +
                            (rows ? " rows" : " columns") + (weighted ? " weighted" : "");
  groups.push_back({"covariance" + shape, int64_t{p} * n, [=] {
                      const auto d = std::make_shared<problem>(p, n, rows, weighted);
                      double* r = d->matrix.data();
                      std::vector<subject> all = by_tier(
                          [d] { d->basic(VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_COV, VTS_SS_METHOD_FAST); });
                      all.push_back({"bare dsyrk", [=] { bare_rank_update(d->data.data(), n, p, rows, r); }});
                      if (!weighted)
                        all.push_back({"Eigen", [=] { eigen_covariance(d->data.data(), n, p, rows, r); }});
                      return all;
                    }});
}

// An unsorted array, and the copy of it that is sorted: every run pays for making it.
template <class T>
struct sortable {
  std::vector<T> original, work, scratch;
  explicit sortable(int32_t n) : original(n), work(n), scratch(n) {
    VtsStreamHandle stream = nullptr;
    const uint32_t seed = 7;
    expect_success(__vtsNewStreamEx(&stream, VTS_BRNG_MT19937, 1, &seed));
    std::vector<double> u(n);
    expect_success(_vtsdRngUniform(0, stream, n, u.data(), -1e9, 1e9));
    expect_success(__vtsDeleteStream(&stream));
    std::copy(u.begin(), u.end(), original.begin());
  }
  std::vector<T>& fresh() {
    std::copy(original.begin(), original.end(), work.begin());
    return work;
  }
};

template <class T, auto Radix>
void add_sort(std::vector<group>& groups, const char* type, int32_t n) {
  groups.push_back({std::string("sort ") + type + " n=" + std::to_string(n), n, [=] {
                      const auto d = std::make_shared<sortable<T>>(n);
                      return with_peers(
                          by_tier([d, n] { expect_success(Radix(d->fresh().data(), d->scratch.data(), n)); }),
                          {{"std::sort", [d] { std::sort(d->fresh().begin(), d->work.end()); }},
                           {"vqsort", [d, n] {
                              static hwy::Sorter sorter;
                              sorter(d->fresh().data(), static_cast<size_t>(n), hwy::SortAscending());
                            }}});
                    }});
}

void add_quantile(std::vector<group>& groups, int32_t n) {
  groups.push_back({"one quantile n=" + std::to_string(n), n, [=] {
                      const auto d = std::make_shared<sortable<double>>(n);
                      const auto q = std::make_shared<problem>(1, n, true);
                      q->data = d->original;
                      static const int32_t one = 1;
                      static double order = 0.3, result;
                      expect_success(__vtsdSSEditTask(q->task, VTS_SS_PARAM_DATA, q->data.data()));
                      expect_success(__vtsdSSEditQuantiles(q->task, &one, &order, &result, nullptr, nullptr));
                      return with_peers(
                          by_tier([q] {
                            expect_success(_vtsdSSQuantiles(q->task, VTS_SS_ESTIMATE_QUANTILES, 0,
                                                            VTS_SS_METHOD_FAST, 0, tmk_threading_serial()));
                          }),
                          {{"std::nth_element", [d, n] {
                              auto at = d->fresh().begin() + static_cast<ptrdiff_t>(0.3 * (n - 1));
                              std::nth_element(d->work.begin(), at, d->work.end());
                            }}});
                    }});
}

void add_sketch(std::vector<group>& groups, int32_t p, int32_t n) {
  groups.push_back(
      {"sketch, epsilon 0.001, n=" + std::to_string(n) + " p=" + std::to_string(p), int64_t{p} * n, [=] {
         const auto d = std::make_shared<problem>(p, n, false);
         std::vector<subject> all = by_tier([d, p, n] {
           tmk::quantile_sketch q(p, 0.001);
           q.add(tmk::matrix_view<const double>(d->data.data(), n, p));
         });
         if (p == 1)
           all.push_back({"Boost P-square, 3 orders",
                          [d, n] { boost_quartiles(d->data.data(), n, d->moments.data()); }});
         return all;
       }});
}

void add_describe(std::vector<group>& groups, int32_t p, int32_t n) {
  groups.push_back({"tmk::describe n=" + std::to_string(n) + " p=" + std::to_string(p), int64_t{p} * n, [=] {
                      const auto d = std::make_shared<problem>(p, n, false);
                      return by_tier([d, p, n] {
                        const auto all = tmk::describe(tmk::matrix_view<const double>(d->data.data(), n, p));
                        benchmark::DoNotOptimize(all);
                      });
                    }});
}

std::vector<group> all_groups() {
  std::vector<group> groups;
  for (const int32_t p : {1, 10, 100})
    for (const int32_t n : {1'000, 100'000, 10'000'000}) {
      if (int64_t{p} * n > 100'000'000) continue;
      for (const bool rows : {true, false})
        for (const bool weighted : {false, true}) {
          if (p == 1 && !rows) continue;  // the same code path
          add_moments(groups, p, n, rows, weighted);
        }
    }
  for (const int32_t p : {10, 100})
    for (const int32_t n : {1'000, 100'000})
      for (const bool rows : {true, false})
        for (const bool weighted : {false, true}) add_covariance(groups, p, n, rows, weighted);
  for (const int32_t n : {1'000, 10'000, 100'000, 1'000'000, 10'000'000}) {
    add_sort<double, tmk_dft_t4_tppsSortRadixAscend_64f_I>(groups, "double", n);
    add_sort<float, tmk_dft_t4_tppsSortRadixAscend_32f_I>(groups, "float", n);
    add_sort<int32_t, tmk_dft_t4_tppsSortRadixAscend_32s_I>(groups, "int32", n);
  }
  for (const int32_t n : {1'000, 100'000, 1'000'000, 10'000'000}) add_quantile(groups, n);
  add_sketch(groups, 1, 1'000'000);
  add_sketch(groups, 1, 10'000'000);
  add_sketch(groups, 10, 1'000'000);
  add_describe(groups, 10, 100'000);
  return groups;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<int> tiers = tmk::tools::available_tiers();
  if (std::find(tiers.begin(), tiers.end(), 1) == tiers.end()) {
    std::fputs("tmk-bench-stats: the peers are compiled for AVX2, which this processor does not have\n",
               stderr);
    return 2;
  }
  omp_set_num_threads(1);  // for the BLAS that the peers call, too
  const options wish = start(argc, argv, "covariance n=100000 p=100 rows");
  run_groups(all_groups(), wish,
             page_heading(wish, R"(<!-- Made by `./dev bench stats --markdown`: do not edit. -->
# Performance of summary statistics

%s.

Nanoseconds per value on one thread, median of %d repetitions in random order in one process.
%s
Rows: the observations of a variable are contiguous; columns: the variables of an observation. The sum is a
plain vectorised sum over the same array: the speed of reading. Variance is by the fast method, order 4
(mean, skewness, kurtosis) by the one-pass method. The bare dsyrk is the BLAS rank-k update alone, which the
covariance is made of. Sorts and std::nth_element are timed with the copy that they sort. Peers are compiled
for AVX2; GSL is the distribution's.
)"));
}
