// SPDX-License-Identifier: Apache-2.0
// Data with holes, and normal theory by the textbook in extended precision, for the tests of imputation.
#pragma once

#include <cmath>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace tmk::tests {

using numbers = std::vector<double>;
using wide = std::vector<long double>;  // vectors, and square matrices by rows

inline numbers iris() {
  std::ifstream file(TMK_SOURCE_DIR "/tests/reference/iris.txt");
  numbers values;
  for (std::string line; std::getline(file, line);)
    if (line[0] != '#') {
      std::istringstream cells(line);
      for (double v; cells >> v;) values.push_back(v);
    }
  return values;
}

// Holes in a share of the values, at places that the seed gives.
inline numbers with_holes(numbers x, double share, unsigned seed) {
  std::mt19937 engine(seed);
  for (double& v : x)
    if (engine() < share * 0x1p32) v = std::numeric_limits<double>::quiet_NaN();
  return x;
}

// The lower triangular factor.
inline wide cholesky(wide a, std::size_t k) {
  for (std::size_t i = 0; i < k; ++i)
    for (std::size_t j = 0; j < k; ++j) {
      for (std::size_t c = 0; c < std::min(i, j); ++c) a[i * k + j] -= a[i * k + c] * a[j * k + c];
      a[i * k + j] = j > i ? 0 : j == i ? sqrtl(a[i * k + i]) : a[i * k + j] / a[j * k + j];
    }
  return a;
}

inline wide inverse(const wide& a, std::size_t k) {
  const wide l = cholesky(a, k);
  wide r(k * k);
  for (std::size_t column = 0; column < k; ++column) {
    wide x(k);
    for (std::size_t i = 0; i < k; ++i) {
      x[i] = i == column ? 1 : 0;
      for (std::size_t j = 0; j < i; ++j) x[i] -= l[i * k + j] * x[j];
      x[i] /= l[i * k + i];
    }
    for (std::size_t i = k; i-- > 0;) {
      for (std::size_t j = i + 1; j < k; ++j) x[i] -= l[j * k + i] * x[j];
      x[i] /= l[i * k + i];
      r[i * k + column] = x[i];
    }
  }
  return r;
}

// Log likelihood of what is observed, and its derivatives by means and covariances, in units of the
// deviations and per observation.
struct likelihood_at {
  long double value = 0, steepest = 0;

  likelihood_at(const numbers& x, std::size_t p, const numbers& mean, const numbers& covariance) {
    const std::size_t n = x.size() / p;
    wide by_mean(p), by_covariance(p * p);
    for (std::size_t i = 0; i < n; ++i) {
      std::vector<std::size_t> o;
      for (std::size_t j = 0; j < p; ++j)
        if (!std::isnan(x[i * p + j])) o.push_back(j);
      const std::size_t k = o.size();
      wide s(k * k), d(k), w(k);
      for (std::size_t a = 0; a < k; ++a) {
        d[a] = static_cast<long double>(x[i * p + o[a]]) - mean[o[a]];
        for (std::size_t b = 0; b < k; ++b) s[a * k + b] = covariance[o[a] * p + o[b]];
      }
      const wide l = cholesky(s, k), inv = inverse(s, k);
      for (std::size_t a = 0; a < k; ++a) {
        for (std::size_t b = 0; b < k; ++b) w[a] += inv[a * k + b] * d[b];
        value -= 0.5L * (logl(2 * 3.14159265358979323846264L) + 2 * logl(l[a * k + a]) + w[a] * d[a]);
      }
      for (std::size_t a = 0; a < k; ++a) {
        by_mean[o[a]] += w[a];
        for (std::size_t b = 0; b < k; ++b)
          by_covariance[o[a] * p + o[b]] += 0.5L * (w[a] * w[b] - inv[a * k + b]);
      }
    }
    const auto sd = [&](std::size_t j) { return sqrtl(covariance[j * p + j]); };
    for (std::size_t a = 0; a < p; ++a) {
      steepest = std::max(steepest, fabsl(by_mean[a]) * sd(a) / n);
      for (std::size_t b = 0; b < p; ++b)
        steepest = std::max(steepest, fabsl(by_covariance[a * p + b]) * sd(a) * sd(b) / n);
    }
  }
};

}  // namespace tmk::tests
