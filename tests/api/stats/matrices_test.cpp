// SPDX-License-Identifier: Apache-2.0
// Covariances within groups, partial covariances and the nearest correlation matrix.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tmk/error.hpp>

#include "api/stats/samples.hpp"

namespace tmk {
namespace {

matrix made(std::size_t n, const std::vector<double>& values) {
  matrix m(n, n);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < n; ++j) m(i, j) = values[i * n + j];
  return m;
}

// Against describe of each group, for data with holes and weights, of both precisions, in any layout.
TEST(stats, pooled_covariance_is_that_within_the_groups) {
  constexpr std::size_t n = 500, p = 3;
  const std::vector<double> values = gaussian_values(n * p, 5, 1e6), positive = gaussian_values(n, 6);
  std::vector<double> x = values, weights(n);
  std::vector<float> narrow(n * p);
  std::vector<int> labels(n), same(n, -4);
  for (std::size_t i = 0; i < n; ++i) {
    labels[i] = i % 7 == 0 ? 1000000 : i % 7 < 3 ? -2 : 5;
    weights[i] = i % 11 == 0 ? 0 : std::abs(positive[i]);
    if (i % 50 == 3) x[i * p + 1] = nan;
  }
  for (std::size_t i = 0; i < x.size(); ++i)
    narrow[i] = static_cast<float>(values[i] - 1e6), x[i] -= 1e6 * (i % p == 0);
  const matrix_view<const double> view(x.data(), n, p);
  for (const bool weighted : {false, true}) {
    const weight_view w = weighted ? weight_view(weights) : weight_view();
    const pooled_estimates r = pooled_covariance(view, labels, {.weights = w, .nan = nan_policy::omit});
    const pooled_estimates threaded =
        pooled_covariance(view, labels, {.weights = w, .threads = 3, .nan = nan_policy::omit});
    expect_same(r.covariance.values(), threaded.covariance.values());
    ASSERT_EQ(r.labels, (std::vector<std::int64_t>{-2, 5, 1000000}));
    matrix sums(p, p);
    double divisors = 0;
    for (std::size_t g = 0; g < 3; ++g) {
      std::vector<double> part, part_weights;
      double total = 0, squares = 0;
      for (std::size_t i = 0; i < n; ++i)
        if (labels[i] == r.labels[g] && !std::isnan(x[i * p + 1])) {
          part.insert(part.end(), &x[i * p], &x[i * p] + p);
          part_weights.push_back(weighted ? weights[i] : 1);
          total += part_weights.back(), squares += part_weights.back() * part_weights.back();
        }
      const summary s =
          describe(matrix_view<const double>(part.data(), part_weights.size(), p), {.weights = part_weights});
      EXPECT_EQ(r.n[g], s.n[0]);
      EXPECT_DOUBLE_EQ(r.weight[g], total);
      divisors += total - squares / total;
      for (std::size_t a = 0; a < p; ++a) {
        EXPECT_NEAR(r.means(g, a), s.mean[a], 1e-15 * std::abs(s.mean[a]));
        for (std::size_t b = 0; b < p; ++b) {
          EXPECT_NEAR(r.covariances[g](a, b), s.cov(a, b), 1e-11);
          sums(a, b) += s.cov(a, b) * (total - squares / total);
        }
      }
    }
    for (std::size_t a = 0; a < p; ++a)
      for (std::size_t b = 0; b < p; ++b) EXPECT_NEAR(r.covariance(a, b), sums(a, b) / divisors, 1e-11);
  }
  // One group is no group; layouts and precision make no difference.
  const matrix_view<const double> complete(values.data(), n, p);
  const summary s = describe(complete);
  const pooled_estimates whole = pooled_covariance(complete, same);
  for (std::size_t k = 0; k < p * p; ++k) EXPECT_NEAR(whole.covariance.values()[k], s.cov.values()[k], 1e-13);
  std::vector<float> turned(narrow.size());
  std::vector<double> widened(narrow.begin(), narrow.end());
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < p; ++j) turned[j * n + i] = narrow[i * p + j];
  expect_same(pooled_covariance(matrix_view<const double>(widened.data(), n, p), labels).covariance.values(),
              pooled_covariance(matrix_view<const float>(turned.data(), n, p, layout::column_major), labels)
                  .covariance.values());
  EXPECT_TRUE(std::isnan(pooled_covariance(view, labels).covariance(1, 1)));
}

// Counted observations are observations that are there as often.
TEST(stats, pooled_covariance_of_counts) {
  const std::vector<double> x{1, 2, 4, 8, 16, 32}, often{1, 1, 2, 4, 4, 4, 8, 16, 16, 32};
  const std::vector<double> counts{2, 1, 3, 1, 2, 1};
  const std::vector<std::int64_t> labels{0, 0, 0, 1, 1, 1}, often_labels{0, 0, 0, 0, 0, 0, 1, 1, 1, 1};
  const auto a = pooled_covariance(x, labels, {.weights = counts, .weights_are_counts = true});
  const auto b = pooled_covariance(often, often_labels);
  EXPECT_DOUBLE_EQ(a.covariance(0, 0), b.covariance(0, 0));
  EXPECT_DOUBLE_EQ(a.mean[0], b.mean[0]);
}

// A published example: the correlations of three variables, and what is left of one given another.
TEST(stats, partial_correlation) {
  const matrix cor = made(3, {1, 0.8, 0.6, 0.8, 1, 0.5, 0.6, 0.5, 1});
  const matrix r = partial_correlation(cor, {2});
  const double want = (0.8 - 0.6 * 0.5) / std::sqrt((1 - 0.36) * (1 - 0.25));
  EXPECT_NEAR(r(0, 1), want, 1e-15);
  EXPECT_EQ(r(0, 1), r(1, 0));
  EXPECT_EQ(r(0, 0), 1);
  EXPECT_NEAR(partial_covariance(cor, {0, 2})(0, 0), 1 - (0.64 + 0.25 - 2 * 0.8 * 0.6 * 0.5) / (1 - 0.36),
              1e-15);
  // Units do not matter.
  matrix cov = cor;
  const double units[] = {1e-9, 1, 1e12};
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j) cov(i, j) *= units[i] * units[j];
  EXPECT_NEAR(partial_correlation(cov, {2})(0, 1), want, 1e-15);
}

// N. J. Higham, Computing the nearest correlation matrix, IMA J. Numer. Anal. 22 (2002): his two examples, to
// the digits that he gives; then the conditions of a minimum for matrices of any size.
TEST(stats, nearest_correlation) {
  const matrix first = nearest_correlation(made(3, {1, 1, 0, 1, 1, 1, 0, 1, 1}));
  EXPECT_NEAR(first(0, 1), 0.7607, 5e-5);
  EXPECT_NEAR(first(0, 2), 0.1573, 5e-5);
  const matrix second = nearest_correlation(made(4, {2, -1, 0, 0, -1, 2, -1, 0, 0, -1, 2, -1, 0, 0, -1, 2}));
  const double want[] = {-0.8084, 0.1916, 0.1068, -0.6562, 0.1916, -0.8084};
  for (std::size_t i = 0, k = 0; i < 4; ++i)
    for (std::size_t j = i + 1; j < 4; ++j, ++k) EXPECT_NEAR(second(i, j), want[k], 5e-5);

  constexpr std::size_t p = 30;
  const std::vector<double> noise = gaussian_values(p * p, 8);
  matrix m(p, p);
  for (std::size_t i = 0; i < p; ++i)
    for (std::size_t j = 0; j <= i; ++j) m(i, j) = m(j, i) = i == j ? 1 : std::tanh(noise[i * p + j]);
  const matrix r = nearest_correlation(m);
  // r is the positive part of m + Diag(y) for some y: z = r - m - Diag(y) is semidefinite and r z = 0, from
  // which y follows.
  const auto difference = [&](std::size_t i, std::size_t j) { return i == j ? 0 : r(i, j) - m(i, j); };
  std::vector<double> y(p);
  for (std::size_t i = 0; i < p; ++i)
    for (std::size_t k = 0; k < p; ++k) y[i] += r(i, k) * difference(k, i);
  for (std::size_t i = 0; i < p; ++i) {
    EXPECT_EQ(r(i, i), 1);
    for (std::size_t j = 0; j < p; ++j) {
      EXPECT_EQ(r(i, j), r(j, i));
      double product = 0;
      for (std::size_t k = 0; k < p; ++k) product += r(i, k) * difference(k, j);
      EXPECT_NEAR(product, r(i, j) * y[j], 1e-11) << i << ' ' << j;
    }
  }
  for (unsigned seed = 0; seed < 100; ++seed) {
    const std::vector<double> v = gaussian_values(p, seed);
    double form = 0;
    for (std::size_t i = 0; i < p; ++i)
      for (std::size_t j = 0; j < p; ++j) form += v[i] * v[j] * (difference(i, j) - (i == j ? y[i] : 0));
    EXPECT_GE(form, 0);
  }
}

TEST(stats, refusals_of_matrices_and_groups_name_argument_and_value) {
  const std::vector<double> x{1, 2, 3, 4}, holes{1, nan, 3, 4}, negative{1, 1, -1, 1};
  const std::vector<int> labels{0, 1, 0, 1}, few{0, 1};
  const matrix good = made(2, {1, 0.5, 0.5, 1}), skewed = made(2, {1, 0.5, 0.25, 1}),
               undefined = made(2, {1, nan, nan, 1}), singular = made(3, {1, 1, 0, 1, 1, 0, 0, 0, 1}), none;
  struct refusal {
    std::function<void()> call;
    const char *argument, *value;
  };
  const refusal rows[] = {
      {[&] { (void)pooled_covariance(x, few); }, "groups.size", "2"},
      {[&] { (void)pooled_covariance(std::vector<double>(), few); }, "x.rows", "0"},
      {[&] { (void)pooled_covariance(x, labels, {.weights = negative}); }, "weights[2]", "-1"},
      {[&] { (void)pooled_covariance(holes, labels, {.nan = nan_policy::raise}); }, "x(1, 0)", "nan"},
      {[&] { (void)pooled_covariance(x, labels, {.threads = 0}); }, "threads", "0"},
      {[&] { (void)partial_correlation(good, {}); }, "given.size", "0"},
      {[&] {
         (void)partial_correlation(good, {0, 1});
       },
       "given", "2 variables"},
      {[&] { (void)partial_correlation(good, {2}); }, "given[0]", "2"},
      {[&] {
         (void)partial_correlation(singular, {2, 2});
       },
       "given[1]", "2"},
      {[&] {
         (void)partial_covariance(singular, {0, 1});
       },
       "cov", "singular"},
      {[&] { (void)partial_covariance(skewed, {0}); }, "cov(1, 0)", "0.25"},
      {[&] { (void)nearest_correlation(matrix_view<const double>(x.data(), 2, 1)); }, "m.cols", "1"},
      {[&] { (void)nearest_correlation(none); }, "m.rows", "0"},
      {[&] { (void)nearest_correlation(undefined); }, "m(0, 1)", "nan"},
  };
  for (const refusal& row : rows) try {
      row.call();
      ADD_FAILURE() << row.argument << " was accepted";
    } catch (const error& e) {
      EXPECT_EQ(e.argument(), row.argument) << e.what();
      EXPECT_EQ(e.value(), row.value) << e.what();
    }
}

}  // namespace
}  // namespace tmk
