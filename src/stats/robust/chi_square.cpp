// SPDX-License-Identifier: Apache-2.0
// The chi-square distribution by the incomplete gamma functions P and Q = 1 - P.
//   P(a, y) = y^a e^-y / Gamma(a + 1) (1 + y / (a + 1) + y^2 / ((a + 1) (a + 2)) + ...)
//   Q(a, y) = y^a e^-y / Gamma(a) times Legendre's continued fraction 1 / (y + 1 - a - ...)
// (Abramowitz and Stegun, 6.5.29 and 6.5.31). The series serves y below 1 or a, the fraction the rest. The
// inverse starts from Wilson and Hilferty's cube of a normal quantile.
#include <algorithm>
#include <cmath>
#include <limits>

#include "tmk/abi/ss_robust.h"
#include "tmk/abi/vtm.h"

namespace tmk::stats::robust {
namespace {

constexpr double precision = 9.999999999999999e-16;
constexpr double least_exponent = -709.7827129;  // e to a lower power is subnormal
constexpr int most_terms = 1000000;              // 1e12 degrees of freedom take about as many
constexpr double infinity = std::numeric_limits<double>::infinity();

// One element by a vector kernel, with subnormals kept whatever the thread's mode.
double value_of(const VtmDispatchRecord& record, double x) {
  double r = 0;
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT);
  reinterpret_cast<void (*)(int32_t, const double*, double*)>(record.kernel[TMK_SLOT_HA])(1, &x, &r);
  tmk_vtm_kernel_SetMode(mode);
  return r;
}

double ln(double x) { return value_of(tmk_vtm_kernel_dLn_ttab, x); }
double exp_of(double x) { return value_of(tmk_vtm_kernel_dExp_ttab, x); }

// ln(y^a e^-y / Gamma(a)), y above 0.
double log_term(double a, double y) { return a * ln(y) - y - __vtsdLGamma(a); }

double lower_series(double a, double y) {
  const double e = log_term(a, y);
  if (e < least_exponent) return 0;
  double term = 1, sum = 1, c = a;
  for (int k = 0; k < most_terms; ++k) {
    c += 1;
    term *= y / c;
    sum += term;
    if (!(term / sum > precision)) break;
  }
  return exp_of(e) * sum / a;
}

// The fraction's convergents by their three-term recurrence; both parts are made smaller together before
// they overflow.
double upper_fraction(double a, double x) {
  constexpr double large = 4503599627185248.0, rescale = 2.2204460491251566e-16;
  const double e = log_term(a, x);
  if (e < least_exponent) return 0;
  double y = 1 - a, z = x + y + 1;
  double p_before = 1, p = x + 1, q_before = x, q = z * x, ratio = p / q;
  for (int k = 1; k < most_terms; ++k) {
    y += 1;
    z += 2;
    const double p_next = p * z - p_before * y * k, q_next = q * z - q_before * y * k;
    p_before = p, q_before = q;
    p = p_next, q = q_next;
    double change = 1;
    if (q != 0) {
      change = std::fabs((ratio - p / q) / (p / q));
      ratio = p / q;
    }
    if (std::fabs(p) > large) p *= rescale, p_before *= rescale, q *= rescale, q_before *= rescale;
    if (!(change > precision)) break;
  }
  return ratio * exp_of(e);
}

double _vdSSQ(double a, double x) {
  if (std::isnan(a) || std::isnan(x)) return a + x;
  if (x <= 0 || a <= 0) return 1;
  if (x == infinity) return 0;
  if (a == infinity) return 1;
  return x < 1 || x < a ? 1 - lower_series(a, x) : upper_fraction(a, x);
}

double lower(double a, double y) {
  if (std::isnan(a) || std::isnan(y)) return a + y;
  if (y <= 0 || a <= 0) return 0;
  if (a == infinity) return 0;
  return y > 1 && y > a ? 1 - _vdSSQ(a, y) : lower_series(a, y);
}

// What is known of the x with Q(a, x) = y0.
struct bracket {
  double low = 0, high = 4503599627185248.0, q_low = 1, q_high = 0;

  bool holds(double x, double q) const { return x >= low && x <= high && q >= q_high && q <= q_low; }
  void narrow(double x, double q, double y0) {
    if (q < y0)
      high = x, q_high = q;
    else
      low = x, q_low = q;
  }
  bool open() const { return high == 4503599627185248.0; }
};

// Newton's steps; true when they have converged.
bool newton(double a, double y0, double& x, bracket& b) {
  for (int k = 0; k < 10; ++k) {
    if (!(x > b.low && x < b.high)) return false;
    const double q = _vdSSQ(a, x);
    if (!b.holds(x, q)) return false;
    b.narrow(x, q, y0);
    const double e = (a - 1) * ln(x) - x - __vtsdLGamma(a);
    if (!(e >= least_exponent)) return false;
    const double step = (q - y0) / -exp_of(e);
    if (std::fabs(step / x) < precision) return true;
    x -= step;
  }
  return false;
}

// Where Newton's steps leave the bracket: doubling up to an upper end, then interpolation and halving in
// turn.
double search(double a, double y0, double x, bracket b) {
  constexpr double enough = 4.999999999999999e-15;
  if (b.open()) {
    if (!(x > 0)) x = 1;
    for (double fraction = 0.0625; b.open() && x < b.high; fraction *= 2) {
      x *= 1 + fraction;
      b.narrow(x, _vdSSQ(a, x), y0);
    }
  }
  for (int round = 0; round < 400; ++round) {
    const double interpolated = (b.q_low - y0) / (b.q_low - b.q_high);
    const double fraction = round % 2 == 1 && interpolated > 0 && interpolated < 1 ? interpolated : 0.5;
    x = b.low + fraction * (b.high - b.low);
    const double q = _vdSSQ(a, x);
    b.narrow(x, q, y0);
    if (std::fabs((b.high - b.low) / (b.high + b.low)) < enough || std::fabs((q - y0) / y0) < enough ||
        !(x > 0))
      break;
  }
  return x;
}

// Q is close to 1 in the lower tail and says little about x there, while P does.
double polish(double a, double probability, double x) {
  for (int k = 0; k < 3; ++k) {
    const double e = (a - 1) * ln(x) - x - __vtsdLGamma(a);
    if (!(x > 0) || !(e >= least_exponent)) break;
    const double next = x - (lower(a, x) - probability) / exp_of(e);
    if (!(next > 0.5 * x && next < 2 * x)) break;
    x = next;
  }
  return x;
}

double gamma_quantile(double a, double probability) {
  const double y0 = 1 - probability;
  const double d = 1 / (9 * a);
  const double cube_root = 1 - d - value_of(tmk_vtm_kernel_dCdfNormInv_ttab, y0) * std::sqrt(d);
  double x = a * cube_root * cube_root * cube_root;
  bracket b;
  if (!newton(a, y0, x, b)) x = search(a, y0, x, b);
  return probability < 0.5 ? polish(a, probability, x) : x;
}

}  // namespace
}  // namespace tmk::stats::robust

using namespace tmk::stats::robust;

double __vtsdLGamma(double x) {
  if (x == 0 || x == infinity) return infinity;
  return value_of(tmk_vtm_kernel_dLGamma_ttab, x);
}

double __vtsdChi2CDF(double df, double x) { return lower(df / 2, x / 2); }

// The constant is ln 2 to ten digits, as callers know it: densities are low by df times 2e-11 of themselves.
double __vtsdChi2PDF(double df, double x) {
  if (!(x > 0)) return 0;
  return exp_of((df / 2 - 1) * ln(x) - x * 0.5 - (df / 2) * 0.6931471805999999 - __vtsdLGamma(df / 2));
}

double __vtsdChi2ICDF(double df, double probability) {
  if (std::isnan(df) || std::isnan(probability)) return df + probability;
  if (!(df > 0) || !(1 - probability < 1)) return 0;
  if (probability >= 1) return infinity;
  return 2 * gamma_quantile(df / 2, probability);
}
