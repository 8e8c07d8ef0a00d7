// SPDX-License-Identifier: Apache-2.0
// The functions of angles: sine, cosine, both, and tangent, in each unit.
//
// Level HA, the pair and the tangent go by points, the others by lines. On the baseline, which has no fused
// product, singles at HA, and tangents at LA, are computed in double precision, which leaves a few hundredths
// of a unit beyond the last rounding; so are large angles of singles at all levels, which are brought below
// two half turns first.
#pragma once

#include "vector/toolbox/scaled_back.hpp"
#include "vector/toolbox/settled.hpp"
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
  static constexpr bool in_doubles =
      is_baseline && single && (Level == level::ha || (Formula::has_poles && Level == level::la));
  // pi times a subnormal number may be normal.
  static constexpr auto sse = exact_unit ? sse_control::exact : sse_control::by_mode;
  // Where pi times the argument, or what is left of it, may be subnormal.
  static constexpr bool has_tiny = !in_doubles && exact_unit && Formula::odd;
  static constexpr Real tiny = single ? Real(0x1p-80) : Real(0x1p-900),
                        infinity = std::numeric_limits<Real>::infinity();
  static constexpr Real limit = exact_unit ? (single && !in_doubles ? Real(0x1p18) : Real(0x1p40))
                                           : (!single || in_doubles ? Real(0x1p20)
                                              : is_baseline         ? Real(0x1.8p11)
                                                                    : Real(0x1p17));
  template <class R>
  using angle = std::conditional_t<exact_unit, exact_angle<R, Unit>, radians<R, in_doubles>>;

  static auto fast(const value& x) {
    const auto of = [](const auto& v, auto in) { return Formula::template of<Real, Level>(in, v); };
    if constexpr (in_doubles)
      return with_zeros(x, by_halves(x, [&](const f64& v) { return of(v, angle<double>{v}); }));
    else
      return with_zeros(x, of(x, angle<Real>{zero_if_apart(x)}));
  }
  static lane_mask<Real> flagged(const value& x, const value& y, const value& = value()) {
    const value magnitude = xsimd::abs(x);
    lane_mask<Real> flags = !(magnitude < value(limit));
    if constexpr (has_tiny) flags = flags | (zero_if_apart(x) != x);
    if constexpr (exact_unit && Formula::has_poles) flags = flags | not_finite(y);
    return flags;
  }
  static lane_mask<Real> patch(const value& x, typename Formula::template results<value>& y) {
    const value magnitude = xsimd::abs(x);
    const auto nan = xsimd::isnan(x), is_large = (magnitude >= value(limit)) & (magnitude < value(infinity));
    auto patched = as_pack(y);
    if (lane_bits<Real>(is_large) != 0) {
      const auto large = as_pack(with_zeros(x, beyond(x)));
      large.zip(patched,
                [&](const value& there, value& here) { here = xsimd::select(is_large, there, here); });
    }
    if constexpr (has_tiny)
      if (const auto is_tiny = apart(x); lane_bits<Real>(is_tiny) != 0)
        patched.first = xsimd::select(is_tiny, of_tiny(x), patched.first);
    const value quieted = x + x;
    patched.zip(patched, [&](const value&, value& here) { here = xsimd::select(nan, quieted, here); });
    lane_mask<Real> rest = xsimd::isinf(x);
    if constexpr (exact_unit && Formula::has_poles)
      rest = rest | !((xsimd::abs(patched.first) < value(infinity)) | nan);
    if constexpr (patched.size == 1)
      y = patched.first;
    else
      y = patched;
    return rest;
  }
  template <class... Results>
  static std::optional<int32_t> shortcut(const Real* a, Results*... r) {
    if (!std::isinf(*a)) return std::nullopt;
    return (undefined(r) | ...);
  }

 private:
  // Lanes that the formula is spared: radians that are their own sine, and tiny angles in other units.
  static constexpr bool has_apart = !in_doubles || !exact_unit;
  static lane_mask<Real> apart(const value& x) {
    return xsimd::abs(x) < value(exact_unit ? tiny : negligible<Real>);
  }
  static value zero_if_apart(const value& x) {
    return has_apart ? xsimd::select(apart(x), value(Real(0)), x) : x;
  }
  // Zeros with the sign of x. Radians have none but 0.
  static value with_zeros(const value& x, const value& y) {
    if constexpr (!Formula::odd || (Formula::has_poles && exact_unit))
      return y;
    else if constexpr (exact_unit)
      return zero_signed_as(x, y);
    else
      return xsimd::select(apart(x), x, y);
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
  // Tiny angles, zero among them, are their own sine and tangent, but for the unit.
  static value of_tiny(const value& x) {
    constexpr const auto& unit = unit_parts<Real, Unit == angle_unit::degrees>();
    constexpr Real scale = single ? Real(0x1p100) : Real(0x1p200);
    const value scaled = scaled_up<scale>(xsimd::min(xsimd::abs(x), value(tiny)));
    const auto product = multiply(batch_pair<Real>{value(unit[0]), value(unit[1])}, scaled);
    return scaled_back<scale>(product.high, product.low) | signs(x);
  }
};

// The polynomials of each precision and level, by points and by lines. Singles at HA, where they are computed
// in double precision, take those of doubles at EP.
template <class Real, level Level>
struct series;
#define TMK_SERIES(Real, Level, point_name, line_name)                                   \
  template <>                                                                            \
  struct series<Real, Level> {                                                           \
    static constexpr const auto& sine = trigonometric_data::point_sine_##point_name;     \
    static constexpr const auto& cosine = trigonometric_data::point_cosine_##point_name; \
    static constexpr const auto& line = trigonometric_data::line_##line_name;            \
  };
TMK_SERIES(float, level::la, single, single_la)
TMK_SERIES(float, level::ep, single_ep, single_ep)
TMK_SERIES(double, level::la, double, double_la)
TMK_SERIES(double, level::ep, double_ep, double_ep)
#undef TMK_SERIES
struct series_of_singles : series<double, level::ep> {
  static constexpr const auto& line = trigonometric_data::line_single_ha;
};

// The ways for an angle in registers of `Value`.
template <class Real, level Level, class Value>
struct way {
  static constexpr bool widened = sizeof(Real) != sizeof(typename Value::value_type);
  static constexpr bool exact = Level == level::ha && !widened;
  // Without fused products two results in one part each have too many roundings.
  static constexpr bool needs_pairs = exact || (is_baseline && !widened && Level == level::la);
  using real = typename Value::value_type;
  using coefficients =
      std::conditional_t<widened, series_of_singles, series<real, exact ? level::la : Level>>;

  template <class Angle>
  static by_point<real, exact> next_to(const Angle& angle) {
    return {angle, coefficients::sine, coefficients::cosine};
  }
};

template <class Real>
batch<Real> sum(const batch_pair<Real>& x) {
  return x.high + x.low;
}

template <bool Cosine>
struct sine_formula {
  template <class Value>
  using results = Value;
  static constexpr bool odd = !Cosine, has_poles = false;

  template <class Real, level Level, class Angle, class Value>
  static Value of(const Angle& angle, const Value&) {
    using how = way<Real, Level, Value>;
    Value y;
    if constexpr (how::exact) {
      const auto near = how::next_to(angle);
      y = (Cosine ? sum(near.cosine()) : sum(near.sine())) ^ near.at.sign();
    } else {
      y = line<Cosine>(angle, how::coefficients::line);
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
    using how = way<Real, Level, Value>;
    const auto near = how::next_to(angle);
    const Value sign = near.at.sign();
    if constexpr (how::needs_pairs) return {sum(near.sine()) ^ sign, sum(near.cosine()) ^ sign};
    return {near.sine_in_one() ^ sign, near.cosine_in_one() ^ sign};
  }
};

struct tangent_formula {
  template <class Value>
  using results = Value;
  static constexpr bool odd = true, has_poles = true;

  // Both parts have the sign of the half turn.
  template <class Real, level Level, class Angle, class Value>
  static Value of(const Angle& angle, const Value& x) {
    using how = way<Real, Level, Value>;
    const auto near = how::next_to(angle);
    const auto [y, over, under] = [&] {
      if constexpr (how::exact || (!how::widened && Level == level::la))
        return quotient(near.sine(), near.cosine());
      else
        return quotient(near.sine_in_one(), near.cosine_in_one());
    }();
    if constexpr (!Angle::has_zeros) return y;
    return xsimd::select(over == Value(0), signs(x ^ under ^ near.at.sign()), y);
  }

 private:
  template <class Value>
  struct parts {
    Value quotient, over, under;
  };
  template <class Real>
  static parts<batch<Real>> quotient(const batch<Real>& sine, const batch<Real>& cosine) {
    return {sine / cosine, sine, cosine};
  }
  // The quotient and what it leaves of the sine, with one division. Without fused products the quotient is
  // cut to half its bits, so that its products with the parts of the divisor are exact.
  template <class Real>
  static parts<batch<Real>> quotient(const batch_pair<Real>& sine, const batch_pair<Real>& cosine) {
    const auto over = fast_two_sum(sine.high, sine.low), under = fast_two_sum(cosine.high, cosine.low);
    const auto inverse = batch<Real>(Real(1)) / under.high;
    batch<Real> y = over.high * inverse, left;
    if constexpr (is_baseline) {
      y = split(y).high;
      const auto divisor = split(under.high);
      left = (over.high - y * divisor.high) - y * divisor.low;
    } else {
      left = negative_multiply_add(y, under.high, over.high);
    }
    return {multiply_add(left + negative_multiply_add(y, under.low, over.low), inverse, y), over.high,
            under.high};
  }
};

// Maximum errors in ulp (LA, HA, EP on W7; on V3 and V4), by tmk-accuracy <function>, which climbs from the
// worst of 2^16 samples over all numbers of the format. On the baseline LA misses its aim of 2 units by a
// little in exact units. There the tangents of singles at LA are HA's, on the wide tiers all tangents at LA.
//   Sin, Cos      single  1.907, 0.5005, 2477; 2.000, 0.5750, 2476
//                 double  0.5972, 0.5972, 6.4e7; 1.909, 0.5798, 6.4e7
//   SinCos        single  1.474, 0.5808, LA; 1.447, 0.5841, LA
//                 double  1.526, 0.6050, 4.3e7; 1.478, 0.5882, 4.3e7
//   Tan           single  HA, 0.5381, LA; HA, 0.5552, 155
//                 double  1.584, 0.6394, 2.0e7; HA, 0.6394, 2.0e7
//   Sinpi, Cospi  single  2.006, 0.5005, 2476; 2.000, 0.5737, 2476
//                 double  2.055, 0.6115, 6.4e7; 1.927, 0.5890, 6.4e7
//   Tanpi         single  HA, 0.5381, 154; HA, 0.5441, 154
//                 double  2.310, 0.5906, 2.0e7; HA, 0.5656, 2.0e7
//   Sind, Cosd    single  1.976, 0.5005, 2477; 2.000, 0.5787, 2476
//                 double  2.091, 0.6245, 6.4e7; 1.933, 0.5913, 6.4e7
//   Tand          single  HA, 0.5380, 155; HA, 0.5506, 155
//                 double  2.133, 0.5895, 2.0e7; HA, 0.5638, 2.0e7
template <class Real, level Level, angle_unit Unit>
struct sine : of_angle<sine_formula<false>, Real, Level, Unit> {};
template <class Real, level Level, angle_unit Unit>
struct cosine : of_angle<sine_formula<true>, Real, Level, Unit> {};
template <class Real, level Level, angle_unit Unit>
struct tangent : of_angle<tangent_formula, Real, Level, Unit> {};

}  // namespace
TMK_TIER_CLOSE
