// SPDX-License-Identifier: Apache-2.0
#include "random/distributions/single_variates.hpp"

#include <array>
#include <cmath>

#include "random/distributions/log_ratio.hpp"

namespace {
using namespace tmk::rng;

constexpr int32_t rejected_at_most = 1 << 12;  // in a row, as other laws by rejection

// With a mean below 20, less than 2^-60 is above this.
constexpr int32_t last_searched = 100;

// 1/(k + 1): a search waits for no quotient.
constexpr auto reciprocal = [] {
  std::array<double, last_searched> r{};
  for (size_t k = 0; k < r.size(); ++k) r[k] = 1 / (static_cast<double>(k) + 1);
  return r;
}();

// The k with f(0) + ... + f(k - 1) <= u < f(0) + ... + f(k), where ratio(k) / (k + 1) is f(k + 1) / f(k).
template <class Ratio>
int32_t search(double u, double f, Ratio ratio) {
  int32_t k = 0;
  for (; u >= f && k < last_searched; ++k) {
    u -= f;
    f *= ratio(k) * reciprocal[static_cast<size_t>(k)];
  }
  return k;
}

// Of a transformed rejection: k = floor((2 a / (1/2 - |u|) + b) u + centre) for u over (-1/2, 1/2).
struct transform {
  double a, b, centre;
  double scale;               // of the hat's inverse
  double sure_v, least_side;  // accepted at once: v <= sure_v where 1/2 - |u| is that much
};

// accepts(k, h): whether f(k) is at least h, measured as the scale has it.
template <class Accepts>
int32_t by_rejection(uniform_supply& supply, const transform& t, double high, int64_t later,
                     Accepts accepts) {
  double k = 0;
  for (int32_t i = 0; i < rejected_at_most; ++i) {
    const double u = supply.next(2 + later) - 0.5, v = supply.next(1 + later), side = 0.5 - std::abs(u);
    k = std::floor((2 * t.a / side + t.b) * u + t.centre);
    if (side >= t.least_side && v <= t.sure_v) break;
    if (k < 0 || k > high) continue;
    if (accepts(k, v * t.scale / (t.a / (side * side) + t.b))) break;
  }
  return static_cast<int32_t>(std::clamp(k, 0.0, high));
}

// Whether lambda^k e^-lambda / k! is at least h:
//   ln k! = (z - 1/2) ln z - z + s(z) + ln(2 pi) / 2,   z = k + 1
bool poisson_reaches(double h, double lambda, double k) {
  constexpr double half_ln_2_pi = 0.91893853320467274178;
  const double z = k + 1;
  return std::log(h * std::sqrt(z)) <=
         k * std::log1p((lambda - z) / z) + (z - lambda) - stirling_correction(z) - half_ln_2_pi;
}

int32_t binomial_of_small_p(uniform_supply& supply, double n, double p, int64_t later) {
  const double q = 1 - p;
  if (n * p < least_rejection_mean) {
    const double odds = p / q;
    return search(supply.next(1 + later), std::exp(n * std::log1p(-p)),
                  [=](int32_t k) { return odds * (n - k); });
  }
  const double deviation = std::sqrt(n * p * q), b = 1.15 + 2.53 * deviation,
               a = -0.0873 + 0.0248 * b + 0.01 * p;
  const double mode = std::floor((n + 1) * p), z = mode + 1, others = n - mode + 1;
  const double slope = std::log1p((p * (n + 2) - z) / (q * z));
  const transform t = {a, b, n * p + 0.5, (2.83 + 5.1 / b) * deviation, 0.92 - 4.2 / b, 0.07};
  return by_rejection(supply, t, n, later, [=](double k, double height) {
    const double d = k - mode;
    const double s = stirling_correction(z) + stirling_correction(others);
    return std::log(height) <= slope * d - log_gamma_step(z, d) - log_gamma_step(others, -d) + s;
  });
}

}  // namespace

int32_t tmk::rng::poisson_variate(uniform_supply& supply, double lambda, int64_t later) {
  if (lambda < least_rejection_mean)
    return search(supply.next(1 + later), std::exp(-lambda), [=](int32_t) { return lambda; });
  const double b = 0.931 + 2.53 * std::sqrt(lambda), a = -0.059 + 0.02483 * b;
  const transform t = {a, b, lambda + 0.43, 1.1239 + 1.1328 / (b - 3.4), 0.9277 - 3.6224 / (b - 2), 0.07};
  return by_rejection(supply, t, INT32_MAX, later,
                      [=](double k, double height) { return poisson_reaches(height, lambda, k); });
}

int32_t tmk::rng::binomial_variate(uniform_supply& supply, int32_t trials, double p, int64_t later) {
  if (p <= 0.5) return binomial_of_small_p(supply, trials, p, later);
  return trials - binomial_of_small_p(supply, trials, 1 - p, later);
}
