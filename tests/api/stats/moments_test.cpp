// SPDX-License-Identifier: Apache-2.0
// Moments: digits that survive large offsets, merged blocks, and results that depend on the data alone.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "api/stats/samples.hpp"

namespace tmk {
namespace {

// The textbook's formulas in extended precision over one variable: mean and central moments 2 to 4 over W.
struct reference {
  long double W = 0, W2 = 0, mean = 0, m[5] = {};
  reference(const std::vector<double>& x, const std::vector<double>& w) {
    for (const double v : w) W += v, W2 += static_cast<long double>(v) * v;
    // About the first value, the differences to which are exact.
    std::vector<long double> y(x.size());
    for (std::size_t i = 0; i < x.size(); ++i)
      mean += w[i] * (y[i] = static_cast<long double>(x[i]) - x[0]) / W;
    for (std::size_t i = 0; i < x.size(); ++i)
      for (int k = 2; k <= 4; ++k) m[k] += w[i] * powl(y[i] - mean, k) / W;
    mean += x[0];
  }
  double variance() const { return static_cast<double>(m[2] * W / (W - W2 / W)); }
  double skewness() const { return static_cast<double>(m[3] / powl(m[2], 1.5L)); }
  double kurtosis() const { return static_cast<double>(m[4] / (m[2] * m[2]) - 3); }
};

void expect_close(double value, double want, double digits, const char* what) {
  EXPECT_NEAR(value, want, std::pow(10.0, -digits) * std::max(1.0, std::fabs(want))) << what;
}

TEST(stats, agrees_with_the_textbook_in_extended_precision) {
  for (const double offset : {0.0, 1e3, -1e9})
    for (const bool weighted : {false, true})
      for (const std::size_t n : {2u, 3u, 100u, 70'000u}) {
        const std::vector<double> x = gaussian_values(n, 1, offset);
        std::vector<double> w(n, 1);
        if (weighted)
          for (std::size_t i = 0; i < n; ++i) w[i] = static_cast<double>(i % 5) / 4 + (n < 100 ? 1 : 0);
        const reference r(x, w);
        const summary s = describe(x, {.weights = w});
        const summary t = weighted ? s : describe(x);
        for (const summary* each : {&s, &t}) {
          expect_close(each->mean[0], static_cast<double>(r.mean), 15, "mean");
          expect_close(each->variance[0], r.variance(), 13, "variance");
          EXPECT_EQ(each->sd[0], std::sqrt(each->variance[0]));
          expect_close(each->skewness[0], r.skewness(), 12.5, "skewness");
          expect_close(each->kurtosis[0], r.kurtosis(), 12.5, "kurtosis");
        }
      }
}

// Series whose variance is known: alternating by h about an offset, as NIST's hard cases are built; whole and
// in blocks, cut anywhere.
TEST(stats, large_offsets_keep_13_digits) {
  struct row {
    double low, high;
  };
  const row rows[] = {
      {1e9 - 1, 1e9 + 1}, {1e15, 1e15 + 1}, {10'000'000.125, 10'000'000.375}, {-2e9, -2e9 + 0.5}};
  for (const row& r : rows) {
    const std::size_t n = 100'000;
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) x[i] = i % 2 == 0 ? r.low : r.high;
    const double h = (r.high - r.low) / 2, want = h * h * n / (n - 1);
    moments cut(1);
    const matrix_view<const double> view(x);
    for (std::size_t first = 0, length = 1; first < n; first += length, length = length * 3 + 1)
      cut.add(view.block(first, std::min(length, n - first)));
    moments whole(1);
    whole.add(x);
    for (const moments* m : {&whole, &cut}) {
      EXPECT_NEAR(m->variance()[0] / want, 1, 5e-14) << r.low;
      EXPECT_NEAR(m->covariance()(0, 0) / want, 1, 5e-14) << r.low;
      EXPECT_EQ(m->mean()[0], r.low + h);
      EXPECT_NEAR(m->kurtosis()[0], -2, 1e-12);
    }
  }
}

TEST(stats, merge_equals_whole_for_random_cuts) {
  const std::size_t n = 20'000, p = 3;
  std::vector<double> x = gaussian_values(n * p, 2);
  for (std::size_t i = 0; i < n; ++i) x[i * p + 1] += x[i * p] + 1e6;
  std::vector<double> w(n);
  std::mt19937 g(3);
  for (double& v : w) v = static_cast<double>(g() % 4);
  const matrix_view<const double> view(x.data(), n, p);
  const std::span<const double> weights(w);
  moments whole(p);
  whole.add(view, weights);
  for (int run = 0; run < 5; ++run) {
    std::vector<std::size_t> cuts{0, n};
    for (int k = 0; k < 6; ++k) cuts.push_back(g() % n);
    std::sort(cuts.begin(), cuts.end());
    moments left(p), right(p);
    for (std::size_t k = 0; k + 1 < cuts.size(); ++k)
      (k < 3 ? left : right)
          .add(view.block(cuts[k], cuts[k + 1] - cuts[k]), weights.subspan(cuts[k], cuts[k + 1] - cuts[k]));
    left += right;
    EXPECT_EQ(left.count(), whole.count());
    EXPECT_EQ(left.weight(), whole.weight());
    EXPECT_EQ(left.min(), whole.min());
    EXPECT_EQ(left.max(), whole.max());
    for (std::size_t j = 0; j < p; ++j) {
      EXPECT_NEAR(left.mean()[j], whole.mean()[j], 1e-15 * (1 + std::fabs(whole.mean()[j])));
      EXPECT_NEAR(left.variance()[j] / whole.variance()[j], 1, 1e-14);
      EXPECT_NEAR(left.skewness()[j], whole.skewness()[j], 3e-14);
      EXPECT_NEAR(left.kurtosis()[j], whole.kurtosis()[j], 1e-13);
      for (std::size_t i = 0; i < p; ++i)
        EXPECT_NEAR(left.correlation()(i, j), whole.correlation()(i, j), 1e-14);
    }
  }
  const auto bytes = whole.to_bytes();
  whole.merge(moments(p));
  EXPECT_EQ(whole.to_bytes(), bytes);
  moments empty(p);
  empty.merge(whole);
  EXPECT_EQ(empty.to_bytes(), bytes);
  empty.reset();
  EXPECT_EQ(empty.to_bytes(), moments(p).to_bytes());
}

// Only ratios of weights are to show, and a power of two changes no rounding.
TEST(stats, weights_of_any_size) {
  const std::vector<double> x{1, 2, 3}, y = gaussian_values(40'000, 12, 3);
  for (const double weight : {1e-300, 1e-170, 1e-12, 1.0, 1e160, 1e300}) {
    const std::vector<double> w(3, weight);
    const summary s = describe(x, {.weights = w});
    EXPECT_NEAR(s.mean[0], 2, 1e-15) << weight;
    EXPECT_NEAR(s.sd[0], 1, 1e-15) << weight;
    moments halves(1);
    halves.add(std::span(x).first(1), std::span(w).first(1));
    halves.add(std::span(x).last(2), std::span(w).last(2));
    EXPECT_NEAR(halves.sd()[0], 1, 1e-15) << weight;
  }
  std::vector<double> w(y.size()), scaled(y.size());
  for (std::size_t i = 0; i < w.size(); ++i) w[i] = 0.01 + static_cast<double>(i % 97) / 13;
  const matrix_view<const double> view(y.data(), w.size() / 2, 2);
  const summary s = describe(view, {.weights = std::span(w).first(w.size() / 2)});
  for (const int power : {-600, -200, 1, 33, 600}) {
    for (std::size_t i = 0; i < w.size(); ++i) scaled[i] = std::ldexp(w[i], power);
    expect_same_estimates(describe(view, {.weights = std::span(scaled).first(w.size() / 2)}), s);
  }
}

// Counts are observations made several times: results are those of the data written out.
TEST(stats, weights_that_are_counts) {
  const std::size_t n = 9'000, p = 2;
  std::vector<double> x = gaussian_values(n * p, 14), counts(n), written_out;
  std::mt19937 g(15);
  for (double& c : counts) c = static_cast<double>(g() % 4);
  x[0] = nan, counts[0] = 3;
  for (std::size_t i = 0; i < n; ++i)
    for (int k = 0; k < static_cast<int>(counts[i]); ++k)
      written_out.insert(written_out.end(), {x[i * p], x[i * p + 1]});
  const matrix_view<const double> view(x.data(), n, p), whole(written_out.data(), written_out.size() / p, p);
  const summary want = describe(whole, {.nan = nan_policy::omit, .orders = {0, 0.1, 0.5, 0.77, 1}});
  const summary got = describe(view, {.weights = counts,
                                      .nan = nan_policy::omit,
                                      .orders = {0, 0.1, 0.5, 0.77, 1},
                                      .weights_are_counts = true});
  EXPECT_EQ(got.n, want.n);
  EXPECT_EQ(got.weight, want.weight);
  EXPECT_EQ(got.complete, want.complete);
  for (const auto member : {&summary::mean, &summary::variance, &summary::skewness, &summary::kurtosis,
                            &summary::median, &summary::mad})
    for (std::size_t j = 0; j < p; ++j) EXPECT_NEAR((got.*member)[j], (want.*member)[j], 1e-13);
  for (const auto member : {&summary::quantiles, &summary::cov, &summary::cor})
    for (std::size_t k = 0; k < (got.*member).values().size(); ++k)
      EXPECT_NEAR((got.*member).values()[k], (want.*member).values()[k], 1e-13);
  const moments_options options{.nan = nan_policy::omit, .weights_are_counts = true};
  moments first(p, options), second(p, options);
  first.add(view.block(0, n / 3), std::span(counts).first(n / 3));
  second.add(view.block(n / 3, n - n / 3), std::span(counts).last(n - n / 3));
  first += moments::from_bytes(second.to_bytes());
  EXPECT_EQ(first.count(), want.n);
  for (std::size_t j = 0; j < p; ++j) EXPECT_NEAR(first.variance()[j], want.variance[j], 1e-13);
}

TEST(stats, medians_deviations_and_counts_of_nans) {
  const std::vector<double> x{1, 2, nan, 4, 8, 16, nan, 3}, w{1, 1, 1, 1, 1, 1, 0, 1};
  struct row {
    describe_options options;
    std::int64_t n, nans;
    double median, mad;
  };
  const row rows[] = {
      {{.nan = nan_policy::omit}, 6, 2, 3.5, 2},
      {{.weights = w, .nan = nan_policy::omit}, 6, 1, 3.5, 2},
      {{.nan = nan_policy::omit, .orders = {}}, 6, 2, 3.5, 2},
      {{.nan = nan_policy::omit, .orders = {0.5, 0.1}}, 6, 2, 3.5, 2},
      {{}, 8, 2, nan, nan},
  };
  for (const row& r : rows) {
    const summary s = describe(x, r.options);
    EXPECT_EQ(s.n[0], r.n);
    EXPECT_EQ(s.nans[0], r.nans);
    expect_same({s.median[0], s.mad[0]}, {r.median, r.mad});
    EXPECT_EQ(s.quantiles.cols(), r.options.orders.size());
  }
  EXPECT_EQ(describe(std::vector<double>{1, 2, infinity}).mad[0], 1);
  EXPECT_TRUE(std::isnan(describe(std::vector<double>{1, infinity, infinity}).mad[0]));
}

TEST(stats, layouts_strides_and_threads_change_no_bit) {
  const std::size_t n = 5'000, p = 40;
  const std::vector<double> x = gaussian_values(n * p, 4, 100);
  std::vector<double> columns(n * p), wide(n * p * 3), w(n);
  std::vector<float> single(x.begin(), x.end());
  const std::vector<double> widened(single.begin(), single.end());
  for (std::size_t i = 0; i < n; ++i) {
    w[i] = static_cast<double>(i % 7);
    for (std::size_t j = 0; j < p; ++j) columns[j * n + i] = wide[((n - 1 - i) * p + j) * 3] = x[i * p + j];
  }
  const data_view same[] = {
      matrix_view<const double>(x.data(), n, p),
      matrix_view<const double>(columns.data(), n, p, layout::column_major),
      matrix_view<const double>(wide.data() + (n - 1) * p * 3, n, p, -static_cast<std::ptrdiff_t>(3 * p), 3),
  };
  for (const weight_view& weights : {weight_view(), weight_view(w)}) {
    const summary one = describe(same[0], {.weights = weights});
    for (const data_view& view : same)
      for (const int threads : {1, 2, 3, 8})
        expect_same(describe(view, {.weights = weights, .threads = threads}), one);
    expect_same(describe(matrix_view<const float>(single.data(), n, p), {.weights = weights}),
                describe(matrix_view<const double>(widened.data(), n, p), {.weights = weights}));
  }
}

TEST(stats, covariance_and_correlation) {
  const std::vector<double> x{1, 2, 3, 4, 5, 2, 4, 6, 8, 10, 5, 3, 4, 1, 2, 7, 7, 7, 7, 7};
  const summary s = describe(matrix_view<const double>(x.data(), 5, 4, layout::column_major));
  const double cov[3][3] = {{2.5, 5, -2}, {5, 10, -4}, {-2, -4, 2.5}};
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j) {
      EXPECT_NEAR(s.cov(i, j), cov[i][j], 1e-14);
      EXPECT_NEAR(s.cor(i, j), cov[i][j] / std::sqrt(cov[i][i] * cov[j][j]), 1e-15);
    }
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(s.cor(i, i), 1);
  EXPECT_TRUE(std::isnan(s.cor(0, 3)));
  EXPECT_EQ(s.cov(0, 3), 0);
}

TEST(stats, degenerate_samples) {
  const std::vector<double> constant(50'000, 0.1), w0(3, 0), ones(2, 1), x{5, 1, 2}, first_zero{0, 1, 1};
  const summary c = describe(constant);
  EXPECT_EQ(c.mean[0], 0.1);
  EXPECT_EQ(c.sd[0], 0);
  EXPECT_TRUE(std::isnan(c.skewness[0]) && std::isnan(c.kurtosis[0]));
  expect_same(c.quantiles.values(), {0.1, 0.1, 0.1});

  const summary one = describe(std::vector<double>{3});
  EXPECT_EQ(one.n[0], 1);
  EXPECT_EQ(one.mean[0], 3);
  EXPECT_TRUE(std::isnan(one.sd[0]) && std::isnan(one.cov(0, 0)) && std::isnan(one.cor(0, 0)));

  const summary none = describe(x, {.weights = w0});
  EXPECT_EQ(none.n[0], 0);
  EXPECT_EQ(none.weight[0], 0);
  for (const double v :
       {none.mean[0], none.sd[0], none.min[0], none.max[0], none.quantiles(0, 1), none.cov(0, 0)})
    EXPECT_TRUE(std::isnan(v));

  const summary rest = describe(x, {.weights = first_zero}),
                pair = describe(std::vector<double>{1, 2}, {.weights = ones});
  expect_same(rest, pair);
  expect_same(describe(std::vector<double>{nan, 1, 2}, {.weights = first_zero}), pair);

  const summary high = describe(std::vector<double>{infinity, 1, 2, -1});
  EXPECT_EQ(high.mean[0], infinity);
  EXPECT_EQ(high.max[0], infinity);
  expect_same(high.quantiles.row(0).size() == 3 ? high.quantiles.values() : std::vector<double>{},
              {0.5, 1.5, infinity});
  EXPECT_TRUE(std::isnan(high.sd[0]));
  EXPECT_EQ(median(std::vector<double>{1, infinity, 2})[0], 2);
  EXPECT_EQ(describe(std::vector<double>(3, 1.7e308)).mean[0], 1.7e308);
}

TEST(stats, what_a_nan_does_is_the_callers_choice) {
  const std::size_t n = 3'000, p = 3;
  std::vector<double> x = gaussian_values(n * p, 5);
  std::mt19937 g(6);
  for (int k = 0; k < 200; ++k) x[g() % n * p + 1 + g() % 2] = nan;
  std::vector<double> column[p], complete;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < p; ++j)
      if (!std::isnan(x[i * p + j])) column[j].push_back(x[i * p + j]);
    if (!std::isnan(x[i * p + 1] + x[i * p + 2]))
      complete.insert(complete.end(), x.begin() + i * p, x.begin() + (i + 1) * p);
  }
  const matrix_view<const double> view(x.data(), n, p);

  const summary omitted = describe(view, {.nan = nan_policy::omit});
  for (std::size_t j = 0; j < p; ++j) {
    const summary own = describe(column[j]);
    EXPECT_EQ(omitted.n[j], own.n[0]);
    EXPECT_EQ(omitted.min[j], own.min[0]);
    EXPECT_NEAR(omitted.mean[j], own.mean[0], 1e-15);
    EXPECT_NEAR(omitted.sd[j], own.sd[0], 1e-14);
    expect_same(std::vector(omitted.quantiles.row(j).begin(), omitted.quantiles.row(j).end()),
                own.quantiles.values());
  }
  const summary rows = describe(matrix_view<const double>(complete.data(), complete.size() / p, p));
  EXPECT_EQ(omitted.complete, rows.n[0]);
  for (std::size_t k = 0; k < p * p; ++k) EXPECT_NEAR(omitted.cov.values()[k], rows.cov.values()[k], 1e-14);

  const summary propagated = describe(view);
  EXPECT_EQ(propagated.mean[0], describe(column[0]).mean[0]);
  for (const std::size_t j : {1u, 2u})
    for (const double v : {propagated.mean[j], propagated.sd[j], propagated.min[j], propagated.max[j],
                           propagated.quantiles(j, 1), propagated.cov(0, j), propagated.cor(j, j)})
      EXPECT_TRUE(std::isnan(v));

  std::vector<double> two = gaussian_values(n * p, 7);
  two[2'000 * p + 1] = two[2'000 * p + 2] = two[2'500 * p] = nan;
  for (const int threads : {1, 2}) try {
      (void)describe(matrix_view<const double>(two.data(), n, p),
                     {.threads = threads, .nan = nan_policy::raise});
      ADD_FAILURE();
    } catch (const error& e) {
      EXPECT_EQ(e.argument(), "x(2000, 1)");
    }
}

}  // namespace
}  // namespace tmk
