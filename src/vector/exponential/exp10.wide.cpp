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
struct wide_exp10 {
  using real = Real;
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr auto name = single ? "vsExp10" : "vdExp10";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 4 * lanes<Real>;
  static constexpr Real filler = Real(0.75);

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

TMK_DEFINE_KERNEL(s, Exp10, HAynn, run_masked<wide_exp10<float>>)
TMK_DEFINE_KERNEL(d, Exp10, HAynn, run_masked<wide_exp10<double>>)
