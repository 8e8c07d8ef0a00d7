// SPDX-License-Identifier: Apache-2.0
// What the complex exponential, its relatives and the tangents are products and quotients of: of z = a + ib
// the sine and cosine of the angle b. A factor of a double at HA is a pair, else one word. A product of two
// pairs is rounded once; what their words lack is below a tenth of a unit each.
#pragma once

#include <cmath>
#include <optional>
#include <type_traits>

#include "vector/toolbox/lane_tests.hpp"
#include "vector/trigonometric/functions.hpp"

TMK_TIER_OPEN
namespace {

// What a level computes in. Singles at HA are computed in double precision, to half its bits, where no
// product is fused.
template <class Real, level Level>
struct computation {
  using real = Real;
  static constexpr level at = Level;
};
struct in_doubles {
  using real = double;
  static constexpr level at = level::ep;
};
template <class Real, level Level>
using chosen_computation = std::conditional_t<is_baseline && sizeof(Real) == 4 && Level == level::ha,
                                              in_doubles, computation<Real, Level>>;

template <class Real>
batch_pair<Real> normalized(const batch_pair<Real>& x) {
  return fast_two_sum(x.high, x.low);
}

// x y, rounded once, where one of the pairs is normalized, y on the baseline. Zeros have the sign of the
// product.
template <class Real>
batch<Real> product(const batch<Real>& x, const batch<Real>& y) {
  return x * y;
}
template <class Real>
batch<Real> product(const batch_pair<Real>& x, const batch_pair<Real>& y) {
  batch<Real> rounded;
  if constexpr (is_baseline) {
    const auto a = split(x.high), b = split(y.high);
    const batch<Real> a_low = a.low + x.low, b_low = b.low + y.low;
    rounded = a.high * b.high + (a.high * b_low + a_low * y.high);
  } else {
    rounded = multiply_add(x.high, y.high, multiply_add(x.low, y.high, x.high * y.low));
  }
  return rounded | signs(x.high ^ y.high);
}

// Sine and cosine but for a common sign.
template <class Factor, class Real>
struct rotation {
  Factor sine, cosine;
  batch<Real> sign;
};

// Angles that are their own sine, zeros among them, are spared the formula, which sees `counted` for them.
template <class Real>
lane_mask<Real> is_own_sine(const batch<Real>& b) {
  return xsimd::abs(b) < batch<Real>(negligible<Real>);
}
template <class Real>
batch<Real> counted(const batch<Real>& b) {
  return xsimd::select(is_own_sine(b), batch<Real>(Real(0)), b);
}

// Of an angle that is `counted(b)`.
template <level Level, class Real, class Angle>
auto rotation_by(const Angle& angle, const batch<Real>& b) {
  using how = way<Real, Level, batch<Real>>;
  const auto near = how::next_to(angle);
  const auto own = is_own_sine(b);
  if constexpr (how::exact) {
    const auto sine = near.sine();
    return rotation<batch_pair<Real>, Real>{
        {xsimd::select(own, b, sine.high), sine.low}, near.cosine(), near.at.sign()};
  } else if constexpr (how::needs_pairs) {
    return rotation<batch<Real>, Real>{xsimd::select(own, b, sum(near.sine())), sum(near.cosine()),
                                       near.at.sign()};
  } else {
    return rotation<batch<Real>, Real>{xsimd::select(own, b, near.sine_in_one()), near.cosine_in_one(),
                                       near.at.sign()};
  }
}

// f of the parts of a complex number, in double precision.
template <class F>
complex_value<float> in_double_parts(const F& f, const f32& a, const f32& b) {
  const widened x = widen(a), y = widen(b);
  const complex_value<double> low = f(x.low, y.low), high = f(x.high, y.high);
  return {narrow({low.re, high.re}), narrow({low.im, high.im})};
}

// A function of a + ib with the period of the sine in b. A formula has
//   of<Real, Level>(a, rotation)   a register of results
//   low<Real>, high<Real>          the range of a that it serves
//   vanishes                       whether a result may be too small
//   turned(w)                      from f(a + ib) the result where z is b + ia
// Turned functions are those of iz: sin(z) = -i sinh(iz).
template <class Formula, class Real, level Level, bool Turned = false>
struct of_rectangle : description<Real> {
  using value = complex_value<Real>;
  using part = batch<Real>;
  using how = chosen_computation<Real, Level>;
  // Next to a normal part there may be words of factors that are not.
  static constexpr auto sse = is_baseline ? sse_control::by_mode : sse_control::exact;
  static constexpr int group = 2 * lanes<Real>;
  static constexpr bool single = sizeof(Real) == 4, widened = std::same_as<how, in_doubles>;
  static constexpr Real infinity = std::numeric_limits<Real>::infinity();
  // Of the angles that fast() reduces.
  static constexpr Real end = !single || widened ? Real(0x1p20) : is_baseline ? Real(0x1.8p11) : Real(0x1p17);

  static value fast(const value& z) {
    const part a = growing_part(z), b = angle_part(z);
    if constexpr (widened)
      return beyond_reach(a, b);
    else
      return result(of<how>(a, b, radians<Real>{counted(b)}));
  }
  static lane_mask<Real> flagged(const value& z, const value& w) {
    return !(in_reach(growing_part(z)) & (xsimd::abs(angle_part(z)) < part(end)) & is_fine(angle_part(z), w));
  }
  // Large angles; singles whose results, or the lower words of what these are made of, may be out of range,
  // but not in double precision; NaNs with anything but zeros and infinities.
  static lane_mask<Real> patch(const value& z, value& w) {
    const part a = growing_part(z), b = angle_part(z), size = xsimd::abs(b);
    const lane_mask<Real> reached = in_reach(a), finite = size < part(infinity);
    lane_mask<Real> regular = reached & finite;
    if constexpr (single) {
      const auto in_doubles_reach = xsimd::abs(a) < part(Real(200));
      renew(w, in_doubles_reach & !reached, [&] { return beyond_reach(a, b); });
      renew(w, finite & (size >= part(end)), [&] { return beyond_angle(a, b); });
      regular = regular | (in_doubles_reach & finite & is_normal(w));
    } else {
      renew(w, finite & (size >= part(end)), [&] { return beyond_angle(a, b); });
    }
    const auto missing = (xsimd::isnan(a) & is_usual(b)) | (xsimd::isnan(b) & is_usual(a));
    const part nan = a + b;
    w = {xsimd::select(missing, nan, w.re), xsimd::select(missing, nan, w.im)};
    return !((regular & is_fine(b, w)) | missing);
  }
  // Parts that are infinite, or zero, whatever number the angle's factor is: their signs are those of smaller
  // results.
  template <class Complex>
  requires(Formula::template high<Real> < infinity) static std::optional<int32_t> shortcut(const Complex* z,
                                                                                           Complex* r) {
    constexpr Real too_large = single ? Real(200) : Real(1600), too_small = single ? Real(-110) : Real(-760);
    const Real a = Turned ? z->im : z->re, b = Turned ? z->re : z->im;
    const bool vanishes = Formula::vanishes && a < too_small;
    if (!(vanishes || std::abs(a) > too_large) || std::isinf(a) || !(std::abs(b) < end)) return std::nullopt;
    const part near(vanishes ? Real(0) : std::copysign(Formula::template high<Real>, a));
    const value w = Turned ? fast({part(b), near}) : fast({near, part(b)});
    const auto saturated = [&](Real x) {
      return x == 0 ? x : std::copysign(vanishes ? Real(0) : infinity, x);
    };
    r->re = saturated(w.re.get(0));
    r->im = saturated(w.im.get(0));
    return vanishes ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OVERFLOW;
  }

 private:
  static part growing_part(const value& z) { return Turned ? z.im : z.re; }
  static part angle_part(const value& z) { return Turned ? z.re : z.im; }
  static value result(const value& w) {
    if constexpr (Turned)
      return Formula::turned(w);
    else
      return w;
  }
  static lane_mask<Real> is_usual(const part& x) {
    return !((x == part(Real(0))) | (xsimd::abs(x) == part(infinity)));
  }
  // Of a product next to the least normal number the lower words' share is rounded to the unit of the whole.
  // Without fused products so is each term of a smaller one, and a subnormal factor cannot be split.
  static lane_mask<Real> is_fine(const part& b, const value& w) {
    constexpr bool of_pairs = Level == level::ha && !widened && Formula::template high<Real> < infinity;
    constexpr auto least = to_bits(std::numeric_limits<Real>::min());
    const auto is_large = [](const part& x) {
      const part size = xsimd::abs(x);
      return (size >= part(std::numeric_limits<Real>::min() * Real(0x1p62))) | (size == part(Real(0)));
    };
    if constexpr (of_pairs && is_baseline)
      return is_large(b) & is_large(w.re) & is_large(w.im);
    else if constexpr (of_pairs)
      return magnitude_outside<Real, least / 4, 4 * least>(w.re) &
             magnitude_outside<Real, least / 4, 4 * least>(w.im);
    else
      return lane_mask<Real>(true);
  }
  static lane_mask<Real> in_reach(const part& a) {
    return (a >= part(Formula::template low<Real>)) & (a <= part(Formula::template high<Real>));
  }
  template <class How, class Part, class Angle>
  static auto of(const Part& a, const Part& b, const Angle& angle) {
    return Formula::template of<typename How::real, How::at>(a, rotation_by<How::at>(angle, b));
  }
  template <class F>
  static void renew(value& w, const lane_mask<Real>& lanes, const F& f) {
    if (lane_bits<Real>(lanes) == 0) return;
    const value there = f();
    w = {xsimd::select(lanes, there.re, w.re), xsimd::select(lanes, there.im, w.im)};
  }
  // Finite, and not both parts subnormal: no status is due.
  static lane_mask<Real> is_normal(const value& w) {
    const part re = xsimd::abs(w.re), im = xsimd::abs(w.im);
    constexpr Real least = std::numeric_limits<Real>::min();
    return (re < part(infinity)) & (im < part(infinity)) & ((re >= part(least)) | (im >= part(least)));
  }
  static value beyond_reach(const part& a, const part& b) {
    return result(in_double_parts(
        [](const f64& x, const f64& y) { return of<in_doubles>(x, y, radians<double, true>{counted(y)}); }, a,
        b));
  }
  static value beyond_angle(const part& a, const part& b) {
    if constexpr (single)
      return result(in_double_parts(
          [](const f64& x, const f64& y) { return of<in_doubles>(x, y, half_turns_of_single(y)); }, a, b));
    else if constexpr (Level == level::ha && !is_baseline)
      return result(of<how>(a, b, half_turns_in_three(b)));
    else
      return result(of<how>(a, b, half_turns_of(b)));
  }
};

}  // namespace
TMK_TIER_CLOSE
