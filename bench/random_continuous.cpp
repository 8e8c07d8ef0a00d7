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
#include <random>

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

}  // namespace

void add_continuous(std::vector<group>& groups) {
  for (const row& law : inverted())
    groups.push_back(drawn(law.name, n, VTS_BRNG_MT19937, law.draw, law.peers));
}

}  // namespace tmk::bench
