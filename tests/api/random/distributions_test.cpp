// SPDX-License-Identifier: Apache-2.0
// Arrays filled through the C++ API: what it refuses and how, and that neither cuts nor threads nor tiers
// change a number.
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/math/special_functions/beta.hpp>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <numeric>
#include <random>
#include <tmk/random.hpp>

#include "api/random/generators.hpp"
#include "random/goodness.hpp"
#include "random/laws.hpp"
#include "random/plain_generators.hpp"
#include "tmk/abi/vtm.h"

namespace tmk {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
static_assert(std::uniform_random_bit_generator<stream>);

std::vector<std::uint32_t> next_words(stream& g, int n) {
  std::vector<std::uint32_t> words(static_cast<std::size_t>(n));
  std::generate(words.begin(), words.end(), std::ref(g));
  return words;
}

TEST(random, reads_as_promised) {
  stream g(generator::mt19937, 2026);
  std::vector<double> x(10'000), y(10'000);
  exponential(g, x, {.rate = 2.0});
  expect_continuous(x, [](double v) { return -std::expm1(-2 * v); });
  gaussian(g, x, {.mean = 0, .sd = 1}, gaussian_method::inversion);
  expect_continuous(x, normal);
  auto h = g;
  h.skip(1'000'000'000);
  EXPECT_NE(stream(g)(), stream(h)());

  const std::string path = testing::TempDir() + "tmk_random_test.tmk";
  g.save(path);
  auto again = stream::load(path);
  std::remove(path.c_str());
  EXPECT_EQ(again.kind(), generator::mt19937);
  EXPECT_EQ(stream(g)(), stream(again)());

  std::vector<int> v(100);
  std::iota(v.begin(), v.end(), 0);
  std::shuffle(v.begin(), v.end(), g);
  std::shuffle(v.begin(), v.end(), again);
  fill_parallel(g, x, distribution::uniform{0, 1}, 2);
  uniform(again, y);
  EXPECT_EQ(x, y);
}

TEST(random, streams_are_values) {
  stream g(generator::mt2203, {5}, 6023), moved(std::move(g));
  EXPECT_EQ(moved.kind(), generator::mt2203);
  EXPECT_EQ(moved.set(), 6023);
  stream copy(generator::mcg59, 1);
  copy = moved;
  EXPECT_EQ(next_words(copy, 100), next_words(moved, 100));
  copy = *&copy;
  EXPECT_EQ(copy(), moved());
  EXPECT_THROW(g(), error);
  EXPECT_THROW(stream{g}, error);
  g = moved;
  EXPECT_EQ(g(), moved());
}

// Words come from a block that is drawn ahead. Another stream draws each by itself: its handle is asked for
// before.
TEST(random, words_taken_leave_the_stream_just_after_them) {
  for (const generator id : every) {
    stream g(id, 5), plain(id, 5);
    for (const int count : {1, 7, 8, 9, 100, 263, 264, 265, 700}) {
      for (int i = 0; i < count; ++i) {
        static_cast<void>(plain.handle());
        ASSERT_EQ(g(), plain()) << static_cast<int>(id) << " word " << i << " of " << count;
      }
      const stream copy = g;
      stream loaded = stream::load(g.save()), moved = std::move(g);
      g = copy;
      std::vector<float> x(3), want(3);
      uniform(plain, want);
      for (stream* one : {&g, &loaded, &moved}) {
        uniform(*one, x);
        ASSERT_EQ(x, want) << static_cast<int>(id) << " after " << count;
      }
    }
  }
}

TEST(random, parts_of_a_leapfrog_interleave) {
  const stream g(generator::mcg59, 7);
  stream whole = g;
  std::vector<double> x(700), y(100);
  uniform(whole, x);
  auto parts = leapfrog(g, 7);
  for (std::size_t k = 0; k < 7; ++k) {
    uniform(parts[k], y);
    for (std::size_t i = 0; i < y.size(); ++i) ASSERT_EQ(y[i], x[7 * i + k]);
  }
}

TEST(random, narrow_generators_make_whole_words) {
  for (const generator id : {generator::mcg31m1, generator::wh, generator::mcg59}) {
    stream g(id, 1);
    std::vector<int> bits_set(32);
    constexpr int n = 4000;
    for (const std::uint32_t word : next_words(g, n))
      for (std::size_t b = 0; b < 32; ++b) bits_set[b] += word >> b & 1;
    for (const int count : bits_set) EXPECT_NEAR(count, n / 2, 4 * std::sqrt(n) / 2);
  }
}

template <class T, class Law>
void expect_one_sequence(generator id, const Law& law) {
  const auto make = [&] { return id == generator::sobol ? stream::sobol(7) : stream(id, 3); };
  stream whole = make(), cut = make();
  std::vector<T> x(2500), y(2500);
  fill(whole, x, law);
  std::size_t begin = 0;
  for (const std::size_t count : {7u, 9u, 1008u, 1u, 1475u}) {
    fill(cut, std::span(y).subspan(begin, count), law);
    begin += count;
  }
  ASSERT_EQ(x, y) << static_cast<int>(id) << ' ' << law.index();
}
TEST(random, cuts_change_no_number) {
  namespace law = distribution;
  std::vector<generator> ids(std::begin(every), std::end(every));
  ids.push_back(generator::sobol);
  on_every_tier([&] {
    for (const generator id : ids) {
      for (const law::continuous& law :
           {law::continuous(law::uniform{}), law::continuous(law::uniform{0, 1, resolution::one_word}),
            law::continuous(law::exponential{}), law::continuous(law::laplace{}),
            law::continuous(law::gaussian{0, 1, gaussian_method::kept_pairs}),
            law::continuous(law::gaussian{0, 1, gaussian_method::ziggurat}), law::continuous(law::gamma{2.5}),
            law::continuous(law::gamma{0.3}), law::continuous(law::beta{0.5, 3}),
            law::continuous(law::student_t{4})}) {
        expect_one_sequence<double>(id, law);
        expect_one_sequence<float>(id, law);
      }
      for (const law::discrete& law :
           {law::discrete(law::uniform_int{0, 5}), law::discrete(law::bernoulli{}),
            law::discrete(law::geometric{}), law::discrete(law::poisson{1}), law::discrete(law::poisson{1e6}),
            law::discrete(law::binomial{1000, 0.4}), law::discrete(law::negative_binomial{2.5, 1e-3}),
            law::discrete(law::hypergeometric{100'000, 3000, 70'000})})
        expect_one_sequence<int>(id, law);
    }
  });
}

TEST(random, uniforms_are_the_same_on_every_tier) {
  for (const generator id : every) {
    std::vector<double> first;
    on_every_tier([&] {
      stream g(id, 9);
      std::vector<double> x(1500);
      uniform(g, x, {-1, 2});
      if (first.empty()) first = x;
      EXPECT_EQ(x, first) << static_cast<int>(id);
    });
  }
}

TEST(random, a_skip_leaves_variates_out) {
  namespace law = distribution;
  for (const generator id : {generator::mcg31m1, generator::mrg32k3a, generator::mcg59, generator::wh,
                             generator::sobol, generator::mt19937, generator::philox4x32x10}) {
    const stream start = id == generator::sobol ? stream::sobol(3) : stream(id, 1);
    const auto expect_skipped = [&]<class T>(std::vector<T> x, const auto& law, int elements) {
      stream drawn = start, skipped = start;
      fill(drawn, x, law);
      skipped.skip(static_cast<std::int64_t>(x.size()) * elements);
      EXPECT_EQ(drawn.save(), skipped.save()) << static_cast<int>(id) << ' ' << law.index();
    };
    for (const law::continuous& law :
         {law::continuous(law::uniform{}), law::continuous(law::uniform{0, 1, resolution::one_word}),
          law::continuous(law::laplace{}), law::continuous(law::gaussian{})}) {
      expect_skipped(std::vector<double>(50), law, elements_per_variate<double>(start, law));
      expect_skipped(std::vector<float>(50), law, elements_per_variate<float>(start, law));
    }
    for (const law::discrete& law : {law::discrete(law::uniform_int{}), law::discrete(law::geometric{})})
      expect_skipped(std::vector<int>(50), law, elements_per_variate(start, law));
  }
}

template <class T, class Law>
void expect_serial_numbers(const Law& law, generator id) {
  for (const std::size_t n : {0u, 100u, 5001u, 10245u, 40000u})
    for (const int threads : {1, 2, 3, 7}) {
      stream serial(id, 3), parallel(id, 3);
      std::vector<T> x(n), y(n);
      fill(serial, x, law);
      fill_parallel(parallel, y, law, threads);
      ASSERT_EQ(x, y) << law.index() << ' ' << n << ' ' << threads;
      fill(serial, std::span(x).first(n / 3), law);
      fill(parallel, std::span(y).first(n / 3), law);
      ASSERT_EQ(x, y) << law.index() << ' ' << n << ' ' << threads;
    }
}
TEST(random, threads_change_no_number) {
  namespace law = distribution;
  const law::continuous laws[] = {law::uniform{},
                                  law::laplace{},
                                  law::gumbel{},
                                  law::gaussian{0, 1, gaussian_method::pairs},
                                  law::gaussian{0, 1, gaussian_method::kept_pairs},
                                  law::gaussian{0, 1, gaussian_method::ziggurat},
                                  law::gamma{0.3},
                                  law::beta{2, 3}};
  for (const generator id : {generator::mcg59, generator::wh, generator::mt2203, generator::mrg32k3a,
                             generator::philox4x32x10, generator::sfmt19937}) {
    for (const law::continuous& law : laws) expect_serial_numbers<double>(law, id);
    expect_serial_numbers<float>(law::continuous(law::exponential{}), id);
    for (const law::discrete& law : {law::discrete(law::uniform_int{-5, 5}), law::discrete(law::poisson{1e3}),
                                     law::discrete(law::binomial{10, 0.5})})
      expect_serial_numbers<std::int32_t>(law, id);
  }
}

struct refusal {
  std::function<void(stream&, std::span<double>, std::span<float>, std::span<int>)> call;
  int status;
  const char *argument, *value;
};

TEST(random, refusals_name_argument_and_value_and_leave_the_stream) {
  const int bad = VTM_STATUS_BADARG;
#define CALL(...)                                                            \
  [](stream& g, std::span<double> x, std::span<float> y, std::span<int> k) { \
    (void)g, (void)x, (void)y, (void)k;                                      \
    __VA_ARGS__;                                                             \
  }
  static const std::vector<double> mean(2);
  const refusal rows[] = {
      {CALL(uniform(g, x, {1, 1})), bad, "high", "1"},
      {CALL(uniform(g, x, {2, -1})), bad, "high", "-1"},
      {CALL(uniform(g, x, {nan, 1})), bad, "low", "nan"},
      {CALL(uniform(g, x, {-1.7e308, 1.7e308})), bad, "high", "1.7e+308"},
      {CALL(uniform(g, y, {1, 1 + 1e-12})), bad, "high", "1.000000000001"},
      {CALL(exponential(g, x, {.rate = 0})), bad, "rate", "0"},
      {CALL(exponential(g, x, {.rate = -2})), bad, "rate", "-2"},
      {CALL(exponential(g, x, {.rate = 1e-310})), bad, "1 / rate", "inf"},
      {CALL(cauchy(g, x, {.scale = nan})), bad, "scale", "nan"},
      {CALL(gumbel(g, y, {.scale = 1e-50})), bad, "scale", "1e-50"},
      {CALL(laplace(g, x, {.location = infinity})), bad, "location", "inf"},
      {CALL(rayleigh(g, x, {.scale = -1})), bad, "scale", "-1"},
      {CALL(weibull(g, x, {.shape = 0})), bad, "shape", "0"},
      {CALL(gaussian(g, x, {.sd = -1})), bad, "sd", "-1"},
      {CALL(gaussian(g, x, {}, static_cast<gaussian_method>(4))), bad, "method", "4"},
      {CALL(lognormal(g, x, {}, gaussian_method::pairs)), bad, "method", "0"},
      {CALL(uniform(g, x, {0, 1, static_cast<resolution>(2)})), bad, "resolution", "2"},
      {CALL(uniform_int(g, k, {5, 4})), bad, "high", "4"},
      {CALL(bernoulli(g, k, {.p = 1.5})), bad, "p", "1.5"},
      {CALL(geometric(g, k, {.p = 0})), bad, "p", "0"},
      {CALL(gamma(g, x, {.shape = 0})), bad, "shape", "0"},
      {CALL(gamma(g, x, {.scale = -1})), bad, "scale", "-1"},
      {CALL(chi_square(g, x, {.degrees = nan})), bad, "degrees", "nan"},
      {CALL(beta(g, y, {.a = 1, .b = -1})), bad, "b", "-1"},
      {CALL(student_t(g, x, {.degrees = infinity})), bad, "degrees", "inf"},
      {CALL(gaussian_mv(g, x, mean, std::vector<double>{1, 0, 0})), bad, "factor", "3"},
      {CALL(gaussian_mv(g, x, mean, std::vector<double>{1, 0, 2, 0})), bad, "factor[3]", "0"},
      {CALL(gaussian_mv(g, x, mean, std::vector<double>{1, 0.5, 0, 1})), bad, "factor[1]", "0.5"},
      {CALL(gaussian_mv(g, x, mean, mean, {factor_storage::diagonal})), bad, "factor[0]", "0"},
      {CALL(gaussian_mv(g, x.first(3), mean, std::vector<double>{1, 0, 0, 1})), bad, "r.size()", "3"},
      {CALL(dirichlet(g, x, std::vector<double>{1, 0})), bad, "alpha[1]", "0"},
      {CALL(dirichlet(g, x, std::vector<double>{1})), bad, "alpha.size()", "1"},
      {CALL(poisson(g, k, {.mean = 0})), bad, "mean", "0"},
      {CALL(poisson(g, k, {.mean = 3e9})), bad, "mean", "3e+09"},
      {CALL(binomial(g, k, {.trials = -1})), bad, "trials", "-1"},
      {CALL(binomial(g, k, {.p = nan})), bad, "p", "nan"},
      {CALL(negative_binomial(g, k, {.successes = 0})), bad, "successes", "0"},
      {CALL(negative_binomial(g, k, {.p = 1e-10})), bad, "p", "1e-10"},
      {CALL(hypergeometric(g, k, {.population = 5, .sample = 6})), bad, "sample", "6"},
      {CALL(poisson_each(g, k, std::vector<double>{1, 2, nan, 3})), bad, "means[2]", "nan"},
      {CALL(poisson_each(g, k, std::vector<double>{1})), bad, "means", "1"},
      {CALL(multinomial(g, k, 3, std::vector<double>{0.5, 0.6})), bad, "the sum of p", "1.1"},
      {CALL(multinomial(g, k, 3, std::vector<double>{0.5, 0.25, 0.25})), bad, "r.size()", "4"},
      {CALL(fill_parallel(g, x, distribution::cauchy{}, 0)), bad, "threads", "0"},
      {CALL(uniform(g, std::span<double>(static_cast<double*>(nullptr), 3))), bad, "r", "null"},
      {CALL(g.skip(-1)), bad, "count", "-1"},
      {CALL(bits(g, std::span<std::uint32_t>(static_cast<std::uint32_t*>(nullptr), 3))), bad, "r", "null"},
      {CALL(bits(g, std::span<std::uint64_t>(static_cast<std::uint64_t*>(nullptr), 3))), bad, "r", "null"},
      {CALL(g.leapfrog(3, 3)), bad, "k", "3"},
      {CALL(g.leapfrog(1, 8)), bad, "parts", "8"},
      {CALL(static_cast<void>(leapfrog(g, 0))), bad, "parts", "0"},
      {CALL(stream(generator::mcg59, 1, 1)), bad, "set", "1"},
      {CALL(stream(generator::mt2203, 1, 6024)), bad, "set", "6024"},
      {CALL(stream(static_cast<generator>(0xA00000), 1)), VTS_STATUS_INVALID_BRNG, "g", "0xA00000"},
      {CALL(stream(static_cast<generator>(7), 1)), VTS_STATUS_INVALID_BRNG, "g", "0x7"},
      {CALL(static_cast<void>(stream::load("/nowhere/run.tmk"))), VTS_STATUS_FILE_OPEN, "path",
       "/nowhere/run.tmk"},
      {CALL(g.save("/nowhere/run.tmk")), VTS_STATUS_FILE_OPEN, "path", "/nowhere/run.tmk"},
      {CALL(stream(generator::mt2203, 1).skip(1)), VTS_STATUS_NO_SKIPAHEAD, "g", "0x900000"},
      {CALL(stream(generator::mt19937, 1).leapfrog(0, 2)), VTS_STATUS_NO_LEAPFROG, "g", "0x800000"},
      {CALL(std::vector<std::uint32_t> w(1); stream s(generator::wh, 1); bits(s, w)),
       VTS_STATUS_NO_FIXED_WIDTH_BITS, "g", "0x500000"},
  };
#undef CALL
  std::vector<double> x(4, -1);
  std::vector<float> y(4, -1);
  std::vector<int> k(4, -1);
  stream g(generator::mcg59, 1);
  const auto before = g.save();
  for (const refusal& row : rows) {
    try {
      row.call(g, x, y, k);
      ADD_FAILURE() << row.argument << ' ' << row.value;
    } catch (const error& e) {
      EXPECT_EQ(e.status(), row.status) << e.what();
      EXPECT_EQ(e.argument(), row.argument) << e.what();
      EXPECT_EQ(e.value(), row.value) << e.what();
    }
    EXPECT_EQ(g.save(), before);
    EXPECT_EQ(x, std::vector<double>(4, -1));
    EXPECT_EQ(k, std::vector<int>(4, -1));
  }
}

// The mean of each component, and what its law is where that is known: x[k] is beta with alpha[k] and the sum
// of the others. Small shapes are drawn by another way.
TEST(random, dirichlet_components_are_beta) {
  for (const std::vector<double>& alpha :
       {std::vector<double>{0.5, 2, 1.5}, {0.05, 0.02, 0.03}, {0x1p-20, 0x1p-20}}) {
    stream g(generator::philox4x32x10, 1);
    constexpr std::size_t rows = 20'000;
    std::vector<double> r(rows * alpha.size()), peer(rows);
    dirichlet(g, r, alpha);
    const double sum = std::accumulate(alpha.begin(), alpha.end(), 0.0);
    for (std::size_t k = 0; k < alpha.size(); ++k) {
      std::vector<double> column(rows);
      for (std::size_t i = 0; i < rows; ++i) column[i] = r[i * alpha.size() + k];
      const auto below = [&](double x) { return boost::math::ibeta(alpha[k], sum - alpha[k], x); };
      for (const double x : {1e-9, 1e-3, 0.1, 0.5, 0.9}) {
        const double p = below(x), share = static_cast<double>(std::ranges::count_if(
                                               column, [=](double v) { return v <= x; })) /
                                           rows;
        EXPECT_NEAR(share, p, 4 * std::sqrt(p * (1 - p) / rows) + 1e-9) << alpha[k] << ' ' << x;
      }
    }
    for (std::size_t i = 0; i < r.size(); i += alpha.size())
      ASSERT_NEAR(std::accumulate(r.begin() + static_cast<std::ptrdiff_t>(i),
                                  r.begin() + static_cast<std::ptrdiff_t>(i + alpha.size()), 0.0),
                  1, 1e-14);
  }
}

}  // namespace
}  // namespace tmk
