// SPDX-License-Identifier: Apache-2.0
// The hyperbolic sine and cosine of complex numbers and, of iz, the sine and cosine:
//   sinh(a + ib) = sinh a cos b + i cosh a sin b,   cosh(a + ib) = cosh a cos b + i sinh a sin b
#include "vector/complex_exponential/hyperbolic_factors.hpp"

TMK_TIER_OPEN
namespace {

// Where cosh(a), and with it a result, may become infinite.
struct bounded {
  template <class Real>
  static constexpr Real high = sizeof(Real) == 4 ? Real(88) : Real(709);
  template <class Real>
  static constexpr Real low = -high<Real>;
  static constexpr bool vanishes = false;
};

struct sinh_formula : bounded {
  template <class Real, level Level, class Rotation>
  static complex_value<Real> of(const batch<Real>& a, const Rotation& by) {
    const auto [sinh, cosh] = hyperbolic_factors<Level>(a);
    return {product(sinh, by.cosine) ^ by.sign ^ signs(a), product(cosh, by.sine) ^ by.sign};
  }
  template <class Real>
  static complex_value<Real> turned(const complex_value<Real>& w) {
    return {w.im, w.re};
  }
};

struct cosh_formula : bounded {
  template <class Real, level Level, class Rotation>
  static complex_value<Real> of(const batch<Real>& a, const Rotation& by) {
    const auto [sinh, cosh] = hyperbolic_factors<Level>(a);
    return {product(cosh, by.cosine) ^ by.sign, product(sinh, by.sine) ^ by.sign ^ signs(a)};
  }
  template <class Real>
  static complex_value<Real> turned(const complex_value<Real>& w) {
    return {w.re, w.im ^ batch<Real>(Real(-0.0))};
  }
};

// Maximum errors of a part in ulp (V4), by tmk-accuracy --samples 25000 --search brief and 20000 arguments
// next to multiples of pi / 2, of log(2) / 16 and to zeros. Those at HA are of subnormal parts.
//            single LA, HA       double LA, HA, EP
//   Sin      3.855, 0.9984       3.521, 0.9912, 4.9e7
//   Cos      3.653, 0.9967       3.186, 0.9888, 4.9e7
//   Sinh     3.802, 0.9942       3.117, 0.9976, 4.9e7
//   Cosh     3.023, 0.9942       3.179, 0.9960, 4.9e7
template <class Real, level Level>
using complex_sinh = of_rectangle<sinh_formula, Real, Level>;
template <class Real, level Level>
using complex_cosh = of_rectangle<cosh_formula, Real, Level>;
template <class Real, level Level>
using complex_sine = of_rectangle<sinh_formula, Real, Level, true>;
template <class Real, level Level>
using complex_cosine = of_rectangle<cosh_formula, Real, Level, true>;

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(c, Sinh, unary, LHL, complex_sinh)
TMK_KERNELS(z, Sinh, unary, LHE, complex_sinh)
TMK_KERNELS(c, Cosh, unary, LHL, complex_cosh)
TMK_KERNELS(z, Cosh, unary, LHE, complex_cosh)
TMK_KERNELS(c, Sin, unary, LHL, complex_sine)
TMK_KERNELS(z, Sin, unary, LHE, complex_sine)
TMK_KERNELS(c, Cos, unary, LHL, complex_cosine)
TMK_KERNELS(z, Cos, unary, LHE, complex_cosine)
