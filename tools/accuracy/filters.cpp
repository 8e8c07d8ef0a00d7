// SPDX-License-Identifier: Apache-2.0
#include "filters.hpp"

#include <algorithm>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/expint.hpp>
#include <cmath>
#include <numbers>

namespace tmk::accuracy {
namespace {

template <class Real>
constexpr Real pi = std::numbers::pi_v<Real>;

// Sine and cosine of x in units of a straight angle: every subtraction is exact, but where it is of no
// account.
template <int StraightAngle, class Real>
Real sine(Real x) {
  const Real half = std::remainder(x, Real(2 * StraightAngle)), quarter = Real(StraightAngle) / 2;
  const Real angle = std::abs(half) > quarter ? std::copysign(Real(StraightAngle), half) - half : half;
  return std::sin(angle * (pi<Real> / StraightAngle));
}
template <int StraightAngle, class Real>
Real cosine(Real x) {
  const Real half = std::abs(std::remainder(x, Real(2 * StraightAngle)));
  return std::sin((Real(StraightAngle) / 2 - half) * (pi<Real> / StraightAngle));
}

// The sign goes nowhere: the global that lgamma writes would be shared by all threads.
double log_gamma(double x) {
  int sign;
  return lgamma_r(x, &sign);
}
long double log_gamma(long double x) {
  int sign;
  return lgammal_r(x, &sign);
}

// Out of the domain a NaN, at the poles infinity.
using quiet =
    boost::math::policies::policy<boost::math::policies::domain_error<boost::math::policies::ignore_error>,
                                  boost::math::policies::pole_error<boost::math::policies::ignore_error>,
                                  boost::math::policies::overflow_error<boost::math::policies::ignore_error>,
                                  boost::math::policies::promote_double<false>>;

// erfc(-x / sqrt(2)) / 2. What the rounding of the quotient loses counts x^2 times, and joins by the slope.
double cdf_norm(double x, double) {
  if (std::isinf(x)) return x > 0 ? 1 : 0;
  constexpr double scale = -0.70710678118654757274, scale_low = 4.833646656726456726e-17;
  const double y = x * scale, rest = std::fma(x, scale, -y) + x * scale_low;
  return (std::erfc(y) - rest * std::exp(-y * y) * (2 * std::numbers::inv_sqrtpi)) / 2;
}

constexpr filter both(std::string_view stem, auto function) { return {stem, function, function}; }
constexpr filter without_error(std::string_view stem, auto function) {
  return {stem, function, function, true};
}

// The C library states errors of a few units in the last place, and compositions add two or three.
constexpr filter filters[] = {
    without_error("Abs", [](auto x, auto) { return std::abs(x); }),
    both("Inv", [](auto x, auto) { return 1 / x; }),
    both("Sqrt", [](auto x, auto) { return std::sqrt(x); }),
    both("InvSqrt", [](auto x, auto) { return 1 / std::sqrt(x); }),
    without_error("Sqr", [](auto x, auto) { return x * x; }),
    both("Div", [](auto x, auto y) { return x / y; }),
    both("Hypot", [](auto x, auto y) { return std::hypot(x, y); }),
    both("Pow", [](auto x, auto y) { return std::pow(x, y); }),
    both("Powr", [](auto x, auto y) { return std::pow(x, y); }),
    both("Atan2", [](auto x, auto y) { return std::atan2(x, y); }),
    both("Atan2pi", [](auto x, auto y) { return std::atan2(x, y) / pi<decltype(x)>; }),
    both("Cbrt", [](auto x, auto) { return std::cbrt(x); }),
    both("InvCbrt", [](auto x, auto) { return 1 / std::cbrt(x); }),
    both("Pow2o3", [](auto x, auto) { return std::cbrt(x * x); }),
    both("Pow3o2", [](auto x, auto) { return x * std::sqrt(x); }),
    both("Exp", [](auto x, auto) { return std::exp(x); }),
    both("Exp2", [](auto x, auto) { return std::exp2(x); }),
    both("Exp10", [](auto x, auto) { return std::pow(decltype(x)(10), x); }),
    both("Expm1", [](auto x, auto) { return std::expm1(x); }),
    both("Ln", [](auto x, auto) { return std::log(x); }),
    both("Log2", [](auto x, auto) { return std::log2(x); }),
    both("Log10", [](auto x, auto) { return std::log10(x); }),
    both("Log1p", [](auto x, auto) { return std::log1p(x); }),
    without_error("Logb", [](auto x, auto) { return std::logb(x); }),
    both("Sin", [](auto x, auto) { return std::sin(x); }),
    both("Cos", [](auto x, auto) { return std::cos(x); }),
    both("Tan", [](auto x, auto) { return std::tan(x); }),
    both("Asin", [](auto x, auto) { return std::asin(x); }),
    both("Acos", [](auto x, auto) { return std::acos(x); }),
    both("Atan", [](auto x, auto) { return std::atan(x); }),
    both("Asinpi", [](auto x, auto) { return std::asin(x) / pi<decltype(x)>; }),
    both("Acospi", [](auto x, auto) { return std::acos(x) / pi<decltype(x)>; }),
    both("Atanpi", [](auto x, auto) { return std::atan(x) / pi<decltype(x)>; }),
    both("Sinh", [](auto x, auto) { return std::sinh(x); }),
    both("Cosh", [](auto x, auto) { return std::cosh(x); }),
    both("Tanh", [](auto x, auto) { return std::tanh(x); }),
    both("Asinh", [](auto x, auto) { return std::asinh(x); }),
    both("Acosh", [](auto x, auto) { return std::acosh(x); }),
    both("Atanh", [](auto x, auto) { return std::atanh(x); }),
    both("Erf", [](auto x, auto) { return std::erf(x); }),
    both("Erfc", [](auto x, auto) { return std::erfc(x); }),
    both("TGamma", [](auto x, auto) { return std::tgamma(x); }),
    without_error("Floor", [](auto x, auto) { return std::floor(x); }),
    without_error("Ceil", [](auto x, auto) { return std::ceil(x); }),
    without_error("Trunc", [](auto x, auto) { return std::trunc(x); }),
    without_error("Round", [](auto x, auto) { return std::round(x); }),
    without_error("Rint", [](auto x, auto) { return std::rint(x); }),
    without_error("NearbyInt", [](auto x, auto) { return std::nearbyint(x); }),
    without_error("Frac", [](auto x, auto) { return x - std::trunc(x); }),
    both("Sinpi", [](auto x, auto) { return sine<1>(x); }),
    both("Cospi", [](auto x, auto) { return cosine<1>(x); }),
    both("Tanpi", [](auto x, auto) { return sine<1>(x) / cosine<1>(x); }),
    both("Sind", [](auto x, auto) { return sine<180>(x); }),
    both("Cosd", [](auto x, auto) { return cosine<180>(x); }),
    both("Tand", [](auto x, auto) { return sine<180>(x) / cosine<180>(x); }),
    both("LGamma", [](auto x, auto) { return log_gamma(x); }),
    {"CdfNorm", cdf_norm, nullptr},
    {"ErfInv", [](double x, double) { return boost::math::erf_inv(x, quiet()); }, nullptr},
    {"ErfcInv", [](double x, double) { return boost::math::erfc_inv(x, quiet()); }, nullptr},
    {"CdfNormInv",
     [](double x, double) { return -std::numbers::sqrt2 * boost::math::erfc_inv(2 * x, quiet()); }, nullptr},
    {"ExpInt1", [](double x, double) { return x < 0 ? NAN : boost::math::expint(1, x, quiet()); }, nullptr},
};

}  // namespace

const filter* find_filter(std::string_view stem) {
  const auto* row = std::ranges::find(filters, stem, &filter::stem);
  return row == std::end(filters) ? nullptr : row;
}

}  // namespace tmk::accuracy
