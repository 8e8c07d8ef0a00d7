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

#if TMK_TIER_NUMBER(TMK_TIER) == 0
inline f64 pair_exp(const batch_pair<double>& x) {
  using namespace exp_data;
  const f64 shifter(0x1.8p+52);
  const f64 shifted = x.high * f64(double_inverse_step_64) + shifter;
  const f64 k = shifted - shifter;
  const f64 r = (x.high - k * f64(double_step_high_64)) + (x.low - k * f64(double_step_low_64));
  const f64 p = r + (r * r) * polynomial(r, double_c2, double_c3, double_c4, double_c5);
  const i64 n = bits_as<int64_t>(shifted);
  const auto [high, low] = fraction_power<6>(n);
  return scale_power<6>(high + (low + high * p), n, 0);
}
#else
inline f64 pair_exp(const batch_pair<double>& x) {
  using constants = exp_series<double, exp_base::e>;
  auto argument = reduce<exp_base::e>(x.high);
  const f64 low = negative_multiply_add(argument.k, f64(constants::step_low), x.low);
  argument.reduced = argument.r + low;
  const f64 rest = beyond_linear<exp_base::e, false>(argument, constants::ha) + low;
  return multiply_add(argument.power, argument.r + rest, argument.power);
}
#endif

}  // namespace
TMK_TIER_CLOSE
