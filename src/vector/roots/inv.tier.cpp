// SPDX-License-Identifier: Apache-2.0
// 1 / x.
//   HA: the processor's division, correctly rounded.
//   Below, from an estimate y0. Single: the estimate itself (EP), or with one Newton step (LA). Double, with
//   e = 1 - x y0: y0 / (1 - e) = y0 (1 + e + e^2 + ...), cut at e^2 (EP) or e^4 (LA).
#include "vector/roots/estimates.hpp"
#include "vector/roots/inv_rare.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// Maximum errors in ulp, by tmk-accuracy Inv --search thorough:
//   single LA (W7): 3.327 at 0x1.01e0c6p+124: got 0x1.fc456ep-125, want 0x1.fc4574a8p-125
//   single LA (V3): 1.960 at 0x1.07400ap+108: got 0x1.f1e624p-109, want 0x1.f1e627ecp-109
//   single LA (V4): 0.5267 at 0x1.01f0fap+64: got 0x1.fc2586p-65, want 0x1.fc25870ep-65
//   single EP (W7, V3): 4996 at 0x1.021ffep+122: got 0x1.fbfp-123, want 0x1.fbc8f8e7p-123
//   single EP (V4): 710 at 0x1.0600fep+124: got 0x1.f44ap-125, want 0x1.f44474e7p-125
//   double LA (W7): 1.734 at 0x1.04131ce246bep+1020: got 0x1.f7fa75b591fep-1021, want
//   0x1.f7fa75b591fde44p-1021 double LA (V4): 0.5000 at 0x1.06e758879a32fp+505: got 0x1.f28e209430b11p-506,
//   want 0x1.f28e209430b118p-506 double EP (W7): 242034 at -0x1.021ffffff5ec5p-1: got -0x1.fbc8f4f7c1174p+0,
//   want -0x1.fbc8f4f78600264p+0 double EP (V4): 748 at -0x1.f199fffffb1aep+1: got -0x1.07685415585d5p-2,
//   want -0x1.07685415582e884p-2
template <class Real, level Level>
struct inverse : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  // V3 divides doubles faster than it puts an estimate together from singles.
  static constexpr bool divides = Level == level::ha || (this_tier == 1 && !single);
  static constexpr bool streams = divides || !is_baseline;
  static constexpr int group = is_baseline && !divides && (single || Level == level::ep)
                                   ? (single ? 8 : 16)
                                   : description<Real>::group;

  static value fast(const value& x) {
    const value one(Real(1));
    if constexpr (divides) {
      if constexpr (is_baseline) return one / x;
      // A division by a subnormal number may take a hundred times as long.
      return one / xsimd::select(xsimd::abs(x) < value(std::numeric_limits<Real>::min()), one, x);
    } else {
      const value y0 = reciprocal_estimate(x);
      if constexpr (single) {
        if constexpr (Level == level::ep) return y0;
        if constexpr (is_baseline) return y0 * (value(2.0f) - x * y0);
        return multiply_add(negative_multiply_add(x, y0, one), y0, y0);
      }
      const value e = negative_multiply_add(x, y0, one);
      const value s = multiply_add(e, e, e);
      if constexpr (Level == level::ep) return multiply_add(y0, s, y0);
      if constexpr (is_baseline) return y0 + y0 * (e * (one + e * (one + e * (one + e))));
      return multiply_add(y0, multiply_add(e * e, s, s), y0);
    }
  }
  // The division's good lanes are all but those below the normal numbers, since a thread that flushes would
  // divide by zero. The estimate's: 2^-126 <= |x| < 2^126, 2^-1021 <= |x| < 2^1022, and on the baseline 2^126
  // itself: it is part of the interface, though its estimate may come out below the normal numbers.
  static constexpr Real least = single ? Real(0x1p-126) : Real(0x1p-1021);
  static constexpr Real end = single ? Real(0x1p126) : Real(0x1p1022);
  static lane_mask<Real> flagged(const value& x, const value&) {
    if constexpr (divides)
      return below_normal(x);
    else
      return magnitude_outside<Real, to_bits(least), to_bits(end) + (is_baseline && single)>(x);
  }
  // Subnormal numbers by their integer fractions, x = m 2^-149 or m 2^-1074, which no flush control reaches.
  static lane_mask<Real> patch(const value& x, value& r) {
    using bits = typename format<Real>::bits;
    constexpr Real integer = single ? Real(0x1p23) : Real(0x1p52);
    constexpr Real half = single ? Real(0x1p75) : Real(0x1p537), other_half = single ? Real(0x1p74) : half;
    const batch<bits> fraction = bits_as<bits>(x) & batch<bits>((bits{1} << format<Real>::fraction_bits) - 1);
    const value m = bits_as<Real>(fraction | batch<bits>(to_bits(integer))) - value(integer);
    const auto subnormal = (xsimd::abs(x) < value(std::numeric_limits<Real>::min())) & (m > value(Real(0)));
    const value inverse = (value(half) / m) * value(other_half);
    r = xsimd::select(subnormal, inverse | (x & value(Real(-0.0))), r);
    pack result{r};
    const auto nan = answer_nans(pack{x}, result);
    r = result.first;
    return !(subnormal | nan);
  }
  static int32_t rare(const Real* a, Real* r) {
    if constexpr (is_baseline && single && !divides)
      if (std::fabs(*a) >= least && std::fabs(*a) <= end) {
        *r = fast(value(*a)).get(0);
        return VTM_STATUS_OK;
      }
    return reciprocal_rare(a, r);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Inv, unary, LHE, inverse)
