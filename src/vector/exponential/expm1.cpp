// SPDX-License-Identifier: Apache-2.0
// e^x - 1 on the baseline: with x = k log(2)/128 + r as in exp.cpp, S = 2^(k/128) and e^r = 1 + r + t it is
//   (S - 1) + S (r + t).
// For k = 0 S - 1 vanishes, and r + t is the result; for other k it is at least twice S r, so that little
// cancels. Single works in double, where that little does not matter.
#include "vector/exponential/exp_data.hpp"
#include "vector/exponential/exp_rare.hpp"
#include "vector/exponential/expm1_data.hpp"
#include "vector/exponential/powers.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

using exp_data::double_inverse_step_128, exp_data::double_step_128;
using exp_data::double_step_high_128, exp_data::double_step_low_128;
using namespace expm1_data;

constexpr double shifter = 0x1.8p+52;

// Maximum error, every 2^-40 <= |x| <= 160: 0.505 ulp at 0x1.63063p-9: got 0x1.638162p-9,
// want 0x1.6381630275p-9.
struct single_expm1 : description<float> {
  static constexpr auto controls = control_class::b;
  static constexpr auto sse = sse_control::nearest;
  static constexpr int group = 8;

  static f64 expm1_in_double(const f64& x) {
    const f64 shifted = x * f64(double_inverse_step_128) + f64(shifter);
    const f64 r = x - (shifted - f64(shifter)) * f64(double_step_128);
    const i64 k = bits_as<int64_t>(shifted);
    const f64 power = scale_power<7>(fraction_power<7>(k).high, k, 0);
    return (power - f64(1.0)) + power * (r + (r * r) * polynomial(r, single_c2, single_c3));
  }
  static f32 fast(const f32& x) {
    const auto [low, high] = widen(x);
    return narrow({expm1_in_double(low), expm1_in_double(high)}) | (x & f32(-0.0f));  // -0 stays
  }
  // Good: |x| < 87.3365...
  static lane_mask<float> flagged(const f32& x, const f32&) {
    return mask_as<float>((bits_as<int32_t>(x) & i32(0x7FFFFFFF)) > i32(0x42AEAC4F));
  }
  static int32_t rare(const float* a, float* r) {
    const auto formula = [](float x) { return fast(f32(x)).get(0); };
    return expm1_rare(a, r, formula, formula);
  }
};

// HA keeps S - 1 and S r in two parts each: S r by halves of 26 and 27 bits, whose product is exact.
// Maximum error by tmk-accuracy --search thorough: HA 0.5039 ulp at 0x1.7aa0c82f34968p-9: got
// 0x1.7b2cea853b6cep-9, want 0x1.7b2cea853b6ce81p-9; LA 2.055 ulp at -0x1.631205c740326p-9: got
// -0x1.629703790bdacp-9, want -0x1.629703790bda9f2p-9.
template <level Level>
struct double_expm1 : description<double> {
  static constexpr auto controls = Level == level::ha ? control_class::b : control_class::a;
  static constexpr int group = 4;

  static f64 upper_half(const f64& x) { return x & bits_as<double>(u64(0xFFFFFFFFF8000000)); }

  static f64 fast(const f64& x, int raise = 0) {
    const f64 shifted = x * f64(double_inverse_step_128) + f64(shifter);
    const f64 multiple = shifted - f64(shifter);
    const f64 near = x - multiple * f64(double_step_high_128);
    const f64 far = multiple * f64(double_step_low_128);
    const f64 r = near - far;
    const i64 k = bits_as<int64_t>(shifted);
    const auto [high, low] = fraction_power<7>(k);
    const f64 power = scale_power<7>(high, k, raise);
    const f64 scale = scale_power<7>(f64(1.0), k, raise);
    f64 y;
    if constexpr (Level == level::ha) {
      const f64 t =
          ((near - r) - far) + (r * r) * polynomial(r, double_c2, double_c3, double_c4, double_c5, double_c6);
      const f64 power_head = upper_half(power), r_head = upper_half(r);
      const auto base = two_sum(power, f64(-1.0));
      const auto sum = fast_two_sum(base.high, power_head * r_head);
      const f64 product_rest = (power - power_head) * r_head + power * ((r - r_head) + t);
      const f64 power_rest = scale * low;
      y = sum.high + (sum.low + (base.low + (power_rest + (power_rest * r + product_rest))));
    } else {
      const f64 t = (r * r) * polynomial(r, double_la_c2, double_la_c3, double_la_c4, double_la_c5);
      y = (power - f64(1.0)) + (scale * low + power * (r + t));
    }
    return y | (x & f64(-0.0));  // -0 stays
  }
  // Good: |x| < 708.39..., by the upper words.
  static lane_mask<double> flagged(const f64& x, const f64&) {
    return mask_of_high_words((bits_as<int32_t>(x) & i32(0x7FFFFFFF)) > i32(0x4086232A));
  }
  // Where the exponent has to be moved, 1 is nothing to e^x.
  static int32_t rare(const double* a, double* r) {
    return expm1_rare(
        a, r, [](double x) { return fast(f64(x)).get(0); }, power_at_end<double_expm1>);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Expm1, unary, HHH, single_expm1)
TMK_KERNELS(d, Expm1, unary, LPL, double_expm1)

// The interface counts this kernel among those in extended precision.
TMK_DEFINE_KERNEL(tmk_vtm_kernel_dExpm1_PXHAynn, d, Expm1, unary, tmk::level::ha, double_expm1)
