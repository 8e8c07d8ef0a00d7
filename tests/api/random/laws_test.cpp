// SPDX-License-Identifier: Apache-2.0
// The laws of the C++ API: the textbook's, to the last of 2^32 draws.
#include "random/laws.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <tmk/random.hpp>

#include "api/random/generators.hpp"
#include "random/goodness.hpp"
#include "random/placed.hpp"

namespace tmk {
namespace {

// Textbook parametrisations, where the kernels' differ or parameters are turned round.
TEST(random_laws, laws_are_the_textbooks) {
  stream g(generator::mt19937, 11);
  std::vector<float> x(20'000);
  rayleigh(g, x, {.scale = 3, .location = 1});
  expect_continuous(x, [](double v) { return -std::expm1(-(v - 1) * (v - 1) / 18); });
  gumbel(g, x, {.location = -2, .scale = 0.5});
  expect_continuous(x, [](double v) { return std::exp(-std::exp(-(v + 2) / 0.5)); });
  weibull(g, x, {.shape = 0.7, .scale = 2, .location = 1});
  expect_continuous(x, [](double v) { return -std::expm1(-std::pow((v - 1) / 2, 0.7)); });
  lognormal(g, x, {.log_mean = 1, .log_sd = 0.5, .location = 3, .scale = 2}, gaussian_method::kept_pairs);
  expect_continuous(x, [](double v) { return normal((std::log((v - 3) / 2) - 1) / 0.5); });
  std::vector<int> k(20'000);
  geometric(g, k, {.p = 0.3});
  expect_discrete(k, 0, 12, [](int i) { return 0.3 * std::pow(0.7, i); });
  geometric(g, k, {.p = 1});
  EXPECT_EQ(k, std::vector<int>(k.size(), 0));
}

// The upper digits of a double, and those that only a second element can bring.
TEST(random_laws, doubles_are_uniform_to_their_lower_digits) {
  std::vector<double> x(20'000);
  std::vector<float> y(20'000);
  for (const generator id : every) {
    SCOPED_TRACE(static_cast<int>(id));
    stream g(id, 5);
    uniform(g, x);
    const auto unit = [](double v) { return std::clamp(v, 0.0, 1.0); };
    expect_continuous(x, unit);
    for (double& v : x) v = std::fmod(v * 0x1p36, 1.0);
    if (id != generator::mcg59) expect_continuous(x, unit);  // its lower bits have short periods
    uniform(g, y, {0, 2});
    expect_continuous(y, [&](double v) { return unit(v / 2); });
  }
  stream g(generator::mt19937, 1), words(generator::mt19937, 1);
  std::vector<double> many(1'000'000);
  std::vector<std::uint64_t> w(1000);
  uniform(g, many);
  bits(words, w);
  for (std::size_t i = 0; i < w.size(); ++i)
    EXPECT_EQ(many[i], static_cast<double>((static_cast<long double>(w[i]) + 0.5L) * 0x1p-64L));
  std::sort(many.begin(), many.end());
  EXPECT_EQ(std::adjacent_find(many.begin(), many.end()), many.end());
}

// With words of 0, which come once in 2^32, and uniforms that a generator of the caller's puts at an end.
TEST(random_laws, extreme_words_give_no_absurd_variate) {
  namespace law = distribution;
  const struct {
    law::continuous law;
    double least, greatest;  // quantiles of 2^-54, and beyond 1 - 2^-25 of singles
  } rows[] = {
      {law::uniform{}, 0x1p-55, 1 - 0x1p-54},
      {law::exponential{}, 0, 37.5},
      {law::gumbel{}, -3.7, 37.5},
      {law::laplace{}, -37.5, 37.5},
      {law::rayleigh{}, 0, 8.7},
      {law::weibull{}, 0, 37.5},
      {law::cauchy{}, -1.7e16, 1.7e16},
      {law::gaussian{0, 1, gaussian_method::pairs}, -8.7, 8.7},
      {law::gaussian{0, 1, gaussian_method::kept_pairs}, -8.7, 8.7},
      {law::gaussian{0, 1, gaussian_method::inversion}, -8.3, 8.3},
      {law::lognormal{}, 2e-4, 4100},
  };
  std::vector<std::uint32_t> state(250, 0);
  state[248] = 9;  // no word is drawn before 100 that is not 0
  stream zeros(generator::r250, raw_seed(state));
  stream registered(static_cast<generator>(placed::id()), 1);
  std::vector<double> x(4);
  std::vector<float> y(4);
  std::vector<int> k(4);
  const auto check = [&](const stream& source, const char* what) {
    for (const auto& row : rows) {
      SCOPED_TRACE(std::string(what) + ", law " + std::to_string(row.law.index()));
      stream g = source, h = source;
      fill(g, x, row.law);
      fill(h, y, row.law);
      for (const double v : x) EXPECT_TRUE(row.least <= v && v <= row.greatest) << v;
      for (const float v : y) EXPECT_TRUE(row.least <= v && v <= row.greatest) << v;
      EXPECT_TRUE(row.law.index() != 0 || (y[0] > 0 && y[0] < 1));
    }
    stream g = source;
    bernoulli(g, k, {.p = 1});
    EXPECT_EQ(k, std::vector<int>(4, 1)) << what;
    bernoulli(g, k, {.p = 0});
    EXPECT_EQ(k, std::vector<int>(4, 0)) << what;
    geometric(g, k, {.p = 1e-7});
    EXPECT_TRUE(k[0] >= 0 && k[0] < 375'000'000) << k[0];
  };
  check(zeros, "words of 0");
  for (const double at : {0.0, 1.0}) {
    placed::at = at;
    check(registered, at == 0 ? "lower end" : "upper end");
  }
  for (const auto& [at, wanted] : {std::pair(5e-11, 1), std::pair(2e-10, 0)}) {  // below 2^-32
    placed::at = at;
    bernoulli(registered, k, {.p = 1e-10});
    EXPECT_EQ(k, std::vector<int>(4, wanted));
  }
}

TEST(random_laws, integers_are_equally_likely) {
  std::vector<int> k(60'000);
  for (const generator id : every) {
    SCOPED_TRACE(static_cast<int>(id));
    stream g(id, 3);
    uniform_int(g, k, {.low = -2, .high = 3});
    expect_discrete(k, -2, 6, [](int) { return 1.0 / 6; });
    EXPECT_EQ(*std::max_element(k.begin(), k.end()), 3);
    // Of words of 32 bits, two would lead to every third number, and one to the others.
    uniform_int(g, k, {.low = INT32_MIN, .high = INT32_MIN + (3U << 30) - 1});
    for (int& i : k) i = static_cast<int>((std::int64_t{i} - INT32_MIN) % 3);
    expect_discrete(k, 0, 3, [](int) { return 1.0 / 3; });
    uniform_int(g, k, {.low = INT32_MIN, .high = INT32_MAX});
    for (int& i : k) i = static_cast<int>((std::int64_t{i} - INT32_MIN) >> 28);
    expect_discrete(k, 0, 16, [](int) { return 1.0 / 16; });
  }
}

// The pair that has no value is passed over, in a serial fill and where threads share the array.
TEST(random_laws, integers_that_are_left_over_are_drawn_anew) {
  std::vector<std::uint32_t> state(250);
  std::generate(state.begin(), state.end(), std::mt19937(1));
  for (const std::size_t i : {0u, 1u}) state[i + 147] = state[i];  // the first pair of words is 0
  stream g(generator::r250, raw_seed(state)), after = g;
  std::uint32_t pair[2];
  ASSERT_EQ(_vtsiRngUniformBits(0, after.handle(), 2, pair), 0);
  std::vector<int> with(3000), without(3000);
  uniform_int(g, with, {.low = 0, .high = 2});
  uniform_int(after, without, {.low = 0, .high = 2});
  EXPECT_EQ(with, without);

  stream stuck(generator::r250, raw_seed(std::vector<std::uint32_t>(250)));
  EXPECT_THROW(uniform_int(stuck, with, {.low = 0, .high = 2}), error);

  // Element 10001 of this seed is the greatest digit, m - 1, whose pairs are left over for this range.
  const distribution::discrete law = distribution::uniform_int{INT32_MIN, INT32_MIN + 2147680262};
  const stream start(generator::mcg31m1, raw_seed{526108863});
  std::vector<int> serial(20'000), parallel(serial.size());
  stream one = start, two = start, plain = start;
  fill(one, serial, law);
  fill_parallel(two, parallel, law, 2);
  EXPECT_EQ(serial, parallel);
  EXPECT_EQ(one.save(), two.save());
  plain.skip(2 * static_cast<std::int64_t>(serial.size()) + 2);
  EXPECT_EQ(plain.save(), one.save());
}

}  // namespace
}  // namespace tmk
