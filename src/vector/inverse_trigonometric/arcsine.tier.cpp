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

// The acute angle of the unit vector (x, y) to the y axis where it is steep, |x| <= 1/2, or else to the x
// axis, with the sign Flat: arcsin(head) + residual quotient, arcsin(head) = head + cube p.
template <class Real, level Level, angle_unit Unit, int Flat>
struct acute_angle {
  using value = batch<Real>;
  using constants = angles<Real, Unit>;
  using series = arcsine_series<Real, Unit>;
  lane_mask<Real> steep;
  value head, root_residual, quotient, cube, p;

  explicit acute_angle(const value& x) {
    const value half(Real(0.5)), size = xsimd::abs(x);
    steep = size <= half;
    const value rest = negative_multiply_add(half, size, half), root = xsimd::sqrt(rest);
    const value z = xsimd::select(steep, size * size, rest);
    head = xsimd::select(steep, size, root * value(Real(2 * Flat)));
    cube = head * z;
    if constexpr (Level == level::ha) {
      root_residual = residual(rest, root, root);
      // The arcsine's slope over the sine is 1 to 1.05.
      constexpr Real factor = Real(1.05 * Flat) * constants::unit;
      quotient = rough_quotient<factor>(root);
      p = polynomial(z, series::ha);
    } else if constexpr (Level == level::la) {
      p = polynomial(z, series::la);
    } else {
      p = polynomial(z, series::ep);
    }
  }

  value if_flat(const value& y) const { return xsimd::select(steep, value(Real(0)), y); }
  // y and what the head lacks of a flat angle.
  value plus_lost(const value& y) const {
    if constexpr (Level != level::ha) return y;
    return multiply_add(root_residual, quotient, y);
  }

  // turn + rest + this angle, where `turn` consists of right angles and `rest` is small.
  value turned(const value& turn, const value& rest) const {
    if constexpr (Level == level::ep)
      return multiply_add(cube, p, multiply_add(head, value(constants::unit), turn));
    if constexpr (Level == level::la && Unit == angle_unit::radians)
      return turn + (head + multiply_add(cube, p, rest));
    const auto sum = sum_in_unit<Unit>(turn, head);
    return sum.high + multiply_add(cube, p, sum.low + rest);
  }
};

template <class Real, level Level, angle_unit Unit>
struct arcsine : description<Real> {
  using value = batch<Real>;
  using constants = angles<Real, Unit>;

  static value fast(const value& x) {
    const acute_angle<Real, Level, Unit, -1> angle(x);
    const value turn = angle.if_flat(value(constants::right_high));
    return angle.turned(turn, angle.if_flat(angle.plus_lost(value(constants::right_low)))) | sign_of(x);
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
    const acute_angle<Real, Level, Unit, 1> angle(x);
    const value j = right_angles(angle.steep, x), lost = angle.if_flat(angle.plus_lost(value(Real(0))));
    const value turn = j * value(constants::right_high);
    if constexpr (constants::right_low == 0) return xsimd::abs(angle.turned(turn, lost));
    return xsimd::abs(angle.turned(turn, multiply_add(j, value(constants::right_low), lost)));
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
