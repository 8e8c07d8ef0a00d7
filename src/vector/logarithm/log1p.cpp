// SPDX-License-Identifier: Apache-2.0
// log(1 + x) on the baseline: 1 + x = u + c exactly, with u its rounded sum, and
//   log(1 + x) = log(u + c).
// Single works in double, where u is exact to what single can see.
#include <cmath>

#include "vector/logarithm/log_of_pair.hpp"

TMK_TIER_OPEN
namespace {

// Maximum error 0.508 ulp at 0x1.16db5d480fb3ep-48: got 0x1.16db5d480fb34p-48,
// want 0x1.16db5d480fb3481f6ab7p-48 (5,000,000 samples).
struct double_log1p : description<double> {
  static constexpr auto controls = control_class::b;
  static constexpr auto sse = sse_control::nearest;
  static constexpr int group = 4;

  static f64 fast(const f64& x) {
    const auto [u, c] = two_sum(f64(1.0), x);
    return log_of_pair<level::ha>(u, c);
  }
  // Good: 2^-48 <= |x|, -1 < x < infinity. Below, c is no longer small compared with u - 1, nor its sum with
  // p exact enough.
  static lane_mask<double> flagged(const f64& x, const f64&) {
    const i32 high = bits_as<int32_t>(x);
    const i32 magnitude = high & i32(0x7FFFFFFF);
    const i32 last_good = i32(0x7FEFFFFF) - ((high >> 31) & i32(0x40000000));
    return mask_of_high_words((magnitude > last_good) | (i32(0x3CF00000) > magnitude));
  }
  static int32_t rare(const double* a, double* r) {
    return log1p_rare(a, r,
                      [](double x) { return std::abs(x) < 0x1p-48 ? x - 0.5 * x * x : fast(f64(x)).get(0); });
  }
};

// Maximum error 0.5002 ulp at -0x1.8488b6p-8: got -0x1.85b0b8p-8, want -0x1.85b0b900193acp-8 (all inputs).
struct single_log1p : description<float> {
  static constexpr auto controls = control_class::b;
  static constexpr auto sse = sse_control::nearest;
  static constexpr int group = 8;

  static f32 fast(const f32& x) {
    return in_double([](const f64& v) { return log_for_single(f64(1.0) + v); }, x);
  }
  // Good: 2^-25 <= |x|, -1 < x < infinity.
  static lane_mask<float> flagged(const f32& x, const f32&) {
    const i32 bits = bits_as<int32_t>(x);
    const i32 magnitude = bits & i32(0x7FFFFFFF);
    const i32 last_good = i32(0x7F7FFFFF) - ((bits >> 31) & i32(0x40000000));
    return mask_as<float>((magnitude > last_good) | (i32(0x33000000) > magnitude));
  }
  static int32_t rare(const float* a, float* r) {
    return log1p_rare(a, r, [](float x) { return fast(f32(x)).get(0); });
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Log1p, unary, HHH, single_log1p)
TMK_KERNELS(d, Log1p, unary, HHH, double_log1p)
