// SPDX-License-Identifier: Apache-2.0
// 10^x on the wide tiers.
#include "vector/exponential/wide.hpp"

TMK_TIER_OPEN
namespace {

// Maximum errors in ulp (V3, V4), by tmk-accuracy Exp10 --search thorough:
//   single (all inputs): 0.536 at -0x1.aa3f92p+1: got 0x1.ea61e8p-12, want 0x1.ea61e6edp-12
//   double LA, HA, EP: 0.5912 at -0x1.e1aedc96964afp+7: got 0x1.ebbeac0ed8a88p-801,
//     want 0x1.ebbeac0ed8a8769p-801
template <class Real>
struct wide_exp10 : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;

  static value fast(const value& x) { return exponential<exp_base::ten>(x); }
  // Good: |x| < 37.929..., 307.65...
  static lane_mask<Real> flagged(const value& x, const value&) {
    return magnitude_from(x, integer<Real>(single ? 0x4217B818 : 0x40733A7100000000));
  }
  static int32_t rare(const Real* a, Real* r) {
    const auto formula = extreme_exponential<exp_base::ten, Real>;
    return exp10_rare(a, r, formula, formula);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Exp10, unary, HHH, wide_exp10)
