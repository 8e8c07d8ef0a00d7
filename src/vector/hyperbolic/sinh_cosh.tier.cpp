// SPDX-License-Identifier: Apache-2.0
// Hyperbolic sine and cosine: the sums of even_and_odd.hpp.
#include "vector/hyperbolic/even_and_odd.hpp"
#include "vector/toolbox/odd.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct hyperbolic : description<Real> {
  using value = batch<Real>;
  static lane_mask<Real> flagged(const value& x, const value&) {
    return !(xsimd::abs(x) < value(hyperbolic_end<Real>));
  }
};

template <class Real, level Level>
struct hyperbolic_sine : hyperbolic<Real> {
  using value = batch<Real>;
  static value fast(const value& x) {
    return odd_function(x, [](const value& magnitude) {
      const hyperbolic_argument<Real, Level> arg(magnitude);
      if constexpr (Level == level::ha) {
        const auto sum = sinh_pair(arg);
        return sum.high + sum.low;
      } else {
        const value a = arg.growing - arg.falling, b = arg.growing + arg.falling;
        const value curved = multiply_add(b * arg.reduced, arg.odd(), a * arg.even());
        return multiply_add(curved, arg.squared, multiply_add(b, arg.reduced, a));
      }
    });
  }
};

template <class Real, level Level>
struct hyperbolic_cosine : hyperbolic<Real> {
  using value = batch<Real>;
  static value fast(const value& x) {
    const hyperbolic_argument<Real, Level> arg(maximum_or_second(value(tiny<Real>), xsimd::abs(x)));
    if constexpr (Level == level::ha) {
      const auto sum = cosh_pair(arg);
      return sum.high + sum.low;
    } else {
      const value a = arg.growing - arg.falling, b = arg.growing + arg.falling;
      const value sine = multiply_add(arg.squared * arg.reduced, arg.odd(), arg.reduced);
      return b + multiply_add(b * arg.squared, arg.even(), a * sine);
    }
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Sinh, unary, LHE, hyperbolic_sine)
TMK_KERNELS(d, Sinh, unary, LHL, hyperbolic_sine)
TMK_KERNELS(s, Cosh, unary, LHE, hyperbolic_cosine)
#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_KERNELS(d, Cosh, unary, HHH, hyperbolic_cosine)
#else
TMK_KERNELS(d, Cosh, unary, LHL, hyperbolic_cosine)
#endif
