// SPDX-License-Identifier: Apache-2.0
// Inverse hyperbolic sine and cosine:
//   asinh(x) = log(x + sqrt(x^2 + 1)),   acosh(x) = log(x + sqrt(x^2 - 1))
// The logarithm's argument has two parts, since what counts around 1 is its distance from 1; from `limit` on
// it is 2 x. EP takes one part. On the baseline one part in double is enough for single.
#include "vector/inverse_hyperbolic/coarse_log.hpp"
#include "vector/logarithm/log_of_pair.hpp"
#include "vector/toolbox/near.hpp"
#include "vector/toolbox/odd.hpp"
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
};

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
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Asinh, unary, LHE, inverse_sinh)
TMK_KERNELS(d, Asinh, unary, LHL, inverse_sinh)
TMK_KERNELS(s, Acosh, unary, LHE, inverse_cosh)
TMK_KERNELS(d, Acosh, unary, LHE, inverse_cosh)
