// SPDX-License-Identifier: Apache-2.0
// 1 / sqrt(x) on the wide tiers: r (1 + e)^(-1/2) with an estimate r and e = x r^2 - 1, which but for single
// LA is rounded once.
#include "vector/roots/inv_rare.hpp"
#include "vector/roots/wide.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
struct wide_inv_sqrt : description<Real> {
  using value = batch<Real>;
  static constexpr bool streams = true;

  static value fast(const value& x) {
    const value r = reciprocal_sqrt_estimate(x);
    if constexpr (Level == level::ep) {
      return r;
    } else if constexpr (Level == level::la && sizeof(Real) == 4) {
      // The quadratic term counts up to 3 ulp where the estimate has 11 bits.
      return xsimd::fma(r, inverse_root_series<Level>(xsimd::fms(x * r, r, value(Real(1)))), r);
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

// Maximum errors in ulp (V3, V4), by tmk-accuracy InvSqrt --search thorough:
//   single LA (V3): 0.9953 at 0x1.010ffep+2: got 0x1.fef0d8p-2, want 0x1.fef0d9fep-2
//   single LA (V4): 0.9882 at 0x1.01661ep+2: got 0x1.fe9b5ap-2, want 0x1.fe9b5806p-2
//   single HA (V3): 0.5031 at 0x1.160122p+1: got 0x1.5b6a58p-1, want 0x1.5b6a5902p-1
//   single HA (V4): 0.5023 at 0x1.e6842cp+45: got 0x1.069e7ap-23, want 0x1.069e7b01p-23
//   single EP (V3): 4980 at 0x1.037ffep+114: got 0x1.fcbp-58, want 0x1.fc89177bp-58
//   single EP (V4): 938 at 0x1.03f7fep+110: got 0x1.fc1bp-56, want 0x1.fc13ab98p-56
//   double LA, EP (V3): 0.5311 at 0x1.037fc05b701cep-252: got 0x1.fc8953e12baecp+125,
//     want 0x1.fc8953e12baec88p+125
//   double LA, EP (V4): 0.5207 at 0x1.0371f5fa314b6p-34: got 0x1.fc96d7a2912f7p+16,
//     want 0x1.fc96d7a2912f67bp+16
//   double HA (V3): 0.5311 at 0x1.037fc05b701cep-252: got 0x1.fc8953e12baecp+125,
//     want 0x1.fc8953e12baec88p+125
//   double HA (V4): 0.5207 at 0x1.0371f5fa314b6p-34: got 0x1.fc96d7a2912f7p+16, want 0x1.fc96d7a2912f67bp+16
TMK_KERNELS(s, InvSqrt, unary, LHE, wide_inv_sqrt)
TMK_KERNELS(d, InvSqrt, unary, LHL, wide_inv_sqrt)
