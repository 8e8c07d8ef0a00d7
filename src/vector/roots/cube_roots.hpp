// SPDX-License-Identifier: Apache-2.0
// x^(1/3), x^(-1/3) and x^(2/3) on every tier, from an estimate t of x^(-1/3) by a third of x's bits:
//   x^(n/3) = x^a t^b (1 - d)^(-m/3),   d = 1 - x t^3,   x^a t^b the power of t nearest to it
// In one step, |d| < 0.103. Or in two: y = t (1 - d)^(-1/3) nearly, then the same with y, |h| = |1 - x y^3|
// tiny. For HA y is cut to so few bits that y^2 is exact, and x y^2 or x y has its low part: the errors that
// remain are those of h, far below a unit, and of the last sum. Nothing on the way overflows or underflows.
#pragma once

#include "vector/roots/cube_roots_data.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/toolbox/scaled_back.hpp"
#include "vector/toolbox/settled.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

enum class cube_root { third, minus_third, two_thirds };

inline f32 minus_third_estimate(const f32& x) {
  const f32 bits = xsimd::to_float(bits_as<int32_t>(x));
  return bits_as<float>(
      xsimd::to_int(negative_multiply_add(bits, f32(1.0f / 3), f32(cube_root_data::single_estimate))));
}
inline f64 minus_third_estimate(const f64& x) {
  const u64 third = multiply_low_words(bits_as<uint64_t>(x) >> 32, u64(0x55555556));
  return bits_as<double>(u64(cube_root_data::double_estimate) - third);
}

// What the formulas of a precision and level are made of.
template <class Real, level Level>
struct cube_root_series;

#define TMK_CUBE_ROOT_SERIES(Real, Level, first, second)               \
  template <>                                                          \
  struct cube_root_series<Real, Level> {                               \
    static constexpr auto& first_step = cube_root_data::first;         \
    static constexpr auto& by_one_third = cube_root_data::second##_1;  \
    static constexpr auto& by_two_thirds = cube_root_data::second##_2; \
  };
#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_CUBE_ROOT_SERIES(float, level::ha, single_first, single_baseline_second)
TMK_CUBE_ROOT_SERIES(double, level::ha, double_first, double_baseline_second)
#else
TMK_CUBE_ROOT_SERIES(float, level::ha, single_first, single_second)
TMK_CUBE_ROOT_SERIES(double, level::ha, double_first, double_second)
#endif
TMK_CUBE_ROOT_SERIES(double, level::la, double_first, double_la_second)
TMK_CUBE_ROOT_SERIES(float, level::la, single_first, single_la)
TMK_CUBE_ROOT_SERIES(float, level::ep, single_first, single_ep)
template <>
struct cube_root_series<double, level::ep> {
  static constexpr auto& by_one_third = cube_root_data::double_ep_1;
};
#undef TMK_CUBE_ROOT_SERIES

// The function of Root for positive normal x; its zeros are those of x.
template <class Real, level Level, cube_root Root>
struct cube_root_of_positive {
  using value = batch<Real>;
  using bits = typename format<Real>::bits;
  using series = cube_root_series<Real, Level>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr bool two_steps = Level == level::ha || (Level == level::la && !single);
  static constexpr bool compensated = Level == level::ha;
  static constexpr Real one = 1;

  static value of(const value& x) {
    const value t = minus_third_estimate(x);
    const value xt = x * t, xt2 = xt * t;
    const value d = negative_multiply_add(xt2, t, value(one));
    if constexpr (two_steps) return second_step(x, multiply_add(t * d, polynomial(d, series::first_step), t));
    const value lead = Root == cube_root::third ? xt2 : Root == cube_root::minus_third ? t : xt;
    return with_series(lead, lead, value(Real(0)), d);
  }

 private:
  // lead + (low + factor ((1 - d)^(-n/3) - 1))
  static value with_series(const value& lead, const value& factor, const value& low, const value& d) {
    value p;
    if constexpr (Root == cube_root::third)
      p = polynomial(d, series::by_two_thirds);
    else
      p = polynomial(d, series::by_one_third);
    if constexpr (compensated && Root != cube_root::minus_third)
      return lead + multiply_add(factor * d, p, low);
    return multiply_add(lead * d, p, lead);
  }

  static value second_step(const value& x, const value& estimate) {
    const value y = compensated ? cut(estimate) : estimate;
    const value square = y * y;
    const value& multiplier = Root == cube_root::two_thirds ? y : square;
    const value& other = Root == cube_root::two_thirds ? square : y;
    const auto product = product_of(x, multiplier);
    value h = negative_multiply_add(product.high, other, value(one));
    if constexpr (compensated) h = negative_multiply_add(product.low, other, h);
    const value& lead = Root == cube_root::minus_third ? y : product.high;
    return with_series(lead, is_baseline ? product.high + product.low : product.high, product.low, h);
  }

  // The leading 17 bits of double, or 8 of single. On the baseline 13 and 6.
  static value cut(const value& y) {
    constexpr int kept = is_baseline ? (single ? 6 : 13) : (single ? 8 : 17);
    constexpr bits mask = ~((bits{1} << (format<Real>::precision - kept)) - 1);
    return bits_as<Real>(bits_as<bits>(y) & batch<bits>(mask));
  }

  // Exact where fused operations are; on the baseline the high part is, of x's leading bits.
  static batch_pair<Real> product_of(const value& x, const value& y) {
    if constexpr (!compensated) {
      return {x * y, value(Real(0))};
    } else if constexpr (is_baseline) {
      constexpr bits mask = ~((bits{1} << (format<Real>::precision - (single ? 6 : 14))) - 1);
      const value leading = bits_as<Real>(bits_as<bits>(x) & batch<bits>(mask));
      return {leading * y, (x - leading) * y};
    } else {
      return two_prod(x, y);
    }
  }
};

// Maximum errors in ulp (W7; V3 and V4), by tmk-accuracy --search thorough; singles: all of three octaves,
// too, after which the errors repeat but for the estimate's last bits:
//   cbrt      single LA 1.673; 1.282 at 0x1.cc2e22p-16: got 0x1.ee1bdap-6, want 0x1.ee1bdc9p-6
//             single HA 0.7034 at 0x1.67fe82p+5: got 0x1.c747a8p+1, want 0x1.c747a698p+1
//                       0.5436 at 0x1.d47c66p+2
//             double LA 1.557; 0.9932 at -0x1.fd5f903d7040cp+926: got -0x1.ff1f7856b2067p+308,
//                       want -0x1.ff1f7856b2067fep+308
//             double HA 0.5086; 0.5030 at 0x1.fbc8p-1060: got 0x1.fe9701b5bad38p-354,
//                       want 0x1.fe9701b5bad377fp-354
//   inv_cbrt  single LA 1.293; 1.140    single HA 0.5432; 0.5240    double 0.5013; 0.5006
//   pow2o3    single LA 1.702; 1.474    single HA 0.6020; 0.5409
//             double LA 1.370; 1.159    double HA 0.5029; 0.5010
// EP: 11.8 bits (single cbrt), 13.4 bits (other singles), 26.9 bits (double).
template <class Real, level Level, cube_root Root>
struct cube_root_kernel : description<Real> {
  using value = batch<Real>;
  using mask = lane_mask<Real>;
  using positive = cube_root_of_positive<Real, Level, Root>;
  static constexpr auto sse = sse_control::exact;  // comparisons with zero are to mean zero

  static value fast(const value& x) { return signed_as(x, positive::of(xsimd::abs(x))); }
  static mask flagged(const value& x, const value&) {
    const mask special = not_normal(x);
    if constexpr (Root == cube_root::minus_third) return special;
    return special & !(x == value(Real(0)));  // a NaN is unequal too
  }

  static mask patch(const value& x, value& r) {
    constexpr int thirds = sizeof(Real) == 4 ? 8 : 18;
    constexpr Real up = Real(uint64_t{1} << 3 * thirds);
    constexpr Real root = Real(1 << thirds);
    constexpr Real down = Root == cube_root::third         ? 1 / root
                          : Root == cube_root::minus_third ? root
                                                           : 1 / (root * root);
    const value magnitude = xsimd::abs(x), infinity(std::numeric_limits<Real>::infinity());
    const mask subnormal = magnitude < value(std::numeric_limits<Real>::min());
    if (lane_bits<Real>(subnormal) != 0)
      r = xsimd::select(subnormal, signed_as(x, positive::of(scaled_up<up>(magnitude)) * value(down)), r);
    const value limit = Root == cube_root::minus_third ? value(Real(0)) : infinity;
    r = xsimd::select(magnitude == infinity, signed_as(x, limit), r);
    r = xsimd::select(xsimd::isnan(x), x + x, r);
    return Root == cube_root::minus_third ? x == value(Real(0)) : mask(false);
  }
  static std::optional<int32_t> shortcut(const Real* a, Real* r) {
    const bool pole = Root == cube_root::minus_third && *a == 0;
    return pole ? std::optional(infinite(*a, VTM_STATUS_SINGULARITY, r)) : std::nullopt;
  }

 private:
  static value signed_as(const value& x, const value& y) {
    return Root == cube_root::two_thirds ? y : y | xsimd::bitofsign(x);
  }
};

template <class Real, level Level>
using cbrt_of = cube_root_kernel<Real, Level, cube_root::third>;
template <class Real, level Level>
using inv_cbrt_of = cube_root_kernel<Real, Level, cube_root::minus_third>;
template <class Real, level Level>
using two_thirds_of = cube_root_kernel<Real, Level, cube_root::two_thirds>;

}  // namespace
TMK_TIER_CLOSE
