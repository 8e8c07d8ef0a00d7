// SPDX-License-Identifier: Apache-2.0
// What the complex inverse functions share: numbers by parts, the angle of a vector, and what needs no
// computation. The formulas take |re| and |im|; the signs come back at the end, so that all symmetries hold
// bit for bit.
#pragma once

#include "vector/inverse_trigonometric/arctangent.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// i times the conjugate: the reflection that makes functions of the hyperbola those of the circle.
template <class Real>
complex_value<Real> swapped(const complex_value<Real>& z) {
  return {z.im, z.re};
}

template <class Real>
complex_value<Real> select(const lane_mask<Real>& which, const complex_value<Real>& z,
                           const complex_value<Real>& otherwise) {
  return {xsimd::select(which, z.re, otherwise.re), xsimd::select(which, z.im, otherwise.im)};
}

// F of the circle from F of the hyperbola, or the other way round: F(i z) / i.
template <class F>
struct turned {
  template <level Level, class Real>
  static complex_value<Real> of(const complex_value<Real>& z) {
    return swapped(F::template of<Level>(swapped(z)));
  }
  template <level Level, class Real>
  static complex_value<Real> of_far(const complex_value<Real>& z) {
    return swapped(F::template of_far<Level>(swapped(z)));
  }
  template <class Real>
  static complex_value<Real> of_tiny(const complex_value<Real>& z) {
    return swapped(F::of_tiny(swapped(z)));
  }
  template <class Real>
  static complex_value<Real> of_nan(const complex_value<Real>& z) {
    return swapped(F::of_nan(swapped(z)));
  }
  template <class Real>
  static lane_mask<Real> good(const complex_value<Real>& z, const complex_value<Real>& r) {
    return F::good(swapped(z), swapped(r));
  }
  template <class Real>
  static lane_mask<Real> far_good(const complex_value<Real>& z) {
    return F::far_good(swapped(z));
  }
};

template <class Real>
batch_pair<Real> exactly(const batch<Real>& x) {
  return {x, batch<Real>(Real(0))};
}

// n / d. A second word counts for less than an ulp or two, so that 5 % of it are too little to matter.
template <level Level, class Real>
batch_pair<Real> quotient(const batch<Real>& n, const batch_pair<Real>& d) {
  const batch<Real> q = n / d.high;
  if constexpr (Level != level::ha) return exactly(q);
  return {q, negative_multiply_add(q, d.low, residual(n, q, d.high)) * rough_quotient<Real(1)>(d.high)};
}

// The angle of the vector (x, y), y >= 0, to the x axis. Second words count at level HA.
template <level Level, class Real>
batch<Real> angle_of(const batch_pair<Real>& y, const batch_pair<Real>& x) {
  using value = batch<Real>;
  const value width = xsimd::abs(x.high);
  const auto steep = y.high > width;
  const value n = minimum_or_second(width, y.high), d = maximum_or_second(y.high, width);
  const value j = right_angles(steep, x.high);
  if constexpr (Level != level::ha) return arctangent<Real, Level, angle_unit::radians>(n, d, j);
  using cells = arctangent_in_cells<Real, angle_unit::radians>;
  const value width_low = x.low ^ sign_of(x.high);
  const typename cells::second_words low{xsimd::select(steep, width_low, y.low),
                                         xsimd::select(steep, y.low, width_low)};
  return xsimd::abs(cells(n, d, j).ha(low));
}

// A kernel of one of these functions from
//   Function::of<Level>(z), for parts below `far`
//   Function::of_far<Level>(z), beyond and of infinite parts
//   Function::of_tiny(z), where both parts are far below the last place of 1
//   Function::of_nan(z), where one part is a NaN, and the other one not infinite
//   Function::good(z, r), whether of() served the lanes below `far`, and far_good(z), the same of of_far()
template <class Real, level Level, class Function>
struct complex_inverse : description<Real> {
  using complex = complex_value<Real>;
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr auto sse = sse_control::exact;  // a part may be subnormal, and the root of it not
  static constexpr Real filler = Real(0.5);
  static constexpr Real far = single ? Real(0x1p60) : Real(0x1p500);
  // Below, the second words of quotients lose their bits.
  static constexpr Real least = single ? Real(0x1p-100) : Real(0x1p-980);

  static complex fast(const complex& z) { return Function::template of<Level>(z); }
  static lane_mask<Real> near(const complex& z) {
    return (xsimd::abs(z.re) < value(far)) & (xsimd::abs(z.im) < value(far));
  }
  static lane_mask<Real> not_vanishing(const value& x) {
    using bits = typename format<Real>::bits;
    return magnitude_outside<Real, bits{1}, to_bits(least)>(x);
  }
  static lane_mask<Real> good(const complex& z, const complex& r) {
    return near(z) & not_vanishing(r.re) & not_vanishing(r.im) & Function::good(z, r);
  }
  static lane_mask<Real> flagged(const complex& z, const complex& r) { return !good(z, r); }
  static lane_mask<Real> patch(const complex& z, complex& r) {
    const value infinity(std::numeric_limits<Real>::infinity());
    const auto infinite = (xsimd::abs(z.re) == infinity) | (xsimd::abs(z.im) == infinity);
    const auto has_nan = unordered(z.re, z.im), nan = has_nan & (!infinite);
    const auto is_far = (!(has_nan | near(z))) & Function::far_good(z);
    constexpr Real tiny = single ? Real(0x1p-30) : Real(0x1p-60);
    const auto is_tiny = (xsimd::abs(z.re) < value(tiny)) & (xsimd::abs(z.im) < value(tiny));
    const auto settled = nan | is_far | is_tiny | good(z, r);
    // On their scale others would be subnormal numbers.
    const complex only_far = select<Real>(is_far, z, {infinity, infinity});
    r = select<Real>(is_far, Function::template of_far<Level>(only_far), r);
    r = select<Real>(is_tiny, Function::of_tiny(z), r);
    r = select<Real>(nan, Function::of_nan(z), r);
    return !settled;
  }
};

// A NaN for both parts, or only for one where the other is that of a zero real part.
template <class Real>
complex_value<Real> nan_unless_zero(const complex_value<Real>& z, const batch<Real>& at_zero) {
  const batch<Real> nan = z.re + z.im;
  return {xsimd::select(z.re == batch<Real>(Real(0)), at_zero, nan), nan};
}

// Real parts of a number that is far away, on a scale where squares are in the format. Infinite parts
// outweigh finite ones.
template <class Real>
constexpr int far_scale = sizeof(Real) == 4 ? -80 : -600;  // a power of two
template <class Real>
batch<Real> scaled_by_far(const batch<Real>& x) {
  return x * batch<Real>(sizeof(Real) == 4 ? Real(0x1p-80) : Real(0x1p-600));
}
template <class Real>
batch<Real> scaled_far(const batch<Real>& x, const batch<Real>& other) {
  using value = batch<Real>;
  const value infinity(std::numeric_limits<Real>::infinity()), zero(Real(0)), one(Real(1));
  const value size = xsimd::abs(x), boxed = xsimd::select(size == infinity, one, zero);
  const auto infinite = (size == infinity) | (xsimd::abs(other) == infinity);
  return xsimd::select(infinite, boxed, scaled_by_far(size));
}

}  // namespace
TMK_TIER_CLOSE
