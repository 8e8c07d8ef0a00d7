// SPDX-License-Identifier: Apache-2.0
// e^a as a factor, by the tables and series of the real function.
#pragma once

#include "vector/complex_exponential/factors.hpp"
#if TMK_TIER_NUMBER(TMK_TIER) == 0
#include "vector/exponential/exp_data.hpp"
#include "vector/exponential/powers.hpp"
#else
#include "vector/exponential/wide.hpp"
#endif

TMK_TIER_OPEN
namespace {

#if TMK_TIER_NUMBER(TMK_TIER) == 0
inline batch_pair<double> exponential_pair(const f64& a) {
  using namespace exp_data;
  const auto [n, r] = reduce(a, double_inverse_step_64, double_step_high_64, double_step_low_64, 0x1.8p+52);
  const f64 p = r + (r * r) * polynomial(r, double_c2, double_c3, double_c4, double_c5);
  const auto [high, low] = fraction_power<6>(n);
  const f64 scale = scale_power<6>(f64(1), n, 0);
  return {high * scale, (low + high * p) * scale};
}
// As on real arguments, but for the step, which is taken apart.
inline f32 exponential_in_single(const f32& a) {
  using namespace exp_data;
  const auto [n, r] = reduce(a, single_inverse_step, single_step_high, single_step_low, 0x1.6p+23f);
  const auto [power, correction] = fraction_power<7>(n);
  return scale_power<7>(power + power * ((correction + r) + f32(0.5f) * r * r), n, 0);
}

template <level Level>
auto exponential_factor(const f64& a) {
  const auto pair = exponential_pair(a);
  if constexpr (Level == level::ha)
    return normalized(pair);
  else
    return pair.high + pair.low;
}
template <level Level>
f32 exponential_factor(const f32& a) {
  return exponential_in_single(a);
}
#else
template <level Level, class Real>
auto exponential_factor(const batch<Real>& a) {
  if constexpr (Level == level::ha) {
    const auto arg = reduce<exp_base::e>(a);
    const auto rest = beyond_linear<exp_base::e, false>(arg, exp_series<Real, exp_base::e>::ha);
    return fast_two_sum(arg.power, arg.power * (arg.reduced + rest));
  } else {
    return exponential_in_one<Level>(a);
  }
}
#endif

}  // namespace
TMK_TIER_CLOSE
