// SPDX-License-Identifier: Apache-2.0
// The hyperbolic sine and cosine of x >= 0 from one reduction:
//   x = k step + r,  A = sinh(k step) = (E - 1/E) / 2,  B = cosh(k step) = (E + 1/E) / 2,  E = 2^(k/N)
//   sinh(x) = A cosh(r) + B sinh(r),   cosh(x) = B cosh(r) + A sinh(r)
// where sinh(r) and cosh(r) need half the terms of e^r each. HA has N = 8 and the powers from a table; the
// levels below take N = 1, whose powers need none.
#pragma once

#include "simd/tables.hpp"
#include "vector/exponential/eighth_powers.hpp"
#include "vector/hyperbolic/series_data.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// E / 2 and 1 / (2 E), which for HA lack what is in `lost`; r + r_low is near `reduced`, whose square is
// `squared`.
template <class Real, level Level>
struct hyperbolic_argument {
  using value = batch<Real>;
  using data = hyperbolic_data::series<Real>;
  static constexpr int steps = Level == level::ha ? 8 : 1;
  // Beyond, 1 / E is nothing to E; what it lacks should be no subnormal number.
  static constexpr Real last_falling = steps * (sizeof(Real) == 4 ? 30 : 60);

  value growing, falling, r, r_low, reduced, squared;
  batch_pair<Real> lost;

  explicit hyperbolic_argument(const value& x) {
    const value shifted = multiply_add(x, value(Real(0x1.71547652b82fep0 * steps)), value(shifter<Real>));
    const value k = shifted - value(shifter<Real>);
    const value opposite = value(shifter<Real>) - minimum_or_second(value(last_falling), k);
    reduce(x, k);
    if constexpr (Level == level::ha) {
      using bits = typename format<Real>::bits;
      const lane_table<Real, 8> powers(lowered_halves<Real>.entry);
      const lane_table<Real, 8> corrections(eighth_powers<Real>::correction);
      const auto i = table_index<Real, 8, 0>(bits_as<bits>(shifted));
      const auto j = table_index<Real, 8, 0>(bits_as<bits>(opposite));
      growing = raise_exponent<3>(powers[i], shifted);
      falling = raise_exponent<3>(powers[j], opposite);
      lost = {growing * corrections.leading(i), falling * corrections.leading(j)};
    } else {
      growing = raise_exponent<0>(value(Real(0.5)), shifted);
      falling = raise_exponent<0>(value(Real(0.5)), opposite);
    }
  }

  // Without a fused operation the step has two parts, the first so short that its products are exact. Fused,
  // the product of the nearest step is exact, and so is the difference.
  void reduce(const value& x, const value& k) {
    using constants = exp_series<Real, exp_base::e>;
    constexpr Real step = constants::step * (8 / steps), rest = constants::step_low * (8 / steps);
    if constexpr (Level == level::ep) {
      r = reduced = negative_multiply_add(k, value(step), x);
    } else if constexpr (is_baseline) {
      const auto sum =
          fast_two_sum(x - k * value(data::log2_high / steps), k * value(-data::log2_low / steps));
      r = reduced = sum.high;
      r_low = sum.low;
    } else {
      r = negative_multiply_add(k, value(step), x);
      r_low = k * value(-rest);
      reduced = negative_multiply_add(k, value(rest), r);
    }
    squared = reduced * reduced;
  }

  // (sinh(r) - r) / r^3 and (cosh(r) - 1) / r^2
  value odd() const {
    if constexpr (Level == level::ha) return polynomial(squared, data::ha_odd);
    if constexpr (Level == level::la) return polynomial(squared, data::la_odd);
    if constexpr (Level == level::ep) return polynomial(squared, data::ep_odd);
  }
  value even() const {
    if constexpr (Level == level::ha) return polynomial(squared, data::ha_even);
    if constexpr (Level == level::la) return polynomial(squared, data::la_even);
    if constexpr (Level == level::ep) return polynomial(squared, data::ep_even);
  }
};

// HA as high + low. Around x = 0 A is zero and B r is the result; one step away it may be half of A, so that
// it may not be rounded, nor B. A + B r is one word again.
template <class Real>
batch_pair<Real> sinh_pair(const hyperbolic_argument<Real, level::ha>& x) {
  const auto a = fast_two_sum(x.growing, -x.falling), b = fast_two_sum(x.growing, x.falling);
  const auto slope = two_prod(b.high, x.r);
  const auto sum = fast_two_sum(a.high, slope.high);
  // In double B's own share of what the powers lack counts 0.05 ulp, and is left out.
  const auto b_low = sizeof(Real) == 4 ? b.low + (x.lost.high + x.lost.low) : b.low;
  const auto lost = multiply_add(b_low, x.r, a.low) + (x.lost.high - x.lost.low);
  const auto low = lost + (sum.low + slope.low);
  const auto curved = multiply_add(x.squared * x.reduced, x.odd(), x.r_low);  // sinh(r) - r
  return {sum.high, multiply_add(b.high, curved, multiply_add(a.high * x.squared, x.even(), low))};
}

template <class Real>
batch_pair<Real> cosh_pair(const hyperbolic_argument<Real, level::ha>& x) {
  const auto b = fast_two_sum(x.growing, x.falling);
  const auto a = x.growing - x.falling;
  const auto low = b.low + (x.lost.high + x.lost.low);
  const auto curved = multiply_add(x.squared * x.reduced, x.odd(), x.r_low);
  const auto even = multiply_add(b.high * x.squared, x.even(), low);
  return {b.high, multiply_add(a, x.r, multiply_add(a, curved, even))};
}

// Below HA in one word.
template <class Real, level Level>
batch<Real> sinh_in_one(const hyperbolic_argument<Real, Level>& x) {
  const auto a = x.growing - x.falling, b = x.growing + x.falling;
  const auto curved = multiply_add(b * x.reduced, x.odd(), a * x.even());
  return multiply_add(curved, x.squared, multiply_add(b, x.reduced, a));
}
template <class Real, level Level>
batch<Real> cosh_in_one(const hyperbolic_argument<Real, Level>& x) {
  const auto a = x.growing - x.falling, b = x.growing + x.falling;
  const auto sine = multiply_add(x.squared * x.reduced, x.odd(), x.reduced);
  return b + multiply_add(b * x.squared, x.even(), a * sine);
}

// Where E may become infinite.
template <class Real>
constexpr Real hyperbolic_end = sizeof(Real) == 4 ? Real(89) : Real(710);

}  // namespace
TMK_TIER_CLOSE
