// SPDX-License-Identifier: Apache-2.0
// x^(3/2) = x sqrt(x). HA keeps what the root and the product lose: (s + s') x with s' = (x - s^2) / (2 s).
#include "vector/toolbox/lane_tests.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// Maximum errors in ulp (all tiers), by tmk-accuracy Pow3o2 --search thorough:
//   single LA, EP: 1.290 at 0x1.95fdd6p+0: got 0x1.ff46b2p+0, want 0x1.ff46af6cp+0
//   single HA: 0.5000 at 0x1.fffffep-1: got 0x1.fffffcp-1, want 0x1.fffffdp-1
//   double LA, EP: 1.293 at 0x1.964244de72046p-2: got 0x1.ffc7f9d80faabp-3, want 0x1.ffc7f9d80faac4bp-3
//   double HA: 0.5000 at 0x1.fffffffffffffp+1: got 0x1.ffffffffffffep+2, want 0x1.ffffffffffffe8p+2
template <class Real, level Level>
struct three_halves : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr auto sse = sse_control::exact;  // residuals may be subnormal numbers

  static value fast(const value& x) {
    const value y = x * xsimd::sqrt(x);
    if constexpr (Level == level::ha)
      return xsimd::select(x == value(Real(0)), y, multiply(square_root(x), x).high);
    else
      return y;
  }
  // Good: zeros, and where the result is a normal number whose residual has its leading bits.
  static constexpr Real least = single ? Real(0x1p-73) : Real(0x1p-666);
  static constexpr Real end = single ? Real(0x1p85) : Real(0x1p682);
  static lane_mask<Real> flagged(const value& x, const value&) {
    return outside<Real, to_bits(least), to_bits(end)>(bits_as<typename tested<Real>::bits>(x)) &
           (x != value(Real(0)));
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Pow3o2, unary, LHE, three_halves)
