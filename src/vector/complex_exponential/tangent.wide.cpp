// SPDX-License-Identifier: Apache-2.0
// The hyperbolic tangent of complex numbers and, of iz, the tangent (W. Kahan, Branch cuts for complex
// elementary functions, 1987, with the squares of both factors in the divisor):
//   tanh(a + ib) = (sinh a cosh a + i sin b cos b) / (sinh^2 a + cos^2 b)
// Nothing cancels, near the poles as little as elsewhere.
#include "vector/complex_exponential/hyperbolic_factors.hpp"
#include "vector/toolbox/near.hpp"

TMK_TIER_OPEN
namespace {

// Beyond |a| = 32 log(2) the cosine is nothing to the hyperbolic sine, nor 1 / E to E. There both hyperbolic
// functions are divided by 2^m, m = |a| / log(2) - 32 rounded, and the imaginary part by 2^2m in turn. It has
// vanished before `end`.
template <class Real>
struct scaled_down {
  using value = batch<Real>;
  static constexpr Real end = sizeof(Real) == 4 ? Real(60) : Real(400);
  value magnitude, scale;

  explicit scaled_down(const value& a)
      : magnitude(xsimd::min(xsimd::abs(a), value(end))),
        scale(raise_exponent<0>(
            value(Real(1)),
            xsimd::min(negative_multiply_add(magnitude, value(Real(0x1.71547652b82fep0)), value(Real(32))),
                       value(Real(0))) +
                value(shifter<Real>))) {}

  template <level Level>
  auto factors() const {
    hyperbolic_argument<Real, Level> arg(maximum_or_second(value(tiny<Real>), magnitude));
    arg.growing = arg.growing * scale;
    if constexpr (Level == level::ha) arg.lost.high = arg.lost.high * scale;
    return factors_of(magnitude, arg);
  }
};

template <class Real>
batch_pair<Real> square(const batch_pair<Real>& x) {
  const auto product = two_prod(x.high, x.high);
  return {product.high, multiply_add(x.high + x.high, x.low, product.low)};
}

// A small factor times a power of two, which `back` takes away again: what a quotient leaves is a normal
// number.
template <class Real>
struct lifted {
  static constexpr Real up = sizeof(Real) == 4 ? Real(0x1p64) : Real(0x1p128);
  batch_pair<Real> factor;
  batch<Real> back;

  explicit lifted(const batch_pair<Real>& x) {
    const auto small = xsimd::abs(x.high) < batch<Real>(negligible<Real>);
    const batch<Real> one(Real(1)), scale = xsimd::select(small, batch<Real>(up), one);
    factor = {x.high * scale, x.low * scale};
    back = xsimd::select(small, batch<Real>(1 / up), one);
  }
};

// x y / (s^2 + c^2) for the divisor as a pair and its reciprocal; all pairs are normalized.
template <class Real>
struct divisor {
  batch<Real> high, low, inverse;

  divisor(const batch_pair<Real>& s, const batch_pair<Real>& c) {
    const auto s2 = square(s), c2 = square(c), sum = two_sum(s2.high, c2.high);
    high = sum.high;
    low = sum.low + (s2.low + c2.low);
    inverse = near_reciprocal(high);
  }
  batch<Real> under(const batch_pair<Real>& x, const batch_pair<Real>& y) const {
    const auto over = two_prod(x.high, y.high);
    const auto over_low = multiply_add(x.low, y.high, multiply_add(x.high, y.low, over.low));
    const auto quotient = over.high * inverse;
    const auto rest =
        negative_multiply_add(quotient, high, over.high) + negative_multiply_add(quotient, low, over_low);
    return multiply_add(rest, inverse, quotient);
  }
};

struct tanh_formula {
  template <class Real>
  static constexpr Real high = std::numeric_limits<Real>::infinity();
  template <class Real>
  static constexpr Real low = -high<Real>;

  template <class Real, level Level, class Rotation>
  static complex_value<Real> of(const batch<Real>& a, const Rotation& by) {
    const scaled_down<Real> down(a);
    if constexpr (Level == level::ha) {
      const auto [sinh, cosh] = down.template factors<Level>();
      const auto sine = normalized(by.sine), cosine = normalized(by.cosine);
      const divisor<Real> over(sinh, cosine);
      const lifted<Real> small_sinh(sinh), small_sine(sine);
      const auto real = over.under(small_sinh.factor, cosh) * small_sinh.back;
      const auto imaginary = over.under(small_sine.factor, cosine) * small_sine.back;
      return {real | signs(a), (imaginary | signs(by.sine.high ^ by.cosine.high)) * down.scale * down.scale};
    } else {
      const auto [sinh, cosh] = down.template factors<Level>();
      const auto inverse = near_reciprocal(multiply_add(sinh, sinh, by.cosine * by.cosine));
      return {(sinh * cosh * inverse) | signs(a), by.sine * by.cosine * inverse * down.scale * down.scale};
    }
  }
  template <class Real>
  static complex_value<Real> turned(const complex_value<Real>& w) {
    return {w.im, w.re};
  }
};

// Maximum errors of a part in ulp (V4), by tmk-accuracy on 20000 arguments next to multiples of pi / 2, of
// log(2) / 16 and to zeros; singles also by --samples 25000 --search brief, whose worst are subnormal parts.
//            single HA, EP    double HA, EP
//   Tan      0.7531, 6646     0.6817, 8.0e7
//   Tanh     0.7763, 6643     0.6595, 9.4e7
template <class Real, level Level>
using complex_tanh = of_rectangle<tanh_formula, Real, Level>;
template <class Real, level Level>
using complex_tangent = of_rectangle<tanh_formula, Real, Level, true>;

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(c, Tanh, unary, HHE, complex_tanh)
TMK_KERNELS(z, Tanh, unary, HHE, complex_tanh)
TMK_KERNELS(c, Tan, unary, HHE, complex_tangent)
TMK_KERNELS(z, Tan, unary, HHE, complex_tangent)
