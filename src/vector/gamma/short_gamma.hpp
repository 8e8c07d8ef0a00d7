// SPDX-License-Identifier: Apache-2.0
// gamma(x) and ln |gamma(x)| of doubles to about 2^-30: for single precision, and for the level of half the
// bits. a = |x| is raised by 8 where it is small:
//   gamma(a) = gamma(a + 8) / (a rising),  rising = (a + 1) (a + 2) ... (a + 7)
// so that Stirling's series is short for all a. Negative x go by reflection:
//   gamma(-a) = -1 / (a s gamma(a)),  s = sin(pi a) / pi
#pragma once

#include "vector/gamma/gamma_data.hpp"
#include "vector/power/short_power.hpp"
#include "vector/toolbox/near.hpp"

TMK_TIER_OPEN
namespace {

constexpr double small_gamma_end = 8, whole_shifter = 0x1.8p52;

// The number of whole half turns as a sign, and what is left of them.
struct half_turns_and_rest {
  f64 sign, rest;
};
inline half_turns_and_rest split_half_turns(const f64& a) {
  const f64 shifted = a + f64(whole_shifter);
  return {bits_as<double>(bits_as<uint64_t>(shifted) << 63), a - (shifted - f64(whole_shifter))};
}

inline f64 short_sine(const f64& a) {
  const auto [sign, r] = split_half_turns(a);
  const f64 z = r * r;
  return multiply_add(r * z, polynomial(z, gamma_data::sine_short), r) ^ sign;
}

// With u = a (a + 7), the products of two factors are u + 6, u + 10 and u + 12.
inline f64 short_rising(const f64& a) {
  const f64 b = a + f64(7.0), u = a * b;
  return ((u + f64(6.0)) * b) * ((u + f64(10.0)) * (u + f64(12.0)));
}

// log2 gamma(z), z >= 8
inline f64 short_stirling(const f64& z) {
  const f64 r = near_reciprocal(z);
  const f64 main = multiply_add(z - f64(0.5), short_log2(z), f64(gamma_data::half_log2_two_pi));
  const f64 tail = r * polynomial(r * r, gamma_data::stirling_short);
  return negative_multiply_add(z, f64(gamma_data::log2_e), main) + tail;
}

// The parts of both functions.
struct short_gamma_parts {
  f64 a;
  lane_mask<double> negative, small;
  f64 log2, rising;  // of the raised a; 1 where a is not small

  explicit short_gamma_parts(const f64& x, const f64& magnitude)
      : a(magnitude), negative(x < f64(0.0)), small(a < f64(small_gamma_end)) {
    log2 = short_stirling(xsimd::select(small, a + f64(small_gamma_end), a));
    rising = xsimd::select(small, short_rising(a), f64(1.0));
  }

  // a where it is small and not negative, or neither; times s where it is negative.
  f64 factor() const {
    const f64 f = xsimd::select((small & !negative) | (negative & !small), a, f64(1.0));
    return xsimd::select(negative, f * short_sine(a), f);
  }
};

// Up to |x| = 171.5.
inline f64 short_gamma(const f64& x, const f64& magnitude) {
  const short_gamma_parts parts(x, magnitude);
  const f64 power = short_exp2(parts.log2);
  const f64 over = xsimd::select(parts.negative, -parts.rising, power);
  const f64 under = xsimd::select(parts.negative, power, parts.rising);
  return over / (parts.factor() * under);
}

// ln gamma(x) next to its zeros 1 and 2, elsewhere y.
template <int Size>
f64 with_zeros(const f64& x, const f64& y, double slope_of_one, double slope_of_two, double slope_low,
               const double (&one)[Size], const double (&two)[Size]) {
  const auto near_two = x > f64(1.5);
  const auto choose = [&](double c1, double c2) { return xsimd::select(near_two, f64(c2), f64(c1)); };
  const f64 t = x - choose(1, 2);
  const auto near = xsimd::abs(t) < f64(0x1p-4);
  if (lane_bits<double>(near) == 0) return y;
  f64 q = choose(one[Size - 1], two[Size - 1]);
#pragma GCC unroll 16
  for (int i = Size - 2; i >= 0; --i) q = multiply_add(q, t, choose(one[i], two[i]));
  const f64 rest = multiply_add(t * t, q, t * f64(slope_low));
  const f64 zero(0.0);  // ln 1, whatever the slope's sign
  return xsimd::select(near, multiply_add(t, choose(slope_of_one, slope_of_two), rest) + zero, y);
}

// y, or NaN where its logarithm is that of no normal number: at poles and zero.
inline f64 with_poles(const f64& product, const f64& y) {
  const f64 least(std::numeric_limits<double>::min()), nan(std::numeric_limits<double>::quiet_NaN());
  return xsimd::select(xsimd::abs(product) < least, nan, y);
}

inline f64 short_log_gamma(const f64& x) {
  using namespace gamma_data;
  const short_gamma_parts parts(x, xsimd::abs(x));
  const f64 factor = parts.factor();
  const f64 product = factor * xsimd::select(parts.negative, near_reciprocal(parts.rising), parts.rising);
  const f64 y = (parts.log2 ^ xsimd::bitofsign(x)) - short_log2(xsimd::abs(product));
  return with_poles(product,
                    with_zeros(x, y * f64(ln2), one_short_slope, two_short_slope, 0, one_short, two_short));
}

}  // namespace
TMK_TIER_CLOSE
