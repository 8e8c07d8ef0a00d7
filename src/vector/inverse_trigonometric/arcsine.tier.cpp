// SPDX-License-Identifier: Apache-2.0
// Arcsines and arccosines, in radians and in half turns.
//   arcsin(x) = x + x^3 p(x^2),                               |x| <= 1/2
//   arcsin(x) = pi/2 - 2 arcsin(s),   s = sqrt((1 - |x|) / 2),  beyond, where s <= 1/2
// (1 - |x|) / 2 is exact. HA adds what the root leaves; the cubic term is below 1/20 of the result, and
// alone is rounded more than once.
#include "vector/inverse_trigonometric/angle.hpp"
#include "vector/toolbox/lane_tests.hpp"

TMK_TIER_OPEN
namespace {

// arcsin(head) + lost, the acute angle of the unit vector (x, y) to the y axis where it is steep, |x| <= 1/2,
// or else to the x axis; arcsin(head) = head + cube p.
template <class Real, level Level, angle_unit Unit>
struct acute_angle {
  using value = batch<Real>;
  using constants = angles<Real, Unit>;
  using series = arcsine_series<Real, Unit>;
  lane_mask<Real> steep;
  value head, lost, cube, p;

  explicit acute_angle(const value& x) {
    const value half(Real(0.5)), size = xsimd::abs(x);
    steep = size <= half;
    const value rest = negative_multiply_add(half, size, half), root = xsimd::sqrt(rest);
    head = xsimd::select(steep, size, root + root);
    // The quotient is best for roots next to 1/2, where the cubic term takes most of the error.
    constexpr Real factor = Real(1.05) * constants::unit;
    if constexpr (Level == level::ha)
      lost = xsimd::select(steep, value(Real(0)), residual(rest, root, root) * rough_quotient<factor>(root));
    const value z = xsimd::select(steep, size * size, rest);
    cube = head * z;
    if constexpr (Level == level::ha)
      p = polynomial(z, series::ha);
    else if constexpr (Level == level::la)
      p = polynomial(z, series::la);
    else
      p = polynomial(z, series::ep);
  }

  // |turn + rest + this angle|, where `turn` consists of right angles and `rest` is what it lacks.
  value turned(const value& turn, const value& rest) const {
    if constexpr (Level == level::ep) {
      return xsimd::abs(multiply_add(cube, p, multiply_add(head, value(constants::unit), turn)));
    } else if constexpr (Level == level::la && Unit == angle_unit::radians) {
      return xsimd::abs(turn + (head + multiply_add(cube, p, rest)));
    } else {
      const auto sum = sum_in_unit<Unit>(turn, head);
      value low = sum.low;
      if constexpr (constants::right_low != 0) low += rest;
      if constexpr (Level == level::ha) low += lost;
      return xsimd::abs(sum.high + multiply_add(cube, p, low));
    }
  }
};

template <class Real, level Level, angle_unit Unit>
struct arcsine : description<Real> {
  using value = batch<Real>;
  using constants = angles<Real, Unit>;

  static value fast(const value& x) {
    const acute_angle<Real, Level, Unit> angle(x);
    const auto unless_steep = [&](Real turn) {
      return xsimd::select(angle.steep, value(Real(0)), value(turn));
    };
    return angle.turned(unless_steep(-constants::right_high), unless_steep(-constants::right_low)) |
           sign_of(x);
  }
  static constexpr bool may_vanish = Level == level::ha && Unit == angle_unit::half_turns;
  static lane_mask<Real> flagged(const value& x, const value&) {
    const auto inside = xsimd::abs(x) <= value(Real(1));
    return may_vanish ? (!inside) | is_tiny(x) : !inside;
  }
  static lane_mask<Real> patch(const value& x, value& y) {
    settle<may_vanish>(x, y);
    return xsimd::abs(x) > value(Real(1));
  }
};

template <class Real, level Level, angle_unit Unit>
struct arccosine : description<Real> {
  using value = batch<Real>;
  using constants = angles<Real, Unit>;

  static value fast(const value& x) {
    const acute_angle<Real, Level, Unit> angle(x);
    const value j = right_angles(angle.steep, x);
    return angle.turned(j * value(constants::right_high), j * value(constants::right_low));
  }
  static lane_mask<Real> flagged(const value& x, const value&) { return !(xsimd::abs(x) <= value(Real(1))); }
};

template <class Real, level Level>
using arcsine_in_radians = arcsine<Real, Level, angle_unit::radians>;
template <class Real, level Level>
using arcsine_in_half_turns = arcsine<Real, Level, angle_unit::half_turns>;
template <class Real, level Level>
using arccosine_in_radians = arccosine<Real, Level, angle_unit::radians>;
template <class Real, level Level>
using arccosine_in_half_turns = arccosine<Real, Level, angle_unit::half_turns>;

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Asin, unary, LHE, arcsine_in_radians)
TMK_KERNELS(d, Asin, unary, LHL, arcsine_in_radians)
TMK_KERNELS(s, Acos, unary, LHE, arccosine_in_radians)
TMK_KERNELS(d, Acos, unary, LHL, arccosine_in_radians)
TMK_REAL_KERNELS(Asinpi, unary, LHE, arcsine_in_half_turns)
TMK_REAL_KERNELS(Acospi, unary, LHE, arccosine_in_half_turns)
