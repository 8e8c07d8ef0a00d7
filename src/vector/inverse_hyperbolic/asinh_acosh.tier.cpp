// SPDX-License-Identifier: Apache-2.0
// Inverse hyperbolic sine and cosine:
//   asinh(x) = log(x + sqrt(x^2 + 1)),   acosh(x) = log(x + sqrt(x^2 - 1))
// with the logarithm's argument in two parts. From `limit` on the root is x. On the baseline single works in
// double, where one part is enough.
#include "vector/inverse_hyperbolic/root_pair.hpp"
#include "vector/logarithm/log_of_pair.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
constexpr bool by_double = is_baseline && sizeof(Real) == 4;

// From here on x^2 is nothing to ...
template <class Real>
constexpr Real limit = sizeof(Real) == 4 ? Real(0x1p12) : Real(0x1p27);

template <class Real>
struct inverse_hyperbolic : description<Real> {
  static constexpr auto sse = sse_control::nearest;
  // 2 x is a number of which log_of_pair takes the reciprocal's exponent.
  static constexpr Real end = sizeof(Real) == 4 ? Real(0x1p125) : Real(0x1p1021);
};

// log(x + root), for 0 <= x < end; `large` where both are x.
template <level Level, class Real>
batch<Real> log_of_sum(const batch<Real>& x, const batch_pair<Real>& sum) {
  using value = batch<Real>;
  const auto large = x > value(limit<Real>);
  return log_of_pair<Level>(xsimd::select(large, x + x, sum.high),
                            xsimd::select(large, value(Real(0)), sum.low));
}

template <class Real, level Level>
struct inverse_sinh : inverse_hyperbolic<Real> {
  using value = batch<Real>;
  static constexpr Real tiny = sizeof(Real) == 4 ? Real(0x1p-13) : Real(0x1p-28);  // x is the result below

  static value of_magnitude(const value& a) {
    if constexpr (by_double<Real>) {
      return in_double([](const auto& v) { return log_for_single(v + xsimd::sqrt(v * v + f64(1.0))); }, a);
    } else {
      const value c = minimum_or_second(value(limit<Real>), a);
      const auto root = square_root(square_plus_one(c));
      const auto sum = fast_two_sum(root.high, c);
      return log_of_sum<Level>(a, {sum.high, sum.low + root.low});
    }
  }
  static value fast(const value& x) {
    const value a = xsimd::abs(x);
    return xsimd::select(a < value(tiny), a, of_magnitude(a)) | (x & value(Real(-0.0)));
  }
  static lane_mask<Real> flagged(const value& x, const value&) {
    return !(xsimd::abs(x) < value(inverse_sinh::end));
  }
};

template <class Real, level Level>
struct inverse_cosh : inverse_hyperbolic<Real> {
  using value = batch<Real>;
  static constexpr Real filler = Real(1.5);

  static value fast(const value& x) {
    if constexpr (by_double<Real>) {
      return in_double([](const auto& v) { return log_for_single(v + xsimd::sqrt(v * v - f64(1.0))); }, x);
    } else {
      const value c = minimum_or_second(value(limit<Real>), x);
      const auto root = square_root_or_zero(square_minus_one(c));
      const auto sum = fast_two_sum(c, root.high);
      return log_of_sum<Level>(x, {sum.high, sum.low + root.low});
    }
  }
  // Good: 1 <= x < end.
  static lane_mask<Real> flagged(const value& x, const value&) {
    return !((x >= value(Real(1))) & (x < value(inverse_cosh::end)));
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Asinh, unary, LHE, inverse_sinh)
TMK_KERNELS(d, Asinh, unary, LHL, inverse_sinh)
TMK_KERNELS(s, Acosh, unary, LHE, inverse_cosh)
TMK_KERNELS(d, Acosh, unary, LHE, inverse_cosh)
