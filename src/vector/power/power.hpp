// SPDX-License-Identifier: Apache-2.0
// x^y = e^(y ln x) on every tier: what the power functions share.
//   Double: ln x, y ln x and the exponent as pairs. EP: in one word.
//   Single: in double; EP in single.
// The fast lane serves |x| > 0 normal and results that are normal numbers; a patch by registers finishes what
// else is common: negative x, zeros, infinities and NaN, subnormal x.
#pragma once

#include <algorithm>
#include <cmath>

#include "vector/power/pair_exp.hpp"
#include "vector/power/pair_log.hpp"
#include "vector/power/short_power.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/toolbox/settled.hpp"
#include "vector/walk/kernel.hpp"

extern "C" {
int32_t tmk_vtm_reference_sPow(const float*, const float*, float*);
int32_t tmk_vtm_reference_dPow(const double*, const double*, double*);
int32_t tmk_vtm_reference_sPowr(const float*, const float*, float*);
int32_t tmk_vtm_reference_dPowr(const double*, const double*, double*);
}

TMK_TIER_OPEN
namespace {

// x^y, or (x 2^exponent)^y, for positive normal x. NaN where the result is no normal number, or nearly none.
template <class Real, level Level>
struct power_of_positive;

template <level Level>
struct power_of_positive<double, Level> {
  static constexpr bool by_double = false;
  template <class... Value>
  static f64 of(const f64& x, const f64& y, const Value&... exponent) {
    if constexpr (Level == level::ep) return short_power(1021.5, x, y, exponent...);
    const auto z = multiply_loose(pair_log(x, exponent...), y);
    return within(z.high + z.low, 708.39, pair_exp(z));
  }
};
template <level Level>
struct power_of_positive<float, Level> {
  static constexpr bool by_double = Level != level::ep;
  template <class... Value>
  static f32 of(const f32& x, const f32& y, const Value&... exponent) {
    if constexpr (!by_double) {
      return short_power(125.9f, x, y, exponent...);
    } else {
      const auto raised = [&](const f64& xs, const f64& ys) {
        return short_power(125.99, xs, ys, f64(double{exponent.get(0)})...);
      };
      return in_double(raised, x, y);
    }
  }
};

// Functions of the power family differ where x is negative, and where y ln x is undefined.
enum class power_domain {
  whole,     // integral powers of negative x; x^0 and 1^y are 1 whatever the other is
  positive,  // as e^(y ln x) is defined
};

inline int32_t reference_power(power_domain domain, const float* a, const float* b, float* r) {
  return (domain == power_domain::whole ? tmk_vtm_reference_sPow : tmk_vtm_reference_sPowr)(a, b, r);
}
inline int32_t reference_power(power_domain domain, const double* a, const double* b, double* r) {
  return (domain == power_domain::whole ? tmk_vtm_reference_dPow : tmk_vtm_reference_dPowr)(a, b, r);
}

// Maximum errors in ulp, by tmk-accuracy Pow and Powr, and for x close to 1 with results at the ends of the
// range:
//   single LA, HA (W7): 0.5207 at (0x1.000014p+0, 0x1.d56ca8p+25): got 0x1.c35a32p+105, want
//   0x1.c35a330bp+105 single LA, HA (V3): 0.5116 at (0x1.fffd62p-1, -0x1.04824p+22): got 0x1.f0448ap+122,
//   want 0x1.f0448b06p+122 single LA, HA (V4): 0.5279 at (0x1.fffe16p-1, -0x1.047ep+22): got 0x1.e3261p+89,
//   want 0x1.e3260ef2p+89 double LA, HA (W7): 0.5291 at (0x1.a527b12799b39p+0, -0x1.0e5012637e11bp+4):
//     got 0x1.d2a721797be14p-13, want 0x1.d2a721797be1378p-13
//   double LA, HA (V3): 0.5584 at (0x1.0000050362832p+0, -0x1.e2fcdf426ce38p+30):
//     got 0x1.9d813fad92e6dp-874, want 0x1.9d813fad92e6c71p-874
//   double LA, HA (V4): 0.5580 with |y| below 1000, 0.6646 at (0x1.091a5740f96efp+0, 0x1.2583554b5f11dp+14)
//   single EP: 12.2 bits (W7), 12.7 bits (V3, V4); double EP: 26.8 bits (W7, V3), 27.7 bits (V4)
template <class Real, level Level, power_domain Domain>
struct power : description<Real> {
  using value = batch<Real>;
  using mask = lane_mask<Real>;
  using core = power_of_positive<Real, Level>;
  static constexpr auto sse = sse_control::exact;  // comparisons with zero are to mean zero
  static constexpr bool nan_in_nan_out = false;
  // Four chains of operations at a time: singles in double make two of a register.
  static constexpr int group = (core::by_double ? 2 : 4) * lanes<Real>;

  static value fast(const value& x, const value& y) { return core::of(xsimd::abs(x), y); }
  static mask flagged(const value& x, const value&, const value& r) {
    return not_positive_normal(x) | xsimd::isnan(r);
  }

  static mask patch(const value& x, const value& y, value& r) {
    const value zero(Real(0)), one(Real(1)), infinity(std::numeric_limits<Real>::infinity());
    const value magnitude = xsimd::abs(x);
    const mask nan = xsimd::isnan(x) | xsimd::isnan(y);
    const mask x_extreme = (x == zero) | (magnitude == infinity), y_infinite = xsimd::abs(y) == infinity;
    const mask negative = (xsimd::bitofsign(x) | one) < zero;

    r = with_subnormals(magnitude, y, r);
    const mask grows = ((magnitude > one) & (y > zero)) | ((magnitude < one) & (y < zero));
    r = xsimd::select(x_extreme | y_infinite, xsimd::select(grows, infinity, zero), r);
    mask undefined, settled;
    if constexpr (Domain == power_domain::whole) {
      const value half = y * value(Real(0.5));
      const mask whole = round_to_zero(y) == y, odd = whole & (round_to_zero(half) != half);
      r = xsimd::select(magnitude == one, one, r);
      r = xsimd::select(odd, r | xsimd::bitofsign(x), r);
      undefined = negative & !whole & !x_extreme;
      settled = (y == zero) | (x == one);
    } else {
      undefined = ((x < zero) | (x_extreme & (y == zero)) | ((x == one) & y_infinite));
      settled = mask(false);
    }
    const mask pole = (x == zero) & (y < zero) & !y_infinite;
    const mask rare = xsimd::isnan(r) | undefined | pole;
    r = xsimd::select(nan, xsimd::select(xsimd::isnan(x), x + x, y + y), r);
    r = xsimd::select(settled, one, r);
    return rare & !nan & !settled;
  }

  // Results out of range are common enough to be spared the reference: those that the exponent of x decides,
  // and singles whose rounding the doubles decide.
  static int32_t rare(const Real* a, const Real* b, Real* r) {
    using limits = std::numeric_limits<Real>;
    const double x = *a, y = *b;
    const bool whole = std::trunc(y) == y, odd = whole && std::trunc(y / 2) != y / 2;
    if (x == 0 && y < 0 && std::isfinite(y)) {
      const bool negative = odd && Domain == power_domain::whole && std::signbit(x);
      return infinite(negative ? Real(-1) : Real(1), VTM_STATUS_SINGULARITY, r);
    }
    if (x < 0 && !whole && std::isfinite(x) && std::isfinite(y)) return undefined(r);
    if (std::isfinite(x) && std::isfinite(y) &&
        (x > 0 || (x < 0 && whole && Domain == power_domain::whole))) {
      const Real sign = x < 0 && odd ? Real(-1) : Real(1);
      const double first = std::logb(x) * y, second = first + y;  // y log2 |x| is between them
      if (std::min(first, second) >= limits::max_exponent) {
        *r = sign * limits::infinity();
        return VTM_STATUS_OVERFLOW;
      }
      if (std::max(first, second) < limits::min_exponent - limits::digits - 1) {
        *r = sign * Real(0);
        return VTM_STATUS_UNDERFLOW;
      }
      if constexpr (sizeof(Real) == 4) {
        const double power = short_power(1000, f64(std::fabs(x)), f64(y)).get(0);
        const double low = power * (1 - 0x1p-28), high = power * (1 + 0x1p-28);
        const float nearest = static_cast<float>(low);
        if (nearest == static_cast<float>(high) && (nearest < low || nearest > high)) {
          *r = sign * nearest;
          return std::isinf(nearest)       ? VTM_STATUS_OVERFLOW
                 : nearest < limits::min() ? VTM_STATUS_UNDERFLOW
                                           : VTM_STATUS_OK;
        }
      }
    }
    return reference_power(Domain, a, b, r);
  }

 private:
  // Subnormal x = fraction 2^-up, whose powers are not in r yet. Processors take long to multiply by them.
  static value with_subnormals(const value& magnitude, const value& y, const value& r) {
    using bits = typename format<Real>::bits;
    constexpr int up = format<Real>::bias - 1;
    const value one(Real(1)), least(std::numeric_limits<Real>::min());
    const mask subnormal = (magnitude < least) & (magnitude > value(Real(0)));
    if (lane_bits<Real>(subnormal) == 0) return r;
    const value fraction = bits_as<Real>(bits_as<bits>(magnitude) | bits_as<bits>(one)) - one;
    return xsimd::select(subnormal, core::of(fraction, y, value(Real(-up))), r);
  }
};

// The same with one exponent for all elements.
template <class Real, level Level>
struct power_to_scalar : description<Real> {
  using value = batch<Real>;
  using elementwise = power<Real, Level, power_domain::whole>;
  static constexpr auto sse = elementwise::sse;
  static constexpr bool nan_in_nan_out = false;
  static constexpr int group = elementwise::group;

  Real exponent;
  explicit power_to_scalar(Real b) : exponent(b) {}

  value fast(const value& x) const { return elementwise::fast(x, value(exponent)); }
  lane_mask<Real> flagged(const value& x, const value& r) const {
    return elementwise::flagged(x, value(exponent), r);
  }
  lane_mask<Real> patch(const value& x, value& r) const { return elementwise::patch(x, value(exponent), r); }
  int32_t rare(const Real* a, Real* r) const { return elementwise::rare(a, &exponent, r); }
};

template <class Real, level Level>
using whole_power = power<Real, Level, power_domain::whole>;
template <class Real, level Level>
using positive_power = power<Real, Level, power_domain::positive>;

}  // namespace
TMK_TIER_CLOSE
