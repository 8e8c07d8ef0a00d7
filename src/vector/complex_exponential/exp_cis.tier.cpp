// SPDX-License-Identifier: Apache-2.0
// e^(a + ib) = e^a (cos b + i sin b), and cos b + i sin b alone.
#include "vector/complex_exponential/exponential_factor.hpp"

TMK_TIER_OPEN
namespace {

struct exp_formula {
  // From `low` on the lower words of what the results are made of are normal numbers.
  template <class Real>
  static constexpr Real low = sizeof(Real) == 4 ? Real(-60) : Real(-660);
  template <class Real>
  static constexpr Real high = sizeof(Real) == 4 ? Real(88) : Real(709);
  static constexpr bool vanishes = true;

  template <class Real, level Level, class Rotation>
  static complex_value<Real> of(const batch<Real>& a, const Rotation& by) {
    const auto factor = exponential_factor<Level>(a);
    return {product(by.cosine, factor) ^ by.sign, product(by.sine, factor) ^ by.sign};
  }
};

// Maximum errors of a part in ulp, by tmk-accuracy --samples 25000 --search brief and 20000 arguments next to
// multiples of pi / 2, of log(2) / 16 and to zeros:
//   single LA   W7: 2.617 at (0x1.532bd4p-11, -0x1.d03dap+0); V4: 3.904 at (-0x1.27946ep+2, -0x1.5fc218p+0)
//   single HA   W7: 0.5908 at (-0x1.496ac8p+6, -0x1.1f87eep+2); V4: 0.5980 at (0x1.a8bcd4p-1, 0x1.1de94cp-1)
//   double HA   W7: 0.5599 at (-0x1.5241894992a6dp+5, 0x1.7832582e5a12cp+1), without search; V4: 0.6374 at
//   (-0x1.994722eaf6312p+0, -0x1.63804c5c38a01p+9)
template <class Real, level Level>
struct complex_exp : of_rectangle<exp_formula, Real, Level> {
  static constexpr bool baseline_doubles = is_baseline && sizeof(Real) == 8;
  static constexpr auto controls = baseline_doubles ? control_class::c : control_class::a;
  static constexpr auto sse =
      baseline_doubles ? sse_control::nearest : of_rectangle<exp_formula, Real, Level>::sse;
};

// Sine and cosine of a real argument with the bits of the real function; its errors.
template <class Real>
struct cis : of_angle<sine_and_cosine_formula, Real, level::ha, angle_unit::radians> {
  using base = of_angle<sine_and_cosine_formula, Real, level::ha, angle_unit::radians>;
  using value = batch<Real>;
  static constexpr auto controls = !is_baseline        ? control_class::a
                                   : sizeof(Real) == 4 ? control_class::b
                                                       : control_class::c;

  static complex_value<Real> fast(const value& x) {
    const auto [sine, cosine] = base::fast(x);
    return {cosine, sine};
  }
  static lane_mask<Real> flagged(const value& x, const complex_value<Real>& w) {
    return base::flagged(x, w.im, w.re);
  }
  static lane_mask<Real> patch(const value& x, complex_value<Real>& w) {
    pack<value, value> y{w.im, w.re};
    const auto rest = base::patch(x, y);
    w = {y.second, y.first};
    return rest;
  }
  template <class Complex>
  static std::optional<int32_t> shortcut(const Real* a, Complex* r) {
    return base::shortcut(a, &r->re, &r->im);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(c, CIS, real_argument, HHH, cis)
TMK_KERNELS(z, CIS, real_argument, HHH, cis)
TMK_KERNELS(c, Exp, unary, LHL, complex_exp)
TMK_KERNELS(z, Exp, unary, HHH, complex_exp)
