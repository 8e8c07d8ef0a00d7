// SPDX-License-Identifier: Apache-2.0
// Points, values and sites for tests of the C++ API to splines, and polynomials that its families reproduce.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <tmk/spline.hpp>
#include <vector>

namespace tmk::tests {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

enum class spacing { uniform, nearly, random };
constexpr spacing spacings[] = {spacing::uniform, spacing::nearly, spacing::random};

// From -1 to 3.
template <class Real>
std::vector<Real> points(std::size_t n, spacing how, unsigned seed = 1) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<double> u(0, 1);
  std::vector<Real> x(n);
  const double step = 4.0 / static_cast<double>(n - 1);
  for (std::size_t i = 0; i < n; ++i)
    x[i] =
        static_cast<Real>(static_cast<double>(i) * step - 1 + (how == spacing::nearly ? step * u(g) / 9 : 0));
  if (how == spacing::random) {
    double sum = 0;
    for (Real& v : x) v = static_cast<Real>(sum += std::exp(3 * u(g)));
    for (std::size_t i = n; i-- > 0;) x[i] = static_cast<Real>((x[i] - x[0]) / (sum - x[0]) * 4 - 1);
  }
  x[0] = -1, x[n - 1] = 3;
  return x;
}

template <class Real>
std::vector<Real> values(std::size_t n, unsigned seed) {
  std::mt19937 g(seed);
  std::normal_distribution<double> law;
  std::vector<Real> y(n);
  for (Real& v : y) v = static_cast<Real>(law(g));
  return y;
}

template <class Real>
std::vector<Real> random_sites(std::size_t n, double low, double high, unsigned seed = 3) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<double> u(low, high);
  std::vector<Real> t(n);
  for (Real& v : t) v = static_cast<Real>(u(g));
  return t;
}

// Derivative k of 1 + t - 2 t^2 + t^3 / 2, cut at the degree.
inline double polynomial(int degree, double t, int k = 0) {
  const double c[] = {1, 1, -2, 0.5};
  double sum = 0;
  for (int m = k; m <= degree; ++m) {
    double term = c[m] * std::pow(t, m - k);
    for (int j = 0; j < k; ++j) term *= m - j;
    sum += term;
  }
  return sum;
}
template <class Real>
std::vector<Real> polynomial_at(int degree, const std::vector<Real>& x, int k = 0) {
  std::vector<Real> y;
  for (const Real t : x) y.push_back(static_cast<Real>(polynomial(degree, t, k)));
  return y;
}

template <class Real>
using maker = std::function<basic_spline<Real>(const abscissae<Real>&, const function_set<Real>&)>;

// With ends of the polynomial's own where the usual ones would not be.
template <class Real>
struct family_row {
  const char* name;
  int degree;          // reproduced on any points
  int uniform_degree;  // and on uniform ones
  maker<Real> make;
};

template <class Real>
std::vector<family_row<Real>> families(const std::vector<Real>& x) {
  using s = basic_spline<Real>;
  using xs = const abscissae<Real>&;
  using ys = const function_set<Real>&;
  const auto first = polynomial_at(3, x, 1), second = polynomial_at(3, x, 2);
  const auto one = [=](int k, double t) {
    return k == 1 ? boundary::first_derivative(polynomial(3, t, 1))
                  : boundary::second_derivative(polynomial(3, t, 2));
  };
  const auto set = [](const std::vector<Real>& d) { return function_set<Real>(d.data(), 1, d.size(), 0, 1); };
  return {
      {"linear", 1, 1, [](xs x, ys y) { return s::linear(x, y); }},
      {"quadratic", 2, 2, [](xs x, ys y) { return s::quadratic(x, y); }},
      {"subbotin", 2, 2, [](xs x, ys y) { return s::subbotin(x, y); }},
      {"natural", 1, 1, [](xs x, ys y) { return s::natural(x, y); }},
      {"natural 1 2", 3, 3, [=](xs x, ys y) { return s::natural(x, y, one(1, -1), one(2, 3)); }},
      {"natural 2 1", 3, 3, [=](xs x, ys y) { return s::natural(x, y, one(2, -1), one(1, 3)); }},
      {"not_a_knot", 3, 3, [](xs x, ys y) { return s::not_a_knot(x, y); }},
      {"hermite", 3, 3, [=](xs x, ys y) { return s::hermite(x, y, set(first)); }},
      {"second", 3, 3, [=](xs x, ys y) { return s::from_second_derivatives(x, y, set(second)); }},
      {"bessel", 2, 2, [](xs x, ys y) { return s::bessel(x, y); }},
      {"akima", 1, 2, [](xs x, ys y) { return s::akima(x, y); }},
      {"hyman", 1, 1, [](xs x, ys y) { return s::hyman(x, y); }},
  };
}

template <class Real>
void expect_near(Real value, double want, double scale, const std::string& what) {
  EXPECT_NEAR(value, want, (std::is_same_v<Real, double> ? 1e-12 : 3e-5) * scale) << what;
}

}  // namespace tmk::tests
