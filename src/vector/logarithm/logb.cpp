// SPDX-License-Identifier: Apache-2.0
// logb(x) on the baseline: the exponent field without its bias.
#include "vector/logarithm/log_rare.hpp"
#include "vector/logarithm/log_reduction.hpp"

TMK_TIER_OPEN
namespace {

struct single_logb {
  using real = float;
  static constexpr char name[] = "vsLogb";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 16;
  static constexpr float filler = 0.75f;

  static f32 fast(const f32& x) {
    return xsimd::to_float((exponent_field(x) & i32(0xFF)) - i32(format<float>::bias));
  }
  // An exponent field of zeros or ones.
  static lane_mask<float> flagged(const f32& x, const f32&) {
    const i32 field = bits_as<int32_t>(x) & i32(0x7F800000);
    return mask_as<float>(field + i32(0x7F800000) > i32(static_cast<int32_t>(0xFE800000)));
  }
  static int32_t rare(const float* a, float* r) { return logb_rare(a, r); }
};

struct double_logb {
  using real = double;
  static constexpr char name[] = "vdLogb";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 8;
  static constexpr double filler = 0.75;

  static f64 fast(const f64& x) {
    return exponent(bits_as<double>(bits_as<uint64_t>(x) & u64(0x7FFFFFFFFFFFFFFF)), 0);
  }
  static lane_mask<double> flagged(const f64& x, const f64&) {
    const i32 field = bits_as<int32_t>(x) & i32(0x7FF00000);
    return mask_of_high_words(field + i32(0x7FF00000) > i32(static_cast<int32_t>(0xFFD00000)));
  }
  static int32_t rare(const double* a, double* r) { return logb_rare(a, r); }
};

}  // namespace
TMK_TIER_CLOSE

TMK_DEFINE_KERNEL(s, Logb, HAynn, run_masked<single_logb>)
TMK_DEFINE_KERNEL(d, Logb, HAynn, run_masked<double_logb>)
