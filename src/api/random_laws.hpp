// The laws of the random interface: parameters checked and turned into the kernels' own.
#pragma once

#include <tmk/abi/vts.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <tmk/random.hpp>

#include "api/check.hpp"

namespace tmk::detail {

struct parameter {
  const char* function;
  const char* name;
  double value;

  void want(bool good, const char* what) const {
    if (good) return;
    char digits[32];
    const std::string text(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    refuse(function, name, text, "is " + text + ", want " + what);
  }
};

// Checked as the kernel will see it, in the precision of the elements.
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

inline gaussian_method valid(const char* function, gaussian_method method, gaussian_method least) {
  const parameter p{function, "method", static_cast<double>(method)};
  p.want(method >= least && method <= gaussian_method::inversion, "a method of the law");
  return method;
}

// A draw of one law: kernel(stream, n, r), and how many elements of the generator a variate takes; none where
// that depends on draws before.
template <class Kernel>
struct draw {
  const char* function;
  int elements;
  Kernel kernel;
};
template <class Kernel>
draw(const char*, int, Kernel) -> draw<Kernel>;

template <class Real>
constexpr auto kernel_of(decltype(&_vtsdRngExponential) d, decltype(&_vtssRngExponential) s) {
  if constexpr (std::is_same_v<Real, double>)
    return d;
  else
    return s;
}

template <class Real>
auto location_scale(const char* function, int elements, decltype(&_vtsdRngExponential) d,
                    decltype(&_vtssRngExponential) s, Real location, Real scale) {
  return draw{function, elements, [=](VtsStreamHandle g, int32_t n, Real* r) {
                return kernel_of<Real>(d, s)(0, g, n, r, location, scale);
              }};
}

template <class Real>
auto make_draw(const distribution::uniform& law) {
  const Real low = finite<Real>({"uniform", "low", law.low}),
             high = finite<Real>({"uniform", "high", law.high});
  parameter{"uniform", "high", law.high}.want(low < high, "more than low");
  parameter{"uniform", "high", law.high}.want(std::isfinite(high - low), "a finite distance from low");
  return draw{"uniform", 1, [=](VtsStreamHandle g, int32_t n, Real* r) {
                return kernel_of<Real>(&_vtsdRngUniform, &_vtssRngUniform)(VTS_METHOD_ACCURATE, g, n, r, low,
                                                                           high);
              }};
}

template <class Real>
auto make_draw(const distribution::exponential& law) {
  const Real location = finite<Real>({"exponential", "location", law.location});
  positive<Real>({"exponential", "rate", law.rate});
  const Real scale = positive<Real>({"exponential", "1 / rate", 1 / law.rate});
  return location_scale("exponential", 1, &_vtsdRngExponential, &_vtssRngExponential, location, scale);
}

template <class Real>
auto make_draw(const distribution::cauchy& law) {
  return location_scale("cauchy", 1, &_vtsdRngCauchy, &_vtssRngCauchy,
                        finite<Real>({"cauchy", "location", law.location}),
                        positive<Real>({"cauchy", "scale", law.scale}));
}

template <class Real>
auto make_draw(const distribution::gumbel& law) {
  return location_scale("gumbel", 1, &_vtsdRngGumbel, &_vtssRngGumbel,
                        finite<Real>({"gumbel", "location", law.location}),
                        -positive<Real>({"gumbel", "scale", law.scale}));
}

template <class Real>
auto make_draw(const distribution::laplace& law) {
  return location_scale("laplace", 2, &_vtsdRngLaplace, &_vtssRngLaplace,
                        finite<Real>({"laplace", "location", law.location}),
                        positive<Real>({"laplace", "scale", law.scale}));
}

template <class Real>
auto make_draw(const distribution::rayleigh& law) {
  constexpr double sqrt_2 = 1.4142135623730951;
  const Real location = finite<Real>({"rayleigh", "location", law.location});
  positive<Real>({"rayleigh", "scale", law.scale});
  const Real beta = positive<Real>({"rayleigh", "sqrt(2) scale", sqrt_2 * law.scale});
  return location_scale("rayleigh", 1, &_vtsdRngRayleigh, &_vtssRngRayleigh, location, beta);
}

template <class Real>
auto make_draw(const distribution::weibull& law) {
  const Real shape = positive<Real>({"weibull", "shape", law.shape});
  const Real scale = positive<Real>({"weibull", "scale", law.scale});
  const Real location = finite<Real>({"weibull", "location", law.location});
  return draw{"weibull", 1, [=](VtsStreamHandle g, int32_t n, Real* r) {
                if constexpr (std::is_same_v<Real, double>)
                  return _vtsdRngWeibull(0, g, n, r, shape, location, scale);
                else
                  return _vtssRngWeibull(0, g, n, r, shape, location, scale);
              }};
}

template <class Real>
auto make_draw(const distribution::gaussian& law) {
  const gaussian_method method = valid("gaussian", law.method, gaussian_method::pairs);
  const Real mean = finite<Real>({"gaussian", "mean", law.mean}),
             sd = positive<Real>({"gaussian", "sd", law.sd});
  return draw{"gaussian", method == gaussian_method::kept_pairs ? 0 : 1,
              [=](VtsStreamHandle g, int32_t n, Real* r) {
                return kernel_of<Real>(&_vtsdRngGaussian, &_vtssRngGaussian)(static_cast<int32_t>(method), g,
                                                                             n, r, mean, sd);
              }};
}

template <class Real>
auto make_draw(const distribution::lognormal& law) {
  const gaussian_method method = valid("lognormal", law.method, gaussian_method::kept_pairs);
  const Real mean = finite<Real>({"lognormal", "log_mean", law.log_mean});
  const Real sd = positive<Real>({"lognormal", "log_sd", law.log_sd});
  const Real location = finite<Real>({"lognormal", "location", law.location});
  const Real scale = positive<Real>({"lognormal", "scale", law.scale});
  const bool kept = method == gaussian_method::kept_pairs;
  return draw{"lognormal", kept ? 0 : 1, [=](VtsStreamHandle g, int32_t n, Real* r) {
                const int32_t number = kept ? 0 : 1;
                if constexpr (std::is_same_v<Real, double>)
                  return _vtsdRngLognormal(number, g, n, r, mean, sd, location, scale);
                else
                  return _vtssRngLognormal(number, g, n, r, mean, sd, location, scale);
              }};
}

// The kernel's interval is open above, but for rounding.
template <class>
auto make_draw(const distribution::uniform_int& law) {
  parameter{"uniform_int", "high", static_cast<double>(law.high)}.want(
      law.low <= law.high && law.high < INT32_MAX, "low to 2147483646");
  return draw{"uniform_int", 1, [=](VtsStreamHandle g, int32_t n, int32_t* r) {
                const int32_t status = _vtsiRngUniform(0, g, n, r, law.low, law.high + 1);
                std::transform(r, r + n, r, [=](int32_t x) { return std::min(x, law.high); });
                return status;
              }};
}

template <class>
auto make_draw(const distribution::bernoulli& law) {
  parameter{"bernoulli", "p", law.p}.want(law.p >= 0 && law.p <= 1, "0 to 1");
  return draw{"bernoulli", 1, [p = law.p](VtsStreamHandle g, int32_t n, int32_t* r) {
                return _vtsiRngBernoulli(0, g, n, r, p);
              }};
}

// Below, variates often pass 2^24, from where on singles do not count every integer.
template <class>
auto make_draw(const distribution::geometric& law) {
  parameter{"geometric", "p", law.p}.want(law.p >= 1e-6 && law.p <= 1, "0.000001 to 1");
  return draw{"geometric", 1, [p = law.p](VtsStreamHandle g, int32_t n, int32_t* r) {
                return _vtsiRngGeometric(0, g, n, r, p);
              }};
}

}  // namespace tmk::detail
