// SPDX-License-Identifier: Apache-2.0
// Inverse hyperbolic sine and cosine:
//   asinh(x) = log(x + sqrt(x^2 + 1)),   acosh(x) = log(x + sqrt(x^2 - 1))
// The logarithm's argument has two parts, since what counts around 1 is its distance from 1; from `limit` on
// it is 2 x. EP takes one part. On the baseline one part in double is enough for single.
#include "vector/inverse_hyperbolic/coarse_log.hpp"
#include "vector/logarithm/log_of_pair.hpp"
#include "vector/toolbox/near.hpp"
#include "vector/toolbox/odd.hpp"
#include "vector/toolbox/settled.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
struct inverse_hyperbolic : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr auto sse = sse_control::nearest;
  static constexpr bool by_double = is_baseline && single && Level != level::ep;

  static constexpr Real limit = single ? Real(0x1p12) : Real(0x1p26);   // sqrt(x^2 +- 1) = x
  static constexpr Real end = single ? Real(0x1p125) : Real(0x1p1021);  // 2 x is in the logarithm's range
  static value limited(const value& x) { return minimum_or_second(value(limit), x); }

  // log(high + low), or log(2 x) beyond the limit
  static value log_of_sum(const value& x, const batch_pair<Real>& sum) {
    const auto large = x > value(limit);
    const value high = xsimd::select(large, x + x, sum.high);
    if constexpr (Level == level::ep)
      return coarse_log(high);
    else
      return log_of_pair<Level>(high, xsimd::select(large, value(Real(0)), sum.low));
  }
};

// Maximum errors in ulp (W7), by tmk-accuracy Asinh --search thorough:
//   single LA: 0.5002 at -0x1.ff553ep-9: got -0x1.ff54e8p-9, want -0x1.ff54e9p-9
//   single HA: 0.5002 at -0x1.ff553ep-9: got -0x1.ff54e8p-9, want -0x1.ff54e9p-9
//   single EP: 1475 at 0x1.cc0058p-3: got 0x1.c82c7cp-3, want 0x1.c8380226p-3
//   double LA, EP: 1.999 at 0x1.ffe55ce87e04p-9: got 0x1.ffe507a09fe58p-9, want 0x1.ffe507a09fe56p-9
//   double HA: 0.5138 at -0x1.1089bdb9a094cp+26: got -0x1.2c70f223ca9dap+4, want -0x1.2c70f223ca9da84p+4
// Maximum errors in ulp (V3, V4), by tmk-accuracy Asinh --search thorough:
//   single LA: 1.499 at -0x1.ff5422p-9: got -0x1.ff53dp-9, want -0x1.ff53cd01p-9
//   single HA: 0.5703 at 0x1.ba485cp-12: got 0x1.ba485ap-12, want 0x1.ba485b24p-12
//   single EP: 381 at 0x1.00a468p-3: got 0x1.fff056p-4, want 0x1.fff34fc8p-4
//   double LA, EP: 1.792 at 0x1.fe610180c9a46p-5: got 0x1.fe0ca0b828df2p-5, want 0x1.fe0ca0b828df035p-5
//   double HA: 0.5212 at -0x1.4dde480a823edp-25: got -0x1.4dde480a823ebp-25, want -0x1.4dde480a823eb85p-25
template <class Real, level Level>
struct inverse_sinh : inverse_hyperbolic<Real, Level> {
  using base = inverse_hyperbolic<Real, Level>;
  using value = batch<Real>;
  // EP has the first two terms of the series below.
  static constexpr Real small = Real(0x1p-3);

  static value of_magnitude(const value& a) {
    const value one(Real(1)), c = base::limited(a);
    if constexpr (Level == level::ep) {
      return base::log_of_sum(a, {c + near_root<Real>(multiply_add(c, c, one)).root, one});
    } else if constexpr (base::by_double) {
      return in_double([](const auto& v) { return log_for_single(v + xsimd::sqrt(v * v + f64(1.0))); }, a);
    } else {
      const auto square = square_plus_one(c);
      const auto root = near_root<Real>(square.high).refined().pair(square);
      const auto sum = fast_two_sum(root.high, c);
      return base::log_of_sum(a, {sum.high, sum.low + root.low});
    }
  }
  // 1 - high is exact: a multiple of high's last place.
  static batch_pair<Real> square_plus_one(const value& c) {
    const value one(Real(1));
    if constexpr (is_baseline) {
      const auto square = two_prod(c, c), sum = two_sum(square.high, one);
      return {sum.high, sum.low + square.low};
    } else {
      const value high = multiply_add(c, c, one);
      return {high, multiply_add(c, c, one - high)};
    }
  }

  static value fast(const value& x) {
    return odd_function(x, [](const value& a) {
      const value y = of_magnitude(a);
      if constexpr (Level != level::ep) return y;
      return xsimd::select(a < value(small), negative_multiply_add(a * a, a * value(Real(1.0 / 6)), a), y);
    });
  }
  static lane_mask<Real> flagged(const value& x, const value&) { return !(xsimd::abs(x) < value(base::end)); }
  static std::optional<int32_t> shortcut(const Real* a, Real* r) {
    return std::isinf(*a) ? std::optional(infinite(*a, VTM_STATUS_OK, r)) : std::nullopt;
  }
};

// Maximum errors in ulp (W7), by tmk-accuracy Acosh --search thorough:
//   single LA: 0.5000 at 0x1.4913c2p+0: got 0x1.7a345p-1, want 0x1.7a3451p-1
//   single HA: 0.5000 at 0x1.4913c2p+0: got 0x1.7a345p-1, want 0x1.7a3451p-1
//   single EP: 1471 at 0x1.065ac6p+0: got 0x1.c755dcp-3, want 0x1.c7615a2ep-3
//   double LA: 1.999 at 0x1.00007ffb7725ap+0: got 0x1.fff6d8e27eebcp-9, want 0x1.fff6d8e27eebep-9
//   double HA: 0.5184 at 0x1.0000002d41dap+0: got 0x1.3071f15da0589p-13, want 0x1.3071f15da05887bp-13
//   double EP: 2.5e+07 at 0x1.0000000000001p+0: got 0x1.6a09e67ffffffp-26, want 0x1.6a09e667f3bcc72p-26
// Maximum errors in ulp (V3, V4), by tmk-accuracy Acosh --search thorough:
//   single LA: 1.462 at 0x1.007fa4p+0: got 0x1.ff32ap-5, want 0x1.ff32a2ecp-5
//   single HA: 0.5179 at 0x1.00118p+0: got 0x1.7a9ee6p-6, want 0x1.7a9ee4f7p-6
//   single EP: 1070 at 0x1.014202p+0: got 0x1.95e7eep-4, want 0x1.95df92f2p-4
//   double LA: 1.803 at 0x1.007e2107d1497p+0: got 0x1.fc29ad2af8fe6p-5, want 0x1.fc29ad2af8fe432p-5
//   double HA: 0.5440 at 0x1.0000002d83b6dp+0: got 0x1.314f2847e67b1p-13, want 0x1.314f2847e67b075p-13
//   double EP: 2.5e+07 at 0x1.0000000000001p+0: got 0x1.6a09e67fffffdp-26, want 0x1.6a09e667f3bcc72p-26
template <class Real, level Level>
struct inverse_cosh : inverse_hyperbolic<Real, Level> {
  using base = inverse_hyperbolic<Real, Level>;
  using value = batch<Real>;
  static constexpr Real filler = Real(1.5);

  static value fast(const value& x) {
    const value one(Real(1)), c = base::limited(x);
    if constexpr (Level == level::ep) {
      const value t = c - one;
      return base::log_of_sum(x, {c + near_root<Real>(multiply_add(t, t, t + t)).root, one});
    } else if constexpr (base::by_double) {
      return in_double([](const auto& v) { return log_for_single(v + xsimd::sqrt(v * v - f64(1.0))); }, x);
    } else {
      const auto square = two_prod(c, c), less = fast_two_sum(square.high, -one);
      const auto root = near_root<Real>(less.high).pair({less.high, less.low + square.low});
      const auto sum = fast_two_sum(c, root.high);
      return base::log_of_sum(x, {sum.high, sum.low + root.low});
    }
  }
  // Good: 1 <= x < end.
  static lane_mask<Real> flagged(const value& x, const value&) {
    return !((x >= value(Real(1))) & (x < value(base::end)));
  }
  static std::optional<int32_t> shortcut(const Real* a, Real* r) {
    if (*a < 1) return undefined(r);
    return std::isinf(*a) ? std::optional(infinite(*a, VTM_STATUS_OK, r)) : std::nullopt;
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Asinh, unary, LHE, inverse_sinh)
TMK_KERNELS(d, Asinh, unary, LHL, inverse_sinh)
TMK_KERNELS(s, Acosh, unary, LHE, inverse_cosh)
TMK_KERNELS(d, Acosh, unary, LHE, inverse_cosh)
