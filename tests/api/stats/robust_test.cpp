// SPDX-License-Identifier: Apache-2.0
// Robust covariance, outliers, MAD and distances as a program calls them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <stdexcept>
#include <string>
#include <tmk/robust.hpp>

#include "api/stats/samples.hpp"
#include "stats/robust/biweight.hpp"
#include "stats/robust_sets.hpp"

namespace tmk {
namespace {

using tests::data_set;

using view = matrix_view<const double>;
view view_of(const data_set& s) { return {s.values.data(), s.rows, s.cols}; }

// Rows of which the first `bad` are a tight cluster at a distance along the diagonal; the others are normal.
std::vector<double> clustered(std::size_t n, std::size_t p, std::size_t bad, double distance, unsigned seed) {
  std::vector<double> x = gaussian_values(n * p, seed);
  for (std::size_t i = 0; i < bad * p; ++i) x[i] = 0.1 * x[i] + distance / std::sqrt(static_cast<double>(p));
  return x;
}

TEST(robust, outliers_that_the_literature_names) {
  for (const data_set* s : {&tests::hbk, &tests::stackloss, &tests::wood, &tests::starscyg})
    EXPECT_EQ(robust_covariance(view_of(*s)).outliers(0.025), s->outliers) << s->name;
  EXPECT_EQ(outliers(view_of(tests::hbk)).rows, tests::hbk.outliers);
  EXPECT_EQ(outliers(view_of(tests::wood)).rows, tests::wood.outliers);
  EXPECT_EQ(outliers(view_of(tests::hbk), {.start = start::mahalanobis}).rows.size(), 14u);
  const auto o = outliers(view_of(tests::starscyg));
  for (const std::size_t giant : {10, 19, 29, 33})
    EXPECT_TRUE(std::binary_search(o.rows.begin(), o.rows.end(), giant));
  for (std::size_t i = 0; i < o.distances.size(); ++i)
    EXPECT_EQ(o.distances[i] >= o.cutoff, std::binary_search(o.rows.begin(), o.rows.end(), i));
}

// R 4.2.2, rrcov 1.7-2: CovSest(x, method = "sfast", bdp = (n - p) / (2 n), nsamp = 2000), Tukey's biweight.
TEST(robust, in_few_variables_the_estimate_is_the_S_estimate_of_rrcov) {
  struct row {
    const data_set& set;
    std::vector<double> location, covariance;
  };
  const row rows[] = {
      {tests::hbk,
       {1.5344909, 1.8230752, 1.6593261},
       {1.835546102, 0.052956723, 0.24144997, 0.052956723, 1.849150258, 0.251417839, 0.24144997, 0.251417839,
        1.75343594}},
      {tests::starscyg, {4.4212735, 4.9676611}, {0.017768914, 0.061918857, 0.061918857, 0.388229137}}};
  for (const auto& r : rows) {
    const auto e = robust_covariance(view_of(r.set), {.reweight = false});
    for (std::size_t i = 0; i < r.location.size(); ++i) EXPECT_NEAR(e.location[i], r.location[i], 1e-6);
    for (std::size_t k = 0; k < r.covariance.size(); ++k)
      EXPECT_NEAR(e.covariance.values()[k], r.covariance[k], 1e-5 * r.covariance.back());
  }
}

// Weights by the distances give location and covariance again, and the distances' M-scale is 1.
TEST(robust, the_estimate_solves_its_equations) {
  for (const data_set* s : {&tests::hbk, &tests::starscyg, &tests::stackloss}) {
    const auto e = robust_covariance(
        view_of(*s), {.breakdown = 0.4, .tolerance = 1e-12, .max_rounds = 1000, .reweight = false});
    const auto p = static_cast<std::int32_t>(s->cols);
    const auto w = stats::robust::tune_biweight(p, std::min(0.4, e.breakdown), 0.001);
    long double total = 0, rho = 0, trace = 0;
    std::vector<long double> mean(s->cols);
    for (std::size_t i = 0; i < s->rows; ++i) {
      EXPECT_NEAR(e.weights[i], w.w.weight(e.distances[i]), 1e-9);
      total += e.weights[i], rho += w.w.rho(e.distances[i]);
      for (std::size_t j = 0; j < s->cols; ++j) mean[j] += e.weights[i] * s->values[i * s->cols + j];
      trace += e.weights[i] * e.distances[i] * e.distances[i];
    }
    EXPECT_NEAR(static_cast<double>(rho / static_cast<long double>(s->rows)), w.mean_rho, 1e-9) << s->name;
    for (std::size_t j = 0; j < s->cols; ++j)
      EXPECT_NEAR(static_cast<double>(mean[j] / total), e.location[j], 1e-9 * std::sqrt(e.covariance(j, j)));
    for (std::size_t a = 0; a < s->cols; ++a)
      for (std::size_t b = 0; b < s->cols; ++b) {
        long double sum = 0;
        for (std::size_t i = 0; i < s->rows; ++i)
          sum += e.weights[i] * (s->values[i * s->cols + a] - mean[a] / total) *
                 (s->values[i * s->cols + b] - mean[b] / total);
        EXPECT_NEAR(static_cast<double>(sum * p / trace), e.covariance(a, b),
                    1e-8 * std::sqrt(e.covariance(a, a) * e.covariance(b, b)))
            << s->name;
      }
  }
}

// Of 30 % in a tight cluster nothing remains, near it or far, in few variables and in many.
TEST(robust, clusters_of_a_third_do_not_move_the_estimate) {
  struct row {
    std::size_t n, p;
    double distance;
  };
  for (const row& r : {row{100, 2, 10}, {100, 5, 30}, {200, 20, 30}, {200, 20, 100}, {300, 30, 100}})
    for (const unsigned seed : {1u, 2u, 3u}) {
      const auto bad = static_cast<std::size_t>(0.3 * static_cast<double>(r.n));
      const auto x = clustered(r.n, r.p, bad, r.distance, seed);
      const auto e = robust_covariance(view(x.data(), r.n, r.p));
      double norm = 0;
      for (const double v : e.location) norm += v * v;
      EXPECT_LT(std::sqrt(norm), 0.7) << r.p << ' ' << r.distance;
      for (std::size_t i = 0; i < bad; ++i) EXPECT_EQ(e.weights[i], 0);
      for (std::size_t j = 0; j < r.p; ++j) EXPECT_TRUE(e.covariance(j, j) > 0.5 && e.covariance(j, j) < 4);
      EXPECT_TRUE(e.converged);
    }
}

TEST(robust, estimates_of_normal_data_are_consistent) {
  for (const std::size_t p : {1, 2, 6, 15}) {
    const std::size_t n = 40000;
    const auto x = gaussian_values(n * p, 17);
    for (const tmk::robust method : {tmk::robust::tbs, tmk::robust::ogk}) {
      const auto e = robust_covariance(view(x.data(), n, p), {.method = method});
      for (std::size_t i = 0; i < p; ++i)
        for (std::size_t j = 0; j < p; ++j)
          EXPECT_NEAR(e.covariance(i, j), i == j ? 1 : 0, 0.05) << p << ' ' << static_cast<int>(method);
      const double flagged = static_cast<double>(e.outliers(0.025).size()) / static_cast<double>(n);
      EXPECT_NEAR(flagged, 0.025, 0.005) << p;
    }
  }
  // In one variable the S-estimate with breakdown 0.5 rejects what is beyond 1.5476 sd, more than requested.
  const auto x = gaussian_values(2001, 3);
  const auto e = robust_covariance(view(x.data(), 2001, 1), {.rejection = 0.001, .reweight = false});
  EXPECT_NEAR(e.rejection, 0.1217, 2e-3);
  EXPECT_NEAR(e.breakdown, 0.5, 1e-3);
  const auto low =
      robust_covariance(view(x.data(), 2001, 1), {.breakdown = 0.1, .rejection = 0.001, .reweight = false});
  EXPECT_NEAR(low.breakdown, 0.1, 1e-6);
  EXPECT_NEAR(low.rejection, 0.001, 1e-6);
}

TEST(robust, reweighting_takes_the_rows_within_the_quantile) {
  for (const std::size_t p : {1, 4}) {
    const auto x = clustered(500, p, 100, 9, 6);
    const view v(x.data(), 500, p);
    const auto plain = robust_covariance(v, {.reweight = false});
    const auto e = robust_covariance(v);
    std::vector<double> weights(500, 1);
    for (const std::size_t i : plain.outliers(0.025)) weights[i] = 0;
    EXPECT_EQ(e.weights, weights);
    const auto s = describe(v, {.weights = weights});
    // In one variable, within 2.2414 sd: 0.975 / P(chi2 with 3 degrees of freedom < 2.2414^2).
    const double factor = e.covariance(0, 0) / s.cov(0, 0);
    if (p == 1) {
      EXPECT_NEAR(factor * s.weight[0] / (s.weight[0] - 1), 1.174779, 1e-6);
    }
    for (std::size_t i = 0; i < p; ++i) {
      EXPECT_NEAR(e.location[i], s.mean[i], 1e-13);
      for (std::size_t j = 0; j < p; ++j) EXPECT_NEAR(e.covariance(i, j), factor * s.cov(i, j), 1e-13);
    }
  }
}

TEST(robust, few_rows_of_clean_data_are_flagged) {
  std::size_t flagged = 0;
  for (unsigned seed = 0; seed < 20; ++seed) {
    const auto x = gaussian_values(3000, seed);
    flagged += outliers(view(x.data(), 1000, 3), {.alpha = 0.05}).rows.size();
  }
  EXPECT_LE(flagged, 20u);
}

// The grid is coarse enough that 1e9 more is exact.
TEST(robust, a_change_of_units_changes_estimates_as_it_should) {
  auto x = clustered(500, 4, 120, 9, 5);
  for (double& v : x) v = std::round(v * 1024) / 1024;
  const auto base = robust_covariance(view(x.data(), 500, 4));
  const auto flags = outliers(view(x.data(), 500, 4));
  EXPECT_EQ(flags.rows.size(), 120u);
  for (const auto& [factor, offset] : {std::pair{1e-6, 0.0}, {1.0, 1e9}, {1e12, 0.0}, {-1.0, 0.0}}) {
    auto y = x;
    for (double& v : y) v = v * factor + offset;
    for (const tmk::robust method : {tmk::robust::tbs, tmk::robust::ogk}) {
      const auto want = robust_covariance(view(x.data(), 500, 4), {.method = method});
      const auto e = robust_covariance(view(y.data(), 500, 4), {.method = method});
      for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR((e.location[i] - offset) / factor, want.location[i], offset != 0 ? 2e-7 : 1e-12);
        for (std::size_t j = 0; j < 4; ++j)
          EXPECT_NEAR(e.covariance(i, j) / (factor * factor), want.covariance(i, j),
                      1e-12 * want.covariance(i, i));
      }
      for (std::size_t i = 0; i < 500; ++i)
        ASSERT_NEAR(e.distances[i], want.distances[i], 1e-11 * want.distances[i]);
    }
    EXPECT_EQ(outliers(view(y.data(), 500, 4)).rows, flags.rows);
  }
}

TEST(robust, threads_layouts_and_precision_change_no_bit) {
  const std::size_t n = 12000, p = 6;
  auto x = clustered(n, p, 3000, 12, 8);
  for (double& v : x) v = static_cast<float>(v);
  std::vector<float> single(x.begin(), x.end());
  std::vector<double> columns(n * p);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < p; ++j) columns[j * n + i] = x[i * p + j];
  const data_view views[] = {view(x.data(), n, p), view(columns.data(), n, p, layout::column_major),
                             matrix_view<const float>(single.data(), n, p)};
  for (const tmk::robust method : {tmk::robust::tbs, tmk::robust::ogk}) {
    const auto want = robust_covariance(views[0], {.method = method});
    for (const auto& v : views)
      for (const int threads : {1, 2, 5}) {
        const auto e = robust_covariance(v, {.method = method, .threads = threads});
        EXPECT_EQ(e.covariance.values(), want.covariance.values());
        EXPECT_EQ(e.distances, want.distances);
        EXPECT_EQ(e.weights, want.weights);
      }
  }
  for (const auto& v : views) EXPECT_EQ(outliers(v, {.threads = 3}).distances, outliers(views[0]).distances);
}

TEST(robust, distances_and_correlations_belong_to_the_estimate) {
  const auto x = clustered(400, 3, 80, 6, 2);
  const view v(x.data(), 400, 3);
  const auto e = robust_covariance(v);
  const auto d = mahalanobis(v, e.location, e.covariance, 2);
  for (std::size_t i = 0; i < d.size(); ++i) EXPECT_NEAR(d[i], e.distances[i], 1e-12 * d[i]);
  EXPECT_EQ(e.correlation(1, 1), 1);
  EXPECT_NEAR(e.correlation(0, 2), e.covariance(0, 2) / std::sqrt(e.covariance(0, 0) * e.covariance(2, 2)),
              1e-15);
  const auto s = describe(v);
  EXPECT_EQ(mad(v), s.mad);
  const double two[] = {3, 4};
  matrix unit(2, 2);
  unit(0, 0) = unit(1, 1) = 1;
  EXPECT_EQ(mahalanobis(view(two, 1, 2), std::vector<double>{0, 0}, unit)[0], 5);
}

TEST(robust, a_watch_sees_rounds_and_may_stop_or_throw) {
  const auto x = clustered(300, 4, 60, 8, 3);
  const view v(x.data(), 300, 4);
  std::vector<robust_progress> seen;
  const auto all =
      robust_covariance(v, {.progress = [&](const robust_progress& r) { return seen.push_back(r), true; }});
  ASSERT_EQ(static_cast<std::size_t>(all.rounds), seen.size());
  EXPECT_LE(seen.back().change, 1e-6);
  const auto stopped = robust_covariance(
      v, {.tolerance = 0, .progress = [](const robust_progress& r) { return r.round < 2; }});
  EXPECT_EQ(stopped.rounds, 2);
  EXPECT_FALSE(stopped.converged);
  EXPECT_FALSE(outliers(v, {.progress = [](const robust_progress&) { return false; }}).converged);
  const auto thrower = [](const robust_progress&) -> bool { throw std::runtime_error("enough"); };
  EXPECT_THROW((void)robust_covariance(v, {.progress = thrower}), std::runtime_error);
  EXPECT_THROW((void)outliers(v, {.progress = thrower}), std::runtime_error);
}

TEST(robust, refusals_name_argument_and_value) {
  auto x = gaussian_values(60, 1), holes = x, endless = x, flat = x, plane = gaussian_values(90, 2);
  holes[7] = nan, endless[31] = infinity;
  for (std::size_t i = 0; i < 34; i += 2) flat[i] = 4;
  for (std::size_t i = 0; i < 90; i += 3) plane[i + 2] = plane[i] - plane[i + 1];
  const view v(x.data(), 30, 2);
  matrix c(2, 2), skew(2, 2), narrow(1, 1);
  c(0, 0) = c(1, 1) = 1, c(0, 1) = c(1, 0) = 1;
  skew(0, 0) = skew(1, 1) = 1, skew(0, 1) = 0.5;
  const std::vector<double> location(2);
  struct refusal {
    std::function<void()> call;
    const char *argument, *value;
  };
  const refusal rows[] = {
      {[&] { (void)robust_covariance(view(x.data(), 4, 2)); }, "x.rows", "4"},
      {[&] { (void)outliers(view(x.data(), 7, 2)); }, "x.rows", "7"},
      {[&] { (void)robust_covariance(view(nullptr, 30, 2)); }, "x", "null"},
      {[&] { (void)robust_covariance(view(x.data(), 30, 0)); }, "x.cols", "0"},
      {[&] { (void)robust_covariance(view(holes.data(), 30, 2)); }, "x(3, 1)", "nan"},
      {[&] { (void)outliers(view(endless.data(), 30, 2)); }, "x(15, 1)", "inf"},
      {[&] { (void)robust_covariance(view(flat.data(), 30, 2)); }, "x column 0", "0"},
      {[&] { (void)outliers(view(flat.data(), 30, 2)); }, "x column 0", "0"},
      {[&] { (void)robust_covariance(view(plane.data(), 30, 3)); }, "x", "singular"},
      {[&] { (void)outliers(view(plane.data(), 30, 3)); }, "x", "singular"},
      {[&] { (void)robust_covariance(v, {.breakdown = 0.6}); }, "breakdown", "0.6"},
      {[&] { (void)robust_covariance(v, {.rejection = 1}); }, "rejection", "1"},
      {[&] { (void)robust_covariance(v, {.tolerance = nan}); }, "tolerance", "nan"},
      {[&] { (void)robust_covariance(v, {.max_rounds = 0}); }, "max_rounds", "0"},
      {[&] { (void)robust_covariance(v, {.threads = 0}); }, "threads", "0"},
      {[&] { (void)robust_covariance(v, {.method = static_cast<tmk::robust>(7)}); }, "method", "7"},
      {[&] { (void)outliers(v, {.alpha = 0}); }, "alpha", "0"},
      {[&] { (void)outliers(v, {.start = static_cast<tmk::start>(7)}); }, "start", "7"},
      {[&] { (void)robust_covariance(v).outliers(-0.5); }, "alpha", "-0.5"},
      {[&] { (void)mahalanobis(v, location, narrow); }, "covariance", "1 by 1"},
      {[&] { (void)mahalanobis(v, location, skew); }, "covariance(1, 0)", "0"},
      {[&] { (void)mahalanobis(v, location, c); }, "covariance", "singular"},
      {[&] { (void)mahalanobis(v, std::vector<double>(3), c); }, "location", "3"},
  };
  for (const auto& r : rows) {
    try {
      r.call();
      ADD_FAILURE() << r.argument << ' ' << r.value << " is not refused";
    } catch (const error& e) {
      EXPECT_EQ(e.argument(), r.argument) << e.what();
      EXPECT_EQ(e.value(), r.value) << e.what();
    }
  }
}

}  // namespace
}  // namespace tmk
