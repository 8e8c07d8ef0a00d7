// The continuous kernels as functions of (stream, n, r, three parameters) of either precision.
#pragma once

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
  const auto pair = [](auto d, auto s) {
    return std::pair<kernel<double>, kernel<float>>(
        [d](VtsStreamHandle g, int32_t n, double* r, double p, double q, double) {
          return d(0, g, n, r, p, q);
        },
        [s](VtsStreamHandle g, int32_t n, float* r, float p, float q, float) { return s(0, g, n, r, p, q); });
  };
  const auto row = [](std::string name, auto kernels, auto f) {
    return law{std::move(name), kernels.first, kernels.second, f};
  };
  const auto gaussian = [](int32_t method) {
    return std::pair<kernel<double>, kernel<float>>(
        [=](VtsStreamHandle g, int32_t n, double* r, double p, double q, double) {
          return _vtsdRngGaussian(method, g, n, r, p, q);
        },
        [=](VtsStreamHandle g, int32_t n, float* r, float p, float q, float) {
          return _vtssRngGaussian(method, g, n, r, p, q);
        });
  };
  const auto normal_law = [](double x, double a, double sigma, double) { return normal((x - a) / sigma); };
  static const std::vector<law> table = {
      row("uniform", pair(_vtsdRngUniform, _vtssRngUniform),
          [](double x, double a, double b, double) { return (x - a) / (b - a); }),
      row("exponential", pair(_vtsdRngExponential, _vtssRngExponential),
          [](double x, double a, double beta, double) { return -std::expm1(-(x - a) / beta); }),
      row("cauchy", pair(_vtsdRngCauchy, _vtssRngCauchy),
          [](double x, double a, double beta, double) { return 0.5 + std::atan((x - a) / beta) / M_PI; }),
      row("gumbel", pair(_vtsdRngGumbel, _vtssRngGumbel),
          [](double x, double a, double beta, double) { return -std::expm1(-std::exp((x - a) / beta)); }),
      row("laplace", pair(_vtsdRngLaplace, _vtssRngLaplace),
          [](double x, double a, double beta, double) {
            const double z = (x - a) / beta;
            return z < 0 ? 0.5 * std::exp(z) : 1 - 0.5 * std::exp(-z);
          }),
      row("rayleigh", pair(_vtsdRngRayleigh, _vtssRngRayleigh),
          [](double x, double a, double beta, double) { return -std::expm1(-std::pow((x - a) / beta, 2)); }),
      row("gaussian pairs", gaussian(0), normal_law),
      row("gaussian kept pairs", gaussian(1), normal_law),
      row("gaussian inversion", gaussian(2), normal_law),
      {"weibull",
       [](VtsStreamHandle g, int32_t n, double* r, double a, double beta, double alpha) {
         return _vtsdRngWeibull(0, g, n, r, alpha, a, beta);
       },
       [](VtsStreamHandle g, int32_t n, float* r, float a, float beta, float alpha) {
         return _vtssRngWeibull(0, g, n, r, alpha, a, beta);
       },
       [](double x, double a, double beta, double alpha) {
         return -std::expm1(-std::pow((x - a) / beta, alpha));
       }},
      {"lognormal kept pairs",
       [](VtsStreamHandle g, int32_t n, double* r, double b, double beta, double sigma) {
         return _vtsdRngLognormal(0, g, n, r, 0, sigma, b, beta);
       },
       [](VtsStreamHandle g, int32_t n, float* r, float b, float beta, float sigma) {
         return _vtssRngLognormal(0, g, n, r, 0, sigma, b, beta);
       },
       [](double x, double b, double beta, double sigma) {
         return normal(std::log((x - b) / beta) / sigma);
       }},
      {"lognormal inversion",
       [](VtsStreamHandle g, int32_t n, double* r, double b, double beta, double sigma) {
         return _vtsdRngLognormal(1, g, n, r, 0, sigma, b, beta);
       },
       [](VtsStreamHandle g, int32_t n, float* r, float b, float beta, float sigma) {
         return _vtssRngLognormal(1, g, n, r, 0, sigma, b, beta);
       },
       [](double x, double b, double beta, double sigma) {
         return normal(std::log((x - b) / beta) / sigma);
       }},
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
