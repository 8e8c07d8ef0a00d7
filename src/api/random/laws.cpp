// SPDX-License-Identifier: Apache-2.0
// Parameters of the laws, checked and turned into those of the kernels.
#include "api/random/laws.hpp"

#include <cmath>
#include <tmk/random.hpp>

#include "api/call/refuse.hpp"
#include "platform/by_precision.hpp"
#include "random/distributions/laws_by_candidates_continuous.hpp"
#include "random/distributions/laws_by_candidates_discrete.hpp"
#include "random/distributions/open_uniforms.hpp"

namespace tmk::detail {

namespace {

struct parameter {
  const char* function;
  const char* name;
  double value;

  void want(bool good, const char* what) const {
    if (!good) refuse_value(function, name, number(value), what);
  }
};

// Checked as the kernel receives it, in the precision of the elements.
template <class Real>
Real finite(const parameter& p) {
  const Real value = static_cast<Real>(p.value);
  p.want(std::isfinite(value), "a finite number");
  return value;
}
template <class Real>
Real positive(const parameter& p) {
  const Real value = static_cast<Real>(p.value);
  p.want(std::isfinite(value) && value > 0, "a positive finite number");
  return value;
}

gaussian_method valid(const char* function, gaussian_method method, gaussian_method least,
                      gaussian_method last) {
  const parameter p{function, "method", static_cast<double>(method)};
  p.want(method >= least && method <= last, "a method of the law");
  return method;
}

template <class Real>
draw<Real> location_scale(const char* function, int uniforms, decltype(&tmk_vtsdRngExponential) d,
                          decltype(&tmk_vtssRngExponential) s, Real location, Real scale) {
  return draw<Real>{function, uniforms, sizeof(Real), [=](VtsStreamHandle g, int32_t n, Real* r) {
                      return by_precision<Real>(d, s)(g, n, r, location, scale);
                    }};
}

resolution valid(resolution r) {
  const parameter p{"uniform", "resolution", static_cast<double>(r)};
  p.want(r == resolution::full || r == resolution::one_word, "full or one_word");
  return r;
}

template <class Real>
draw<Real> make_draw(const distribution::uniform& law) {
  const Real low = finite<Real>({"uniform", "low", law.low}),
             high = finite<Real>({"uniform", "high", law.high});
  parameter{"uniform", "high", law.high}.want(low < high, "more than low");
  parameter{"uniform", "high", law.high}.want(std::isfinite(high - low), "a finite distance from low");
  const bool full = valid(law.resolution) == resolution::full;
  return draw<Real>{"uniform", 1, full ? int{sizeof(Real)} : 0, [=](VtsStreamHandle g, int32_t n, Real* r) {
                      constexpr auto open = by_precision<Real>(&tmk_vtsdRngUniform, &tmk_vtssRngUniform);
                      constexpr auto own = by_precision<Real>(&_vtsdRngUniform, &_vtssRngUniform);
                      return full ? open(g, n, r, low, high) : own(VTS_METHOD_ACCURATE, g, n, r, low, high);
                    }};
}

template <class Real>
draw<Real> make_draw(const distribution::exponential& law) {
  const Real location = finite<Real>({"exponential", "location", law.location});
  positive<Real>({"exponential", "rate", law.rate});
  const Real scale = positive<Real>({"exponential", "1 / rate", 1 / law.rate});
  return location_scale("exponential", 1, &tmk_vtsdRngExponential, &tmk_vtssRngExponential, location, scale);
}

template <class Real>
draw<Real> make_draw(const distribution::cauchy& law) {
  return location_scale("cauchy", 1, &tmk_vtsdRngCauchy, &tmk_vtssRngCauchy,
                        finite<Real>({"cauchy", "location", law.location}),
                        positive<Real>({"cauchy", "scale", law.scale}));
}

template <class Real>
draw<Real> make_draw(const distribution::gumbel& law) {
  return location_scale("gumbel", 1, &tmk_vtsdRngGumbel, &tmk_vtssRngGumbel,
                        finite<Real>({"gumbel", "location", law.location}),
                        -positive<Real>({"gumbel", "scale", law.scale}));
}

template <class Real>
draw<Real> make_draw(const distribution::laplace& law) {
  return location_scale("laplace", 2, &tmk_vtsdRngLaplace, &tmk_vtssRngLaplace,
                        finite<Real>({"laplace", "location", law.location}),
                        positive<Real>({"laplace", "scale", law.scale}));
}

template <class Real>
draw<Real> make_draw(const distribution::rayleigh& law) {
  constexpr double sqrt_2 = 1.4142135623730951;
  const Real location = finite<Real>({"rayleigh", "location", law.location});
  positive<Real>({"rayleigh", "scale", law.scale});
  const Real beta = positive<Real>({"rayleigh", "sqrt(2) scale", sqrt_2 * law.scale});
  return location_scale("rayleigh", 1, &tmk_vtsdRngRayleigh, &tmk_vtssRngRayleigh, location, beta);
}

template <class Real>
draw<Real> make_draw(const distribution::weibull& law) {
  const Real shape = positive<Real>({"weibull", "shape", law.shape});
  const Real scale = positive<Real>({"weibull", "scale", law.scale});
  const Real location = finite<Real>({"weibull", "location", law.location});
  return draw<Real>{"weibull", 1, sizeof(Real), [=](VtsStreamHandle g, int32_t n, Real* r) {
                      return by_precision<Real>(&tmk_vtsdRngWeibull, &tmk_vtssRngWeibull)(g, n, r, shape,
                                                                                          location, scale);
                    }};
}

template <class Real>
draw<Real> make_draw(const distribution::gaussian& law) {
  const gaussian_method method =
      valid("gaussian", law.method, gaussian_method::pairs, gaussian_method::ziggurat);
  const Real mean = finite<Real>({"gaussian", "mean", law.mean}),
             sd = positive<Real>({"gaussian", "sd", law.sd});
  const bool fixed_count = method == gaussian_method::pairs || method == gaussian_method::inversion;
  return draw<Real>{"gaussian", fixed_count ? 1 : 0, sizeof(Real),
                    [=](VtsStreamHandle g, int32_t n, Real* r) {
                      return by_precision<Real>(&tmk_vtsdRngGaussian, &tmk_vtssRngGaussian)(
                          static_cast<int32_t>(method), g, n, r, mean, sd);
                    }};
}

template <class Real>
draw<Real> make_draw(const distribution::lognormal& law) {
  const gaussian_method method =
      valid("lognormal", law.method, gaussian_method::kept_pairs, gaussian_method::inversion);
  const Real mean = finite<Real>({"lognormal", "log_mean", law.log_mean});
  const Real sd = positive<Real>({"lognormal", "log_sd", law.log_sd});
  const Real location = finite<Real>({"lognormal", "location", law.location});
  const Real scale = positive<Real>({"lognormal", "scale", law.scale});
  const bool kept = method == gaussian_method::kept_pairs;
  return draw<Real>{"lognormal", kept ? 0 : 1, sizeof(Real), [=](VtsStreamHandle g, int32_t n, Real* r) {
                      const int32_t number = kept ? 0 : 1;
                      return by_precision<Real>(&tmk_vtsdRngLognormal, &tmk_vtssRngLognormal)(
                          number, g, n, r, mean, sd, location, scale);
                    }};
}

template <class Real>
Real shape(const char* function, const char* name, double value) {
  refuse_unless_in(function, name, value, least_shape, greatest_shape);
  return static_cast<Real>(value);
}

template <class Real>
draw<Real> gamma_draw(const char* function, Real shape, Real location, Real scale) {
  struct kernel {
    Real shape, location, scale;
    int uniforms() const { return rng::gamma_uniforms(shape); }
    accepted operator()(VtsStreamHandle g, int32_t n, Real* r) const {
      return {rng::gamma_candidates(g, n, r, shape, location, scale)};
    }
  };
  return draw<Real>{function, kernel{shape, location, scale}};
}

template <class Real>
draw<Real> make_draw(const distribution::gamma& law) {
  return gamma_draw("gamma", shape<Real>("gamma", "shape", law.shape),
                    finite<Real>({"gamma", "location", law.location}),
                    positive<Real>({"gamma", "scale", law.scale}));
}

template <class Real>
draw<Real> make_draw(const distribution::chi_square& law) {
  refuse_unless_in("chi_square", "degrees", law.degrees, 2 * least_shape, 2 * greatest_shape);
  return gamma_draw("chi_square", static_cast<Real>(law.degrees / 2), Real{0}, Real{2});
}

template <class Real>
draw<Real> make_draw(const distribution::beta& law) {
  struct kernel {
    Real a, b;
    int uniforms() const { return rng::beta_uniforms(a, b); }
    accepted operator()(VtsStreamHandle g, int32_t n, Real* r) const {
      return {rng::beta_candidates(g, n, r, a, b, Real{0}, Real{1})};
    }
  };
  return draw<Real>{"beta", kernel{shape<Real>("beta", "a", law.a), shape<Real>("beta", "b", law.b)}};
}

template <class Real>
draw<Real> make_draw(const distribution::student_t& law) {
  struct kernel {
    Real degrees, location, scale;
    int uniforms() const { return rng::student_t_uniforms(); }
    accepted operator()(VtsStreamHandle g, int32_t n, Real* r) const {
      return {rng::student_t_candidates(g, n, r, degrees, location, scale)};
    }
  };
  return draw<Real>{"student_t", kernel{positive<Real>({"student_t", "degrees", law.degrees}),
                                        finite<Real>({"student_t", "location", law.location}),
                                        positive<Real>({"student_t", "scale", law.scale})}};
}

template <class>
draw<int32_t> make_draw(const distribution::uniform_int& law) {
  parameter{"uniform_int", "high", static_cast<double>(law.high)}.want(law.low <= law.high, "low or more");
  return draw<int32_t>{"uniform_int", 1, sizeof(double), [=](VtsStreamHandle g, int32_t n, int32_t* r) {
                         return accepted{rng::integer_candidates(g, n, r, law.low, law.high)};
                       }};
}

template <class>
draw<int32_t> make_draw(const distribution::bernoulli& law) {
  refuse_unless_in("bernoulli", "p", law.p, 0, 1);
  return draw<int32_t>{"bernoulli", 1, sizeof(double), [p = law.p](VtsStreamHandle g, int32_t n, int32_t* r) {
                         return tmk_vtsiRngBernoulli(g, n, r, p);
                       }};
}

// Below 1e-7 the greatest variates would not fit into 32 bits.
template <class>
draw<int32_t> make_draw(const distribution::geometric& law) {
  parameter{"geometric", "p", law.p}.want(law.p >= 1e-7 && law.p <= 1, "0.0000001 to 1");
  return draw<int32_t>{"geometric", 1, sizeof(double), [p = law.p](VtsStreamHandle g, int32_t n, int32_t* r) {
                         return tmk_vtsiRngGeometric(g, n, r, p);
                       }};
}

template <class>
draw<int32_t> make_draw(const distribution::poisson& law) {
  check_mean("poisson", "mean", law.mean);
  struct kernel {
    double mean;
    int uniforms() const { return rng::poisson_uniforms(mean); }
    accepted operator()(VtsStreamHandle g, int32_t n, int32_t* r) const {
      return {rng::poisson_candidates(g, n, r, mean)};
    }
  };
  return draw<int32_t>{"poisson", kernel{law.mean}};
}

template <class>
draw<int32_t> make_draw(const distribution::binomial& law) {
  refuse_below("binomial", "trials", law.trials, 0);
  refuse_unless_in("binomial", "p", law.p, 0, 1);
  struct kernel {
    distribution::binomial law;
    int uniforms() const { return rng::binomial_uniforms(law.trials, law.p); }
    accepted operator()(VtsStreamHandle g, int32_t n, int32_t* r) const {
      return {rng::binomial_candidates(g, n, r, law.trials, law.p)};
    }
  };
  return draw<int32_t>{"binomial", kernel{law}};
}

template <class>
draw<int32_t> make_draw(const distribution::negative_binomial& law) {
  positive<double>({"negative_binomial", "successes", law.successes});
  parameter{"negative_binomial", "p", law.p}.want(law.p > 0 && law.p <= 1, "more than 0 and no more than 1");
  parameter{"negative_binomial", "p", law.p}.want(rng::negative_binomial_accepts(law.successes, law.p),
                                                  "so large that the mean is below 2^31");
  struct kernel {
    distribution::negative_binomial law;
    int uniforms() const { return rng::negative_binomial_uniforms(law.successes, law.p); }
    accepted operator()(VtsStreamHandle g, int32_t n, int32_t* r) const {
      return {rng::negative_binomial_candidates(g, n, r, law.successes, law.p)};
    }
  };
  return draw<int32_t>{"negative_binomial", kernel{law}};
}

template <class>
draw<int32_t> make_draw(const distribution::hypergeometric& law) {
  refuse_below("hypergeometric", "population", law.population, 0);
  refuse_unless_in("hypergeometric", "sample", law.sample, 0, law.population);
  refuse_unless_in("hypergeometric", "marked", law.marked, 0, law.population);
  struct kernel {
    distribution::hypergeometric law;
    int uniforms() const { return rng::hypergeometric_uniforms(law.population, law.sample, law.marked); }
    accepted operator()(VtsStreamHandle g, int32_t n, int32_t* r) const {
      return {rng::hypergeometric_candidates(g, n, r, law.population, law.sample, law.marked)};
    }
  };
  return draw<int32_t>{"hypergeometric", kernel{law}};
}

}  // namespace

void check_mean(const char* function, const std::string& argument, double mean) {
  if (!(mean > 0) || mean > rng::greatest_poisson_mean)
    refuse_value(function, argument, number(mean), "more than 0 and no more than 2^31 - 2^19");
}

template <class T, class Laws>
draw<T> draw_of(const Laws& law) {
  return std::visit([](const auto& l) { return make_draw<T>(l); }, law);
}

template draw<double> draw_of(const distribution::continuous&);
template draw<float> draw_of(const distribution::continuous&);
template draw<int32_t> draw_of(const distribution::discrete&);

}  // namespace tmk::detail
