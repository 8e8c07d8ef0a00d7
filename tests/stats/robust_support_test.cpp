// SPDX-License-Identifier: Apache-2.0
// What outlier detection and robust covariance rest on: the chi-square distribution, matrix helpers,
// distances, selection and the translated biweight.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "stats/robust/biweight.hpp"
#include "stats/robust/median.hpp"
#include "stats/task.hpp"
#include "tmk/abi/serv.h"
#include "tmk/abi/ss.h"

namespace {

namespace robust = tmk::stats::robust;

constexpr double nan = std::numeric_limits<double>::quiet_NaN(),
                 inf = std::numeric_limits<double>::infinity();

// The numbers are those of pchisq, dchisq and qchisq of R 4.2.2 (nmath).
TEST(robust_support, chi_square_agrees_with_published_values) {
  struct row {
    double (*function)(double, double);
    double df, x, want, tolerance;
  };
  const row rows[] = {
      {__vtsdChi2CDF, 1, 0.1, 0.24817036595415071, 1e-15},
      {__vtsdChi2CDF, 2, 3, 0.77686983985157021, 1e-15},
      {__vtsdChi2CDF, 20, 30, 0.93014633930059021, 1e-14},
      {__vtsdChi2CDF, 3, 1e-10, 2.6596152025964298e-16, 1e-14},
      {__vtsdChi2CDF, 50, 200, 1, 1e-15},
      {__vtsdChi2CDF, 1e4, 1e4, 0.50188063403381744, 1e-11},
      {__vtsdChi2CDF, 1000, 900, 0.010717238091289742, 1e-12},
      {__vtsdChi2PDF, 1, 0.1, 1.2000389484301361, 2.1e-11},
      {__vtsdChi2PDF, 2, 3, 0.11156508007421491, 4.2e-11},
      {__vtsdChi2PDF, 20, 30, 0.016203583609868441, 4.2e-10},
      {__vtsdChi2PDF, 50, 80, 0.00096366225759168822, 1.1e-09},
      {__vtsdChi2ICDF, 3, 1e-6, 0.0002418104872012428, 1e-12},
      {__vtsdChi2ICDF, 1, 1e-3, 1.5707971492624904e-06, 1e-12},
      {__vtsdChi2ICDF, 4, 0.025, 0.48441855708792975, 1e-13},
      {__vtsdChi2ICDF, 7, 0.5, 6.3458111955215166, 1e-13},
      {__vtsdChi2ICDF, 20, 0.975, 34.169606902838339, 1e-13},
      {__vtsdChi2ICDF, 50, 0.999, 86.660815190403127, 1e-13},
      {__vtsdChi2ICDF, 1000, 1 - 1e-9, 1291.9578664788812, 1e-9},
  };
  for (const auto& r : rows)
    EXPECT_NEAR(r.function(r.df, r.x) / r.want, 1, r.tolerance) << r.df << ' ' << r.x;
  for (double df = 1; df < 3000; df *= 1.7)
    for (double probability = 1e-5; probability < 1; probability += 0.0499)
      EXPECT_NEAR(__vtsdChi2CDF(df, __vtsdChi2ICDF(df, probability)) / probability, 1, 1e-11)
          << df << ' ' << probability;
}

TEST(robust_support, chi_square_ends_for_every_argument) {
  const double values[] = {nan, -inf, -1, -0.0, 0, 1e-320, 1e-300, 0.5, 1, 50, 1e15, 1e300, inf};
  for (const double df : values)
    for (const double x : values) {
      const double p = __vtsdChi2CDF(df, x);
      EXPECT_TRUE(std::isnan(df) || std::isnan(x) ? std::isnan(p) : p >= 0 && p <= 1)
          << df << ' ' << x << ' ' << p;
      __vtsdChi2PDF(df, x);
      __vtsdChi2ICDF(df, x);
    }
  EXPECT_EQ(__vtsdChi2CDF(0, 1), 0);
  EXPECT_EQ(__vtsdChi2ICDF(3, 0), 0);
  EXPECT_EQ(__vtsdChi2ICDF(3, 1), inf);
  EXPECT_NEAR(__vtsdLGamma(0.5), 0.5 * std::log(M_PI), 1e-15);
}

template <class Real>
struct names;
#define TMK_NAMES(letter, Real)                                   \
  template <>                                                     \
  struct names<Real> {                                            \
    static constexpr auto test_rank = __vts##letter##TestCovRank; \
    static constexpr auto invert = __vts##letter##InvCov;         \
    static constexpr auto make = __vts##letter##SSNewTask;        \
    static constexpr auto distance = _vts##letter##SSMahDistance; \
  };
TMK_NAMES(d, double)
TMK_NAMES(s, float)

template <class Real>
class robust_pair : public testing::Test {};
using reals = testing::Types<float, double>;
TYPED_TEST_SUITE(robust_pair, reals);

TYPED_TEST(robust_pair, rank_test_adds_a_ridge_where_an_eigenvalue_is_positive) {
  using Real = TypeParam;
  const Real tiny = std::bit_cast<Real>(std::conditional_t<sizeof(Real) == 8, uint64_t, uint32_t>(0x3E8));
  struct row {
    std::vector<Real> matrix;
    int32_t status;
    Real first;  // element 0 afterwards
  };
  const row rows[] = {
      {{4}, 0, 4},
      {{0}, 0, tiny},
      {{-1}, VTS_STATUS_SS_NOT_POSITIVE, -1},
      {{2, 1, 1, 2}, 0, 2},
      {{1, 1, 1, 1}, 0, static_cast<Real>(1.02)},  // eigenvalues 0 and 2
      {{0, 0, 0, 0}, VTS_STATUS_SS_NOT_POSITIVE, 0},
      {{0, 0, 0, 0, 3, 0, 0, 0, 5}, 0, static_cast<Real>(0.03)},
  };
  for (const auto& r : rows) {
    std::vector<Real> c = r.matrix;
    const auto p = static_cast<int32_t>(std::lround(std::sqrt(static_cast<double>(c.size()))));
    EXPECT_EQ(names<Real>::test_rank(p, c.data()), r.status);
    EXPECT_NEAR(c[0], r.first, 1e-6 * std::fabs(r.first));
    if (p > 1) {
      EXPECT_EQ(c[1], r.matrix[1]);  // of the triangle that is used
    }
  }
}

TYPED_TEST(robust_pair, inverse_of_every_order_and_freed_without_one) {
  using Real = TypeParam;
  for (int32_t p = 1; p <= 8; ++p) {
    const auto order = static_cast<size_t>(p);
    std::vector<Real> c(order * order), inverse;
    for (size_t i = 0; i < order; ++i)
      for (size_t j = 0; j < order; ++j)
        c[i * order + j] =
            static_cast<Real>(1.0 / static_cast<double>(1 + (i > j ? i - j : j - i)) + (i == j ? 0.5 : 0));
    inverse = c;
    EXPECT_EQ(names<Real>::invert(p, inverse.data()), 0);
    for (size_t i = 0; i < order; ++i)
      for (size_t j = 0; j < order; ++j) {
        double sum = 0;
        for (size_t k = 0; k < order; ++k)
          sum += static_cast<double>(c[i * order + k]) * inverse[std::min(k, j) * order + std::max(k, j)];
        EXPECT_NEAR(sum, i == j ? 1 : 0, 20 * std::numeric_limits<Real>::epsilon()) << p;
      }
  }
  auto* const singular = static_cast<Real*>(tmk_serv_allocate(16 * sizeof(Real), 128));
  std::fill_n(singular, 16, Real{1});
  EXPECT_EQ(names<Real>::invert(4, singular),
            VTS_STATUS_SS_FACTOR_FAILED);  // a leak or a double free shows in ASan
}

TYPED_TEST(robust_pair, distances_of_a_range_in_both_layouts) {
  using Real = TypeParam;
  std::mt19937 engine(3);
  std::normal_distribution<double> normal;
  for (const int32_t layout : {VTS_SS_ROWS, VTS_SS_COLUMNS})
    for (const int32_t p : {1, 3, 7})
      for (const int32_t wide : {0, 1}) {
        const int32_t n = 700, first = 13, last = 655;
        std::vector<Real> x(static_cast<size_t>(n) * p), mean(p), inverse(static_cast<size_t>(p) * p),
            out(n, -1);
        for (Real& v : x) v = static_cast<Real>(normal(engine));
        for (int32_t i = 0; i < p; ++i)
          for (int32_t j = 0; j < p; ++j)  // the triangle below the diagonal must not be read
            mean[i] = i, inverse[i * p + j] = j < i ? 1e9f : static_cast<Real>(i == j ? p : 0.5);
        const int64_t wide_p = p, wide_n = n, wide_layout = layout, wide_first = first, wide_last = last;
        const auto pick = [wide](const int32_t& narrow, const int64_t& big) -> const void* {
          return wide != 0 ? static_cast<const void*>(&big) : &narrow;
        };
        SSTask* task = nullptr;
        ASSERT_EQ(names<Real>::make(&task, pick(p, wide_p), pick(n, wide_n), pick(layout, wide_layout),
                                    x.data(), nullptr, nullptr, wide),
                  0);
        auto& t = tmk::stats::task<Real>::of(task);
        t.distanceFirst = pick(first, wide_first), t.distanceLast = pick(last, wide_last);
        t.distanceMean = mean.data(), t.distanceInvCov = inverse.data(), t.distanceOut = out.data();
        EXPECT_EQ(names<Real>::distance(task), 0);
        for (int32_t i = first; i < last; ++i) {
          std::vector<long double> z;
          for (int32_t j = 0; j < p; ++j)
            z.push_back(static_cast<long double>(x[layout == VTS_SS_ROWS ? j * n + i : i * p + j]) - mean[j]);
          long double d2 = 0;
          for (int32_t a = 0; a < p; ++a)
            for (int32_t b = 0; b < p; ++b) d2 += z[a] * inverse[std::min(a, b) * p + std::max(a, b)] * z[b];
          ASSERT_NEAR(out[i - first], std::sqrt(d2),
                      8 * std::numeric_limits<Real>::epsilon() * std::sqrt(d2));
        }
        EXPECT_EQ(out[last - first], -1);
        __vtsSSDeleteTask(&task);
      }
}

TEST(robust_support, medians_are_exact_for_any_order_and_ties) {
  std::mt19937 engine(5);
  std::normal_distribution<double> normal;
  for (const size_t n : {1, 2, 3, 10, 599, 2000, 2001, 50001, 100000})
    for (int kind = 0; kind < 6; ++kind) {
      std::vector<double> x(n), work(2 * n);
      for (size_t i = 0; i < n; ++i) {
        const double draw = normal(engine), t = static_cast<double>(i);
        const double kinds[] = {draw, t, -t, 7, std::round(draw), i % 37 == 0 ? t : -1e9 * (i % 5 == 0)};
        x[i] = kinds[kind];
      }
      std::vector<double> s = x;
      std::sort(s.begin(), s.end());
      const double want = n % 2 == 1 ? s[n / 2] : 0.5 * s[n / 2 - 1] + 0.5 * s[n / 2];
      ASSERT_EQ(robust::median(x.data(), n, work.data()), want) << n << ' ' << kind;
      for (const size_t k : {size_t{0}, n / 3, n - 1})
        ASSERT_EQ(robust::ranked(x.data(), n, k, work.data()), s[k]);
      for (double& value : s) value = std::fabs(value - want);
      std::sort(s.begin(), s.end());
      ASSERT_EQ(robust::median_and_mad(x.data(), n, work.data()).mad,
                n % 2 == 1 ? s[n / 2] : 0.5 * s[n / 2 - 1] + 0.5 * s[n / 2]);
    }
  std::vector<double> holes(5000, nan), work(10000);
  for (size_t i = 0; i < holes.size(); i += 2) holes[i] = 1;
  robust::median_and_mad(holes.data(), holes.size(), work.data());  // ends, with any result
}

// E rho by Simpson's rule over the density, and rho by the same over its derivative.
TEST(robust_support, biweight_constants_solve_their_equations) {
  const auto simpson = [](double low, double high, const auto& f) {
    constexpr int parts = 4000;
    const double h = (high - low) / parts;
    double sum = f(low) + f(high);
    for (int k = 1; k < parts; ++k) sum += (k % 2 == 1 ? 4 : 2) * f(low + k * h);
    return sum * h / 3;
  };
  for (const int32_t p : {1, 2, 5, 10, 20})
    for (const robust::biweight w : {robust::biweight{0, 3}, {2, 2.5}, {4, 1}}) {
      EXPECT_NEAR(simpson(0, 3.5, [&](double d) { return d * w.weight(d); }), w.rho(3.5), 1e-6);
      EXPECT_NEAR(w.rho(w.M + w.c), w.top(), 1e-12);
      const double mean = simpson(0, 12, [&](double d) {
        const double log_density =
            (p - 1) * std::log(d + 1e-300) - d * d / 2 - (p / 2.0 - 1) * std::log(2.0) - std::lgamma(p / 2.0);
        return w.rho(d) * std::exp(log_density);
      });
      EXPECT_NEAR(robust::mean_rho(p, w) / mean, 1, p == 1 ? 2e-3 : 1e-5) << p << ' ' << w.M;
    }
  // The biweight's constant for breakdown 0.5 in one variable (P. Rousseeuw, V. Yohai, 1984).
  EXPECT_NEAR(robust::tune_biweight(1, 0.5, 0.001).w.c, 1.5476, 1e-4);
  for (const int32_t p : {1, 2, 3, 5, 8, 12, 20, 40, 100})
    for (const double b : {0.25, 0.45, 0.5})
      for (const double a : {0.001, 0.01}) {
        const auto t = robust::tune_biweight(p, b, a);
        const double q = std::sqrt(__vtsdChi2ICDF(p, 1 - t.rejection));
        EXPECT_NEAR(t.w.M + t.w.c, q, 1e-9 * q);
        EXPECT_TRUE(t.rejection >= a * (1 - 1e-9) && t.breakdown <= 0.5) << p;
        if (t.w.c > 0) {
          EXPECT_NEAR(t.mean_rho / t.w.top(), b, 1e-9) << p << ' ' << b << ' ' << a;
        }
        if (t.w.M > 0) {
          EXPECT_NEAR(t.rejection, a, 1e-9 * a);
        }
        // The task's search agrees where it converges.
        const robust::biweight found = robust::task_biweight(p, b, a);
        if (found.c > 0.2 && t.w.M > 0) {
          EXPECT_NEAR(found.M, t.w.M, 2e-3) << p << ' ' << b << ' ' << a;
        }
      }
}

}  // namespace
