// SPDX-License-Identifier: Apache-2.0
// tmk-law-quality: each law at twelve points of its parameters, compared with its distribution function and
// its first four moments as Boost.Math has them.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <boost/math/distributions.hpp>
#include <cmath>
#include <cstdio>
#include <string>
#include <tmk/random.hpp>
#include <type_traits>
#include <vector>

namespace {

namespace math = boost::math;
namespace law = tmk::distribution;
using tmk::stream;

// The largest distance between the distribution functions of sample and law, at 4001 of the sample's order
// statistics, times the root of its size: above 1.95 once in a thousand samples (Kolmogorov 1933).
template <class Reference>
double distance(std::vector<double>& x, const Reference& reference) {
  std::sort(x.begin(), x.end());
  constexpr std::size_t looked_at = 4000;
  const double n = static_cast<double>(x.size());
  double worst = 0;
  for (std::size_t k = 0; k <= looked_at; ++k) {
    const double v = x[(x.size() - 1) * k / looked_at];
    const auto [first, last] = std::equal_range(x.begin(), x.end(), v);  // many where a law rounds to 0
    const double f = math::cdf(reference, v), below = static_cast<double>(first - x.begin()),
                 up_to = static_cast<double>(last - x.begin());
    worst = std::max({worst, f - up_to / n, below / n - f});
  }
  return std::sqrt(n) * worst;
}

// Chi-square of cells that each have about a two-hundredth of the probability or a single value, as a
// standard normal deviate (E. B. Wilson, M. M. Hilferty 1931).
template <class Reference>
double chi_square_deviate(const std::vector<double>& x, const Reference& reference) {
  constexpr int most_cells = 200;
  std::vector<double> last;
  for (int c = 1; c < most_cells; ++c) {
    const double q = std::floor(math::quantile(reference, static_cast<double>(c) / most_cells));
    if (last.empty() || q > last.back()) last.push_back(q);
  }
  std::vector<double> count(last.size() + 1);
  for (const double v : x)
    ++count[static_cast<std::size_t>(std::lower_bound(last.begin(), last.end(), v) - last.begin())];
  double below = 0, statistic = 0, freedom = -1;
  for (std::size_t c = 0; c < count.size(); ++c) {
    const double up_to = c < last.size() ? math::cdf(reference, last[c]) : 1;
    const double expected = (up_to - below) * static_cast<double>(x.size());
    below = up_to;
    if (expected < 1) continue;
    statistic += (count[c] - expected) * (count[c] - expected) / expected;
    ++freedom;
  }
  if (freedom < 1) return 0;
  const double v = 2 / (9 * freedom);
  return (std::cbrt(statistic / freedom) - (1 - v)) / std::sqrt(v);
}

template <class Reference>
double kurtosis_of(const Reference& reference) {
  return math::kurtosis(reference);
}
// That of Boost 1.74 differs from the definition.
double kurtosis_of(const math::hypergeometric& h) {
  const double all = h.total(), marked = h.defective(), sample = h.sample_count(), left = all - sample,
               plain = all - marked;
  const double ways = sample * marked * plain * left;
  return 3 + ((all - 1) * all * all * (all * (all + 1) - 6 * marked * plain - 6 * sample * left) +
              6 * ways * (5 * all - 6)) /
                 (ways * (all - 2) * (all - 3));
}

// Deviates of the moments of order 1 to 4 about the law's mean; the standard errors are those of a hundred
// batches.
template <class Reference>
double worst_moment(const std::vector<double>& x, const Reference& reference) {
  constexpr std::size_t batches = 100;
  const double mean = math::mean(reference), sd = math::standard_deviation(reference);
  const double truth[] = {0, 1, math::skewness(reference), kurtosis_of(reference)};
  double sum[4] = {}, squares[4] = {}, worst = 0;
  const std::size_t length = x.size() / batches;
  for (std::size_t b = 0; b < batches; ++b) {
    double of_batch[4] = {};
    for (std::size_t i = b * length; i < (b + 1) * length; ++i) {
      const double z = (x[i] - mean) / sd;
      double power = 1;
      for (double& moment : of_batch) moment += power *= z;
    }
    for (int k = 0; k < 4; ++k) {
      const double moment = of_batch[k] / static_cast<double>(length);
      sum[k] += moment;
      squares[k] += moment * moment;
    }
  }
  for (int k = 0; k < 4; ++k) {
    const double average = sum[k] / batches;
    const double error = std::sqrt((squares[k] / batches - average * average) / (batches - 1));
    if (error > 1e-9) worst = std::max(worst, std::abs(average - truth[k]) / error);
  }
  return worst;
}

struct options {
  std::string filter;
  std::size_t n = 10'000'000;
};

struct figures {
  double fit = 0, moment = 0;
  void take(double new_fit, double new_moment) {
    fit = std::max(fit, new_fit);
    moment = std::max(moment, new_moment);
  }
};

// Of twelve points.
template <class Row>
void report(const options& wish, const char* name, const char* points, bool counts, Row row) {
  if (std::string(name).find(wish.filter) == std::string::npos) return;
  figures worst;
  for (int i = 0; i < 12; ++i) {
    stream g(tmk::generator::mt19937, static_cast<std::uint64_t>(i));
    row(g, static_cast<std::size_t>(i), worst);
  }
  std::printf("| %s | %s | %s %.2f | ", name, points, counts ? "chi-square, z" : "sqrt(n) D", worst.fit);
  worst.moment > 0 ? std::printf("%.2f |\n", worst.moment) : std::printf("none |\n");
  std::fflush(stdout);
}

// law and reference of point i; moments where they exist and are not ruled by single variates.
struct no_moments {};
struct all_moments {
  bool operator()(int) const { return true; }
};

template <class Law, class Reference, class Moments = all_moments>
void continuous(const options& wish, const char* name, const char* points, Law of, Reference reference,
                Moments has_moments = {}) {
  report(wish, name, points, false, [&](stream& g, std::size_t i, figures& worst) {
    std::vector<double> x(wish.n);
    tmk::fill(g, x, of(static_cast<int>(i)));
    const auto r = reference(static_cast<int>(i));
    double moment = 0;
    if constexpr (!std::is_same_v<Moments, no_moments>)
      if (has_moments(static_cast<int>(i))) moment = worst_moment(x, r);
    worst.take(distance(x, r), moment);
  });
}

template <class Law, class Reference>
void counting(const options& wish, const char* name, const char* points, Law of, Reference reference) {
  report(wish, name, points, true, [&](stream& g, std::size_t i, figures& worst) {
    std::vector<std::int32_t> k(wish.n);
    tmk::fill(g, k, of(static_cast<int>(i)));
    const std::vector<double> x(k.begin(), k.end());
    const auto r = reference(static_cast<int>(i));
    worst.take(std::abs(chi_square_deviate(x, r)), worst_moment(x, r));
  });
}

constexpr double shapes[] = {0x1p-20, 1e-3, 0.05, 0.3, 0.5, 0.9, 1, 1.7, 2, 5.5, 50, 1e6};
constexpr double scales[] = {1e-300, 1e-10, 0.1, 0.5, 1, 1.5, 2, 3, 10, 1e5, 1e20, 1e300};
constexpr double weibull_shapes[] = {0.3, 0.5, 0.7, 0.9, 1, 1.2, 1.5, 2, 3, 5, 20, 100};
constexpr double degrees[] = {0.05, 0.3, 1, 1.5, 2, 3, 5, 9, 10, 30, 300, 1e6};
constexpr double means[] = {1e-3, 0.1, 1, 4, 10, 50, 100, 200, 300, 1e3, 1e6, 2e9};
constexpr double probabilities[] = {1e-7, 1e-5, 1e-3, 0.01, 0.1, 0.2, 0.3, 0.5, 0.7, 0.9, 0.99, 0.999};
struct trial_point {
  std::int32_t trials;
  double p;
};
constexpr trial_point trial_points[] = {{1, 0.3},        {20, 0.3},       {20, 0.95},     {100, 0.5},
                                        {1000, 0.4},     {1000, 1e-3},    {30000, 0.9},   {1000000, 0.1},
                                        {1 << 30, 1e-9}, {1 << 30, 1e-5}, {1 << 30, 0.5}, {INT32_MAX, 0.999}};
struct failure_point {
  double a, p;
};
constexpr failure_point failure_points[] = {{1, 0.5},    {5, 0.2},    {0.5, 1e-3}, {0.01, 0.01},
                                            {1.5, 1e-5}, {2.5, 1e-3}, {100, 0.9},  {3e3, 1e-3},
                                            {1e6, 0.3},  {1e9, 0.6},  {7, 0.99},   {0.3, 0.5}};
struct sample_point {
  std::int32_t all, sample, marked;
};
constexpr sample_point sample_points[] = {
    {10, 5, 5},        {1000, 100, 60},       {1000, 998, 990},    {5000, 2500, 2500},
    {5000, 300, 2500}, {20000, 5000, 1},      {20000, 19000, 300}, {100000, 50000, 50000},
    {100000, 10, 300}, {100000, 7000, 90000}, {100, 1, 50},        {50000, 25000, 100}};

void all_continuous(const options& wish) {
  continuous(
      wish, "uniform", "intervals of 1e-300 to 1e300",
      [](int i) {
        return law::uniform{-scales[i], scales[i] / 3};
      },
      [](int i) { return math::uniform(-scales[i], scales[i] / 3); });
  continuous(
      wish, "exponential", "rates 1e-300 to 1e300", [](int i) { return law::exponential{scales[i]}; },
      [](int i) { return math::exponential(scales[i]); });
  continuous(
      wish, "Cauchy", "scales 1e-300 to 1e300",
      [](int i) {
        return law::cauchy{0, scales[i]};
      },
      [](int i) { return math::cauchy(0, scales[i]); }, no_moments());
  continuous(
      wish, "Gumbel", "scales 1e-300 to 1e300",
      [](int i) {
        return law::gumbel{0, scales[i]};
      },
      [](int i) { return math::extreme_value(0, scales[i]); });
  continuous(
      wish, "Laplace", "scales 1e-300 to 1e300",
      [](int i) {
        return law::laplace{0, scales[i]};
      },
      [](int i) { return math::laplace(0, scales[i]); });
  continuous(
      wish, "Weibull", "shapes 0.3 to 100", [](int i) { return law::weibull{weibull_shapes[i]}; },
      [](int i) { return math::weibull(weibull_shapes[i]); }, [](int i) { return weibull_shapes[i] >= 1; });
  for (const auto& [name, method] : {std::pair("Gaussian, pairs", tmk::gaussian_method::pairs),
                                     std::pair("Gaussian, inversion", tmk::gaussian_method::inversion),
                                     std::pair("Gaussian, ziggurat", tmk::gaussian_method::ziggurat)})
    continuous(
        wish, name, "deviations 1e-300 to 1e300",
        [method = method](int i) {
          return law::gaussian{0, scales[i], method};
        },
        [](int i) { return math::normal(0, scales[i]); });
  continuous(
      wish, "lognormal", "deviations of the logarithm 0.0005 to 5",
      [](int i) {
        return law::lognormal{0, std::min(5.0, shapes[i] / 2 + 5e-4)};
      },
      [](int i) { return math::lognormal(0, std::min(5.0, shapes[i] / 2 + 5e-4)); },
      [](int i) { return shapes[i] < 0.6; });
  continuous(
      wish, "gamma", "shapes 2^-20 to 10^6", [](int i) { return law::gamma{shapes[i]}; },
      [](int i) { return math::gamma_distribution<>(shapes[i]); }, [](int i) { return shapes[i] >= 0.3; });
  continuous(
      wish, "beta", "pairs of shapes 2^-20 to 10^6",
      [](int i) {
        return law::beta{shapes[i], shapes[11 - (i * 5) % 12]};
      },
      [](int i) { return math::beta_distribution<>(shapes[i], shapes[11 - (i * 5) % 12]); },
      [](int i) { return shapes[i] >= 0.3 && shapes[11 - (i * 5) % 12] >= 0.3; });
  continuous(
      wish, "Student's t", "0.05 to 10^6 degrees", [](int i) { return law::student_t{degrees[i]}; },
      [](int i) { return math::students_t(degrees[i]); }, [](int i) { return degrees[i] > 9; });
}

void all_counting(const options& wish) {
  counting(
      wish, "geometric", "p of 10^-7 to 0.999", [](int i) { return law::geometric{probabilities[i]}; },
      [](int i) { return math::geometric(probabilities[i]); });
  counting(
      wish, "Poisson", "means 0.001 to 2 10^9", [](int i) { return law::poisson{means[i]}; },
      [](int i) { return math::poisson(means[i]); });
  counting(
      wish, "binomial", "1 to 2^31 - 1 trials, p of 10^-9 to 0.999",
      [](int i) {
        return law::binomial{trial_points[i].trials, trial_points[i].p};
      },
      [](int i) { return math::binomial(trial_points[i].trials, trial_points[i].p); });
  counting(
      wish, "negative binomial", "0.01 to 10^9 successes, p of 10^-5 to 0.99",
      [](int i) {
        return law::negative_binomial{failure_points[i].a, failure_points[i].p};
      },
      [](int i) { return math::negative_binomial(failure_points[i].a, failure_points[i].p); });
  counting(
      wish, "hypergeometric", "populations 10 to 100000",
      [](int i) {
        return law::hypergeometric{sample_points[i].all, sample_points[i].sample, sample_points[i].marked};
      },
      [](int i) {
        const auto p = [](std::int32_t v) { return static_cast<unsigned>(v); };
        return math::hypergeometric(p(sample_points[i].marked), p(sample_points[i].sample),
                                    p(sample_points[i].all));
      });
}

constexpr char heading[] = R"(
## The laws

Each at twelve points of its parameters, %zu variates of mt19937 at each, seeds 0 to 11, compared with Boost.Math: the
largest distance of Kolmogorov and Smirnov (sqrt(n) D; above 1.95 once in a thousand samples), or chi-square of up to
200 cells as a normal deviate; and the largest of the first four moments' deviates, with the standard errors of a
hundred batches, where moments exist and are not ruled by single variates.

| law | points | worst fit | worst moment, z |
|---|---|---|---|
)";

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("The laws of tmk compared with their distribution functions and moments");
  options wish;
  app.add_option("filter", wish.filter, "laws whose names contain this");
  app.add_option("--variates", wish.n, "variates at each point");
  CLI11_PARSE(app, argc, argv);
  std::printf(heading, wish.n);
  all_continuous(wish);
  all_counting(wish);
}
