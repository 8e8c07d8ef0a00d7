// SPDX-License-Identifier: Apache-2.0
// e^x on the wide tiers. LA keeps the table and drops its corrections, EP does without a table.
#include "vector/exponential/wide.hpp"

TMK_TIER_OPEN
namespace {

// Maximum errors in ulp (V3, V4), by tmk-accuracy Exp --search thorough:
//   single LA: 1.134 at -0x1.abe8d2p+4: got 0x1.559406p-39, want 0x1.559403bbp-39
//   single HA (all inputs): 1.0000 at -0x1.9d1da2p+6: got 0, want 0x1.fffee67bp-150
//   single EP: 1651 at -0x1.5061p+6: got 0x1.99555ap-122, want 0x1.9948745ap-122
//   double LA: 1.017 at -0x1.1590c82f51d57p+8: got 0x1.78c5d42edb7b1p-401, want 0x1.78c5d42edb7affcp-401
//   double HA: 0.5855 at 0x1.d1a2b30cc68d5p+6: got 0x1.ec00b874ae05ap+167, want 0x1.ec00b874ae0596ap+167
//   double EP: 2.3e+07 at 0x1.610fde7796ffap+9: got 0x1.a622773c74c7ep+1018, want 0x1.a6227726af45c0fp+1018
// Single ends at -103.278..., as defined: where the last subnormal would still be nearest, the result is 0.
template <class Real, level Level>
struct wide_exp : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;

  static value fast(const value& x) {
    if constexpr (Level == level::ha) return exponential<exp_base::e>(x);
    return exponential_in_one<Level>(x);
  }
  // Good: |x| < 87.3365... (EP 87.25), 708.39...
  static lane_mask<Real> flagged(const value& x, const value&) {
    constexpr auto bound = !single ? 0x4086232B00000000 : Level == level::ep ? 0x42AE8000 : 0x42AEAC50;
    return magnitude_from(x, static_cast<integer<Real>>(bound));
  }
  static int32_t rare(const Real* a, Real* r) {
    const auto formula = extreme_exponential<exp_base::e, Real>;
    return exp_rare(a, r, formula, formula);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Exp, unary, LHE, wide_exp)
