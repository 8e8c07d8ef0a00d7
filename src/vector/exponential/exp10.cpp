// SPDX-License-Identifier: Apache-2.0
// 10^x on the baseline: x = k log10(2)/128 + r with an integral k = 128 n + j, so that
//   10^x = 2^n 2^(j/128) 10^r,  |r| <= log10(2)/256,  10^r by a short polynomial.
#include "vector/exponential/exp10_data.hpp"
#include "vector/exponential/exp_rare.hpp"
#include "vector/exponential/powers.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

using namespace exp10_data;

constexpr double log2_10 = 0x1.a934f0979a371p+1;

// Maximum error, every 2^-40 <= |x| <= 160: 0.557 ulp at 0x1.20fbe4p+5: got 0x1.ff493ap+119,
// want 0x1.ff493b1ce3p+119.
struct single_exp10 : description<float> {
  static constexpr int group = 8;

  static f32 fast(const f32& x, int raise = 0) {
    const auto [k, r] = reduce(x, single_inverse_step, single_step_high, single_step_low, 0x1.8p+23f);
    const auto [power, correction] = fraction_power<7>(k);
    const f32 p = r * polynomial(r, single_c1, single_c2);
    return scale_power<7>(power + power * (correction + p), k, raise);
  }
  // Good: |x| < 37.9297..., where the result is a normal number.
  static lane_mask<float> flagged(const f32& x, const f32&) {
    return mask_as<float>((bits_as<int32_t>(x) & i32(0x7FFFFFFF)) > i32(0x4217B817));
  }
  static int32_t rare(const float* a, float* r) {
    return exp10_rare(
        a, r, [](float x) { return fast(f32(x)).get(0); },
        [](float x) { return single_power_at_end<single_exp10>(x, log2_10); });
  }
};

// Maximum error by tmk-accuracy --search thorough: 0.7524 ulp at -0x1.33b3fdb6237b8p+8: got
// 0x1.c7dd399bd1404p-1023, want 0x1.c7dd399bd14027fp-1023 (a subnormal result, rounded twice; normal ones
// 0.508 in 3,000,000 samples).
struct double_exp10 : description<double> {
  static constexpr int group = 4;

  static f64 fast(const f64& x, int raise = 0) {
    const auto [k, r] = reduce(x, double_inverse_step, double_step_high, double_step_low, 0x1.88p+52);
    const auto [high, low] = fraction_power<7>(k);
    const f64 p = r * polynomial(r, double_c1, double_c2, double_c3, double_c4, double_c5);
    return scale_power<7>(high + (low + high * p), k, raise);
  }
  // Good: |x| < 307.65..., by the upper words, where the result is a normal number.
  static lane_mask<double> flagged(const f64& x, const f64&) {
    return mask_of_high_words((bits_as<int32_t>(x) & i32(0x7FFFFFFF)) > i32(0x40733A70));
  }
  static int32_t rare(const double* a, double* r) {
    return exp10_rare(
        a, r, [](double x) { return fast(f64(x)).get(0); }, power_at_end<double_exp10>);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Exp10, unary, HHH, single_exp10)
TMK_KERNELS(d, Exp10, unary, HHH, double_exp10)
