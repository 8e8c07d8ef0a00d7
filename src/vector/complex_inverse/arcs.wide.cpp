// SPDX-License-Identifier: Apache-2.0
// Inverses of the sine and cosine of the circle and the hyperbola. For z = x + i y = sin(u + i v) in the
// first quadrant
//   x = sin u cosh v,   y = cos u sinh v
//   sinh^2 v - cos^2 u = q = x^2 + y^2 - 1,   sinh v cos u = y
// The larger one of sinh v and cos u is sqrt((w + |q|) / 2), w = |z^2 - 1| = sqrt(q^2 + 4 y^2), and y over
// it is the other one. From there nothing cancels:
//   v = log(sinh v + cosh v),   cosh v = sqrt(1 + sinh^2 v),   u = arctan(x / (cosh v cos u))
// and each part of the result is as good as q is compared with w. HA has q and what follows in pairs. These
// are the quantities of T. E. Hull, T. F. Fairgrieve, P. T. P. Tang, Implementing the complex arcsine and
// arccosine functions using exception handling, 1997; the branch cuts are those of W. Kahan, Branch cuts for
// complex elementary functions, 1987:
//   arccos z = pi/2 - arcsin z,   arsinh z = -i arcsin(i z),   arcosh z = +-i arccos z, with a part >= 0
#include "vector/complex_inverse/parts.hpp"
#include "vector/logarithm/log_of_pair.hpp"
#include "vector/toolbox/near.hpp"
#include "vector/toolbox/odd.hpp"

TMK_TIER_OPEN
namespace {

// x^2 + y^2 - 1 to within a few units of |z^2 - 1| 2^-106 at level HA, of |z^2 - 1| 2^-53 at others.
template <level Level, class Real>
batch_pair<Real> square_excess(const batch<Real>& x, const batch<Real>& y) {
  const batch<Real> one(Real(1));
  if constexpr (Level != level::ha) return exactly(multiply_add(y, y, (x - one) * (x + one)));
  const auto xx = two_prod(x, x), yy = two_prod(y, y);
  const auto less = two_sum(xx.high, -one), sum = two_sum(less.high, yy.high);
  return fast_two_sum(sum.high, sum.low + (less.low + (xx.low + yy.low)));
}

// sqrt(q^2 + (2 y)^2), q >= 0. Where squares leave the format one term is nothing next to the other.
template <level Level, class Real>
batch_pair<Real> hypotenuse(const batch_pair<Real>& q, const batch<Real>& y) {
  using value = batch<Real>;
  constexpr bool single = sizeof(Real) == 4;
  constexpr Real least = single ? Real(0x1p-48) : Real(0x1p-480), end = single ? Real(0x1p50) : Real(0x1p120);
  const value larger = maximum_or_second(q.high, y + y), smaller = minimum_or_second(q.high, y + y);
  const auto in_range = (larger >= value(least)) & (larger < value(end));
  if constexpr (Level != level::ha) {
    const value root = xsimd::sqrt(multiply_add(larger, larger, smaller * smaller));
    return exactly(xsimd::select(in_range, root, larger));
  } else {
    const auto square = two_prod(larger, larger), sum = add_product(square.high, smaller, smaller);
    const value lower = multiply_add(q.high + q.high, q.low, square.low + sum.low),
                root = xsimd::sqrt(sum.high);
    const value rest = (residual(sum.high, root, root) + lower) * rough_quotient<Real(0.5)>(root);
    return {xsimd::select(in_range, root, larger), xsimd::select(in_range, rest, value(Real(0)))};
  }
}

// Of |x| and |y|.
template <class Real, level Level>
struct elliptic {
  using value = batch<Real>;
  batch_pair<Real> sinh, cos, cosh;

  elliptic(const value& x, const value& y) {
    const auto q = square_excess<Level>(x, y);
    const value sign = sign_of(q.high);
    const batch_pair<Real> size{q.high ^ sign, q.low ^ sign};
    const auto larger = root_of_half(size, hypotenuse<Level>(size, y));
    const value least(std::numeric_limits<Real>::min());  // zero at a branch point, as y is
    const auto smaller = quotient<Level>(y, {maximum_or_second(least, larger.high), larger.low});
    const auto outside = q.high > value(Real(0));
    sinh = choose(outside, larger, smaller);
    cos = choose(outside, smaller, larger);
    set_cosh();
  }

  // Relative errors of second words do not count below 5 %.
  static batch_pair<Real> root_of_half(const batch_pair<Real>& q, const batch_pair<Real>& w) {
    const value half(Real(0.5));
    const auto sum = fast_two_sum(w.high, q.high);
    const value high = sum.high * half, root = xsimd::sqrt(high);
    if constexpr (Level != level::ha) return exactly(root);
    const value low = (sum.low + (w.low + q.low)) * half;
    return {root, (residual(high, root, root) + low) * rough_quotient<Real(0.5)>(root)};
  }
  static batch_pair<Real> choose(const lane_mask<Real>& which, const batch_pair<Real>& x,
                                 const batch_pair<Real>& y) {
    return {xsimd::select(which, x.high, y.high), xsimd::select(which, x.low, y.low)};
  }
  // A pair at every level: sinh v may be small next to it.
  void set_cosh() {
    const value s = sinh_above_tiny();
    const value one(Real(1));
    const auto square = two_prod(s, s);
    const auto sum = fast_two_sum(maximum_or_second(one, square.high), minimum_or_second(one, square.high));
    value low = sum.low + square.low;
    if constexpr (Level == level::ha) low = multiply_add(s + s, sinh.low, low);
    cosh = near_root<Real>(sum.high).refined().pair({sum.high, low});
  }
  value sinh_above_tiny() const { return maximum_or_second(value(tiny<Real> * tiny<Real>), sinh.high); }

  value v() const {
    const auto sum = fast_two_sum(cosh.high, sinh_above_tiny());
    const value small = Level == level::ha ? sinh.high + sinh.low : sinh.high;
    value low = sum.low + cosh.low;
    if constexpr (Level == level::ha) low += sinh.low;
    return xsimd::select(sinh.high < value(tiny<Real>), small, log_of_pair<Level>(sum.high, low));
  }
  batch_pair<Real> cosh_cos() const {
    if constexpr (Level != level::ha) return exactly(cosh.high * cos.high);
    const auto product = two_prod(cosh.high, cos.high);
    return {product.high, product.low + multiply_add(cosh.high, cos.low, cosh.low * cos.high)};
  }
};

enum class arc { sine, cosine, hyperbolic_cosine };

template <arc Arc>
struct arc_function {
  // From v and a vector whose angle to the y axis is u, without the signs of z.
  template <level Level, class Real>
  static complex_value<Real> from(const complex_value<Real>& z, const batch<Real>& x,
                                  const batch_pair<Real>& y, const batch<Real>& v) {
    if constexpr (Arc == arc::sine) {
      return {angle_of<Level>(exactly(x), y) | sign_of(z.re), v | sign_of(z.im)};
    } else {
      const batch<Real> angle = angle_of<Level>(y, exactly(x | sign_of(z.re)));
      if constexpr (Arc == arc::cosine) return {angle, v | sign_of(z.im ^ batch<Real>(Real(-0.0)))};
      return {v, angle | sign_of(z.im)};
    }
  }

  template <level Level, class Real>
  static complex_value<Real> of(const complex_value<Real>& z) {
    const batch<Real> x = xsimd::abs(z.re);
    const elliptic<Real, Level> point(x, xsimd::abs(z.im));
    return from<Level>(z, x, point.cosh_cos(), point.v());
  }
  // cosh v is |z| and so is sinh v: v = log(2 |z|).
  template <level Level, class Real>
  static complex_value<Real> of_far(const complex_value<Real>& z) {
    using value = batch<Real>;
    const value x = scaled_far(z.re, z.im), y = scaled_far(z.im, z.re);
    auto argument = split_for_log(xsimd::sqrt(multiply_add(x, x, y * y)));
    argument.k += value(1 - far_scale<Real>);
    const value v = log_of<Real, log_base::e, Level>(argument);
    const value infinity(std::numeric_limits<Real>::infinity());
    const auto infinite = (xsimd::abs(z.re) == infinity) | (xsimd::abs(z.im) == infinity);
    return from<Level>(z, x, exactly(y), xsimd::select(infinite, infinity, v));
  }
  template <class Real>
  static complex_value<Real> of_tiny(const complex_value<Real>& z) {
    if constexpr (Arc == arc::sine) return z;
    const batch<Real> right(angles<Real, angle_unit::radians>::right);
    if constexpr (Arc == arc::cosine) return {right, z.im ^ batch<Real>(Real(-0.0))};
    return {xsimd::abs(z.im), right | sign_of(z.im)};
  }
  template <class Real>
  static complex_value<Real> of_nan(const complex_value<Real>& z) {
    if constexpr (Arc == arc::sine) return nan_unless_zero(z, z.re);
    const auto r = nan_unless_zero(z, batch<Real>(angles<Real, angle_unit::radians>::right));
    return Arc == arc::cosine ? r : swapped(r);
  }
  template <class Real>
  static lane_mask<Real> good(const complex_value<Real>&, const complex_value<Real>&) {
    return lane_mask<Real>(true);
  }
  // The angle is all of what the smaller part leaves.
  template <class Real>
  static lane_mask<Real> far_good(const complex_value<Real>& z) {
    constexpr Real least = sizeof(Real) == 4 ? Real(0x1p-40) : Real(0x1p-400);
    const batch<Real> zero(Real(0)), x = xsimd::abs(z.re), y = xsimd::abs(z.im);
    const batch<Real> smaller = minimum_or_second(x, y);
    const batch<Real> larger = maximum_or_second(x, y);
    return (smaller == zero) | (smaller >= batch<Real>(least)) |
           (larger == batch<Real>(std::numeric_limits<Real>::infinity()));
  }
};

template <class Real, level Level>
using arcsine = complex_inverse<Real, Level, arc_function<arc::sine>>;
template <class Real, level Level>
using arccosine = complex_inverse<Real, Level, arc_function<arc::cosine>>;
template <class Real, level Level>
using inverse_sinh = complex_inverse<Real, Level, turned<arc_function<arc::sine>>>;
template <class Real, level Level>
using inverse_cosh = complex_inverse<Real, Level, arc_function<arc::hyperbolic_cosine>>;

}  // namespace
TMK_TIER_CLOSE

// Maximum errors of a part in ulp (V3, V4), 2.4 million arguments each: parts up to 10 and of all sizes, near
// branch points, axes and the unit circle, on the axes; against the C library's functions in extended
// precision.
//   Asin   single LA: 4.07   single HA: 0.73   double LA: 3.62   double HA: 0.74
//   Acos   single LA: 3.63   single HA: 0.73   double LA: 3.59   double HA: 0.73
//   Asinh  single LA: 4.14   single HA: 0.75   double LA: 3.80   double HA: 0.69
//   Acosh  single LA: 3.61   single HA: 0.76   double LA: 3.65   double HA: 0.72
TMK_KERNELS(c, Asin, unary, LHL, arcsine)
TMK_KERNELS(z, Asin, unary, LHL, arcsine)
TMK_KERNELS(c, Acos, unary, LHL, arccosine)
TMK_KERNELS(z, Acos, unary, LHL, arccosine)
TMK_KERNELS(c, Asinh, unary, LHL, inverse_sinh)
TMK_KERNELS(z, Asinh, unary, LHL, inverse_sinh)
TMK_KERNELS(c, Acosh, unary, LHL, inverse_cosh)
TMK_KERNELS(z, Acosh, unary, LHL, inverse_cosh)
