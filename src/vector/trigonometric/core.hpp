// SPDX-License-Identifier: Apache-2.0
// Sine and cosine of an angle (angle.hpp), by two ways:
//   point     doubles, to half a unit: the angle is one of 16 accurate angles a to a half turn, plus r, |r|
//   <= pi/32.
//               sin(a + r) = sin(a) + cos(a) r + (sin(a) (cos(r) - 1) + cos(a) (sin(r) - r))
//             sin(a) and cos(a) are numbers of the format to 2^-11 units (S. Gal, 1986).
//   line      one of them: the sine of r for |r| <= pi/2, with the sign of the half turn
#pragma once

#include "vector/trigonometric/angle.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
using bits_batch = batch<typename format<Real>::bits>;

// The bit at place `Bit` as a sign.
template <int Bit, class Real>
batch<Real> sign_of(const bits_batch<Real>& b) {
  using bits = typename format<Real>::bits;
  return bits_as<Real>((b << (sizeof(Real) * 8 - 1 - Bit)) & batch<bits>(format<Real>::sign));
}

// Below this r^2 is nothing to 1. Arithmetic on subnormal numbers may take a hundred times as long, so that
// none is computed from such r.
template <class Real>
constexpr Real negligible = sizeof(Real) == 4 ? Real(0x1p-15) : Real(0x1p-30);

// r^2, or what is nothing to 1.
template <class Angle, class Real>
batch<Real> square_of_rest(const batch<Real>& r) {
  if constexpr (!Angle::has_tiny_rests) return r * r;
  const batch<Real> counted = maximum_or_second(xsimd::abs(r), batch<Real>(negligible<Real>));
  return counted * counted;
}

template <class Real>
struct accurate_angles;
template <>
struct accurate_angles<float> {
  static constexpr const auto &sine = trigonometric_data::float_point_sine,
                              &cosine = trigonometric_data::float_point_cosine,
                              &offset = trigonometric_data::float_point_offset;
};
template <>
struct accurate_angles<double> {
  static constexpr const auto &sine = trigonometric_data::double_point_sine,
                              &cosine = trigonometric_data::double_point_cosine,
                              &offset = trigonometric_data::double_point_offset;
};

// The accurate angle next to an angle, k of which make what is near the angle.
template <class Real>
struct point {
  step_number<Real> k;
  batch<Real> sine, cosine, offset;

  template <class Angle>
  explicit point(const Angle& angle) : k(angle.template nearest<8>()) {
    using angles = accurate_angles<Real>;
    const lane_table<Real, 8> sines(angles::sine), cosines(angles::cosine), offsets(angles::offset);
    const auto j = table_index<Real, 8, 0>(k.bits);
    sine = sines[j];
    cosine = cosines[j];
    offset = offsets[j];
  }
  batch<Real> sign() const { return sign_of<3, Real>(k.bits); }
};

// base + slope r, for |slope r| no more than |base|, or base 0: exactly; but for half a unit of the product
// on the baseline.
template <class Real>
batch_pair<Real> along(const batch<Real>& base, const batch<Real>& slope, const batch<Real>& r) {
  if constexpr (!is_baseline) return add_product(base, slope, r);
  const auto product = two_prod(slope, r);
  const auto [high, low] = fast_two_sum(base, product.high);
  return {high, low + product.low};
}
template <class Real>
batch_pair<Real> nearly_along(const batch<Real>& base, const batch<Real>& slope, const batch<Real>& r) {
  if constexpr (is_baseline) return fast_two_sum(base, slope * r);
  return add_product(base, slope, r);
}

// Sine and cosine but for the point's sign: in two parts to half a unit of their sum where `Exact`, else to
// little more; or in one, which is rounded two or three times more. The lower part may be large, but is below
// the higher one.
template <class Real, bool Exact>
struct by_point {
  point<Real> at;
  batch<Real> r, r_low, z, sine_series, cosine_series;  // r^2; (sin(r) - r) / r^3; (cos(r) - 1) / r^2

  template <class Angle, int Sines, int Cosines>
  by_point(const Angle& angle, const Real (&s)[Sines], const Real (&c)[Cosines]) : at(angle) {
    if constexpr (Exact) {
      const auto rest = angle.template rest<8>(at.k.number, at.offset);
      r = rest.high, r_low = rest.low;
    } else {
      r = angle.template rest_in_one<8>(at.k.number, at.offset);
    }
    z = square_of_rest<Angle>(r);
    sine_series = polynomial_in_turn(z, s), cosine_series = polynomial_in_turn(z, c);
  }
  batch_pair<Real> sine() const { return pair(at.sine, at.cosine); }
  batch_pair<Real> cosine() const { return pair(at.cosine, -at.sine); }
  batch<Real> sine_in_one() const { return in_one(at.sine, at.cosine); }
  batch<Real> cosine_in_one() const { return in_one(at.cosine, -at.sine); }

 private:
  // The smallest terms first.
  batch_pair<Real> pair(const batch<Real>& base, const batch<Real>& slope) const {
    const auto line = Exact ? along(base, slope, r) : nearly_along(base, slope, r);
    const batch<Real> cube = r * z,
                      sine_less_r = Exact ? multiply_add(cube, sine_series, r_low) : cube * sine_series,
                      small = multiply_add(slope, sine_less_r, line.low);
    return {line.high, multiply_add(base * z, cosine_series, small)};
  }
  batch<Real> in_one(const batch<Real>& base, const batch<Real>& slope) const {
    const batch<Real> sine = multiply_add(r * z, sine_series, r);
    return base + multiply_add(slope, sine, base * (z * cosine_series));
  }
};

// x + x^3 (c[0] + c[1] x^2 + ...)
template <class Angle, class Value, class C, int Size>
Value odd_series(const Value& x, const C (&c)[Size]) {
  const Value z = square_of_rest<Angle>(x);
  return multiply_add(x * z, polynomial_in_turn(z, c), x);
}

// The sine of an angle, or its cosine: the sine one half step further on.
template <bool Cosine, class Angle, class C, int Size>
auto line(const Angle& angle, const C (&c)[Size]) {
  const auto k = angle.template nearest<1, Cosine>();
  return odd_series<Angle>(angle.template rest_in_one<1>(k.number), c) ^ sign_of<0, C>(k.bits);
}

template <class Real>
batch<Real> signs(const batch<Real>& x) {
  return x & batch<Real>(Real(-0.0));
}
// y, or where it is zero a zero of x's sign.
template <class Real>
batch<Real> zero_signed_as(const batch<Real>& x, const batch<Real>& y) {
  return xsimd::select(y == batch<Real>(Real(0)), signs(x), y);
}

}  // namespace
TMK_TIER_CLOSE
