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
constexpr Real negligible = sizeof(Real) == 4 ? Real(0x1p-14) : Real(0x1p-28);

// r^2, or 0 where it is negligible.
template <class Angle, class Real>
batch<Real> square_of_rest(const batch<Real>& r) {
  if constexpr (!Angle::has_tiny_rests) return r * r;
  const batch<Real> counted =
      xsimd::select(xsimd::abs(r) < batch<Real>(negligible<Real>), batch<Real>(Real(0)), r);
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

// Sine and cosine but for the point's sign, to half a unit: the lower part is small, but not below half a
// unit.
template <class Real>
struct by_point_paired {
  point<Real> at;
  batch_pair<Real> r;
  batch<Real> cosine_less_one, sine_less_r;  // of r.high; of r

  template <class Angle, int Sines, int Cosines>
  by_point_paired(const Angle& angle, const Real (&s)[Sines], const Real (&c)[Cosines])
      : at(angle), r(angle.template rest<8>(at.k.number, at.offset)) {
    const batch<Real> z = square_of_rest<Angle>(r.high);
    cosine_less_one = z * polynomial_in_turn(z, c);
    sine_less_r = multiply_add(r.high * z, polynomial_in_turn(z, s), r.low);
  }
  // base + slope r + ...: |base| is at least |slope r|, or 0.
  batch_pair<Real> along(const batch<Real>& base, const batch<Real>& slope) const {
    const auto product = two_prod(slope, r.high);
    const auto [high, low] = fast_two_sum(base, product.high);
    const auto rest = multiply_add(slope, sine_less_r, multiply_add(base, cosine_less_one, product.low));
    return {high, low + rest};
  }
  batch_pair<Real> sine() const { return along(at.sine, at.cosine); }
  batch_pair<Real> cosine() const { return along(at.cosine, -at.sine); }
};

// The same to a unit.
template <class Real>
struct by_point {
  point<Real> at;
  batch<Real> cosine_less_one, sine_of_rest;

  template <class Angle, int Sines, int Cosines>
  by_point(const Angle& angle, const Real (&s)[Sines], const Real (&c)[Cosines]) : at(angle) {
    const batch<Real> r = angle.template rest_in_one<8>(at.k.number, at.offset), z = square_of_rest<Angle>(r);
    cosine_less_one = z * polynomial_in_turn(z, c);
    sine_of_rest = multiply_add(r * z, polynomial_in_turn(z, s), r);
  }
  batch<Real> along(const batch<Real>& base, const batch<Real>& slope) const {
    return base + multiply_add(slope, sine_of_rest, base * cosine_less_one);
  }
  batch<Real> sine() const { return along(at.sine, at.cosine); }
  batch<Real> cosine() const { return along(at.cosine, -at.sine); }
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
