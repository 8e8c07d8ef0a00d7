// SPDX-License-Identifier: Apache-2.0
// 2^x on the wide tiers.
#include "vector/real/wide/exponential.hpp"

TMK_TIER_OPEN
namespace {

// Maximum errors, of all singles up to |x| = 160 (farther out results are constant) and of 10^7 doubles:
//   single: 0.536 ulp at 0x1.999878p-1: got 0x1.bdb82p+0, want 0x1.bdb81eeep+0.
//   double: 0.559 ulp at 0x1.f2587373afe84p+9: got 0x1.9d4b2b3ca188cp+996, want 0x1.9d4b2b3ca188b71p+996.
template <class Real>
struct wide_exp2 {
  using real = Real;
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr auto name = single ? "vsExp2" : "vdExp2";
  static constexpr auto controls = control_class::a;
  static constexpr int group = 4 * lanes<Real>;
  static constexpr Real filler = Real(0.75);

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

TMK_DEFINE_KERNEL(s, Exp2, HAynn, run_masked<wide_exp2<float>>)
TMK_DEFINE_KERNEL(d, Exp2, HAynn, run_masked<wide_exp2<double>>)
