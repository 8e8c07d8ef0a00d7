// SPDX-License-Identifier: Apache-2.0
// Arctangents of a number, in radians and in half turns: of |x| or of 1 / |x|, which is a right angle less.
#include "vector/inverse_trigonometric/arctangent.hpp"
#include "vector/toolbox/odd.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level, angle_unit Unit>
struct arctangent_of_one : description<Real> {
  using value = batch<Real>;

  // The quotient takes infinity for a large number.
  static value of_positive(const value& x) {
    constexpr Real large = sizeof(Real) == 4 ? Real(0x1p60) : Real(0x1p600);
    const value one(Real(1)), size = minimum_or_second(value(large), x);
    const value j = xsimd::select(size > one, value(Real(-1)), value(Real(0)));
    const value n = minimum_or_second(one, size), d = maximum_or_second(one, size);
    return arctangent<Real, Level, Unit>(n, d, j);
  }
  static value fast(const value& x) {
    constexpr Real least = Unit == angle_unit::radians ? tiny<Real> : least_in_half_turns<Real>;
    return odd_contraction(x, value(least), of_positive);
  }
  static constexpr bool may_vanish = Unit == angle_unit::half_turns;
  // Products without fused operations take NaNs apart.
  static lane_mask<Real> flagged(const value& x, const value&) {
    const auto nan = is_baseline ? xsimd::isnan(x) : lane_mask<Real>(false);
    return may_vanish ? nan | is_tiny(x) : nan;
  }
  static lane_mask<Real> patch(const value& x, value& y) {
    settle<may_vanish>(x, y);
    return lane_mask<Real>(false);
  }
};

template <class Real, level Level>
using arctangent_in_radians = arctangent_of_one<Real, Level, angle_unit::radians>;
template <class Real, level Level>
using arctangent_in_half_turns = arctangent_of_one<Real, Level, angle_unit::half_turns>;

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp, by tmk-accuracy Atan --search brief --samples 500000:
//   single LA (W7): 1.323 at 0x1.10547ap+0: got 0x1.a1f1acp-1, want 0x1.a1f1aea5p-1
//   single HA (all tiers): 0.5249 at 0x1.34f068p-4: got 0x1.345afp-4, want 0x1.345af10dp-4
//   single EP (W7, V3): 4599 at 0x1.fff39p-59: got 0x1.ffcfa2p-59, want 0x1.fff39p-59
//   single LA (V3, V4): 1.506 at -0x1.002eaep+0: got -0x1.924e5cp-1, want -0x1.924e5f03p-1
//   single EP (V4): 719 at 0x1.1001p+0: got 0x1.a1a8eep-1, want 0x1.a1a34facp-1
//   double LA, HA (W7): 0.5364 at 0x1.223c7cafb0a3ep-4: got 0x1.21c0820d252a9p-4, want 0x1.21c0820d252a989p-4
//   double EP (all tiers): 1.2e+07 at -0x1.0015577750aacp-5
//   double LA (V3, V4): 1.599 at 0x1.1c14a39868b47p-4: got 0x1.1ba05e215f6d8p-4, want 0x1.1ba05e215f6d667p-4
//   double HA (V3, V4): 0.5364 at 0x1.223c7cafb0a3ep-4: got 0x1.21c0820d252a9p-4, want 0x1.21c0820d252a989p-4
// Maximum errors in ulp, by tmk-accuracy Atanpi --search brief --samples 500000:
//   single LA (W7): 1.850 at 0x1.36e976p-4: got 0x1.8b1b9p-6, want 0x1.8b1b93b3p-6
//   single HA (W7): 0.5175 at -0x1.57aef6p-5: got -0x1.b555bcp-7, want -0x1.b555baf7p-7
//   single EP (W7, V3): 4600 at 0x1.921e4ep-12: got 0x1.ffda44p-14, want 0x1.fffe34ecp-14
//   single LA (V3, V4): 1.686 at -0x1.14607ep-4: got -0x1.5f5c84p-6, want -0x1.5f5c875fp-6
//   single HA (V3, V4): 0.5172 at -0x1.57789p-5: got -0x1.b51098p-7, want -0x1.b51096f7p-7
//   single EP (V4): 505 at 0x1.921e98p-12: got 0x1.fffaa2p-14, want 0x1.fffe9324p-14
//   double LA (W7): 1.702 at 0x1.0000000019e26p+0: got 0x1.00000000107a6p-2, want 0x1.00000000107a7b4p-2
//   double HA (W7): 0.5180 at -0x1.425476c0cbc09p-5: got -0x1.9a310e690d034p-7, want -0x1.9a310e690d03485p-7
//   double EP (W7, V3): 9.2e+06 at -0x1.9234624162393p-6
//   double LA (V3, V4): 1.519 at -0x1.2effb84667aa8p+0
//   double HA (V3, V4): 0.5175 at -0x1.425476cd555a2p-5
//   double EP (V4): 9.8e+06 at -0x1.90bffffff35b5p-3: got -0x1.f7e244fdfe7e2p-5, want -0x1.f7e245075d43e5ep-5
TMK_KERNELS(s, Atan, unary, LHE, arctangent_in_radians)
#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_KERNELS(d, Atan, unary, HHE, arctangent_in_radians)
#else
TMK_KERNELS(d, Atan, unary, LHE, arctangent_in_radians)
#endif
TMK_REAL_KERNELS(Atanpi, unary, LHE, arctangent_in_half_turns)
