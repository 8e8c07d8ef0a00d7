// SPDX-License-Identifier: Apache-2.0
// e^(high + low) of doubles, by the tables and series of e^x: low joins the reduced argument. For results
// that are normal numbers, and |low| <= 2^-30 |high| or so.
#pragma once

#include "vector/toolbox/pair.hpp"
#include "vector/toolbox/polynomial.hpp"
#if TMK_TIER_NUMBER(TMK_TIER) == 0
#include "vector/exponential/exp_data.hpp"
#include "vector/exponential/powers.hpp"
#else
#include "vector/exponential/wide.hpp"
#endif

TMK_TIER_OPEN
namespace {

// The low part may reach 0.1.
#if TMK_TIER_NUMBER(TMK_TIER) == 0
inline f64 pair_exp(const batch_pair<double>& x) {
  using namespace exp_data;
  const f64 shifter(0x1.8p+52);
  const f64 shifted = (x.high + x.low) * f64(double_inverse_step_64) + shifter;
  const f64 k = shifted - shifter;
  const f64 r = (x.high - k * f64(double_step_high_64)) + (x.low - k * f64(double_step_low_64));
  const f64 p = r + (r * r) * polynomial(r, double_c2, double_c3, double_c4, double_c5);
  const i64 n = bits_as<int64_t>(shifted);
  const auto [high, low] = fraction_power<6>(n);
  return scale_power<6>(high + (low + high * p), n, 0);
}
#else
// e^x as power (1 + growth), |growth| < 0.05.
struct power_and_growth {
  f64 power, growth;
};
inline power_and_growth pair_exp_in_two(const batch_pair<double>& x) {
  using constants = exp_series<double, exp_base::e>;
  const f64 shifted = multiply_add(x.high + x.low, f64(constants::rate), f64(shifter<double>));
  const f64 k = shifted - f64(shifter<double>);
  const f64 r = negative_multiply_add(k, f64(constants::step), x.high);
  const f64 low = negative_multiply_add(k, f64(constants::step_low), x.low);
  const auto j = table_index<double, 8, 0>(bits_as<uint64_t>(shifted));
  const f64 power = raise_exponent<3>(lane_table<double, 8>(lowered_powers<double>.entry)[j], shifted);
  const f64 reduced = r + low;
  const f64 correction = lane_table<double, 8>(eighth_powers<double>::correction).leading(j);
  const f64 rest = multiply_add(reduced * reduced, polynomial(reduced, constants::ha), correction);
  return {power, r + (rest + low)};
}
inline f64 pair_exp(const batch_pair<double>& x) {
  const auto [power, growth] = pair_exp_in_two(x);
  return multiply_add(power, growth, power);
}
#endif

}  // namespace
TMK_TIER_CLOSE
