// SPDX-License-Identifier: Apache-2.0
// sqrt(x) on the baseline: r estimates 1 / sqrt(x), and with e = x r^2 - 1
//   sqrt(x) = x r (1 + e)^(-1/2) = x r (1 - e / 2 + 3 e^2 / 8 - 5 e^3 / 16 + ...)
// With x = xh + xl and r of few bits, xh r is exact: that lifts HA to the full format without a wider one.
#include "vector/frame/kernel.hpp"
#include "vector/real/inv_rare.hpp"
#include "vector/real/root_series.hpp"

TMK_TIER_OPEN
namespace {

template <level Level>
struct single_sqrt {
  using real = float;
  static constexpr char name[] = "vsSqrt";
  static constexpr auto controls = control_class::a;
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
struct double_sqrt {
  using real = double;
  static constexpr char name[] = "vdSqrt";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 8;
  static constexpr double filler = 0.75;

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

// Maximum errors in ulp over 2^20 samples:
//   single LA: 3.270 at 0x1.f0214p+1: got 0x1.f8009cp+0, want 0x1.f800a28ap+0
//   single HA: 0.8866 at 0x1.360d82p+1: got 0x1.8e6e4p+0, want 0x1.8e6e41c6p+0
//   single EP: 4150 at 0x1.df2fe4p+1: got 0x1.ef72d4p+0, want 0x1.ef5267d1p+0
//   double LA: 0.5690 at 0x1.df2f530ae30d2p+1: got 0x1.ef521ce56e1f4p+0, want 0x1.ef521ce56e1f36ep+0
//   double HA: 0.5003 at 0x1.9f24p-1059: got 0x1.cd089b6860626p-530, want 0x1.cd089b68606268p-530
//   double EP: 364280 at 0x1.df2fe46f8875p+1: got 0x1.ef52680ac1651p+0, want 0x1.ef52680a68758f2p+0
TMK_DEFINE_KERNEL(s, Sqrt, EPnnn, run_blocks<single_sqrt<level::ep>>)
TMK_DEFINE_KERNEL(s, Sqrt, LAynn, run_blocks<single_sqrt<level::la>>)
TMK_DEFINE_KERNEL(s, Sqrt, HAynn, run_blocks<single_sqrt<level::ha>>)
TMK_DEFINE_KERNEL(d, Sqrt, EPnnn, run_masked<double_sqrt<level::ep>>)
TMK_DEFINE_KERNEL(d, Sqrt, LAynn, run_masked<double_sqrt<level::la>>)
TMK_DEFINE_KERNEL(d, Sqrt, HAynn, run_masked<double_sqrt<level::ha>>)
