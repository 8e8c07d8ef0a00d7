// SPDX-License-Identifier: Apache-2.0
// The incomplete gamma and beta functions in long double, by series and continued fractions (W. Gautschi, ACM
// TOMS 5 (1979); A. DiDonato and A. Morris, ACM TOMS 18 (1992)).
#pragma once

#include <cmath>

// b0 + a1 / (b1 + a2 / (b2 + ...)), by Lentz's recurrence; term(k, a, b) sets a_k and b_k.
template <class Term>
long double continued_fraction(long double b0, Term term) {
  constexpr long double tiny = 1e-4000L;
  long double f = b0 == 0 ? tiny : b0, c = f, d = 0;
  for (int k = 1; k < 100000; ++k) {
    long double a, b;
    term(k, a, b);
    d = b + a * d;
    c = b + a / c;
    d = 1 / (d == 0 ? tiny : d);
    c = c == 0 ? tiny : c;
    f *= c * d;
    if (std::fabs(c * d - 1) < 1e-17L) break;
  }
  return f;
}

inline double gamma_below(long double s, long double x) {
  if (x <= 0) return 0;
  const long double front = std::exp(s * std::log(x) - x - std::lgamma(s));
  if (x < s + 1) {
    long double term = 1 / s, sum = term;
    for (int k = 1; term > sum * 1e-18L; ++k) sum += term *= x / (s + k);
    return static_cast<double>(front * sum);
  }
  const long double f = continued_fraction(x + 1 - s, [=](int k, long double& a, long double& b) {
    a = -k * (k - s);
    b = x + 2 * k + 1 - s;
  });
  return static_cast<double>(1 - front / f);
}

inline double beta_below(long double p, long double q, long double x) {
  if (x <= 0 || x >= 1) return x >= 1;
  if (x > (p + 1) / (p + q + 2)) return 1 - beta_below(q, p, 1 - x);
  const long double front =
      std::exp(std::lgamma(p + q) - std::lgamma(p) - std::lgamma(q) + p * std::log(x) + q * std::log1p(-x)) /
      p;
  const long double f = continued_fraction(1, [=](int k, long double& a, long double& b) {
    const int m = k / 2;
    a = k % 2 == 0 ? m * (q - m) * x / ((p + 2 * m - 1) * (p + 2 * m))
                   : -(p + m) * (p + q + m) * x / ((p + 2 * m) * (p + 2 * m + 1));
    b = 1;
  });
  return static_cast<double>(front / f);
}
