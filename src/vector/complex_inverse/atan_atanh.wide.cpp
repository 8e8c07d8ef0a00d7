// SPDX-License-Identifier: Apache-2.0
// Inverse tangents of the circle and the hyperbola. For z = x + i y in the first quadrant
//   artanh z = log(1 + 4 x / ((1 - x)^2 + y^2)) / 4 + i angle(1 - x^2 - y^2, 2 y) / 2
//   arctan z = -i artanh(i z)
// with the angle of that vector to its first axis (W. Kahan, Branch cuts for complex elementary functions,
// 1987). HA has both quotients' terms in pairs.
#include "vector/complex_inverse/parts.hpp"
#include "vector/logarithm/log_of_pair.hpp"
#include "vector/toolbox/odd.hpp"
#include "vector/toolbox/settled.hpp"

TMK_TIER_OPEN
namespace {

// e = 1 - x, d = e^2 + y^2, and 1 - x^2 - y^2 = 2 e - d, which cancels only where y does not vanish next to
// it.
template <class Real, level Level>
struct distances {
  using value = batch<Real>;
  batch_pair<Real> d, difference;

  distances(const value& x, const value& y) {
    const value one(Real(1));
    if constexpr (Level != level::ha) {
      const value e = one - x;
      d = exactly(multiply_add(e, e, y * y));
      difference = exactly((e + e) - d.high);
    } else {
      const auto e = two_sum(one, -x);
      const value twice = e.high + e.high, size = xsimd::abs(e.high);
      const value larger = maximum_or_second(size, y), smaller = minimum_or_second(size, y);
      const auto square = two_prod(larger, larger), sum = add_product(square.high, smaller, smaller);
      d = {sum.high, multiply_add(twice, e.low, square.low + sum.low)};
      const auto rest = two_sum(twice, -d.high);
      difference = {rest.high, rest.low + multiply_subtract(value(Real(2)), e.low, d.low)};
    }
  }
};

// log(1 + 4 x / d)
template <level Level, class Real>
batch<Real> log_of_ratio(const batch<Real>& x, const batch_pair<Real>& d) {
  using value = batch<Real>;
  const auto t = quotient<Level>(x * value(Real(4)), d);
  const value one(Real(1)), limited = maximum_or_second(value(tiny<Real>), t.high);
  const auto sum = fast_two_sum(maximum_or_second(one, limited), minimum_or_second(one, limited));
  value low = sum.low, square = t.high * value(Real(-0.5));
  if constexpr (Level == level::ha) low += t.low;
  const value series = Level == level::ha ? multiply_add(square, t.high, t.low) + t.high
                                          : multiply_add(square, t.high, t.high);
  return xsimd::select(t.high < value(tiny<Real>), series, log_of_pair<Level>(sum.high, low));
}

struct hyperbolic_tangent {
  template <level Level, class Real>
  static complex_value<Real> of(const complex_value<Real>& z) {
    using value = batch<Real>;
    const value x = xsimd::abs(z.re), y = xsimd::abs(z.im);
    const distances<Real, Level> from_pole(x, y);
    const value log = log_of_ratio<Level>(x, from_pole.d);
    const value angle = angle_of<Level>(exactly(y + y), from_pole.difference);
    return {log * value(Real(0.25)) | sign_of(z.re), angle * value(Real(0.5)) | sign_of(z.im)};
  }
  // 1 / z, and a right angle.
  template <level Level, class Real>
  static complex_value<Real> of_far(const complex_value<Real>& z) {
    using value = batch<Real>;
    const value x = scaled_far(z.re, z.im), y = scaled_far(z.im, z.re);
    const auto xx = two_prod(x, x), yy = two_prod(y, y), norm = two_sum(xx.high, yy.high);
    const auto near = quotient<Level>(x, {norm.high, norm.low + (xx.low + yy.low)});
    const value re = scaled_by_far(near.high + near.low);
    const value infinity(std::numeric_limits<Real>::infinity());
    const auto infinite = (xsimd::abs(z.re) == infinity) | (xsimd::abs(z.im) == infinity);
    return {xsimd::select(infinite, value(Real(0)), re) | sign_of(z.re),
            value(angles<Real, angle_unit::radians>::right) | sign_of(z.im)};
  }
  template <class Real>
  static complex_value<Real> of_tiny(const complex_value<Real>& z) {
    return z;
  }
  template <class Real>
  static complex_value<Real> of_nan(const complex_value<Real>& z) {
    return nan_unless_zero(z, z.re);
  }
  // Nearer to a pole squares leave the format.
  template <class Real>
  static lane_mask<Real> good(const complex_value<Real>&, const complex_value<Real>& r) {
    return xsimd::abs(r.re) < batch<Real>(Real(sizeof(Real) == 4 ? 17 : 160));
  }
  template <class Real>
  static lane_mask<Real> far_good(const complex_value<Real>&) {
    return lane_mask<Real>(true);
  }
};

template <class Real>
std::optional<int32_t> pole(Real x, Real y, Real* re, Real* im) {
  if (std::abs(x) != 1 || y != 0) return std::nullopt;
  *im = y;
  return infinite(x, VTM_STATUS_SINGULARITY, re);
}

template <class Real, level Level>
struct inverse_tanh : complex_inverse<Real, Level, hyperbolic_tangent> {
  template <class Complex>
  static std::optional<int32_t> shortcut(const Complex* a, Complex* r) {
    return pole(a->re, a->im, &r->re, &r->im);
  }
};

template <class Real, level Level>
struct inverse_tan : complex_inverse<Real, Level, turned<hyperbolic_tangent>> {
  template <class Complex>
  static std::optional<int32_t> shortcut(const Complex* a, Complex* r) {
    return pole(a->im, a->re, &r->im, &r->re);
  }
};

}  // namespace
TMK_TIER_CLOSE

// Maximum errors of a part in ulp (V3, V4), 2.4 million arguments each: parts up to 10 and of all sizes, near
// branch points, axes and the unit circle, on the axes; against the C library's functions in extended
// precision.
//   Atan   single LA: 3.23   single HA: 0.76   double LA: 3.08   double HA: 0.71
//   Atanh  single LA: 3.17   single HA: 0.77   double LA: 3.01   double HA: 0.76
TMK_KERNELS(c, Atan, unary, LHL, inverse_tan)
TMK_KERNELS(z, Atan, unary, LHL, inverse_tan)
TMK_KERNELS(c, Atanh, unary, LHL, inverse_tanh)
TMK_KERNELS(z, Atanh, unary, LHL, inverse_tanh)
