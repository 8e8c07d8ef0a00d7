// SPDX-License-Identifier: Apache-2.0
// 2^x on the baseline: x = k / 64 + r, exactly, with k = 64 n + j and |r| <= 1/128, so that
//   2^x = 2^n 2^(j/64) 2^r,  2^r by a short polynomial.
#include "vector/exponential/exp2_data.hpp"
#include "vector/exponential/exp_rare.hpp"
#include "vector/exponential/powers.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

using namespace exp2_data;

// Maximum error, every 2^-40 <= |x| <= 160: 0.619 ulp at -0x1.7ff216p-6: got 0x1.f7c028p-1,
// want 0x1.f7c026c373p-1.
struct single_exp2 : description<float> {
  static constexpr int group = 8;

  static f32 fast(const f32& x, int raise = 0) {
    const f32 shifter(0x1.8p+17f);  // leaves six fraction bits
    const f32 shifted = x + shifter;
    const f32 r = x - (shifted - shifter);
    const i32 k = bits_as<int32_t>(shifted);
    const auto [power, correction] = fraction_power<6>(k);
    const f32 p = r * polynomial(r, single_c1, single_c2);
    return scale_power<6>(power + power * (correction + p), k, raise);
  }
  // Good: |x| < 126.
  static lane_mask<float> flagged(const f32& x, const f32&) {
    return mask_as<float>((bits_as<int32_t>(x) & i32(0x7FFFFFFF)) > i32(0x42FBFFFF));
  }
  static int32_t rare(const float* a, float* r) {
    return exp2_rare(
        a, r, [](float x) { return fast(f32(x)).get(0); },
        [](float x) { return single_power_at_end<single_exp2>(x, 1.0); });
  }
};

// Maximum error by tmk-accuracy --search thorough: 0.7588 ulp at -0x1.ff111d5b667dap+9: got
// 0x1.d2ae39e0aa528p-1023, want 0x1.d2ae39e0aa5267cp-1023 (a subnormal result, rounded twice; normal ones
// 0.522 in 3,000,000 samples).
struct double_exp2 : description<double> {
  static constexpr int group = 4;

  static f64 fast(const f64& x, int raise = 0) {
    const f64 shifter(0x1.8p+46);
    const f64 shifted = x + shifter;
    const f64 r = x - (shifted - shifter);
    const i64 k = bits_as<int64_t>(shifted);
    const auto [high, low] = fraction_power<6>(k);
    const f64 p = r * polynomial(r, double_c1, double_c2, double_c3, double_c4, double_c5);
    return scale_power<6>(high + (low + high * p), k, raise);
  }
  // Good: |x| < 1022.
  static lane_mask<double> flagged(const f64& x, const f64&) {
    return mask_of_high_words((bits_as<int32_t>(x) & i32(0x7FFFFFFF)) > i32(0x408FEFFF));
  }
  static int32_t rare(const double* a, double* r) {
    return exp2_rare(
        a, r, [](double x) { return fast(f64(x)).get(0); }, power_at_end<double_exp2>);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Exp2, unary, HHH, single_exp2)
TMK_KERNELS(d, Exp2, unary, HHH, double_exp2)
