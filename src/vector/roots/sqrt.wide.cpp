// SPDX-License-Identifier: Apache-2.0
// sqrt(x) on the wide tiers: the processor's root (HA, correctly rounded), or x r (1 + e)^(-1/2) with an
// estimate r of 1 / sqrt(x) and e = x r^2 - 1.
#include "vector/roots/inv_rare.hpp"
#include "vector/roots/wide.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
struct wide_sqrt : description<Real> {
  using value = batch<Real>;
  static constexpr bool streams = true;

  static value fast(const value& x) {
    // On V3 an LA estimate put together from singles would take longer than the root itself.
    if constexpr (Level == level::ha || (Level == level::la && sizeof(Real) == 8 && this_tier == 1)) {
      return xsimd::sqrt(x);
    } else {
      const value r = reciprocal_sqrt_estimate(x);
      const value y = x * r;
      if constexpr (Level == level::ep && sizeof(Real) == 4) return y;
      return xsimd::fma(y, inverse_root_series<Level>(xsimd::fms(y, r, value(Real(1)))), y);
    }
  }
  static lane_mask<Real> flagged(const value& x, const value&) { return not_positive_normal(x); }
  static int32_t rare(const Real* a, Real* r) {
    return sqrt_rare(a, r, [](Real x) { return fast(value(x)).get(0); });
  }
};

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp (V3, V4), by tmk-accuracy Sqrt --search thorough:
//   single LA (V3): 0.7504 at 0x1.2b88p-135: got 0x1.879caep-68, want 0x1.879caf8p-68
//   single LA (V4): 0.7500 at 0x1.579524p-82: got 0x1.289362p-41, want 0x1.2893608p-41
//   single HA: 0.5000 at 0x1.fffffep+127: got 0x1.fffffep+63, want 0x1.ffffffp+63
//   single EP (V3): 4095 at 0x1.fffffcp-1: got 0x1.000ffep+0, want 0x1.fffffep-1
//   single EP (V4): 739 at 0x1.8ffap+63: got 0x1.c48336p+31, want 0x1.c488fb1ap+31
//   double LA (V3): 0.5000 at 0x1.fffffffffffffp+1023: got 0x1.fffffffffffffp+511,
//     want 0x1.fffffffffffff8p+511
//   double LA (V4): 0.7659 at 0x1.08021867dep-1035: got 0x1.6fa85f96b7a05p-518, want 0x1.6fa85f96b7a05c4p-518
//   double HA: 0.5000 at 0x1.fffffffffffffp+1023: got 0x1.fffffffffffffp+511, want 0x1.fffffffffffff8p+511
//   double EP (V3): 557740 at 0x1.043ffffff87c2p+1: got 0x1.6d0810beea59bp+0, want 0x1.6d0810be622ee89p+0
//   double EP (V4): 3493 at 0x1.080200001898fp+599: got 0x1.6fa84e9863f5bp+299, want 0x1.6fa84e9864cffcdp+299
TMK_REAL_KERNELS(Sqrt, unary, LHE, wide_sqrt)
