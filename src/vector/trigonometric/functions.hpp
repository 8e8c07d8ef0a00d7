// SPDX-License-Identifier: Apache-2.0
// The functions of angles: sine, cosine, both, and tangent, in each unit.
//
// Doubles at level HA go by points, at the others by lines or quadrants. Singles at level HA are computed in
// double precision, which leaves a few thousandths of a unit beyond the last rounding. Large angles of all
// levels are brought below two half turns first; those of singles are computed as at HA.
#pragma once

#include "vector/trigonometric/core.hpp"
#include "vector/trigonometric/large.hpp"

TMK_TIER_OPEN
namespace {

inline f32 joined(const f64& low, const f64& high) { return narrow({low, high}); }
template <class Values>
pack<f32, f32> joined(const Values& low, const Values& high) {
  return {joined(low.first, high.first), joined(low.second, high.second)};
}

// A formula has
//   of<Real, Level>(angle, x)   the results for an angle in registers of doubles or, but for singles at HA,
//   of Real;
//                               x is the argument, whose sign zeros may have
//   results<Value>              one Value or a pack of two
//   odd                         whether a tiny angle is its own value, but for the unit
template <class Formula, class Real, level Level, angle_unit Unit>
struct of_angle : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4, exact_unit = Unit != angle_unit::radians;
  static constexpr bool in_doubles = single && Level == level::ha;
  // pi times a subnormal number may be normal.
  static constexpr auto sse = exact_unit ? sse_control::exact : sse_control::by_mode;
  // The rest of a tiny angle in an exact unit has no second part.
  static constexpr bool has_tiny = !single && Level == level::ha && exact_unit && Formula::odd;
  static constexpr Real tiny = Real(0x1p-960), infinity = std::numeric_limits<Real>::infinity();
  static constexpr Real limit = exact_unit
                                    ? (single && !in_doubles ? Real(0x1p20) : Real(0x1p40))
                                    : (is_baseline && single && !in_doubles ? Real(0x1p13) : Real(0x1p20));
  template <class R>
  using angle = std::conditional_t<exact_unit, exact_angle<R, Unit>, radians<R>>;

  static auto fast(const value& x) {
    const auto of = [](const auto& v, auto in) { return Formula::template of<Real, Level>(in, v); };
    if constexpr (in_doubles)
      return with_zeros(x, by_halves(x, [&](const f64& v) { return of(v, angle<double>{v}); }));
    else
      return with_zeros(x, of(x, angle<Real>{x}));
  }
  static lane_mask<Real> flagged(const value& x, const value& y, const value& = value()) {
    const value magnitude = xsimd::abs(x);
    lane_mask<Real> flags = !(magnitude < value(limit));
    if constexpr (has_tiny) flags = flags | is_tiny(x);
    if constexpr (exact_unit && Formula::has_poles) flags = flags | not_finite(y);
    return flags;
  }
  static lane_mask<Real> patch(const value& x, typename Formula::template results<value>& y) {
    const auto is_large = xsimd::abs(x) >= value(limit), nan = xsimd::isnan(x);
    const auto large = as_pack(with_zeros(x, beyond(x)));
    auto patched = as_pack(y);
    large.zip(patched, [&](const value& there, value& here) {
      here = xsimd::select(nan, x + x, xsimd::select(is_large, there, here));
    });
    lane_mask<Real> rest = xsimd::isinf(x);
    if constexpr (has_tiny) rest = rest | patch_tiny(x, patched.first);
    if constexpr (exact_unit && Formula::has_poles)
      rest = rest | (!(xsimd::abs(patched.first) < value(infinity)) & !nan);
    if constexpr (patched.size == 1)
      y = patched.first;
    else
      y = patched;
    return rest;
  }

 private:
  // Zeros with the sign of x. Radians have none but 0.
  static value with_zeros(const value& x, const value& y) {
    if constexpr (!Formula::odd || (Formula::has_poles && exact_unit))
      return y;
    else if constexpr (exact_unit)
      return zero_signed_as(x, y);
    else
      return xsimd::select(x == value(Real(0)), x, y);
  }
  static pack<value, value> with_zeros(const value& x, const pack<value, value>& y) {
    return {with_zeros(x, y.first), y.second};
  }
  template <class F>
  static auto by_halves(const f32& x, const F& f) {
    const widened halves = widen(x);
    return joined(f(halves.low), f(halves.high));
  }
  static auto beyond(const value& x) {
    if constexpr (single)
      return by_halves(x, [](const f64& v) { return beyond_double(v); });
    else
      return beyond_double(x);
  }
  static auto beyond_double(const f64& x) {
    constexpr level at = single ? level::ha : Level;
    if constexpr (exact_unit)
      return Formula::template of<Real, at>(angle<double>{smaller_angle(angle<double>{x})}, x);
    else if constexpr (single)
      return Formula::template of<Real, at>(half_turns_of_single(x), x);
    else
      return Formula::template of<Real, at>(half_turns_of(x), x);
  }
  static lane_mask<Real> is_tiny(const value& x) {
    return (xsimd::abs(x) < value(tiny)) & (x != value(Real(0)));
  }
  // Scaled up and down; what comes out below the normal numbers would be rounded twice.
  static lane_mask<Real> patch_tiny(const value& x, value& y) {
    constexpr const auto& unit = unit_parts<Real, Unit == angle_unit::degrees>();
    const auto flags = is_tiny(x);
    const value scaled =
        multiply(batch_pair<Real>{value(unit[0]), value(unit[1])}, x * value(Real(0x1p200))).high *
        value(Real(0x1p-200));
    y = xsimd::select(flags, scaled, y);
    return flags & (xsimd::abs(scaled) < value(std::numeric_limits<Real>::min()));
  }
};

// The polynomials of each precision and level. Singles at HA, in double precision, take those of doubles at
// EP.
template <class Real, level Level>
struct series;
#define TMK_SERIES(Real, Level, line_name, quadrant_name)                                      \
  template <>                                                                                  \
  struct series<Real, Level> {                                                                 \
    static constexpr const auto &line = trigonometric_data::line_##line_name,                  \
                                &sine = trigonometric_data::quadrant_sine_##quadrant_name,     \
                                &cosine = trigonometric_data::quadrant_cosine_##quadrant_name; \
  };
TMK_SERIES(float, level::la, single_la, single_la)
TMK_SERIES(float, level::ha, single_ha, double_ep)
TMK_SERIES(float, level::ep, single_ep, single_ep)
TMK_SERIES(double, level::la, double_la, double_la)
TMK_SERIES(double, level::ep, double_ep, double_ep)
#undef TMK_SERIES

template <class Real, level Level>
constexpr bool by_points = sizeof(Real) == 8 && Level == level::ha;

template <bool Cosine>
struct sine_formula {
  template <class Value>
  using results = Value;
  static constexpr bool odd = !Cosine, has_poles = false;

  template <class Real, level Level, class Angle, class Value>
  static Value of(const Angle& angle, const Value&) {
    Value y;
    if constexpr (by_points<Real, Level>) {
      const point near(angle);
      const auto sum = Cosine ? near.cosine() : near.sine();
      y = (sum.high + sum.low) ^ near.sign;
    } else {
      y = line<Cosine>(angle, series<Real, Level>::line);
    }
    if constexpr (Cosine && Angle::has_zeros)
      return y + Value(0);  // zeros of the cosine are positive
    else
      return y;
  }
};

struct sine_and_cosine_formula {
  template <class Value>
  using results = pack<Value, Value>;
  static constexpr bool odd = true, has_poles = false;

  template <class Real, level Level, class Angle, class Value>
  static pack<Value, Value> of(const Angle& angle, const Value&) {
    if constexpr (by_points<Real, Level>) {
      const point near(angle);
      const auto sine = near.sine(), cosine = near.cosine();
      return {(sine.high + sine.low) ^ near.sign, (cosine.high + cosine.low) ^ near.sign};
    } else {
      const quadrant<Value> q(angle, series<Real, Level>::sine, series<Real, Level>::cosine);
      return {q.sine ^ q.sine_sign, q.cosine ^ q.cosine_sign};
    }
  }
};

struct tangent_formula {
  template <class Value>
  using results = Value;
  static constexpr bool odd = true, has_poles = true;

  template <class Real, level Level, class Angle, class Value>
  static Value of(const Angle& angle, const Value& x) {
    if constexpr (by_points<Real, Level>) {
      const point near(angle);
      const auto sine = near.sine(), cosine = near.cosine();
      const auto over = fast_two_sum(sine.high, sine.low), under = fast_two_sum(cosine.high, cosine.low);
      // The quotient and what it leaves of the sine, with one division. Both have the sign of the half turn.
      const Value inverse = Value(1) / under.high, quotient = over.high * inverse;
      const Value rest =
          residual(over.high, quotient, under.high) + negative_multiply_add(quotient, under.low, over.low);
      const Value y = multiply_add(rest, inverse, quotient);
      if constexpr (!Angle::has_zeros) return y;
      return xsimd::select(over.high == Value(0), signs(x ^ under.high ^ near.sign), y);
    } else {
      const quadrant<Value> q(angle, series<Real, Level>::sine, series<Real, Level>::cosine);
      if constexpr (!Angle::has_zeros) return (q.sine / q.cosine) ^ (q.sine_sign ^ q.cosine_sign);
      return zero_signed_as(x, q.sine ^ q.sine_sign) / (q.cosine ^ q.cosine_sign);
    }
  }
};

template <class Real, level Level, angle_unit Unit>
struct sine : of_angle<sine_formula<false>, Real, Level, Unit> {};
template <class Real, level Level, angle_unit Unit>
struct cosine : of_angle<sine_formula<true>, Real, Level, Unit> {};
template <class Real, level Level, angle_unit Unit>
struct tangent : of_angle<tangent_formula, Real, Level, Unit> {};

}  // namespace
TMK_TIER_CLOSE
