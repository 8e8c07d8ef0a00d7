// SPDX-License-Identifier: Apache-2.0
// Groups of continuous laws, with peers of their own generators.
#include <gsl/gsl_randist.h>

#include <boost/random/beta_distribution.hpp>
#include <boost/random/cauchy_distribution.hpp>
#include <boost/random/exponential_distribution.hpp>
#include <boost/random/gamma_distribution.hpp>
#include <boost/random/lognormal_distribution.hpp>
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/normal_distribution.hpp>
#include <boost/random/weibull_distribution.hpp>
#include <initializer_list>
#include <random>
#include <string>
#include <utility>

#include "random_subjects.hpp"

namespace tmk::bench {

namespace {

using draw_function = void (*)(VtsStreamHandle);

template <class Law>
subject std_peer(Law law, const char* name = "std") {
  return drawn_by<std::mt19937>(name, law);
}
template <class Law>
subject boost_peer(Law law) {
  return drawn_by<boost::random::mt19937>("boost", law);
}

const std::vector<subject>& normal_peers() {
  static const std::vector<subject> peers = {
      std_peer(std::normal_distribution<double>()), boost_peer(boost::random::normal_distribution<double>()),
      drawn_by_gsl([](gsl_rng* g) { return gsl_ran_gaussian_ziggurat(g, 1); })};
  return peers;
}

std::vector<subject> weibull_peers(double shape) {
  return {std_peer(std::weibull_distribution<double>(shape)),
          boost_peer(boost::random::weibull_distribution<double>(shape)),
          drawn_by_gsl([=](gsl_rng* g) { return gsl_ran_weibull(g, 1, shape); })};
}

struct row {
  const char* name;
  draw_function draw;
  std::vector<subject> peers;
};

std::vector<row> inverted() {
  return {
      {"exponential doubles",
       [](VtsStreamHandle s) { tmk_vtsdRngExponential(s, n, doubles(), 0, 1); },
       {std_peer(std::exponential_distribution<double>()),
        boost_peer(boost::random::exponential_distribution<double>()),
        drawn_by_gsl([](gsl_rng* g) { return gsl_ran_exponential(g, 1); })}},
      {"Laplace doubles",
       [](VtsStreamHandle s) { tmk_vtsdRngLaplace(s, n, doubles(), 0, 1); },
       {std_peer(std::exponential_distribution<double>(), "std exponential"),
        drawn_by_gsl([](gsl_rng* g) { return gsl_ran_laplace(g, 1); })}},
      {"Gumbel doubles",
       [](VtsStreamHandle s) { tmk_vtsdRngGumbel(s, n, doubles(), 0, 1); },
       {std_peer(std::exponential_distribution<double>(), "std exponential"),
        drawn_by_gsl([](gsl_rng* g) { return gsl_ran_gumbel1(g, 1, 1); })}},
      {"Cauchy doubles",
       [](VtsStreamHandle s) { tmk_vtsdRngCauchy(s, n, doubles(), 0, 1); },
       {std_peer(std::cauchy_distribution<double>()),
        boost_peer(boost::random::cauchy_distribution<double>()),
        drawn_by_gsl([](gsl_rng* g) { return gsl_ran_cauchy(g, 1); })}},
      {"Weibull doubles, shape 1.5",
       [](VtsStreamHandle s) { tmk_vtsdRngWeibull(s, n, doubles(), 1.5, 0, 1); }, weibull_peers(1.5)},
      {"lognormal doubles",
       [](VtsStreamHandle s) { tmk_vtsdRngLognormal(1, s, n, doubles(), 0, 1, 0, 1); },
       {std_peer(std::lognormal_distribution<double>()),
        boost_peer(boost::random::lognormal_distribution<double>()),
        drawn_by_gsl([](gsl_rng* g) { return gsl_ran_lognormal(g, 0, 1); })}},
      {"Gaussian doubles, Box-Muller",
       [](VtsStreamHandle s) { tmk_vtsdRngGaussian(1, s, n, doubles(), 0, 1); }, normal_peers()},
      {"Gaussian doubles, inversion",
       [](VtsStreamHandle s) { tmk_vtsdRngGaussian(2, s, n, doubles(), 0, 1); }, normal_peers()},
      {"Gaussian doubles, ziggurat", [](VtsStreamHandle s) { tmk_vtsdRngGaussian(3, s, n, doubles(), 0, 1); },
       normal_peers()},
  };
}

std::string of_shapes(const char* law, std::initializer_list<double> shapes) {
  std::string name = law;
  for (const double s : shapes) name += (s == *shapes.begin() ? " " : ", ") + std::to_string(s).substr(0, 4);
  return name;
}

group gamma_group(const char* generator, int32_t brng, double shape) {
  return drawn(of_shapes(generator, {shape}), n, brng,
               [=](VtsStreamHandle s) { _vtsdRngGamma(0, s, n, doubles(), shape, 0, 1); },
               {std_peer(std::gamma_distribution<double>(shape)),
                boost_peer(boost::random::gamma_distribution<double>(shape)),
                drawn_by_gsl([=](gsl_rng* g) { return gsl_ran_gamma(g, shape, 1); })});
}

// The standard has no beta law: two of its gamma variates make one.
struct beta_of_gammas {
  std::gamma_distribution<double> x, y;
  double operator()(std::mt19937& engine) {
    const double first = x(engine);
    return first / (first + y(engine));
  }
};

group beta_group(double p, double q) {
  return drawn(
      of_shapes("beta doubles,", {p, q}), n, VTS_BRNG_MT19937,
      [=](VtsStreamHandle s) { _vtsdRngBeta(0, s, n, doubles(), p, q, 0, 1); },
      {std_peer(beta_of_gammas{std::gamma_distribution<double>(p), std::gamma_distribution<double>(q)},
                "std gammas"),
       boost_peer(boost::random::beta_distribution<double>(p, q)),
       drawn_by_gsl([=](gsl_rng* g) { return gsl_ran_beta(g, p, q); })});
}

}  // namespace

void add_continuous(std::vector<group>& groups) {
  for (const row& law : inverted())
    groups.push_back(drawn(law.name, n, VTS_BRNG_MT19937, law.draw, law.peers));
  groups.push_back(drawn(
      "Gaussian doubles, ziggurat, PHILOX4X32X10", n, VTS_BRNG_PHILOX4X32X10,
      [](VtsStreamHandle s) { tmk_vtsdRngGaussian(3, s, n, doubles(), 0, 1); }, normal_peers()));
  for (const double shape : {0.1, 0.5, 2.0, 50.0}) {
    groups.push_back(gamma_group("gamma doubles,", VTS_BRNG_MT19937, shape));
    groups.push_back(gamma_group("gamma doubles, PHILOX4X32X10,", VTS_BRNG_PHILOX4X32X10, shape));
  }
  for (const auto& [p, q] : {std::pair(0.5, 0.5), {0.1, 0.3}, {2.0, 3.0}, {50.0, 20.0}})
    groups.push_back(beta_group(p, q));
}

}  // namespace tmk::bench
