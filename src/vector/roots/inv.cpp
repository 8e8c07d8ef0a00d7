// SPDX-License-Identifier: Apache-2.0
// 1 / x on the baseline below HA (every_tier/inv_division.cpp).
//   Single: the 12-bit estimate itself (EP), or with one Newton step (LA).
//   Double: an estimate y0 from the single instruction on the mantissa; with e = 1 - x y0
//   1 / x = y0 / (1 - e) = y0 (1 + e + e^2 + ...), cut at e^2 (EP) or e^4 (LA).
#include "vector/walk/kernel.hpp"
#include "vector/roots/estimates.hpp"
#include "vector/roots/inv_rare.hpp"

TMK_TIER_OPEN
namespace {

template <level Level>
struct single_inv {
  using real = float;
  static constexpr char name[] = "vsInv";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 8;

  static f32 fast(const f32& x) {
    const f32 y0 = reciprocal_estimate(x);
    if constexpr (Level == level::ep) return y0;
    return y0 * (f32(2.0f) - x * y0);
  }
  // Good: 2^-126 <= |x| <= 2^126. The upper end is part of the interface, though the estimate of 1 / 2^126
  // may come out below the normal numbers, which the processor flushes to 0.
  static lane_mask<float> flagged(const f32& x, const f32&) {
    return mask_as<float>(((bits_as<int32_t>(x) - i32(0x00800000)) & i32(0x7FFFFFFF)) > i32(0x7E000000));
  }
  static int32_t rare(const float* a, float* r) {
    if (((to_bits(*a) - 0x00800000) & 0x7FFFFFFF) > 0x7E000000) return reciprocal_rare(a, r);
    *r = fast(f32(*a)).get(0);
    return VTM_STATUS_OK;
  }
};

template <level Level>
struct double_inv {
  using real = double;
  static constexpr char name[] = "vdInv";
  static constexpr auto controls = control_class::a;
  static constexpr int group = Level == level::ep ? 16 : 8;
  static constexpr double filler = 0.75;

  static f64 fast(const f64& x) {
    const f64 y0 = reciprocal_estimate(x);
    const f64 e = f64(1.0) - x * y0;
    if constexpr (Level == level::ep) return y0 + y0 * (e + e * e);
    const f64 one(1.0);
    return y0 + y0 * (e * (one + e * (one + e * (one + e))));
  }
  // Good: 2^-1021 <= |x| < 2^1022.
  static lane_mask<double> flagged(const f64& x, const f64&) {
    const i32 magnitude = bits_as<int32_t>(x) & i32(0x7FFFFFFF);
    return mask_of_high_words(magnitude - i32(static_cast<int32_t>(0x80200000)) >
                              i32(static_cast<int32_t>(0xFFAFFFFF)));
  }
  static int32_t rare(const double* a, double* r) { return reciprocal_rare(a, r); }
};

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp (W7), by tmk-accuracy Inv --search thorough:
//   single LA: 3.327 at 0x1.01e0c6p+124: got 0x1.fc456ep-125, want 0x1.fc4574a8p-125
//   single EP: 4996 at 0x1.021ffep+122: got 0x1.fbfp-123, want 0x1.fbc8f8e7p-123
//   double LA: 1.734 at 0x1.04131ce246bep+1020: got 0x1.f7fa75b591fep-1021, want 0x1.f7fa75b591fde44p-1021
//   double EP: 242034 at -0x1.021ffffff5ec5p-1: got -0x1.fbc8f4f7c1174p+0, want -0x1.fbc8f4f78600264p+0
TMK_DEFINE_KERNEL(s, Inv, EPnnn, run_blocks<single_inv<level::ep>>)
TMK_DEFINE_KERNEL(s, Inv, LAynn, run_blocks<single_inv<level::la>>)
TMK_DEFINE_KERNEL(d, Inv, EPnnn, run_masked<double_inv<level::ep>>)
TMK_DEFINE_KERNEL(d, Inv, LAynn, run_masked<double_inv<level::la>>)
