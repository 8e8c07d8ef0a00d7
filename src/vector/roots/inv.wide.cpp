// SPDX-License-Identifier: Apache-2.0
// 1 / x on the wide tiers below HA (every_tier/inv_division.cpp): the processor's estimate (EP single), one
// Newton step (LA single), or the series in e = 1 - x y0 (double, where the processor estimates doubles).
#include <limits>
#include <type_traits>

#include "vector/walk/kernel.hpp"
#include "vector/roots/estimates.hpp"
#include "vector/roots/inv_rare.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
struct wide_inv {
  using real = Real;
  using value = batch<Real>;
  static constexpr auto name = sizeof(Real) == 4 ? "vsInv" : "vdInv";
  static constexpr auto controls = control_class::a;
  static constexpr bool memory_bound = true;
  static constexpr int group = 4 * lanes<Real>;
  static constexpr Real filler = Real(0.75);

  static value fast(const value& x) {
    if constexpr (sizeof(Real) == 4) {
      const value y0 = reciprocal_estimate(x);
      if constexpr (Level == level::ep) return y0;
      return xsimd::fma(xsimd::fnma(x, y0, value(Real(1))), y0, y0);
    } else if constexpr (this_tier == 1) {
      return value(1.0) / x;  // faster than an estimate put together from singles
    } else {
      const value y0 = reciprocal_estimate(x);
      const value e = xsimd::fnma(x, y0, value(1.0));
      const value s = xsimd::fma(e, e, e);
      if constexpr (Level == level::ep) return xsimd::fma(y0, s, y0);
      return xsimd::fma(y0, xsimd::fma(e * e, s, s), y0);
    }
  }
  // Good: 2^-126 <= |x| < 2^126, 2^-1021 <= |x| < 2^1022. The estimate of 2^-126 itself may be flushed to 0.
  static lane_mask<Real> flagged(const value& x, const value&) {
    using bits = std::make_signed_t<typename format<Real>::bits>;
    constexpr bool single = sizeof(Real) == 4;
    constexpr auto magnitude = std::numeric_limits<bits>::max();
    constexpr bits lowest = single ? bits(0x00800000) : bits(0x0020000000000000);
    constexpr bits span = single ? bits(0x7DFFFFFF) : bits(0x7FAFFFFFFFFFFFFF);
    return mask_as<Real>(((bits_as<bits>(x) - batch<bits>(lowest)) & batch<bits>(magnitude)) >
                         batch<bits>(span));
  }
  static int32_t rare(const Real* a, Real* r) { return reciprocal_rare(a, r); }
};

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp (V3, V4), by tmk-accuracy Inv --search thorough:
//   single LA (V3): 1.960 at 0x1.07400ap+108: got 0x1.f1e624p-109, want 0x1.f1e627ecp-109
//   single LA (V4): 0.5267 at 0x1.01f0fap+64: got 0x1.fc2586p-65, want 0x1.fc25870ep-65
//   single EP (V3): 4996 at 0x1.021ffep+122: got 0x1.fbfp-123, want 0x1.fbc8f8e7p-123
//   single EP (V4): 710 at 0x1.0600fep+124: got 0x1.f44ap-125, want 0x1.f44474e7p-125
//   double LA (V3): 0.5000 at 0x1.fffffffffffffp-2: got 0x1.0000000000001p+1, want 0x1.00000000000008p+1
//   double LA (V4): 0.5000 at 0x1.06e758879a32fp+505: got 0x1.f28e209430b11p-506,
//     want 0x1.f28e209430b118p-506
//   double EP (V3): 0.5000 at 0x1.fffffffffffffp-2: got 0x1.0000000000001p+1, want 0x1.00000000000008p+1
//   double EP (V4): 748 at -0x1.f199fffffb1aep+1: got -0x1.07685415585d5p-2, want -0x1.07685415582e884p-2
TMK_DEFINE_KERNEL(s, Inv, EPnnn, run_masked<wide_inv<float, level::ep>>)
TMK_DEFINE_KERNEL(s, Inv, LAynn, run_masked<wide_inv<float, level::la>>)
TMK_DEFINE_KERNEL(d, Inv, EPnnn, run_masked<wide_inv<double, level::ep>>)
TMK_DEFINE_KERNEL(d, Inv, LAynn, run_masked<wide_inv<double, level::la>>)
