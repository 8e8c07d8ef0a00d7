// SPDX-License-Identifier: Apache-2.0
// e^x on the wide tiers. LA keeps the table and drops its corrections, EP does without a table.
#include "vector/exponential/wide.hpp"

TMK_TIER_OPEN
namespace {

// Maximum errors in ulp (V3, V4), by tmk-accuracy Exp --search thorough:
//   single LA (all inputs): 1.135 at 0x1.75540cp+2: got 0x1.5577e4p+8, want 0x1.5577e1bbp+8
//   single HA (all inputs to -103.278): 0.537 at -0x1.eddd82p+5: got 0x1.ea6bf4p-90, want 0x1.ea6bf2edp-90
//   single EP: 1651 at -0x1.5b783ep+6: got 0x1.9949f6p-126, want 0x1.993d102ap-126
//   double LA: 1.016 at -0x1.de1d227c428a1p+6: got 0x1.789a014abf051p-173, want 0x1.789a014abf04ffcp-173
//   double HA: 0.5872 at 0x1.a427cb261754p+3: got 0x1.ebf44c57e1d9ap+18, want 0x1.ebf44c57e1d996ap+18
//   double EP: 2.3e+07 at 0x1.61c1508eecfp+9: got 0x1.a622752695f72p+1020, want 0x1.a6227510d074fb5p+1020
// Single ends at -103.278..., as defined: where the last subnormal would still be nearest, the result is 0.
template <class Real, level Level>
struct wide_exp : description<Real> {
  using value = batch<Real>;
  using constants = exp_series<Real, exp_base::e>;
  static constexpr bool single = sizeof(Real) == 4;

  static value fast(const value& x) {
    if constexpr (Level == level::ha) return exponential<exp_base::e>(x);
    if constexpr (Level == level::ep) return exponential_without_table(x, constants::ep);
    const auto arg = reduce<exp_base::e>(x);
    const value& r = arg.reduced;
    value q;
    if constexpr (single)
      q = polynomial(r, constants::la);
    else
      q = polynomial(r, constants::ha);
    return xsimd::fma(arg.power, xsimd::fma(r * r, q, r), arg.power);
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
