// SPDX-License-Identifier: Apache-2.0
// e^x - 1 on the wide tiers: with e^x = S (1 + r + t), S = 2^(k/8), it is
//   (S - 1) + S (r + t).
// Around x = 0 S - 1 is zero and r + t is the result. One step away S - 1 has lost little to cancellation,
// but then the rounding of S r shows: HA keeps S - 1, S r and their sum in two parts each.
#include "vector/exponential/wide.hpp"

TMK_TIER_OPEN
namespace {

// Maximum errors in ulp (V3, V4), by tmk-accuracy Expm1 --search thorough:
//   single LA, HA, EP (all inputs): 0.5241 at 0x1.66ca8cp-5: got 0x1.6ec3a8p-5, want 0x1.6ec3a90cp-5
//   double LA, EP: 1.473 at -0x1.664a688cb0f6dp-5: got -0x1.5e9184b7c4826p-5, want -0x1.5e9184b7c482487p-5
//   double HA: 0.5378 at 0x1.626429cb9913ap+9: got 0x1.78a3513f132d2p+1022, want 0x1.78a3513f132d176p+1022
template <class Real, level Level>
struct wide_expm1 : description<Real> {
  using value = batch<Real>;
  using constants = exp_series<Real, exp_base::e>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr auto sse = single ? sse_control::nearest : sse_control::by_mode;

  static value fast(const value& x) {
    const auto arg = reduce<exp_base::e>(x);
    const value& power = arg.power;
    value y;
    if constexpr (Level == level::ha) {
      // r^2 / 2 is rounded once, with all that is smaller: what S and the step lack, and r^3.
      static_assert(constants::minus_one[0] == Real(0.5));
      const value& r = arg.r;
      const value lacking = xsimd::fnma(arg.k, value(constants::step_low), power_correction(arg));
      const value half = r * value(Real(0.5));
      const value rest = xsimd::fma(r * r * r, polynomial<1>(r, constants::minus_one),
                                    xsimd::fma(lacking, xsimd::fma(half, r, r), lacking));
      const value t = xsimd::fma(half, r, rest);
      const auto base = two_sum(power, value(Real(-1)));
      const value slope = power * arg.r;
      const auto sum = fast_two_sum(base.high, slope);
      const value low = sum.low + (base.low + xsimd::fms(power, arg.r, slope));
      y = sum.high + xsimd::fma(power, t, low);
    } else {
      const value t = beyond_linear<exp_base::e, false>(arg, constants::minus_one);
      y = xsimd::fma(power, arg.reduced + t, power - value(Real(1)));
    }
    return y | (x & value(Real(-0.0)));  // x = -0
  }
  // Good: |x| < 87.3365..., 708.39...
  static lane_mask<Real> flagged(const value& x, const value&) {
    return magnitude_from(x, integer<Real>(single ? 0x42AEAC50 : 0x4086232B00000000));
  }
  static int32_t rare(const Real* a, Real* r) {
    const auto formula = extreme_exponential<exp_base::e, Real>;  // where it is called, 1 is nothing to e^x
    return expm1_rare(a, r, formula, formula);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Expm1, unary, HHH, wide_expm1)
TMK_KERNELS(d, Expm1, unary, LHL, wide_expm1)
