// SPDX-License-Identifier: Apache-2.0
// Exact quantiles, with and without weights, and sorts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <type_traits>

#include "api/stats/samples.hpp"

namespace tmk {
namespace {

// By hand: the mean of the inverse distribution function over [q (W - u), q (W - u) + u], u = W2 / W.
TEST(stats, weighted_quantiles) {
  struct row {
    std::vector<double> x, w, orders, want;
  };
  const row rows[] = {
      {{0, 1}, {1, 3}, {0, 0.5, 1}, {0, 0.9, 1}},                    // u = 2.5
      {{3, 1, 2}, {2, 1, 1}, {0, 0.5, 1}, {1, 2.5, 3}},              // u = 1.5, over [1.25, 2.75]
      {{4, 1, 3, 2, 9}, {1, 1, 1, 1, 0}, {0, 0.5, 1}, {1, 2.5, 4}},  // what has weight 0 is left out
      {{0, 1, 1000}, {1, 1, 1e-20}, {0, 0.5, 0.9, 1}, {0, 0.5, 0.9, 1000}},
      {{-1000, 1, 2}, {1e-20, 1, 1}, {0, 0.5, 1}, {-1000, 1.5, 2}},
      {{1, 2, infinity}, {0.1, 0.2, 0.1}, {0.5, 1}, {2, infinity}},
      {{5}, {0.3}, {0, 0.5, 1}, {5, 5, 5}},
  };
  for (const row& r : rows) {
    const matrix got = quantiles(r.x, r.orders, {.weights = r.w});
    for (std::size_t k = 0; k < r.orders.size(); ++k)
      EXPECT_TRUE(got(0, k) == r.want[k] || std::fabs(got(0, k) - r.want[k]) < 1e-15)
          << r.x[0] << ' ' << r.orders[k] << ' ' << got(0, k);
  }
}

// To the bit: whoever gives the same weight to all has given none.
TEST(stats, equal_weights_are_no_weights) {
  for (const std::size_t n : {1u, 2u, 4u, 7u, 1000u}) {
    const std::vector<double> x = gaussian_values(n, 16), orders{0, 0.1, 0.25, 0.5, 0.75, 0.9, 1};
    for (const double weight : {1.0, 0.1, 1 / 3.0, 3e-300, 1e200}) {
      const std::vector<double> w(n, weight);
      expect_same(quantiles(x, orders, {.weights = w}).values(), quantiles(x, orders).values());
    }
  }
}

TEST(stats, quantiles_are_the_ranks) {
  std::vector<double> x = gaussian_values(1'001, 8);
  std::vector<double> orders;
  for (int k = 0; k <= 1'000; ++k) orders.push_back(k / 1000.0);
  const matrix q = quantiles(x, orders, {.threads = 2});
  sort(x);
  for (std::size_t k = 0; k <= 1'000; ++k) EXPECT_NEAR(q(0, k), x[k], 1e-12);
  EXPECT_EQ(median(x)[0], x[500]);
}

template <class T>
class stats_sort : public testing::Test {};
using sortable_types =
    testing::Types<double, float, std::int32_t, std::uint32_t, std::int64_t, std::uint64_t>;
TYPED_TEST_SUITE(stats_sort, sortable_types);

TYPED_TEST(stats_sort, values_and_stable_positions) {
  using T = TypeParam;
  std::mt19937_64 g(17);
  for (const std::size_t n : {0u, 1u, 2u, 499u, 500u, 20'000u})
    for (const bool wide : {false, true}) {
      std::vector<T> x(n);
      for (T& v : x) {
        const std::uint64_t word = wide ? g() : g() % 50;  // many ties
        v = std::is_floating_point_v<T> ? static_cast<T>(static_cast<std::int64_t>(word)) / 3
                                        : static_cast<T>(word);
        if (!wide && std::is_signed_v<T>) v -= 20;
      }
      for (const bool descending : {false, true}) {
        const auto before = [&](T a, T b) { return descending ? b < a : a < b; };
        std::vector<std::size_t> want(n);
        std::iota(want.begin(), want.end(), std::size_t{0});
        std::stable_sort(want.begin(), want.end(),
                         [&](std::size_t i, std::size_t j) { return before(x[i], x[j]); });
        EXPECT_EQ(sort_index(x, descending), want) << n << wide << descending;
        std::vector<T> sorted = x;
        sort(sorted, descending);
        for (std::size_t k = 0; k < n; ++k) ASSERT_EQ(sorted[k], x[want[k]]);
      }
    }
}

TEST(stats, sorts_put_nan_outside_and_minus_zero_first) {
  const std::vector<double> x{0.0, nan, -0.0, -nan, infinity, -infinity};
  EXPECT_EQ(sort_index(x), (std::vector<std::size_t>{3, 5, 2, 0, 4, 1}));
  EXPECT_EQ(sort_index(x, true), (std::vector<std::size_t>{1, 4, 0, 2, 5, 3}));
}

}  // namespace
}  // namespace tmk
