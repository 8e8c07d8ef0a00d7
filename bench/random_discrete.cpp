// SPDX-License-Identifier: Apache-2.0
// Groups of laws that count, with peers of their own generators.
#include <gsl/gsl_randist.h>

#include <algorithm>
#include <array>
#include <boost/random/binomial_distribution.hpp>
#include <boost/random/geometric_distribution.hpp>
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/negative_binomial_distribution.hpp>
#include <boost/random/poisson_distribution.hpp>
#include <random>

#include "random_subjects.hpp"

namespace tmk::bench {

namespace {

int32_t* counts() { return reinterpret_cast<int32_t*>(room()); }

struct row {
  std::string name;
  void (*draw)(VtsStreamHandle);
  std::vector<subject> peers;
};

template <class Law>
subject std_peer(Law law) {
  return drawn_by<std::mt19937>("std", law);
}
template <class Law>
subject boost_peer(Law law) {
  return drawn_by<boost::random::mt19937>("boost", law);
}

template <int64_t Mean>
row poisson_row() {
  return {"Poisson, mean " + std::to_string(Mean),
          [](VtsStreamHandle s) { _vtsiRngPoisson(0, s, n, counts(), Mean); },
          {std_peer(std::poisson_distribution<int>(Mean)),
           boost_peer(boost::random::poisson_distribution<int>(Mean)),
           drawn_by_gsl([](gsl_rng* g) { return gsl_ran_poisson(g, Mean); })}};
}

template <int Trials, int Percent>
row binomial_row() {
  constexpr double p = Percent / 100.0;
  return {"binomial, " + std::to_string(Trials) + " trials",
          [](VtsStreamHandle s) { _vtsiRngBinomial(0, s, n, counts(), Trials, p); },
          {std_peer(std::binomial_distribution<int>(Trials, p)),
           boost_peer(boost::random::binomial_distribution<int>(Trials, p)),
           drawn_by_gsl([](gsl_rng* g) { return gsl_ran_binomial(g, p, Trials); })}};
}

template <int A, int Permille>
row negative_binomial_row() {
  constexpr double p = Permille / 1000.0;
  return {"negative binomial, a = " + std::to_string(A) + ", p = 0." + (Permille < 100 ? "0" : "") +
              std::to_string(Permille / 10),
          [](VtsStreamHandle s) { _vtsiRngNegbinomial(0, s, n, counts(), A, p); },
          {std_peer(std::negative_binomial_distribution<int>(A, p)),
           boost_peer(boost::random::negative_binomial_distribution<int>(A, p)),
           drawn_by_gsl([](gsl_rng* g) { return gsl_ran_negative_binomial(g, p, A); })}};
}

template <int All, int Sample, int Marked>
row hypergeometric_row() {
  return {"hypergeometric, " + std::to_string(Sample) + " of " + std::to_string(All),
          [](VtsStreamHandle s) { _vtsiRngHypergeometric(0, s, n, counts(), All, Sample, Marked); },
          {drawn_by_gsl([](gsl_rng* g) { return gsl_ran_hypergeometric(g, Marked, All - Marked, Sample); })}};
}

void draw_means_of_two_sizes(VtsStreamHandle s) {
  static const std::vector<double> means = [] {
    std::vector<double> m(n);
    for (size_t i = 0; i < m.size(); ++i) m[i] = i % 2 == 0 ? 4 : 100;
    return m;
  }();
  _vtsiRngPoissonV(0, s, n, counts(), means.data());
}

template <class Distribution, class Parameters, class Engine>
subject of_two_sizes(const char* name) {
  return serial(name, [engine = Engine(7), law = Distribution(), odd = false]() mutable {
    odd = !odd;
    return law(engine, Parameters(odd ? 4 : 100));
  });
}

// A vector's counts are elements.
constexpr std::array<double, 4> quarters = {0.1, 0.2, 0.3, 0.4};
void draw_vectors(VtsStreamHandle s) { _vtsiRngMultinomial(0, s, n / 4, counts(), 100, 4, quarters.data()); }
subject gsl_vectors() {
  return {"GSL", [g = gsl_generator()] {
            auto* r = reinterpret_cast<unsigned*>(room());
            for (int32_t i = 0; i < n; i += 4) gsl_ran_multinomial(g, 4, 100, quarters.data(), r + i);
          }};
}

}  // namespace

void add_discrete(std::vector<group>& groups) {
  using std_poisson = std::poisson_distribution<int>;
  using boost_poisson = boost::random::poisson_distribution<int>;
  const row rows[] = {
      {"geometric, p = 0.1",
       [](VtsStreamHandle s) { tmk_vtsiRngGeometric(s, n, counts(), 0.1); },
       {std_peer(std::geometric_distribution<int>(0.1)),
        boost_peer(boost::random::geometric_distribution<int>(0.1)),
        drawn_by_gsl([](gsl_rng* g) { return gsl_ran_geometric(g, 0.1); })}},
      poisson_row<1>(),
      poisson_row<10>(),
      poisson_row<100>(),
      poisson_row<1000>(),
      poisson_row<1000000>(),
      {"Poisson, means 4 and 100 in turn",
       draw_means_of_two_sizes,
       {of_two_sizes<std_poisson, std_poisson::param_type, std::mt19937>("std"),
        of_two_sizes<boost_poisson, boost_poisson::param_type, boost::random::mt19937>("boost"),
        drawn_by_gsl([odd = false](gsl_rng* g) mutable {
          odd = !odd;
          return gsl_ran_poisson(g, odd ? 4 : 100);
        })}},
      binomial_row<20, 30>(),
      binomial_row<1000, 40>(),
      binomial_row<1000000, 40>(),
      negative_binomial_row<5, 200>(),
      negative_binomial_row<100, 10>(),
      hypergeometric_row<1000, 100, 60>(),
      hypergeometric_row<5000, 300, 2500>(),
      {"multinomial, 4 classes", draw_vectors, {gsl_vectors()}},
  };
  for (const row& r : rows) groups.push_back(drawn(r.name, n, VTS_BRNG_MT19937, r.draw, r.peers));
}

}  // namespace tmk::bench
