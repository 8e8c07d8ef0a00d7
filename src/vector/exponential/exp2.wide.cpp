// SPDX-License-Identifier: Apache-2.0
// 2^x on the wide tiers.
#include "vector/exponential/wide.hpp"

TMK_TIER_OPEN
namespace {

// Maximum errors in ulp (V3, V4), by tmk-accuracy Exp2 --search thorough:
//   single (all inputs): 0.536 at 0x1.999878p-1: got 0x1.bdb82p+0, want 0x1.bdb81eeep+0
//   double LA, HA, EP: 0.5616 at 0x1.6bd89f2429141p+9: got 0x1.9dacfe78e3f06p+727,
//     want 0x1.9dacfe78e3f057p+727
template <class Real>
struct wide_exp2 : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;

  static value fast(const value& x) { return exponential<exp_base::two>(x); }
  // Good: |x| < 126, 1022
  static lane_mask<Real> flagged(const value& x, const value&) {
    return magnitude_from(x, integer<Real>(single ? 0x42FC0000 : 0x408FF00000000000));
  }
  static int32_t rare(const Real* a, Real* r) {
    const auto formula = extreme_exponential<exp_base::two, Real>;
    return exp2_rare(a, r, formula, formula);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Exp2, unary, HHH, wide_exp2)
