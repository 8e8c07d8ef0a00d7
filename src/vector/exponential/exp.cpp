// SPDX-License-Identifier: Apache-2.0
// e^x on the baseline: x = k log(2)/N + r with an integral k = N n + j, so that
//   e^x = 2^n 2^(j/N) e^r,  |r| <= log(2) / (2 N).
// The table holds 2^(j/N); r is so small that a short polynomial serves. Single EP has no table: N is 1.
// The errors below hold for normal results. Subnormal doubles are rounded twice: HA within 0.754 ulp.
// Subnormal singles are rounded once, but end early: from -103.279 down the result is 0, by the limits.
#include "vector/exponential/exp_data.hpp"
#include "vector/exponential/exp_rare.hpp"
#include "vector/exponential/powers.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

using namespace exp_data;

constexpr double log2_e = 0x1.71547652b82fep+0;

template <class Kernel>
int32_t exp_element(const float* a, float* r) {
  return exp_rare(
      a, r, [](float x) { return Kernel::fast(f32(x)).get(0); },
      [](float x) { return single_power_at_end<Kernel>(x, log2_e); });
}

template <class Kernel>
int32_t exp_element(const double* a, double* r) {
  return exp_rare(
      a, r, [](double x) { return Kernel::fast(f64(x)).get(0); }, power_at_end<Kernel>);
}

// The last bits of 2^(j/128) that the float in the table lacks are the difference between HA and LA.
// Maximum error, every 2^-40 <= |x| <= 160: 0.574 ulp (HA) at 0x1.30c77p+6: got 0x1.e655ccp+109, want
// 0x1.e655cada4ep+109; 1.969 ulp (LA) at -0x1.e81654p-6: got 0x1.f0f8ep-1, want 0x1.f0f8e3efe8p-1.
template <level Level>
struct single_exp : description<float> {
  static constexpr bool by_blocks = true;
  static constexpr int group = 8;

  static f32 fast(const f32& x, int raise = 0) {
    const auto [n, r] = reduce(x, single_inverse_step, single_step_high, single_step_low, 0x1.6p+23f);
    const auto [power, correction] = fraction_power<7>(n);
    if constexpr (Level == level::ha)
      return scale_power<7>(power + power * ((correction + r) + f32(0.5f) * r * r), n, raise);
    return scale_power<7>(power * (f32(1.0f) + r * (f32(1.0f) + f32(0.5f) * r)), n, raise);
  }
  // Good: |x| < 87.3365..., where the result is a normal number.
  static lane_mask<float> flagged(const f32& x, const f32&) {
    return mask_as<float>((bits_as<int32_t>(x) & i32(0x7FFFFFFF)) > i32(0x42AEAC4F));
  }
  static int32_t rare(const float* a, float* r) { return exp_element<single_exp>(a, r); }
};

// Maximum error, every 2^-40 <= |x| <= 160: 2159.3 ulp (12.9 bits) at 0x1.1ef684p+6: got 0x1.69f978p+103,
// want 0x1.6a0a569056p+103.
template <>
struct single_exp<level::ep> : description<float> {
  static constexpr bool by_blocks = true;
  static constexpr int group = 8;

  static f32 fast(const f32& x, int raise = 0) {
    const f32 shifter(0x1.8p+23f);
    const f32 shifted = x * f32(single_inverse_step_ep) + shifter;
    const f32 k = shifted - shifter;
    const f32 r = x - k * f32(single_step_ep);
    const f32 p = polynomial(r, 1.0f, single_ep_c1, single_ep_c2, single_ep_c3);
    return scale_power<0>(p, bits_as<int32_t>(shifted), raise);
  }
  // Good: |x| < 87.25.
  static lane_mask<float> flagged(const f32& x, const f32&) {
    return mask_as<float>((bits_as<int32_t>(x) & i32(0x7FFFFFFF)) > i32(0x42AE7FFF));
  }
  static int32_t rare(const float* a, float* r) { return exp_element<single_exp>(a, r); }
};

// Maximum error by tmk-accuracy --search thorough: HA 0.7590 ulp at -0x1.62361da94c3c8p+9: got
// 0x1.f2added2c221cp-1023, want 0x1.f2added2c221a7bp-1023 (a subnormal result, rounded twice; normal ones
// 0.527 in 3,000,000 samples); LA 4.572 ulp at 0x1.03e681327a1e4p+8: got 0x1.f0f9bcebf50d3p+374, want
// 0x1.f0f9bcebf50d792p+374; EP 28.2 bits at -0x1.566adbb24ed63p+8.
template <level Level>
struct double_exp : description<double> {
  static constexpr bool by_blocks = true;
  static constexpr int group = 4;

  static f64 fast(const f64& x, int raise = 0) {
    if constexpr (Level == level::ha) {
      const auto [n, r] =
          reduce(x, double_inverse_step_64, double_step_high_64, double_step_low_64, 0x1.8p+52);
      const f64 p = r + (r * r) * polynomial(r, double_c2, double_c3, double_c4, double_c5);
      const auto [high, low] = fraction_power<6>(n);
      return scale_power<6>(high + (low + high * p), n, raise);
    }
    if constexpr (Level == level::la) {
      const auto [n, r] =
          reduce(x, double_inverse_step_128, double_step_high_128, double_step_low_128, 0x1.8p+52);
      return scaled(r + (r * r) * polynomial(r, 0.5, double_la_c3, double_la_c4), n, raise);
    }
    const f64 shifter(0x1.8p+52);
    const f64 shifted = x * f64(double_inverse_step_128) + shifter;
    const f64 r = x - (shifted - shifter) * f64(double_step_128);
    return scaled(r + f64(0.5) * r * r, bits_as<int64_t>(shifted), raise);
  }
  static f64 scaled(const f64& p, const i64& n, int raise) {
    return scale_power<7>(fraction_power<7>(n).high * (f64(1.0) + p), n, raise);
  }
  // Good: |x| < 708.39..., by the upper words, where the result is a normal number.
  static lane_mask<double> flagged(const f64& x, const f64&) {
    return mask_of_high_words((bits_as<int32_t>(x) & i32(0x7FFFFFFF)) > i32(0x4086232A));
  }
  static int32_t rare(const double* a, double* r) { return exp_element<double_exp>(a, r); }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Exp, unary, LHE, single_exp)
TMK_KERNELS(d, Exp, unary, LHE, double_exp)
