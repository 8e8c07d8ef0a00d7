// SPDX-License-Identifier: Apache-2.0
// Special functions that the C library lacks, or has with a drawback, in extended precision.
#include "vector/reference/real/special.hpp"

#include <cmath>
#include <numbers>

namespace tmk::reference {
namespace {

constexpr extended half_root_pi = 0.5L / std::numbers::inv_sqrtpi_v<extended>;
constexpr extended infinity = std::numeric_limits<extended>::infinity();
constexpr extended not_a_number = std::numeric_limits<extended>::quiet_NaN();

// y >= 0 with erf(y) = p and erfc(y) = q, where p + q = 1 and the smaller of the two is exact.
//   start: y^2 = sqrt(b^2 - l/a) - b,  l = ln(1 - p^2),  b = 2/(pi a) + l/2, within 0.4 % (Winitzki)
//   Newton steps on erf(y) = p or on ln erfc(y) = ln q, whichever is better conditioned; each step squares
//   the error
extended solve_error_function(extended p, extended q) {
  if (p == 0) return 0;
  if (q == 0) return infinity;
  constexpr extended a = 0.147L;
  const extended l = p < q ? log1pl(-p * p) : logl(q * (1 + p));
  const extended b = 2 / (std::numbers::pi_v<extended> * a) + l / 2;
  extended y = sqrtl(-l / a / (sqrtl(b * b - l / a) + b));
  for (int step = 0; step < 3; ++step) {
    const extended inverse_slope = half_root_pi * expl(y * y);
    if (p < q) {
      y -= (erfl(y) - p) * inverse_slope;
    } else {
      const extended tail = erfcl(y);
      y += logl(tail / q) * tail * inverse_slope;
    }
  }
  return y;
}

}  // namespace

// The argument -x / sqrt 2 is carried with its error e: erfc(z + e) = erfc(z) - 2/sqrt(pi) exp(-z^2) e.
extended normal_cdf(extended x) {
  constexpr extended root_half = 0x1.6a09e667f3bcc908p-1L, root_half_low = 0x1.65f626cdd52bp-66L;
  if (!(std::fabs(x) < 0x1p10L)) return x < 0 ? 0 : x > 0 ? 1 : x;
  const extended_pair z = two_prod(-x, root_half);
  const extended e = z.low - x * root_half_low;
  return (erfcl(z.high) - expl(-z.high * z.high) / half_root_pi * e) / 2;
}

extended inverse_erf(extended x) {
  const extended p = std::fabs(x);
  if (!(p <= 1)) return std::isnan(x) ? x : not_a_number;
  return copysignl(solve_error_function(p, 1 - p), x);
}

// 1 - x and 2 - x are exact where they are the smaller of the two probabilities.
extended inverse_erfc(extended x) {
  if (!(x >= 0 && x <= 2)) return std::isnan(x) ? x : not_a_number;
  return x <= 1 ? solve_error_function(1 - x, x) : -solve_error_function(x - 1, 2 - x);
}

extended inverse_normal_cdf(extended x) { return 0 - std::numbers::sqrt2_v<extended> * inverse_erfc(2 * x); }

// The sign goes nowhere: the global that lgamma writes would be shared by all threads.
extended log_gamma(extended x) {
  int sign;
  return lgammal_r(x, &sign);
}

extended gamma_function(extended x) { return tgammal(x); }

//   x <= 1: -gamma - ln x - sum over k >= 1 of (-x)^k / (k k!)
//   x > 1:  exp(-x) / (x + 1 - 1/(x + 3 - 4/(x + 5 - ...))), with an error of about exp(-4 sqrt(n x))
extended exponential_integral(extended x) {
  if (x < 0) return not_a_number;
  if (x == 0) return infinity;
  if (std::isnan(x)) return x;
  if (std::isinf(x)) return 0;
  if (x <= 1) {
    extended sum = 0, power = -1;  // (-1)^(k+1) x^k / k!
    for (int k = 1; std::fabs(power) > 0x1p-70L * std::fabs(sum); ++k) {
      power *= -x / k;
      sum += power / k;
    }
    return sum - (std::numbers::egamma_v<extended> + logl(x));
  }
  const int terms = 12 + static_cast<int>(144 / x);
  extended denominator = x + 2 * terms + 1;
  for (int i = terms; i > 0; --i) denominator = x + 2 * i - 1 - extended(i) * i / denominator;
  return expl(-x) / denominator;
}

}  // namespace tmk::reference
