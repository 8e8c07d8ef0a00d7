// SPDX-License-Identifier: Apache-2.0
// Holes: the likeliest model, imputations, and estimates pooled over them.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <tmk/impute.hpp>
#include <tmk/random.hpp>

#include "api/stats/samples.hpp"
#include "stats/missing_reference.hpp"
#include "threading/shuffled_threads.hpp"
#include "tmk/abi/ss.h"

namespace tmk {
namespace {

using tests::iris;
using tests::with_holes;

matrix_view<const double> view(const std::vector<double>& x, std::size_t p) {
  return {x.data(), x.size() / p, p};
}

// Rows of p values that depend on one another, the last on all others.
std::vector<double> related(std::size_t n, std::size_t p, unsigned seed) {
  std::vector<double> x = gaussian_values(n * p, seed);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 1; j < p; ++j) x[i * p + j] += 0.8 * x[i * p + j - 1];
  return x;
}

void expect_near(const normal_model& a, const normal_model& b, double tolerance) {
  for (std::size_t i = 0; i < a.mean.size(); ++i) {
    const double sd = std::sqrt(b.covariance(i, i));
    EXPECT_NEAR(a.mean[i], b.mean[i], tolerance * sd);
    for (std::size_t j = 0; j <= i; ++j)
      EXPECT_NEAR(a.covariance(i, j), b.covariance(i, j), tolerance * sd * std::sqrt(b.covariance(j, j)));
  }
}

TEST(impute, em_ends_at_the_maximum) {
  std::vector<double> thin = with_holes(iris(), 0.6, 5), empty_rows = with_holes(iris(), 0.2, 2);
  std::fill_n(empty_rows.begin() + 40, 8, nan);
  std::vector<double> far = with_holes(iris(), 0.2, 4);
  for (std::size_t i = 0; i < far.size(); ++i) far[i] = i % 4 == 1 ? 1e4 + far[i] : 1e-6 * far[i];
  const struct {
    std::vector<double> x;
    std::size_t p;
  } rows[] = {{with_holes(iris(), 0.2, 1), 4},
              {iris(), 4},
              {thin, 4},
              {empty_rows, 4},
              {far, 4},
              {with_holes(related(5000, 20, 1), 0.1, 6), 20},
              {with_holes(gaussian_values(50, 3), 0.3, 7), 1}};
  for (const auto& [x, p] : rows) {
    const em_estimates e = em_estimate(view(x, p));
    EXPECT_TRUE(e.converged);
    const tests::likelihood_at reference(x, p, e.mean, e.covariance.values());
    EXPECT_LT(reference.steepest, 1e-9L) << x.size();
    EXPECT_NEAR(e.log_likelihood, static_cast<double>(reference.value), 1e-12 * std::fabs(e.log_likelihood));
  }
  // Far from the first steps, where EM alone takes hundreds of rounds.
  EXPECT_LT(em_estimate(view(thin, 4)).rounds, 150);
}

TEST(impute, units_change_nothing_but_themselves) {
  const std::vector<double> x = with_holes(iris(), 0.2, 1);
  std::vector<double> y = x;
  const double factor[] = {1e-6, 0x1p40, 3, 1}, offset[] = {0, 0, -100, 1e6};
  for (std::size_t i = 0; i < x.size(); ++i) y[i] = x[i] * factor[i % 4] + offset[i % 4];
  const auto back = [&](normal_model m) {
    for (std::size_t i = 0; i < 4; ++i) {
      m.mean[i] = (m.mean[i] - offset[i]) / factor[i];
      for (std::size_t j = 0; j < 4; ++j) m.covariance(i, j) /= factor[i] * factor[j];
    }
    return m;
  };
  expect_near(back(em_estimate(view(y, 4))), em_estimate(view(x, 4)), 1e-9);
  const imputations a = impute(view(x, 4), {.count = 2, .rounds = 5}),
                    b = impute(view(y, 4), {.count = 2, .rounds = 5});
  expect_near(back(b.model(1, 4)), a.model(1, 4), 1e-8);
  for (std::size_t h = 0; h < a.holes().size(); ++h) {
    const std::size_t j = a.holes()[h].col;
    EXPECT_NEAR((b.values(1)[h] - offset[j]) / factor[j], a.values(1)[h], 1e-8);
  }
}

TEST(impute, layout_precision_and_threads_change_no_bit) {
  std::vector<double> x = with_holes(related(5000, 3, 2), 0.3, 3);
  for (double& v : x) v = static_cast<double>(static_cast<float>(v));
  const std::vector<float> singles(x.begin(), x.end());
  std::vector<double> columns(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) columns[i % 3 * 5000 + i / 3] = x[i];
  impute_options options{.count = 3, .rounds = 4, .seed = 9};
  const imputations a = impute(view(x, 3), options);
  const auto expect_equal = [&](const imputations& b) {
    for (std::size_t k = 0; k < 3; ++k) expect_same(a.completed(k).values(), b.completed(k).values());
    expect_same(a.chain().values(), b.chain().values());
  };
  expect_equal(impute(matrix_view<const float>(singles.data(), 5000, 3), options));
  options.threads = 3;
  expect_equal(impute(matrix_view<const double>(columns.data(), 5000, 3, layout::column_major), options));

  const TmkSSData data{x.data(), 0, 5000, 3, 3, 1, nullptr};
  const TmkSSImputeOptions o{3, 4, 0, {10'000, 1e-11, nullptr, nullptr}};
  for (const int threads : {1, 2, 5}) {
    std::vector<stream> own = streams(generator::philox4x32x10, 9, 3);
    const VtsStreamHandle handles[] = {own[0].handle(), own[1].handle(), own[2].handle()};
    matrix imputed(3, a.holes().size());
    ASSERT_EQ(tmk_ss_impute(&data, &o, handles, imputed.row(0).data(), nullptr, nullptr, nullptr,
                            tests::shuffled_threads(threads)),
              0);
    for (std::size_t k = 0; k < 3; ++k) EXPECT_TRUE(std::ranges::equal(imputed.row(k), a.values(k)));
  }
}

// Without holes the rounds are independent draws from the posterior, whose moments are known: the covariance
// has mean S / (n - p - 2), the mean the variance S / (n (n - p - 2)).
TEST(impute, posterior_of_complete_data) {
  constexpr std::size_t n = 30, p = 3, rounds = 20'000;
  const std::vector<double> x = related(n, p, 8);
  const imputations m = impute(view(x, p), {.count = 1, .rounds = rounds, .seed = 2});
  EXPECT_EQ(m.completed(0).values(), x);
  const summary s = describe(view(x, p));
  for (std::size_t i = 0; i < p; ++i) {
    const double want = s.cov(i, i) * (n - 1) / (n - p - 2);
    double mean = 0, square = 0, variance = 0;
    for (std::size_t r = 0; r < rounds; ++r) {
      const normal_model draw = m.model(0, r);
      mean += draw.mean[i] / rounds;
      square += std::pow(draw.mean[i] - s.mean[i], 2) / rounds;
      variance += draw.covariance(i, i) / rounds;
    }
    EXPECT_NEAR(mean, s.mean[i], 5 * std::sqrt(want / n / rounds));
    EXPECT_NEAR(square, want / n, 0.06 * want / n);
    EXPECT_NEAR(variance, want, 0.012 * want);
  }
}

TEST(impute, intervals_cover_the_truth) {
  constexpr std::size_t n = 100, p = 2;
  constexpr int runs = 400;
  int means = 0, variances = 0;
  for (unsigned run = 0; run < runs; ++run) {
    std::vector<double> x = gaussian_values(n * p, 100 + run);
    for (std::size_t i = 0; i < n; ++i) {
      x[p * i + 1] = 0.6 * x[p * i] + 0.8 * x[p * i + 1];  // missing where the other one is great
      if (x[p * i] > 0.4) x[p * i + 1] = nan;
    }
    const imputations m = impute(view(x, p), {.count = 10, .rounds = 15, .seed = run});
    std::vector<double> mean, log_variance, mean_variance, log_variance_variance;
    for (std::size_t k = 0; k < m.count(); ++k) {
      const matrix whole = m.completed(k);
      const summary s = describe(matrix_view<const double>(whole.row(0).data(), n, p));
      mean.push_back(s.mean[1]), mean_variance.push_back(s.variance[1] / n);
      log_variance.push_back(std::log(s.variance[1])), log_variance_variance.push_back(2.0 / (n - 1));
    }
    const auto covers = [&](const std::vector<double>& q, const std::vector<double>& u) {
      const pooled_estimate e = m.pool(q, u, n - 1);
      const double normal = 1.959963984540054;
      const double t = normal + (std::pow(normal, 3) + normal) / (4 * e.df);
      return std::fabs(e.estimate) <= t * e.se;  // the truth is 0 for both
    };
    means += covers(mean, mean_variance);
    variances += covers(log_variance, log_variance_variance);
  }
  for (const int covered : {means, variances}) {
    EXPECT_GE(covered, 0.93 * runs);
    EXPECT_LE(covered, 0.97 * runs);
  }
}

TEST(impute, holes_are_filled_and_nothing_else) {
  std::vector<double> x = with_holes(iris(), 0.2, 1);
  std::fill_n(x.begin() + 4, 4, nan);
  const imputations m = impute(view(x, 4), {.count = 3, .rounds = 20, .seed = 1});
  EXPECT_EQ(m.count(), 3u);
  EXPECT_EQ(m.holes().size(),
            static_cast<std::size_t>(std::ranges::count_if(x, [](double v) { return std::isnan(v); })));
  const matrix first = m.completed(0), second = m.completed(1);
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (std::isnan(x[i])) {
      EXPECT_NE(first(i / 4, i % 4), second(i / 4, i % 4));
      EXPECT_LT(std::fabs(first(i / 4, i % 4) - m.start().mean[i % 4]), 15);
    } else {
      EXPECT_EQ(first(i / 4, i % 4), x[i]);
    }
  }
  // One chain begins as the first of several does, and goes on.
  const imputations one = impute(view(x, 4), {.count = 3, .rounds = 20, .seed = 1, .one_chain = true});
  expect_same(one.completed(0).values(), first.values());
  EXPECT_NE(one.completed(1).values(), second.values());
  // A generator gives other imputations each time, the same from the same state.
  stream g = random(4), h = random(4);
  const impute_options of_g{.count = 1, .rounds = 2, .generator = &g},
      of_h{.count = 1, .rounds = 2, .generator = &h};
  const auto drawn = [&](const impute_options& o) { return impute(view(x, 4), o).completed(0).values(); };
  const auto again = drawn(of_g);
  EXPECT_EQ(again, drawn(of_h));
  EXPECT_NE(again, drawn(of_g));
}

// pool.scalar of R's package mice 3.15 gave the numbers of degrees of freedom and information.
TEST(impute, pools_by_the_rules_of_rubin) {
  const std::vector<double> q{1.2, 0.9, 1.5, 1.1, 1.35}, u{0.04, 0.05, 0.045, 0.06, 0.038};
  const pooled_estimate e = pool_estimates(q, u), small = pool_estimates(q, u, 49);
  EXPECT_NEAR(e.estimate, 1.21, 1e-15);
  EXPECT_NEAR(e.within, 0.0466, 1e-15);
  EXPECT_NEAR(e.between, 0.053, 1e-15);
  EXPECT_NEAR(e.se * e.se, 0.1102, 1e-15);
  EXPECT_NEAR(e.df, 12.0090581859895, 1e-12);
  EXPECT_NEAR(e.relative_increase, 1.36480686695279, 1e-13);
  EXPECT_NEAR(e.missing_information, 0.633480793973247, 1e-13);
  EXPECT_NEAR(small.df, 7.49275286361196, 1e-12);
  EXPECT_NEAR(small.missing_information, 0.657734311116019, 1e-13);
  const pooled_estimate agreed =
      pool_estimates(std::vector<double>(7, 0.1), std::vector<double>(7, 0.25), 10);
  EXPECT_DOUBLE_EQ(agreed.se, 0.5);
  EXPECT_EQ(agreed.missing_information, 0);
  EXPECT_NEAR(agreed.df, 10 * 11 / 13.0, 1e-12);  // no df are lost to imputation
}

TEST(impute, watchers_see_each_round_and_stop) {
  const std::vector<double> x = with_holes(iris(), 0.2, 1);
  std::int64_t em_rounds = 0, rounds = 0;
  const auto count = [&](const impute_progress& at) {
    EXPECT_GT(at.change, 0);
    EXPECT_EQ(at.round, at.imputation < 0 ? ++em_rounds : rounds++ % 6 + 1);
    return true;
  };
  const imputations m = impute(view(x, 4), {.count = 3, .rounds = 6, .progress = count});
  EXPECT_EQ(rounds, 18);
  EXPECT_GE(m.start().rounds, em_rounds);  // extrapolations that failed are no steps
  const em_estimates e =
      em_estimate(view(x, 4), {.progress = [](const impute_progress& at) { return at.round < 3; }});
  EXPECT_EQ(e.rounds, 3);
  EXPECT_FALSE(e.converged);
  EXPECT_FALSE(em_estimate(view(x, 4), {.rounds = 2}).converged);
  struct own {};
  for (const int threads : {1, 3})
    EXPECT_THROW((void)impute(view(x, 4), {.threads = threads,
                                           .progress = [](const impute_progress& at) -> bool {
                                             if (at.imputation == 1) throw own();
                                             return true;
                                           }}),
                 own);
}

TEST(impute, refusals_name_argument_and_value) {
  const std::vector<double> x = with_holes(iris(), 0.2, 1), q{1, 2}, u{1, 1}, infinite_q{1, infinity},
                            bad_u{1, -1};
  std::vector<double> endless = x, hollow = x, constant = x, twice = iris(), wide = x;
  endless[9] = -infinity;
  wide[0] = 1e308, wide[400] = -1e308;
  for (std::size_t i = 0; i < x.size(); i += 4) {
    hollow[i + 2] = nan;
    if (!std::isnan(x[i + 3])) constant[i + 3] = 2.5;
    twice[i + 1] = 2 * twice[i];
  }
  const imputations m = impute(view(x, 4), {.count = 2, .rounds = 1, .keep_chain = false});
  stream moved = random(1);
  (void)stream(std::move(moved));
  struct refusal {
    std::function<void()> call;
    const char *argument, *value;
  };
  const auto tried = [&](const impute_options& options) {
    return [&x, options] { (void)impute(view(x, 4), options); };
  };
  const refusal rows[] = {
      {[&] { (void)impute(view(endless, 4)); }, "x(2, 1)", "inf"},
      {[&] { (void)em_estimate(view(wide, 4)); }, "x.col(0)", "inf"},
      {[&] { (void)em_estimate(view(hollow, 4)); }, "x.col(2)", "nan"},
      {[&] { (void)em_estimate(view(constant, 4)); }, "x.col(3)", "constant"},
      {[&] { (void)em_estimate(view(x, 4).block(50, 4)); }, "x.rows", "4"},
      {[&] { (void)em_estimate(view(twice, 4)); }, "x", "singular"},
      {[&] { (void)impute(matrix_view<const double>(nullptr, 9, 2)); }, "x", "null"},
      {[&] { (void)impute(matrix_view<const double>(x.data(), 9, 0)); }, "x.cols", "0"},
      {tried({.count = 0}), "count", "0"},
      {tried({.rounds = 0}), "rounds", "0"},
      {tried({.threads = 0}), "threads", "0"},
      {tried({.generator = &moved}), "g", "empty"},
      {tried({.progress = [](const impute_progress&) { return false; }}), "progress", "false"},
      {[&] { (void)em_estimate(view(x, 4), {.tolerance = 0}); }, "tolerance", "0"},
      {[&] { (void)em_estimate(view(x, 4), {.tolerance = nan}); }, "tolerance", "nan"},
      {[&] { (void)em_estimate(view(x, 4), {.rounds = 0}); }, "rounds", "0"},
      {[&] { (void)m.completed(2); }, "k", "2"},
      {[&] { (void)m.model(0, 0); }, "options.keep_chain", "false"},
      {[&] { (void)m.pool(std::vector<double>(3), std::vector<double>(3)); }, "estimates", "3"},
      {[&] { (void)m.pool(q, std::vector<double>(3)); }, "variances", "3"},
      {[&] { (void)m.pool(infinite_q, u); }, "estimates[1]", "inf"},
      {[&] { (void)m.pool(q, bad_u); }, "variances[1]", "-1"},
      {[&] { (void)m.pool(q, u, 0); }, "complete_df", "0"},
      {[&] { (void)m.pool(matrix(2, 3), matrix(2, 2)); }, "variances.cols", "2"},
      {[&] { (void)pool_estimates(std::vector<double>(1), std::vector<double>(1)); }, "estimates", "1"},
  };
  for (const refusal& row : rows) {
    try {
      row.call();
      ADD_FAILURE() << row.argument << ' ' << row.value;
    } catch (const error& e) {
      EXPECT_EQ(e.argument(), row.argument) << e.what();
      EXPECT_EQ(e.value(), row.value) << e.what();
    }
  }
}

}  // namespace
}  // namespace tmk
