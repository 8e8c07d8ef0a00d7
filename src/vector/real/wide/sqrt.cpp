// SPDX-License-Identifier: Apache-2.0
// sqrt(x) on the wide tiers: the processor's root (HA, correctly rounded), or x r (1 + e)^(-1/2) with an
// estimate r of 1 / sqrt(x) and e = x r^2 - 1.
#include "vector/frame/kernel.hpp"
#include "vector/real/inv_rare.hpp"
#include "vector/real/wide/root_series.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
struct wide_sqrt {
  using real = Real;
  using value = batch<Real>;
  static constexpr auto name = sizeof(Real) == 4 ? "vsSqrt" : "vdSqrt";
  static constexpr auto controls = control_class::a;
  static constexpr bool memory_bound = true;
  static constexpr int group = 4 * lanes<Real>;
  static constexpr Real filler = Real(0.75);

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

// Maximum errors in ulp over 2^20 samples (V3):
//   single LA: 0.7493 at 0x1.dfap-138: got 0x1.5e67ccp-69, want 0x1.5e67cd8p-69
//   single HA: 0.5000 at 0x1.fffffep+127: got 0x1.fffffep+63, want 0x1.ffffffp+63
//   single EP: 4150 at 0x1.df2fe4p+1: got 0x1.ef72d4p+0, want 0x1.ef5267d1p+0
//   double LA: 0.5000 at 0x1.fffffffffffffp+1023: got 0x1.fffffffffffffp+511, want 0x1.fffffffffffff8p+511
//   double HA: 0.5000 at 0x1.fffffffffffffp+1023: got 0x1.fffffffffffffp+511, want 0x1.fffffffffffff8p+511
//   double EP: 365211 at 0x1.df2fe46f8875p+1: got 0x1.ef52680ac19f4p+0, want 0x1.ef52680a68758f2p+0
TMK_DEFINE_KERNEL(s, Sqrt, EPnnn, run_masked<wide_sqrt<float, level::ep>>)
TMK_DEFINE_KERNEL(s, Sqrt, LAynn, run_masked<wide_sqrt<float, level::la>>)
TMK_DEFINE_KERNEL(s, Sqrt, HAynn, run_masked<wide_sqrt<float, level::ha>>)
TMK_DEFINE_KERNEL(d, Sqrt, EPnnn, run_masked<wide_sqrt<double, level::ep>>)
TMK_DEFINE_KERNEL(d, Sqrt, LAynn, run_masked<wide_sqrt<double, level::la>>)
TMK_DEFINE_KERNEL(d, Sqrt, HAynn, run_masked<wide_sqrt<double, level::ha>>)
