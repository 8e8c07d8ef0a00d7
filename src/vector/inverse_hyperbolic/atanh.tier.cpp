// SPDX-License-Identifier: Apache-2.0
// Inverse hyperbolic tangent: atanh(x) = log((1 + x) / (1 - x)) / 2. The quotient has two parts, since what
// counts around 1 is its distance from 1. Where x is small the first two terms of the series are closer. EP
// takes one part. On the baseline one part in double is enough for single.
#include "vector/inverse_hyperbolic/coarse_log.hpp"
#include "vector/logarithm/log_of_pair.hpp"
#include "vector/toolbox/near.hpp"
#include "vector/toolbox/odd.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
struct inverse_tanh : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr auto sse = sse_control::nearest;
  static constexpr Real filler = Real(0.5);
  // EP has the first two terms of the series below.
  static constexpr Real small = single ? Real(0x1p-3) : Real(0x1p-8);

  static value twice_of_magnitude(const value& a) {
    if constexpr (is_baseline && single && Level != level::ep) {
      return in_double([](const auto& v) { return log_for_single((f64(1.0) + v) / (f64(1.0) - v)); }, a);
    } else if constexpr (Level == level::ep) {
      const value one(Real(1));
      return coarse_log((one + a) * near_reciprocal(one - a));
    } else {
      const value one(Real(1));
      const auto above = fast_two_sum(one, a), below = fast_two_sum(one, -a);
      const value reciprocal = one / below.high;
      const value quotient = above.high * reciprocal;
      const value rest =
          residual(above.high, quotient, below.high) + negative_multiply_add(quotient, below.low, above.low);
      return log_of_pair<Level>(quotient, rest * reciprocal);
    }
  }
  static value fast(const value& x) {
    return odd_function(x, [](const value& a) {
      const value y = twice_of_magnitude(a) * value(Real(0.5));
      if constexpr (Level != level::ep) return y;
      return xsimd::select(a < value(small), multiply_add(a * a, a * value(Real(1.0 / 3)), a), y);
    });
  }
  static lane_mask<Real> flagged(const value& x, const value&) { return !(xsimd::abs(x) < value(Real(1))); }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Atanh, unary, LHE, inverse_tanh)
