// SPDX-License-Identifier: Apache-2.0
// Laws that count: samples compared with probabilities summed from quotients of neighbours, sequences in any
// cut, the statuses, and the set-ups that streams carry.
#include <array>
#include <climits>
#include <cmath>
#include <limits>
#include <numeric>

#include "random/core/chunk_kinds.hpp"
#include "random/distributions/laws_by_candidates_discrete.hpp"
#include "random/goodness.hpp"
#include "random/plain_generators.hpp"

namespace {

using draw_counts = std::function<int32_t(VtsStreamHandle, int32_t, int32_t*)>;

struct counting_law {
  std::string name;
  draw_counts draw;
  double low, high, mode;                      // where the probability is, and where it is greatest
  std::function<long double(long double)> up;  // f(k + 1) / f(k)
};

std::string named(const char* name, std::initializer_list<double> parameters) {
  std::string s = name;
  for (const double p : parameters) s += " " + std::to_string(p);
  return s;
}

// Fourteen deviations and a tail beyond them.
counting_law poisson(double lambda, draw_counts draw = nullptr) {
  const double reach = 14 * std::sqrt(lambda) + 40, mode = std::floor(lambda);
  if (draw == nullptr)
    draw = [=](VtsStreamHandle g, int32_t n, int32_t* r) { return _vtsiRngPoisson(0, g, n, r, lambda); };
  return {
      named("Poisson", {lambda}), draw, std::max(0.0, mode - reach), mode + reach, mode, [=](long double k) {
        return lambda / (k + 1);
      }};
}
counting_law poisson_by_element(double lambda) {
  counting_law l = poisson(lambda, [=](VtsStreamHandle g, int32_t n, int32_t* r) {
    return _vtsiRngPoissonV(0, g, n, r, std::vector<double>(static_cast<size_t>(n), lambda).data());
  });
  l.name += " by element";
  return l;
}
counting_law binomial(int32_t trials, double p, draw_counts draw = nullptr) {
  const double reach = 14 * std::sqrt(trials * p * (1 - p)) + 40, mode = std::floor((trials + 1.0) * p);
  if (draw == nullptr)
    draw = [=](VtsStreamHandle g, int32_t n, int32_t* r) { return _vtsiRngBinomial(0, g, n, r, trials, p); };
  return {named("binomial", {double(trials), p}),
          draw,
          std::max(0.0, mode - reach),
          std::min<double>(trials, mode + reach),
          mode,
          [=](long double k) { return (trials - k) / (k + 1) * p / (1 - static_cast<long double>(p)); }};
}
// The last but one of the counts of four classes.
counting_law one_of_four(int32_t trials, double p) {
  counting_law l = binomial(trials, p, [=](VtsStreamHandle g, int32_t n, int32_t* r) {
    const double rest = 1 - p, probabilities[] = {rest / 4, rest / 2, p, rest / 4};
    std::vector<int32_t> counts(4 * static_cast<size_t>(n));
    const int32_t status = _vtsiRngMultinomial(0, g, n, counts.data(), trials, 4, probabilities);
    for (size_t i = 0; i < static_cast<size_t>(n); ++i) {
      const int32_t* const vector = &counts[4 * i];
      EXPECT_EQ(int64_t{vector[0]} + vector[1] + vector[2] + vector[3], trials);
      r[i] = vector[2];
    }
    return status;
  });
  l.name += " of multinomial";
  return l;
}
counting_law negative_binomial(double a, double p) {
  const double mode = a > 1 ? std::floor((a - 1) * (1 - p) / p) : 0;
  const double reach = 14 * std::sqrt(a * (1 - p)) / p + 45 / p;
  return {named("negative binomial", {a, p}),
          [=](VtsStreamHandle g, int32_t n, int32_t* r) { return _vtsiRngNegbinomial(0, g, n, r, a, p); },
          std::max(0.0, mode - reach),
          mode + reach,
          mode,
          [=](long double k) { return (a + k) / (k + 1) * (1 - static_cast<long double>(p)); }};
}
counting_law hypergeometric(int32_t all, int32_t sample, int32_t marked) {
  const double mode = std::floor((sample + 1.0) * (marked + 1.0) / (all + 2.0));
  return {named("hypergeometric", {double(all), double(sample), double(marked)}),
          [=](VtsStreamHandle g, int32_t n, int32_t* r) {
            return _vtsiRngHypergeometric(0, g, n, r, all, sample, marked);
          },
          std::max(0.0, double(sample) + marked - all),
          std::min<double>(sample, marked),
          mode,
          [=](long double k) {
            return (marked - k) * (sample - k) / ((k + 1) * (1.0L + all - marked - sample + k));
          }};
}

// Of every law some with few values and some with many, on both sides of each change of algorithm.
const std::vector<counting_law>& counting_laws() {
  static const std::vector<counting_law> table = {
      poisson(1e-3),
      poisson(1),
      poisson(101.5),
      poisson(230),
      poisson(270),
      poisson(1e6),
      poisson(2146900000),
      poisson_by_element(0.3),
      poisson_by_element(19.99),
      poisson_by_element(20),
      poisson_by_element(12345.6),
      poisson_by_element(2e9),
      binomial(1, 0.3),
      binomial(20, 0.3),
      binomial(700, 0.4),
      binomial(5000, 0.9),
      binomial(1 << 30, 1e-9),
      binomial(INT_MAX, 0.999),
      one_of_four(20, 0.4),
      one_of_four(50, 0.01),
      one_of_four(100, 0.5),
      one_of_four(INT_MAX, 0.3),
      negative_binomial(1, 0.5),
      negative_binomial(5, 0.2),
      negative_binomial(1, 0.01),
      negative_binomial(0.5, 1e-4),
      negative_binomial(0.01, 1e-3),
      negative_binomial(1.5, 1e-5),
      negative_binomial(3e3, 1e-3),
      negative_binomial(1e6, 0.3),
      negative_binomial(1e9, 0.6),
      hypergeometric(1000, 100, 60),
      hypergeometric(1000, 998, 990),
      hypergeometric(5000, 2500, 2500),
      hypergeometric(INT_MAX, 20000, INT_MAX / 3),
      hypergeometric(INT_MAX, INT_MAX - 500000, 1 << 30),
  };
  return table;
}

// Cells of a sample: runs of values that have more than 1/400 of the probability, but for the outermost.
struct partition {
  std::vector<double> last;         // value of each cell
  std::vector<double> probability;  // of each cell

  explicit partition(const counting_law& l) {
    std::vector<long double> below = {1}, f;  // from the mode downward
    for (double k = l.mode; k > l.low && below.back() > 1e-25L; --k)
      below.push_back(below.back() / l.up(k - 1));
    f.assign(below.rbegin(), below.rend());
    double k = l.mode - static_cast<double>(below.size() - 1);
    for (double x = l.mode; x < l.high && f.back() > 1e-25L; ++x) f.push_back(f.back() * l.up(x));
    const long double sum = std::accumulate(f.begin(), f.end(), 0.0L);
    long double cell = 0, before = 0;
    for (const long double g : f) {
      cell += g / sum;
      const long double rest = 1 - before - cell;
      if (cell > (rest < 0.01L || before < 0.01L ? 0.0005L : 0.0025L) && rest > 0.0005L) {
        last.push_back(k);
        probability.push_back(static_cast<double>(cell));
        before += cell;
        cell = 0;
      }
      ++k;
    }
    last.push_back(HUGE_VAL);
    probability.push_back(static_cast<double>(1 - before));
  }

  int cell_of(int32_t x) const {
    return static_cast<int>(std::lower_bound(last.begin(), last.end(), double(x)) - last.begin());
  }
};

std::vector<int> draw(const counting_law& l, VtsStreamHandle g, int32_t n) {
  std::vector<int> x(static_cast<size_t>(n));
  EXPECT_EQ(l.draw(g, n, x.data()), 0);
  return x;
}

TEST(discrete_laws, have_their_probabilities) {
  for (const counting_law& l : counting_laws()) {
    SCOPED_TRACE(l.name);
    const owned_stream g(VTS_BRNG_MT19937, {77});
    const partition cells(l);
    std::vector<int> x = draw(l, g, 100000);
    for (int& value : x) value = cells.cell_of(value);
    expect_discrete(x, 0, static_cast<int>(cells.last.size()),
                    [&](int c) { return cells.probability[static_cast<size_t>(c)]; });
  }
}

TEST(discrete_laws, are_one_sequence_for_any_cut) {
  for (const int32_t id : {VTS_BRNG_MT19937 + 0, VTS_BRNG_PHILOX4X32X10 + 0, VTS_BRNG_MCG59 + 0})
    for (const counting_law& l : counting_laws()) {
      const owned_stream whole(id, {5}), cut(id, {5});
      std::vector<int> got;
      for (const int32_t count : {7, 9, 1, 1023, 2000}) {
        const auto piece = draw(l, cut, count);
        got.insert(got.end(), piece.begin(), piece.end());
      }
      ASSERT_EQ(got, draw(l, whole, 3040)) << l.name;
      EXPECT_EQ(draw_bytes(cut, 1), draw_bytes(whole, 1)) << l.name << " ends at another place";
    }
}

// Candidates are what the variates are made of, each of them of as many uniforms as the law says.
TEST(discrete_laws, candidates_take_their_uniforms) {
  using namespace tmk::rng;
  const struct {
    int uniforms;
    std::function<int32_t(VtsStreamHandle, int32_t, int32_t*)> candidates, draw;
  } rows[] = {
      {poisson_uniforms(1e4), [](auto g, auto n, auto r) { return poisson_candidates(g, n, r, 1e4); },
       [](auto g, auto n, auto r) { return _vtsiRngPoisson(0, g, n, r, 1e4); }},
      {poisson_uniforms(3), [](auto g, auto n, auto r) { return poisson_candidates(g, n, r, 3); },
       [](auto g, auto n, auto r) { return _vtsiRngPoisson(0, g, n, r, 3); }},
      {binomial_uniforms(900, 0.4),
       [](auto g, auto n, auto r) { return binomial_candidates(g, n, r, 900, 0.4); },
       [](auto g, auto n, auto r) { return _vtsiRngBinomial(0, g, n, r, 900, 0.4); }},
      {negative_binomial_uniforms(0.5, 1e-3),
       [](auto g, auto n, auto r) { return negative_binomial_candidates(g, n, r, 0.5, 1e-3); },
       [](auto g, auto n, auto r) { return _vtsiRngNegbinomial(0, g, n, r, 0.5, 1e-3); }},
      {hypergeometric_uniforms(9000, 4000, 3000),
       [](auto g, auto n, auto r) { return hypergeometric_candidates(g, n, r, 9000, 4000, 3000); },
       [](auto g, auto n, auto r) { return _vtsiRngHypergeometric(0, g, n, r, 9000, 4000, 3000); }},
  };
  for (const auto& row : rows) {
    const owned_stream g(VTS_BRNG_MCG59, {5}), by_variates(VTS_BRNG_MCG59, {5}), skipped(VTS_BRNG_MCG59, {5});
    std::vector<int> accepted(5000), variates(5000);
    const int32_t kept = row.candidates(g, 5000, accepted.data());
    ASSERT_GT(kept, 4000);
    ASSERT_EQ(kept < 5000, row.uniforms == 2);
    accepted.resize(static_cast<size_t>(kept));
    variates.resize(accepted.size());
    EXPECT_EQ(row.draw(by_variates, kept, variates.data()), 0);
    EXPECT_EQ(accepted, variates);
    EXPECT_EQ(__vtsSkipAheadStream(skipped, 5000 * row.uniforms), 0);
    EXPECT_EQ(draw_bytes(g, 1), draw_bytes(skipped, 1));
  }
}

TEST(discrete_laws, corners) {
  const double p_of_median = -std::expm1(-std::log(2.0) / 0x1p31);  // half of the variates do not fit
  const struct {
    draw_counts draw;
    int32_t wanted;
  } rows[] = {
      {[](auto g, auto n, auto r) { return _vtsiRngPoisson(0, g, n, r, 1e-300); }, 0},
      {[](auto g, auto n, auto r) { return _vtsiRngBinomial(0, g, n, r, 0, 0.5); }, 0},
      {[](auto g, auto n, auto r) { return _vtsiRngBinomial(0, g, n, r, INT_MAX, 0); }, 0},
      {[](auto g, auto n, auto r) { return _vtsiRngBinomial(0, g, n, r, INT_MAX, 1); }, INT_MAX},
      {[](auto g, auto n, auto r) { return _vtsiRngNegbinomial(0, g, n, r, 1e300, 1); }, 0},
      {[](auto g, auto n, auto r) { return _vtsiRngNegbinomial(0, g, n, r, 1e-300, 1e-9); }, 0},
      {[](auto g, auto n, auto r) { return _vtsiRngHypergeometric(0, g, n, r, 0, 0, 0); }, 0},
      {[](auto g, auto n, auto r) { return _vtsiRngHypergeometric(0, g, n, r, INT_MAX, INT_MAX, 17); }, 17},
      {[](auto g, auto n, auto r) { return _vtsiRngHypergeometric(0, g, n, r, INT_MAX, 17, INT_MAX); }, 17},
      {[](auto g, auto n, auto r) { return _vtsiRngHypergeometric(0, g, n, r, 1, 1, 1); }, 1},
  };
  for (const auto& row : rows) {
    const owned_stream g(VTS_BRNG_MT19937, {1});
    std::vector<int> x(1500, -7);
    EXPECT_EQ(row.draw(g, 1500, x.data()), 0);
    EXPECT_EQ(x, std::vector<int>(1500, row.wanted)) << &row - rows;
  }
  const owned_stream g(VTS_BRNG_MT19937, {1});
  std::vector<int> x(10000);
  EXPECT_EQ(_vtsiRngNegbinomial(0, g, 10000, x.data(), 1 - 1e-9, p_of_median * 1.5), 0);
  const double above = std::pow(0.5, 1.5);
  EXPECT_NEAR(static_cast<double>(std::count(x.begin(), x.end(), INT_MAX)), 1e4 * above, 150);
  EXPECT_GE(*std::min_element(x.begin(), x.end()), 0);
}

TEST(discrete_laws, refuse_what_no_law_has) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN(), infinite = HUGE_VAL;
  const owned_stream g(VTS_BRNG_MT19937, {1}), untouched(VTS_BRNG_MT19937, {1});
  int32_t r[64] = {};
  const auto multinomial = [&](int32_t method, int32_t trials, std::vector<double> p) {
    return _vtsiRngMultinomial(method, g, 3, r, trials, static_cast<int32_t>(p.size()), p.data());
  };
  const double means[] = {1, 0};
  constexpr int32_t method = VTS_STATUS_BAD_METHOD, argument = VTS_STATUS_BAD_ARGUMENT;
  std::vector<std::array<int32_t, 2>> rows = {{_vtsiRngPoisson(1, g, 3, r, -1), method},
                                              {_vtsiRngPoissonV(7, g, 2, r, means), method},
                                              {_vtsiRngPoissonV(0, g, 2, r, means), argument},
                                              {_vtsiRngBinomial(-1, g, 3, r, 1, 0.5), method},
                                              {_vtsiRngBinomial(0, g, 3, r, -1, 0.5), argument},
                                              {_vtsiRngNegbinomial(2, g, 3, r, 1, 0.5), method},
                                              {_vtsiRngNegbinomial(0, g, 3, r, 1, 0), argument},
                                              {_vtsiRngNegbinomial(0, g, 3, r, 1e-30, 1e-20), argument},
                                              {_vtsiRngNegbinomial(0, g, 3, r, 3, 1e-9), argument},
                                              {_vtsiRngHypergeometric(1, g, 3, r, 9, 3, 3), method},
                                              {_vtsiRngHypergeometric(0, g, 3, r, 9, 10, 3), argument},
                                              {_vtsiRngHypergeometric(0, g, 3, r, 9, 3, 10), argument},
                                              {_vtsiRngHypergeometric(0, g, 3, r, 9, -1, 3), argument},
                                              {_vtsiRngHypergeometric(0, g, 3, r, 9, 3, -1), argument},
                                              {multinomial(1, 5, {0.5, 0.5}), method},
                                              {multinomial(0, -1, {0.5, 0.5}), argument},
                                              {multinomial(0, 5, {}), argument},
                                              {multinomial(0, 5, {0.5, 0.4}), argument},
                                              {multinomial(0, 5, {0.5, nan}), argument},
                                              {multinomial(0, 5, {1.5, -0.5}), argument}};
  for (const double x : {0.0, -1.0, nan, infinite, 0x1p31})
    rows.push_back({_vtsiRngPoisson(0, g, 3, r, x), argument});
  for (const double x : {-0.1, 1.1, nan, infinite}) {
    rows.push_back({_vtsiRngBinomial(0, g, 3, r, 9, x), argument});
    rows.push_back({_vtsiRngNegbinomial(0, g, 3, r, 9, x), argument});
  }
  for (const double x : {0.0, -1.0, nan, infinite})
    rows.push_back({_vtsiRngNegbinomial(0, g, 3, r, x, 0.5), argument});
  for (const int32_t n : {0, -5}) rows.push_back({_vtsiRngPoisson(0, g, n, r, 3), 0});
  for (size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i][0], rows[i][1]) << i;
  EXPECT_EQ(std::count(r, r + 64, 0), 64);
  EXPECT_EQ(draw_bytes(g, 4), draw_bytes(untouched, 4));
}

TEST(discrete_laws, streams_carry_their_set_ups) {
  for (const counting_law& l : counting_laws()) {
    const owned_stream g(VTS_BRNG_MT19937, {3});
    draw(l, g, 33);
    owned_stream copied, loaded;
    ASSERT_EQ(__vtsCopyStream(&copied.handle, g), 0);
    std::vector<unsigned char> image(static_cast<size_t>(__vtsGetStreamSize(g)));
    ASSERT_EQ(__vtsSaveStreamM(g, image.data()), 0);
    ASSERT_EQ(__vtsLoadStreamM(&loaded.handle, image.data()), 0);
    const auto wanted = draw(l, g, 2000);
    EXPECT_EQ(draw(l, copied, 2000), wanted) << l.name;
    EXPECT_EQ(draw(l, loaded, 2000), wanted) << l.name;
  }
}

// Of a set-up from outside nothing but the parameters is used, and none that a law does not have.
TEST(discrete_laws, set_ups_from_outside_are_made_anew) {
  using namespace tmk::rng;
  const struct {
    chunk_kind kind;
    draw_counts draw;
  } rows[] = {{chunk_poisson, [](auto g, auto n, auto r) { return _vtsiRngPoisson(0, g, n, r, 1e5); }},
              {chunk_binomial, [](auto g, auto n, auto r) { return _vtsiRngBinomial(0, g, n, r, 99, 0.3); }},
              {chunk_negative_binomial,
               [](auto g, auto n, auto r) { return _vtsiRngNegbinomial(0, g, n, r, 7.5, 0.01); }},
              {chunk_hypergeometric,
               [](auto g, auto n, auto r) { return _vtsiRngHypergeometric(0, g, n, r, 900, 300, 400); }}};
  for (const auto& row : rows) {
    const owned_stream g(VTS_BRNG_MT19937, {3});
    std::vector<int> wanted(50), got(50);
    row.draw(g, 50, wanted.data());
    const auto size = static_cast<size_t>(__vtsGetStreamSize(g));
    std::vector<unsigned char> image(size);
    ASSERT_EQ(__vtsSaveStreamM(g, image.data()), 0);
    row.draw(g, 50, wanted.data());

    // The blob is last. Parameters are its first bytes, 16 at most.
    const auto blob = image.end() - bytes_of_kind(row.kind);
    std::fill(blob + 16, image.end(), 0xFF);
    owned_stream renewed, refused;
    ASSERT_EQ(tmk_vts_load_stream_bounded(&renewed.handle, image.data(), size), 0);
    EXPECT_EQ(row.draw(renewed, 50, got.data()), 0);
    EXPECT_EQ(got, wanted);
    std::fill(blob, image.end(), 0xFF);
    EXPECT_EQ(tmk_vts_load_stream_bounded(&refused.handle, image.data(), size), VTS_STATUS_BAD_IMAGE);
  }
}

}  // namespace
