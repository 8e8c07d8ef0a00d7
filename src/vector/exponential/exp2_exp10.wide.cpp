// SPDX-License-Identifier: Apache-2.0
// 2^x and 10^x on the wide tiers.
#include "vector/exponential/wide.hpp"

TMK_TIER_OPEN
namespace {

// Maximum errors in ulp (V3, V4), by tmk-accuracy Exp2 and Exp10 --search thorough:
//   2^x, single (all inputs): 0.5356 at 0x1.999878p-1: got 0x1.bdb82p+0, want 0x1.bdb81eeep+0
//   2^x, double: 0.5613 at 0x1.4867fc471a00bp+9: got 0x1.c190adee69089p+656, want 0x1.c190adee690899p+656
//   10^x, single (all inputs): 0.5361 at -0x1.675e6p+3: got 0x1.9e1a9ep-38, want 0x1.9e1a9f12p-38
//   10^x, double: 0.5912 at -0x1.9e7f2ab627e52p+4: got 0x1.ebd0fecb3b11ap-87, want 0x1.ebd0fecb3b11969p-87
template <class Real, exp_base Base>
struct wide_power : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  // Good below: 126 and 37.929..., 1022 and 307.65...
  static constexpr auto single_end = Base == exp_base::two ? 0x42FC0000 : 0x4217B818;
  static constexpr auto double_end = Base == exp_base::two ? 0x408FF00000000000 : 0x40733A7100000000;

  static value fast(const value& x) { return exponential<Base>(x); }
  static lane_mask<Real> flagged(const value& x, const value&) {
    return magnitude_from(x, static_cast<integer<Real>>(single ? single_end : double_end));
  }
  static int32_t rare(const Real* a, Real* r) {
    const auto formula = extreme_exponential<Base, Real>;
    if constexpr (Base == exp_base::two)
      return exp2_rare(a, r, formula, formula);
    else
      return exp10_rare(a, r, formula, formula);
  }
};

template <class Real>
using wide_exp2 = wide_power<Real, exp_base::two>;
template <class Real>
using wide_exp10 = wide_power<Real, exp_base::ten>;

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Exp2, unary, HHH, wide_exp2)
TMK_REAL_KERNELS(Exp10, unary, HHH, wide_exp10)
