// SPDX-License-Identifier: Apache-2.0
// Indices by weight, permutations, samples, and points: their probabilities, their structure, what they
// refuse.
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/random/sobol.hpp>
#include <cmath>
#include <map>
#include <numeric>
#include <set>
#include <tmk/sampling.hpp>

#include "../../random/goodness.hpp"

namespace tmk {
namespace {

// Alias cells of very unequal weights, zeros among them.
TEST(sampling, discrete_has_the_weights_probabilities) {
  const std::vector<std::vector<double>> tables = {{0, 1},
                                                   {1, 1, 1, 1, 1, 2},
                                                   {0, 3, 0, 1e-3, 5, 0},
                                                   {1e300, 3e300, 2e300, 4e300},
                                                   {5e-324, 5e-324, 1e-323}};
  for (const auto& weights : tables) {
    stream g = random(7);
    std::vector<int> r(100'000);
    const discrete law(weights);
    law(g, r);
    expect_discrete(r, 0, static_cast<int>(weights.size()),
                    [&](int i) { return law.probability(static_cast<std::size_t>(i)); });
    for (const int i : r) ASSERT_GT(weights[static_cast<std::size_t>(i)], 0);
  }
  std::vector<double> many(70'000);
  for (std::size_t i = 0; i < many.size(); ++i) many[i] = static_cast<double>(i % 100);
  stream g = random(8);
  std::vector<int> r(200'000);
  const discrete law(many);
  law(g, r);
  for (int& i : r) i %= 100;
  expect_discrete(r, 0, 100, [](int i) { return i / 4950.0; });
}

// Each of the 24 orders of four elements, by all that makes orders.
TEST(sampling, every_order_is_as_likely) {
  const std::function<std::vector<std::size_t>(stream&)> makers[] = {
      [](stream& g) { return permutation(g, 4); },
      [](stream& g) { return choice(g, 4, 4); },
      [](stream& g) { return choice(g, 4, 4, {.weights = std::vector<double>(4, 2.5)}); },
  };
  for (const auto& make : makers) {
    stream g(generator::mt19937, 3);
    std::map<std::vector<std::size_t>, int> number;
    std::vector<int> seen;
    for (int i = 0; i < 48'000; ++i)
      seen.push_back(number.try_emplace(make(g), static_cast<int>(number.size())).first->second);
    EXPECT_EQ(number.size(), 24u);
    expect_discrete(seen, 0, 24, [](int) { return 1 / 24.0; });
  }
}

// Of few among many, each element and each place: that is another algorithm.
TEST(sampling, few_of_many_are_distinct_and_even) {
  stream g = random(1);
  std::vector<int> first, any;
  for (int i = 0; i < 20'000; ++i) {
    const auto picked = choice(g, 200, 4);
    ASSERT_EQ(std::set<std::size_t>(picked.begin(), picked.end()).size(), 4u);
    first.push_back(static_cast<int>(picked[0]));
    for (const std::size_t k : picked) any.push_back(static_cast<int>(k));
  }
  expect_discrete(first, 0, 200, [](int) { return 1 / 200.0; });
  expect_discrete(any, 0, 200, [](int) { return 1 / 200.0; });
  const std::size_t huge = std::size_t{1} << (sizeof(std::size_t) * 8 - 2);
  for (const std::size_t k : choice(g, huge, 50)) EXPECT_LT(k, huge);
}

// Two of three with weights 1, 2, 5: p(i, k) = p(i) p(k) / (1 - p(i)).
TEST(sampling, weighted_picks_follow_those_that_are_left) {
  const std::vector<double> weights = {1, 2, 5};
  stream g = random(5);
  std::vector<int> pairs;
  for (int i = 0; i < 50'000; ++i) {
    const auto picked = choice(g, 3, 2, {.weights = weights});
    pairs.push_back(static_cast<int>(3 * picked[0] + picked[1]));
  }
  expect_discrete(pairs, 0, 9, [&](int pair) {
    const double p = weights[static_cast<std::size_t>(pair / 3)] / 8,
                 q = weights[static_cast<std::size_t>(pair % 3)] / 8;
    return pair / 3 == pair % 3 ? 0.0 : p * q / (1 - p);
  });
  const std::vector<std::string> names = {"a", "b", "c"};
  EXPECT_EQ(sample(g, names, 2, {.replace = true, .weights = std::vector<double>{0, 1, 0}}),
            (std::vector<std::string>{"b", "b"}));
}

TEST(sampling, directions_have_no_preference) {
  stream g = random(11);
  std::vector<double> r(3 * 20'000), height;
  uniform_on_sphere(g, r, 3);
  for (std::size_t i = 0; i < r.size(); i += 3) {
    EXPECT_NEAR(std::hypot(r[i], r[i + 1], r[i + 2]), 1, 1e-15);
    height.push_back(r[i + 2]);
  }
  expect_continuous(height, [](double z) { return (z + 1) / 2; });  // Archimedes
}

// Boost has the direction numbers of Joe and Kuo, too, and leaves the origin out.
TEST(sampling, sobol_points_are_those_of_another_library) {
  constexpr std::size_t dimensions = 1111, points = 70;
  boost::random::sobol_engine<std::uint32_t, 32> peer(dimensions);
  std::vector<double> r(dimensions * points);
  sobol_points(r, dimensions, {.skip = 1});
  for (std::size_t i = 0; i < r.size(); ++i) ASSERT_EQ(r[i], static_cast<double>(peer()) * 0x1p-32) << i;
  std::vector<double> later(dimensions * 5);
  sobol_points(later, dimensions, {.skip = 61});
  EXPECT_TRUE(std::equal(later.begin(), later.end(), r.begin() + 60 * dimensions));
}

// Whatever the scrambling, 2^m points have one point in each elementary interval of the first two
// coordinates, and other points than without.
TEST(sampling, scrambled_points_are_still_a_net) {
  for (const scrambling how : {scrambling::digital_shift, scrambling::owen})
    for (std::uint64_t seed = 0; seed < 20; ++seed)
      for (int m = 1; m <= 10; ++m) {
        std::vector<double> r(std::size_t{2} << m);
        sobol_points(r, 2, {how, seed});
        for (int k = 0; k <= m; ++k) {
          std::set<std::pair<int, int>> cells;
          for (std::size_t i = 0; i < r.size(); i += 2)
            cells.emplace(static_cast<int>(std::ldexp(r[i], k)),
                          static_cast<int>(std::ldexp(r[i + 1], m - k)));
          ASSERT_EQ(cells.size(), std::size_t{1} << m) << seed << ' ' << m << ' ' << k;
        }
      }
}

// A smooth integrand over seven coordinates: the error of the mean falls like n^-3/2 when bits are turned by
// chance, and seeds give independent estimates without bias.
TEST(sampling, owen_scrambling_has_small_errors_without_bias) {
  const auto error_of_mean = [](std::size_t n, std::uint64_t seed) {
    std::vector<double> r(7 * n);
    sobol_points(r, 7, {scrambling::owen, seed});
    double sum = 0;
    for (std::size_t i = 0; i < n; ++i) {
      double f = 1;
      for (std::size_t d = 0; d < 7; ++d) f *= 1 + (r[7 * i + d] - 0.5) / static_cast<double>(d + 1);
      sum += f;
    }
    return sum / static_cast<double>(n) - 1;
  };
  const auto spread = [&](std::size_t n) {
    double square = 0, mean = 0;
    for (std::uint64_t seed = 0; seed < 40; ++seed) {
      const double e = error_of_mean(n, seed);
      square += e * e / 40;
      mean += e / 40;
    }
    EXPECT_LT(std::fabs(mean), 4 * std::sqrt(square / 40));
    return std::sqrt(square);
  };
  EXPECT_LT(spread(4096), spread(256) / 32);  // n^-1/2 gives 4, n^-1 gives 16, n^-3/2 gives 64
}

TEST(sampling, latin_points_have_one_in_each_interval) {
  for (const bool centred : {false, true})
    for (const int n : {1, 7, 1000}) {
      stream g = random(2);
      std::vector<double> r(static_cast<std::size_t>(5 * n));
      latin_hypercube(g, r, 5, {centred});
      for (std::size_t d = 0; d < 5; ++d) {
        std::set<int> cells;
        for (std::size_t i = d; i < r.size(); i += 5) {
          cells.insert(static_cast<int>(r[i] * n));
          if (centred) {
            EXPECT_NEAR(std::fmod(r[i] * n, 1.0), 0.5, 1e-9);
          }
        }
        EXPECT_EQ(cells.size(), static_cast<std::size_t>(n));
      }
    }
}

TEST(sampling, bad_input_names_the_argument_and_leaves_the_stream) {
  stream g = random(1);
  const stream before = g;
  const double nan = std::nan("");
  std::vector<double> r(6, -1.0);
  const std::vector<double> unchanged = r;
  const auto weigh = [](std::vector<double> w) { static_cast<void>(discrete(w)); };
  const std::vector<double> two = {1, 0};
  const struct {
    std::function<void()> call;
    std::string argument, value;
  } cases[] = {
      {[&] {
         weigh({1, -2});
       },
       "weights[1]", "-2"},
      {[&] { weigh({nan}); }, "weights[0]", "nan"},
      {[&] {
         weigh({0, 0});
       },
       "weights", "all zero"},
      {[&] { weigh({}); }, "weights", "none"},
      {[&] { static_cast<void>(choice(g, 3, 4)); }, "count", "4"},
      {[&] { static_cast<void>(choice(g, 2, 2, {.weights = two})); }, "count", "2"},
      {[&] { static_cast<void>(choice(g, 3, 1, {.weights = two})); }, "weights.size()", "2"},
      {[&] { static_cast<void>(choice(g, 0, 1, {.replace = true})); }, "count", "1"},
      {[&] { uniform_on_sphere(g, r, 4); }, "r.size()", "6"},
      {[&] { latin_hypercube(g, r, 0); }, "dimensions", "0"},
      {[&] { sobol_points(r, 1112); }, "dimensions", "1112"},
      {[&] { sobol_points(r, 1, {.skip = UINT32_MAX}); }, "skip", "4294967295"},
  };
  for (const auto& c : cases) try {
      c.call();
      ADD_FAILURE() << c.argument;
    } catch (const error& e) {
      EXPECT_EQ(e.argument(), c.argument) << e.what();
      EXPECT_EQ(e.value(), c.value) << e.what();
    }
  EXPECT_EQ(r, unchanged);
  stream same = before;
  EXPECT_EQ(g(), same());
}

}  // namespace
}  // namespace tmk
