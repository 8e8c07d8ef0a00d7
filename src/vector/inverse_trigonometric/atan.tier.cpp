// SPDX-License-Identifier: Apache-2.0
// Arctangents of a number, in radians and in half turns: of |x| or of 1 / |x|, which is a right angle less.
#include "vector/inverse_trigonometric/arctangent.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level, angle_unit Unit>
struct arctangent_of_one : description<Real> {
  using value = batch<Real>;

  // The quotient takes infinity for a large number.
  static value fast(const value& x) {
    constexpr Real large = sizeof(Real) == 4 ? Real(0x1p60) : Real(0x1p600);
    const value one(Real(1)), size = minimum_or_second(value(large), xsimd::abs(x));
    const value j = xsimd::select(size > one, value(Real(-1)), value(Real(0)));
    const value n = minimum_or_second(one, size), d = maximum_or_second(one, size);
    return arctangent<Real, Level, Unit>(n, d, j) | sign_of(x);
  }
  static constexpr bool may_vanish = Level == level::ha && Unit == angle_unit::half_turns;
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

TMK_KERNELS(s, Atan, unary, LHE, arctangent_in_radians)
#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_KERNELS(d, Atan, unary, HHE, arctangent_in_radians)
#else
TMK_KERNELS(d, Atan, unary, LHE, arctangent_in_radians)
#endif
TMK_REAL_KERNELS(Atanpi, unary, LHE, arctangent_in_half_turns)
