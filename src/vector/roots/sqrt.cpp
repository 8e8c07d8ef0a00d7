// SPDX-License-Identifier: Apache-2.0
// sqrt(x) on the baseline: r estimates 1 / sqrt(x), and with e = x r^2 - 1
//   sqrt(x) = x r (1 + e)^(-1/2) = x r (1 - e / 2 + 3 e^2 / 8 - 5 e^3 / 16 + ...)
// With x = xh + xl and r of few bits, xh r is exact: that lifts HA to the full format without a wider one.
#include "vector/roots/inv_rare.hpp"
#include "vector/roots/root_series.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <level Level>
struct single_sqrt : description<float> {
  static constexpr bool by_blocks = true;
  static constexpr int group = Level == level::la ? 16 : 8;

  // Zero lanes get a zero estimate: x r then is a zero of the same sign.
  static f32 estimate_or_zero(const f32& x) {
    return xsimd::select(x == f32(0.0f), f32(0.0f), reciprocal_sqrt_estimate(x));
  }

  static f32 fast(const f32& x) {
    const f32 r = estimate_or_zero(x);
    if constexpr (Level == level::ep) return x * r;
    if constexpr (Level == level::la) {
      const f32 y = x * r;
      return (f32(-0.5f) * y) * (y * r - f32(3.0f));
    }
    const f32 xh = keep_high_bits(x);
    const f32 xl = x - xh;
    const f32 rh = keep_high_bits(r);
    const f32 product = xh * rh;
    const f32 e = (product * rh - f32(1.0f)) + (xl * rh) * rh;
    const f32 p = e * (f32(-0.5f) + e * (f32(0.375f) - f32(0.3125f) * e));
    return (((p * rh) * x + xl * rh) + product) | (x & f32(-0.0f));  // of all good lanes -0 alone has a sign
  }
  // Good: zeros and positive normal numbers. Tested on x: whether x r comes out infinite for a subnormal
  // depends on the processor's estimate.
  static lane_mask<float> flagged(const f32& x, const f32&) {
    const auto zero = (bits_as<int32_t>(x) & i32(0x7FFFFFFF)) == i32(0);
    return not_positive_normal(x) & !mask_as<float>(zero);
  }
  static int32_t rare(const float* a, float* r) {
    return sqrt_rare(a, r, [](float x) { return fast(f32(x)).get(0); });
  }
};

template <level Level>
struct double_sqrt : description<double> {
  static f64 fast(const f64& x) {
    const f64 r = reciprocal_sqrt_estimate(x);
    if constexpr (Level == level::ep) {
      const f64 y = x * r;
      const f64 e = y * r - f64(1.0);
      return y + y * (e * (f64(-0.5) + e * f64(0.375)));
    }
    const f64 xh = keep_high_bits(x);
    const f64 xl = x - xh;
    const f64 product = xh * r;
    const f64 e = (product * r - f64(1.0)) + (xl * r) * r;
    const f64 p = inverse_root_series<Level>(e);
    return ((p * r) * x + xl * r) + product;
  }
  static lane_mask<double> flagged(const f64& x, const f64&) { return not_positive_normal(x); }
  static int32_t rare(const double* a, double* r) {
    return sqrt_rare(a, r, [](double x) { return fast(f64(x)).get(0); });
  }
};

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp (W7), by tmk-accuracy Sqrt --search thorough:
//   single LA: 3.246 at 0x1.e9c0d8p+59: got 0x1.f4c0c6p+29, want 0x1.f4c0cc7ep+29
//   single HA: 0.7608 at 0x1.d36a5ep+1: got 0x1.e93338p+0, want 0x1.e9333986p+0
//   single EP: 4095 at 0x1.fffffcp-1: got 0x1.000ffep+0, want 0x1.fffffep-1
//   double LA: 0.6872 at 0x1.043fff9bc9991p-1: got 0x1.6d0810781fc84p-1, want 0x1.6d0810781fc835p-1
//   double HA: 0.5005 at 0x1.fffffffa2fcd3p+1: got 0x1.fffffffd17e6ap+0, want 0x1.fffffffd17e698p+0
//   double EP: 557306 at 0x1.043ffffff9f1dp+1: got 0x1.6d0810beeb44ap+0, want 0x1.6d0810be6334faap+0
TMK_KERNELS(s, Sqrt, unary, LHE, single_sqrt)
TMK_KERNELS(d, Sqrt, unary, LHE, double_sqrt)
