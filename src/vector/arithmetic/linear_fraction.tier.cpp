// SPDX-License-Identifier: Apache-2.0
// (scalea a + shifta) / (scaleb b + shiftb), however much cancels in the sums. In single precision by
// doubles, whose products of singles are exact, so that only the sums and the quotient are rounded. In double
// precision by pairs: with numerator and denominator n + n', d + d' to 2^-100,
//   q = n / d,  (n + n') / (d + d') = q + ((n - q d) + (n' - q d')) / d.
#include "vector/arithmetic/exact.hpp"
#include "vector/toolbox/near.hpp"
#include "vector/toolbox/pair.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct coefficients {
  Real scalea, shifta, scaleb, shiftb;
};

template <class Real>
struct linear_fraction;

template <>
struct linear_fraction<float> : memory_bound<float>, coefficients<float> {
  using value = f32;
  linear_fraction(float sa, float ta, float sb, float tb) : coefficients{sa, ta, sb, tb} {}

  f64 numerator(const f64& x) const { return multiply_add(f64(scalea), x, f64(shifta)); }
  f64 denominator(const f64& y) const { return multiply_add(f64(scaleb), y, f64(shiftb)); }

  value fast(const value& x, const value& y) const {
    const auto formula = [this](const f64& a, const f64& b) {
      if constexpr (this_tier == 2)
        return numerator(a) * near_reciprocal(denominator(b));
      else
        return numerator(a) / denominator(b);
    };
    return in_double(formula, x, y);
  }
  lane_mask<float> flagged(const value&, const value&, const value& r) const { return not_normal(r); }
  lane_mask<float> patch(const value& x, const value& y, value& r) const {
    const auto zero_or_one = [this](const f64& a, const f64& b) {
      const f64 zero(0.0), one(1.0), d = denominator(b);
      const auto good = (d < zero) | (d > zero);
      const f64 signed_zero = with_sign_of(zero, d), infinity(std::numeric_limits<double>::infinity());
      return xsimd::select((numerator(a) == zero) & good & (xsimd::abs(d) < infinity), signed_zero, one);
    };
    const value vanished = in_double(zero_or_one, x, y), zero(0.0f);
    r = xsimd::select(vanished == zero, vanished, r);
    pack result{r};
    const auto nan = answer_nans(pack{x, y}, result);
    r = result.first;
    return !(nan | (vanished == zero));
  }
};

// Maximum errors in ulp, by tmk-accuracy LinearFrac, at (a, b, scalea, shifta, scaleb, shiftb):
//   single (all tiers): 0.5000
//   double (W7): 0.6682 at (0x1.ae0b421e6e4p-1032, -0x1.e9986102b9b6ap+224, -0x1.e3af2f4739p-5,
//   -0x1.28cd8b747a8aep-794, 0x1.62be7aed6a5c4p+1, -0x1.a2cbb41c9ea83p+2)
//   double (V3, V4): 0.5007 at (-0x1.755eff8f6196p+1, -0x1.66ffec0c1fa3fp+103, -0x1.fffffffffffffp+1023,
//   -0x1.cb93bde297a48p+1, 0x1.303562e53b976p+2, 0x1.4ecb135a2dc3dp-644)
template <>
struct linear_fraction<double> : memory_bound<double>, coefficients<double> {
  using value = f64;
  static constexpr auto controls = is_baseline ? control_class::b : control_class::a;
  linear_fraction(double sa, double ta, double sb, double tb) : coefficients{sa, ta, sb, tb} {}

  static batch_pair<double> linear(const value& scale, const value& x, const value& shift) {
    const auto product = two_prod(scale, x), sum = two_sum(product.high, shift);
    return fast_two_sum(sum.high, sum.low + product.low);
  }
  batch_pair<double> numerator(const value& x) const { return linear(value(scalea), x, value(shifta)); }
  batch_pair<double> denominator(const value& y) const { return linear(value(scaleb), y, value(shiftb)); }

  value fast(const value& x, const value& y) const {
    const auto n = numerator(x), d = denominator(y);
    const value inverse = near_reciprocal(d.high), q = n.high * inverse;
    const value rest = residual(n.high, q, d.high) + negative_multiply_add(q, d.low, n.low);
    return multiply_add(rest, inverse, q);
  }
  // Products too small for a residual do not count in sums of this size.
  static lane_mask<double> outside_range(const value& sum) {
    return magnitude_outside<double, to_bits(0x1p-900), to_bits(0x1p1000)>(sum);
  }
  lane_mask<double> flagged(const value& x, const value& y, const value& r) const {
    return outside_range(numerator(x).high) | outside_range(denominator(y).high) | not_normal(r);
  }
  lane_mask<double> patch(const value& x, const value& y, value& r) const {
    const value zero(0.0), d = denominator(y).high, magnitude = xsimd::abs(d);
    const value product = xsimd::abs(value(scalea) * x);
    const auto vanished = (numerator(x).high == zero) &
                          ((product >= value(0x1p-960)) | (x == zero) | (value(scalea) == zero)) &
                          (magnitude >= value(0x1p-900)) & (magnitude < value(0x1p1000));
    r = xsimd::select(vanished, with_sign_of(zero, d), r);
    pack result{r};
    const auto nan = answer_nans(pack{x, y}, result);
    r = result.first;
    return !(nan | vanished);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(LinearFrac, linear_fraction, HHH, linear_fraction)
