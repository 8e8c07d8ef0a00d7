// SPDX-License-Identifier: Apache-2.0
// The continuous kernels as functions of (stream, n, r, three parameters) of either precision.
#pragma once

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "tmk/abi/vts.h"

template <class Real>
using kernel = std::function<int32_t(VtsStreamHandle, int32_t, Real*, Real, Real, Real)>;

struct law {
  std::string name;
  kernel<double> d;
  kernel<float> s;
  std::function<double(double x, double p, double q, double s)> distribution_function;
};

inline double normal(double z) { return 0.5 * std::erfc(-z / std::sqrt(2.0)); }

inline const std::vector<law>& laws() {
  const auto row = [](std::string name, auto d, auto s, auto f) {
    return law{std::move(name),
               [d](auto g, auto n, auto r, auto p, auto q, auto) { return d(0, g, n, r, p, q); },
               [s](auto g, auto n, auto r, auto p, auto q, auto) { return s(0, g, n, r, p, q); }, f};
  };
  const auto gaussian = [](int32_t method) {
    return law{
        "",
        [=](auto g, auto n, auto r, auto p, auto q, auto) { return _vtsdRngGaussian(method, g, n, r, p, q); },
        [=](auto g, auto n, auto r, auto p, auto q, auto) { return _vtssRngGaussian(method, g, n, r, p, q); },
        [](double x, double a, double sigma, double) { return normal((x - a) / sigma); }};
  };
  const auto lognormal = [](int32_t method) {
    return law{
        "",
        [=](auto g, auto n, auto r, auto b, auto beta, auto s) {
          return _vtsdRngLognormal(method, g, n, r, 0, s, b, beta);
        },
        [=](auto g, auto n, auto r, auto b, auto beta, auto s) {
          return _vtssRngLognormal(method, g, n, r, 0, s, b, beta);
        },
        [](double x, double b, double beta, double s) { return normal(std::log((x - b) / beta) / s); }};
  };
  const auto named = [](std::string name, law l) {
    l.name = std::move(name);
    return l;
  };
  static const std::vector<law> table = {
      row("uniform", _vtsdRngUniform, _vtssRngUniform,
          [](double x, double a, double b, double) { return (x - a) / (b - a); }),
      row("exponential", _vtsdRngExponential, _vtssRngExponential,
          [](double x, double a, double beta, double) { return -std::expm1(-(x - a) / beta); }),
      row("cauchy", _vtsdRngCauchy, _vtssRngCauchy,
          [](double x, double a, double beta, double) { return 0.5 + std::atan((x - a) / beta) / M_PI; }),
      row("gumbel", _vtsdRngGumbel, _vtssRngGumbel,
          [](double x, double a, double beta, double) { return -std::expm1(-std::exp((x - a) / beta)); }),
      row("laplace", _vtsdRngLaplace, _vtssRngLaplace,
          [](double x, double a, double beta, double) {
            const double z = (x - a) / beta;
            return z < 0 ? 0.5 * std::exp(z) : 1 - 0.5 * std::exp(-z);
          }),
      row("rayleigh", _vtsdRngRayleigh, _vtssRngRayleigh,
          [](double x, double a, double beta, double) { return -std::expm1(-std::pow((x - a) / beta, 2)); }),
      {"weibull",
       [](auto g, auto n, auto r, auto a, auto beta, auto alpha) {
         return _vtsdRngWeibull(0, g, n, r, alpha, a, beta);
       },
       [](auto g, auto n, auto r, auto a, auto beta, auto alpha) {
         return _vtssRngWeibull(0, g, n, r, alpha, a, beta);
       },
       [](double x, double a, double beta, double alpha) {
         return -std::expm1(-std::pow((x - a) / beta, alpha));
       }},
      named("gaussian pairs", gaussian(0)),
      named("gaussian kept pairs", gaussian(1)),
      named("gaussian inversion", gaussian(2)),
      named("gaussian ziggurat", gaussian(3)),
      named("lognormal kept pairs", lognormal(0)),
      named("lognormal inversion", lognormal(1)),
  };
  return table;
}

// The precision's kernel of a law.
template <class Real>
const kernel<Real>& kernel_of(const law& l) {
  if constexpr (std::is_same_v<Real, double>)
    return l.d;
  else
    return l.s;
}
