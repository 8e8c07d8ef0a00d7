// SPDX-License-Identifier: Apache-2.0
// The unbiased exponent: the exponent field goes into the fraction of a power of two whose unit is 1.
#include "vector/logarithm/log_rare.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct exponent_of : description<Real> {
  using value = batch<Real>;
  using bits = typename format<Real>::bits;
  static constexpr int fraction = format<Real>::fraction_bits;

  static value fast(const value& x) {
    constexpr Real shifter = fraction == 23 ? Real(0x1p23) : Real(0x1p52);
    const batch<bits> field = (bits_as<bits>(x) & batch<bits>(format<Real>::infinity)) >> fraction;
    return bits_as<Real>(field | batch<bits>(to_bits(shifter))) - value(shifter + format<Real>::bias);
  }
  // Good: exponent field neither zero nor all ones.
  static lane_mask<Real> flagged(const value& x, const value&) { return not_positive_normal(xsimd::abs(x)); }
  static int32_t rare(const Real* a, Real* r) { return logb_rare(a, r); }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Logb, unary, HHH, exponent_of)
