// SPDX-License-Identifier: Apache-2.0
// |x + iy| on the baseline, without a division or a root: with M >= m the magnitudes of x and y, cut into
// high and low halves, s + s' = M^2 + m^2 as a pair, e near 1 / sqrt(s) and r = s e,
//   r + (s - r^2 + s') e / 2
// Numbers whose squares leave the format's range, infinities, NaNs and zeros go one by one; such doubles to
// the x87 unit.
#include <cmath>
#include <limits>

#include "vector/roots/estimates.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/walk/kernel.hpp"

extern "C" int32_t tmk_vtm_reference_zAbs(const tmk_complex16* a, double* r);

TMK_TIER_OPEN
namespace {

// Ordinary numbers, none of them zero. The squares of all singles are in the range of doubles, those of
// doubles in that of the extended format.
inline float root_of_squares(const tmk_complex8& z) {
  const double x = z.re, y = z.im;
  return static_cast<float>(std::sqrt(x * x + y * y));
}
inline double root_of_squares(const tmk_complex16& z) {
  double r;
  tmk_vtm_reference_zAbs(&z, &r);
  return r;
}

// An infinity outweighs a NaN.
template <class Element, class Real>
int32_t hypot_scalar(const Element* z, Real* r) {
  if (std::isinf(z->re) || std::isinf(z->im))
    *r = std::numeric_limits<Real>::infinity();
  else if (z->re == 0 || z->im == 0)
    *r = std::abs(z->re == 0 ? z->im : z->re);
  else
    *r = root_of_squares(*z);
  return VTM_STATUS_OK;
}

template <class Real>
struct modulus : description<Real> {
  using value = complex_value<Real>;
  using bits = typename format<Real>::bits;
  static constexpr bool single = sizeof(Real) == 4;
  // Both magnitudes lie strictly between these.
  static constexpr Real low = single ? Real(0x1p-62) : Real(0x1p-500);
  static constexpr Real high = single ? Real(0x1p63) : Real(0x1p511);

  // x without the lower half of its bits: its square is exact.
  static batch<Real> upper_half(const batch<Real>& x) {
    return bits_as<Real>(bits_as<bits>(x) & batch<bits>(~bits{0} << (single ? 12 : 27)));
  }
  static batch<Real> root_estimate(const batch<Real>& s) {
    batch<Real> e = reciprocal_sqrt_estimate(s);
    for (int step = 0; step < (single ? 1 : 2); ++step)
      e = e * (batch<Real>(Real(1.5)) - batch<Real>(Real(0.5)) * s * e * e);
    return e;
  }
  static batch<Real> fast(const value& z) {
    const batch<Real> x = xsimd::abs(z.re), y = xsimd::abs(z.im);
    const batch<Real> larger = maximum_or_second(x, y), smaller = minimum_or_second(y, x);
    const batch<Real> upper = upper_half(larger), upper_of_smaller = upper_half(smaller);
    const auto s = fast_two_sum(upper * upper, upper_of_smaller * upper_of_smaller);
    const batch<Real> rest = (larger - upper) * (larger + upper) + s.low +
                             (smaller - upper_of_smaller) * (smaller + upper_of_smaller);
    const batch<Real> sum = s.high + rest, e = root_estimate(sum), r = sum * e;
    const batch<Real> upper_root = upper_half(r), lower_root = r - upper_root;
    const batch<Real> residual = (s.high - upper_root * upper_root) - lower_root * (r + upper_root) + rest;
    return r + batch<Real>(Real(0.5)) * e * residual;
  }
  static lane_mask<Real> flagged(const value& z, const batch<Real>&) {
    constexpr bits first = to_bits(low) + 1, end = to_bits(high);
    return magnitude_outside<Real, first, end>(z.re) | magnitude_outside<Real, first, end>(z.im);
  }
  template <class Element>
  static int32_t rare(const Element* z, Real* r) {
    return hypot_scalar(z, r);
  }
};

struct double_modulus : modulus<double> {
  static constexpr auto controls = control_class::c;
};

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp, by tmk-accuracy --search thorough --samples 300000:
//   single: 0.5007 at (0x1.c43e16p+2, 0x1.252134p-6): got 0x1.c43e76p+2, want 0x1.c43e75p+2
//   double: 0.5000 at (0x1.1282dbf049c3p+0, -0x1.40000000000dap+3)
TMK_KERNELS(c, Abs, real_result, HHH, modulus)
TMK_KERNELS(z, Abs, real_result, HHH, double_modulus)
