// SPDX-License-Identifier: Apache-2.0
#include "stats/robust/tau.hpp"

#include <algorithm>
#include <cmath>

#include "stats/robust/median.hpp"

namespace tmk::stats::robust {
namespace {

constexpr size_t block = 256;

// The sum of term(x) over all x, in blocks that compile to vector code: 256 partial sums, added in pairs.
template <int Sums, class Term>
void sum_terms(const double* x, size_t n, double* result, const Term& term) {
  double partial[Sums][block] = {};
  size_t i = 0;
  for (; i + block <= n; i += block) {
    const double* const from = x + i;
    for (size_t k = 0; k < block; ++k) {
      double t[Sums];
      term(from[k], t);
      for (int s = 0; s < Sums; ++s) partial[s][k] += t[s];
    }
  }
  for (size_t k = 0; i < n; ++i, ++k) {
    double t[Sums];
    term(x[i], t);
    for (int s = 0; s < Sums; ++s) partial[s][k] += t[s];
  }
  for (int s = 0; s < Sums; ++s) {
    for (size_t half = block / 2; half > 0; half /= 2)
      for (size_t k = 0; k < half; ++k) partial[s][k] += partial[s][k + half];
    result[s] = partial[s][0];
  }
}

}  // namespace

location_scale tau_estimate(const double* x, size_t n, double* work) {
  constexpr double c1 = 4.5, c2 = 3;
  const auto [m, s] = median_and_mad(x, n, work);
  const double inverse = s > 0 ? 1 / s : 0;
  double sums[2];
  sum_terms<2>(x, n, sums, [=](double value, double* t) {
    const double u = (value - m) * inverse / c1, v = 1 - u * u;
    t[0] = v > 0 ? v * v : 0;
    t[1] = t[0] * (value - m);
  });
  const double mu = m + sums[1] / sums[0];
  double rho;
  sum_terms<1>(x, n, &rho, [=](double value, double* t) {
    const double v = (value - mu) * inverse, v2 = v * v;
    t[0] = v2 <= c2 * c2 ? v2 : c2 * c2;
  });
  return {mu, s * std::sqrt(rho / static_cast<double>(n))};
}

}  // namespace tmk::stats::robust
