// SPDX-License-Identifier: Apache-2.0
// gamma(x) and ln |gamma(x)| of doubles to a little more than half a unit: the identities of short_gamma.hpp
// in pairs. Next to 1 and 2 ln gamma is a series in the distance. The sums' errors, about 2^-62, leave
// little of ln |gamma(x)| next to its negative zeros: the caller looks after these.
#pragma once

#include "vector/gamma/short_gamma.hpp"
#include "vector/power/pair_exp.hpp"
#include "vector/power/pair_log.hpp"

TMK_TIER_OPEN
namespace {

using pair64 = batch_pair<double>;

inline pair64 choose(const lane_mask<double>& m, const pair64& x, const pair64& y) {
  return {xsimd::select(m, x.high, y.high), xsimd::select(m, x.low, y.low)};
}
// Products whose low parts are the sum of all that is low, without another sum to make them small.
inline pair64 loose_product(const pair64& x, const f64& y) {
  const auto p = two_prod(x.high, y);
  return {p.high, multiply_add(x.low, y, p.low)};
}
inline pair64 loose_product(const pair64& x, const pair64& y) {
  const auto p = two_prod(x.high, y.high);
  return {p.high, multiply_add(x.high, y.low, multiply_add(x.low, y.high, p.low))};
}
inline pair64 loose_sum(const pair64& x, double y) {
  const auto s = two_sum(x.high, f64(y));
  return {s.high, s.low + x.low};
}
inline pair64 loose_quotient(const pair64& x, const pair64& y) {
  const f64 reciprocal = near_reciprocal(y.high), quotient = x.high * reciprocal;
  const f64 rest = residual(x.high, quotient, y.high) + negative_multiply_add(quotient, y.low, x.low);
  return {quotient, rest * reciprocal};
}

// base + x y, |x y| below |base|.
inline pair64 step(const pair64& base, const pair64& x, const pair64& y) {
  const auto sum = add_product(base.high, x.high, y.high);
  return {sum.high, multiply_add(x.high, y.low, multiply_add(x.low, y.high, sum.low + base.low))};
}
inline pair64 paired_sine(const f64& a) {
  using namespace gamma_data;
  const auto [sign, r] = split_half_turns(a);
  const auto square = two_prod(r, r);
  const pair64 z{square.high, square.low}, one{f64(1.0), f64(0.0)};
  const pair64 first{f64(sine_ha_first_high), f64(sine_ha_first_low)};
  const pair64 second{f64(sine_ha_second_high), f64(sine_ha_second_low)};
  const auto rest = step(second, z, {polynomial(z.high, sine_ha), f64(0.0)});
  const auto y = loose_product(step(one, z, step(first, z, rest)), r);
  return {y.high ^ sign, y.low ^ sign};
}

inline pair64 paired_rising(const f64& a) {
  const auto b = fast_two_sum(f64(7.0), a);
  const auto u = loose_product(pair64{b.high, b.low}, a);
  const auto outer = loose_product(pair64{b.high, b.low}, loose_sum(u, 6));
  return loose_product(outer, loose_product(loose_sum(u, 10), loose_sum(u, 12)));
}

// ln gamma(z), z >= 8, to about 2^-63.
inline pair64 paired_stirling(const pair64& z) {
  using namespace gamma_data;
  const f64 half(0.5), one(1.0), twelfth(twelfth_high), inverse = one / z.high;
  const auto log = pair_log(z.high);
  const f64 factor = z.high - half;  // inexact from 2^52 on
  const auto main = multiply_loose(log, factor), first = two_prod(inverse, twelfth);
  const auto less = fast_two_sum(main.high, -z.high);
  const auto more = fast_two_sum(less.high, f64(half_log_two_pi_high));
  const auto sum = fast_two_sum(more.high, first.high);
  // What is left of z times the slope there, and of 1 / z.
  const f64 slope = negative_multiply_add(inverse, multiply_add(inverse, twelfth, half), log.high);
  const f64 of_z = (z.low + ((z.high - factor) - half)) * slope;
  const f64 of_inverse =
      inverse * multiply_add(negative_multiply_add(inverse, z.high, one), twelfth, f64(twelfth_low));
  const f64 squared = inverse * inverse;
  const f64 tail = (inverse * squared) * polynomial(squared, stirling_ha);
  const f64 lost = (sum.low + more.low) + (less.low + first.low);
  const f64 constant = main.low + f64(half_log_two_pi_low);
  return {sum.high, (lost + (of_z + of_inverse)) + (constant + tail)};
}

struct paired_gamma_parts {
  f64 a;
  lane_mask<double> negative, small;
  pair64 log, rising;

  paired_gamma_parts(const f64& x, const f64& magnitude)
      : a(magnitude), negative(x < f64(0.0)), small(a < f64(small_gamma_end)) {
    const pair64 one{f64(1.0), f64(0.0)};
    const auto raised = fast_two_sum(f64(small_gamma_end), a);
    log = paired_stirling(choose(small, pair64{raised.high, raised.low}, pair64{a, f64(0.0)}));
    rising = choose(small, paired_rising(a), one);
  }
  pair64 factor() const {
    const f64 f = xsimd::select((small & !negative) | (negative & !small), a, f64(1.0));
    return choose(negative, loose_product(paired_sine(a), f), {f, f64(0.0)});
  }
};

// (high + low) scale, where the scale keeps powers in range that the result is not the size of.
struct scaled_pair {
  f64 high, low, scale;
};
inline scaled_pair paired_gamma(const f64& x, const f64& magnitude) {
  const paired_gamma_parts parts(x, magnitude);
  const auto [power, growth] = pair_exp_in_two(parts.log);
  const auto large = parts.a >= f64(128.0);
  const u64 lowered =
      bits_as<uint64_t>(xsimd::select(large, f64(from_bits<double>(uint64_t{400} << 52)), f64(0.0)));
  const f64 near = bits_as<double>(bits_as<uint64_t>(power) - lowered);
  const auto sum = fast_two_sum(near, near * growth);
  const pair64 gamma{sum.high, sum.low};
  const pair64 minus_rising{-parts.rising.high, -parts.rising.low};
  const auto under = loose_product(parts.factor(), choose(parts.negative, gamma, parts.rising));
  const auto y = loose_quotient(choose(parts.negative, minus_rising, gamma), under);
  const f64 scale = xsimd::select(parts.negative, f64(0x1p-400), f64(0x1p400));
  return {y.high, y.low, xsimd::select(large, scale, f64(1.0))};
}

inline f64 paired_log_gamma(const f64& x) {
  using namespace gamma_data;
  const paired_gamma_parts parts(x, xsimd::abs(x));
  const auto factor = parts.factor();
  const auto product =
      choose(parts.negative, loose_quotient(factor, parts.rising), loose_product(factor, parts.rising));
  const f64 sign = xsimd::bitofsign(x);
  const auto minus_log = pair_log(xsimd::abs(product.high));
  const auto sum = two_sum(parts.log.high ^ sign, -minus_log.high);
  const f64 rest = negative_multiply_add(product.low, near_reciprocal(product.high), -minus_log.low);
  const f64 y = sum.high + (sum.low + ((parts.log.low ^ sign) + rest));
  static_assert(one_ha_slope_low == two_ha_slope_low);  // that of Euler's constant
  return with_poles(product.high,
                    with_zeros(x, y, one_ha_slope_high, two_ha_slope_high, one_ha_slope_low, one_ha, two_ha));
}

}  // namespace
TMK_TIER_CLOSE
