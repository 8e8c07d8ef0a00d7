// SPDX-License-Identifier: Apache-2.0
// ln f(mode + d) / f(mode) of laws whose probabilities are products of powers and gamma functions, without
// the cancellation of large logarithms of factorials.
//   ln Gamma(z + x) / Gamma(z) = x ln z + (z + x - 1/2) ln(1 + x/z) - x + s(z + x) - s(z)
//   s(z) = ln Gamma(z) - (z - 1/2) ln z + z - ln(2 pi) / 2 = 1/(12 z) - 1/(360 z^3) + ...
// The multiples x ln z of all factors go into one slope, which is small since f(mode + 1) is about f(mode).
// What remains is right to about 2^-53 |d|, as C. Loader, Fast and accurate computation of binomial
// probabilities (2000), has it for factorials.
#pragma once

#include <cmath>
#include <cstdint>

namespace tmk::rng {

// s(z) for z of 10 or more, to 1e-15: numbers or vectors.
constexpr double least_of_stirling_series = 10;
template <class V>
V stirling_series(const V& z) {
  const V w = 1.0 / z, t = w * w;
  return w * (1.0 / 12 - t * (1.0 / 360 -
                              t * (1.0 / 1260 - t * (1.0 / 1680 - t * (1.0 / 1188 - t * (691.0 / 360360))))));
}

// s(z) for z > 0.
double stirling_correction_below_10(double z);
inline double stirling_correction(double z) {
  return z < least_of_stirling_series ? stirling_correction_below_10(z) : stirling_series(z);
}

// ln Gamma(z + x) / Gamma(z) - x ln z + s(z)
inline double log_gamma_step(double z, double x) {
  return (z + x - 0.5) * std::log1p(x / z) - x + stirling_correction(z + x);
}

// A factor Gamma(z + direction d)^weight.
struct gamma_factor {
  double z;
  int direction, weight;
};

struct alignas(8) log_ratio {
  static constexpr int32_t most_factors = 4;
  double slope, constant, z[most_factors];
  int8_t direction[most_factors], weight[most_factors];
  int32_t factors;
  int32_t quotient;  // 1: Gamma(z[0] + z[1] + d) / Gamma(z[0] + d)
};

// e^(slope d) times the factors.
template <int N>
log_ratio log_ratio_of(double slope, const gamma_factor (&factor)[N]) {
  static_assert(N <= log_ratio::most_factors);
  log_ratio l{};
  l.slope = slope;
  l.factors = N;
  for (int i = 0; i < N; ++i) {
    l.z[i] = factor[i].z;
    l.direction[i] = static_cast<int8_t>(factor[i].direction);
    l.weight[i] = static_cast<int8_t>(factor[i].weight);
    l.constant += factor[i].weight * stirling_correction(factor[i].z);
  }
  return l;
}

// e^(slope d) Gamma(z + offset + d) / Gamma(z + d), where the offset is less than the d that occur. There
//   ln Gamma(y + offset) / Gamma(y) = (y - 1/2) ln(1 + offset/y) + offset ln(y + offset) - offset
//                                     + s(y + offset) - s(y)
// is right to about 2^-53 offset.
log_ratio log_ratio_of_quotient(double slope, double z, double offset);

double value(const log_ratio& l, double d);

// The same for n values of d, at most a block, by vector kernels.
void values(const log_ratio& l, int32_t n, const double* d, double* r);

}  // namespace tmk::rng
