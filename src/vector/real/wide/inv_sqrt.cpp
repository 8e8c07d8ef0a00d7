// SPDX-License-Identifier: Apache-2.0
// 1 / sqrt(x) on the wide tiers: r (1 + e)^(-1/2) with an estimate r and e = x r^2 - 1, which but for single
// LA is rounded once.
#include "vector/frame/kernel.hpp"
#include "vector/real/inv_rare.hpp"
#include "vector/real/wide/root_series.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
struct wide_inv_sqrt {
  using real = Real;
  using value = batch<Real>;
  static constexpr auto name = sizeof(Real) == 4 ? "vsInvSqrt" : "vdInvSqrt";
  static constexpr auto controls = control_class::a;
  static constexpr bool memory_bound = true;
  static constexpr int group = 4 * lanes<Real>;
  static constexpr Real filler = Real(0.75);

  static value fast(const value& x) {
    const value r = reciprocal_sqrt_estimate(x);
    if constexpr (Level == level::ep) {
      return r;
    } else if constexpr (Level == level::la && sizeof(Real) == 4) {
      return xsimd::fma(r * xsimd::fms(x * r, r, value(Real(1))), value(Real(-0.5)), r);
    } else {
      const value s = shortened(r);
      return xsimd::fma(s, inverse_root_series<Level>(xsimd::fms(x, s * s, value(Real(1)))), s);
    }
  }
  // From here on the square of r comes near the subnormals, which a thread's mode may flush.
  static constexpr Real large = sizeof(Real) == 4 ? Real(0x1p125) : Real(0x1p1021);
  static lane_mask<Real> flagged(const value& x, const value&) {
    return not_positive_normal<Real, to_bits(large)>(x);
  }
  static int32_t rare(const Real* a, Real* r) {
    return inv_sqrt_rare(a, r, [](Real x) {
      return x < large ? fast(value(x)).get(0) : fast(value(x * Real(0.25))).get(0) * Real(0.5);
    });
  }
};

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp over 2^20 samples (V3):
//   single LA: 1.742 at 0x1.391f8ap+1: got 0x1.475a8cp-1, want 0x1.475a8f7cp-1
//   single HA: 0.5010 at 0x1.e2e2d2p+1: got 0x1.079ab8p-1, want 0x1.079ab9p-1
//   single EP: 2937 at 0x1.10cff6p+0: got 0x1.f01p-1, want 0x1.eff90eddp-1
//   double LA, EP: 0.5303 at 0x1.000000adca49ap+2: got 0x1.ffffff5235b6bp-2, want 0x1.ffffff5235b6b88p-2
//   double HA: 0.5303 at 0x1.000000adca49ap+2: got 0x1.ffffff5235b6bp-2, want 0x1.ffffff5235b6b88p-2
TMK_DEFINE_KERNEL(s, InvSqrt, EPnnn, run_masked<wide_inv_sqrt<float, level::ep>>)
TMK_DEFINE_KERNEL(s, InvSqrt, LAynn, run_masked<wide_inv_sqrt<float, level::la>>)
TMK_DEFINE_KERNEL(s, InvSqrt, HAynn, run_masked<wide_inv_sqrt<float, level::ha>>)
TMK_DEFINE_KERNEL(d, InvSqrt, LAynn, run_masked<wide_inv_sqrt<double, level::la>>)
TMK_DEFINE_KERNEL(d, InvSqrt, HAynn, run_masked<wide_inv_sqrt<double, level::ha>>)
