// SPDX-License-Identifier: Apache-2.0
// Sine and cosine of an angle (angle.hpp), by three ways:
//   point     doubles, to half a unit: the angle is one of 16 accurate angles a to a half turn, plus r, |r|
//   <= pi/32.
//               sin(a + r) = sin(a) + cos(a) r + (sin(a) (cos(r) - 1) + cos(a) (sin(r) - r))
//             sin(a) and cos(a) are numbers of the format to 2^-11 units (S. Gal, 1986), the product cos(a) r
//             has two parts.
//   quadrant  both for |r| <= pi/4, exchanged and with signs by the quadrant
//   line      one of them: the sine of r for |r| <= pi/2, with the sign of the half turn
#pragma once

#include "simd/rows.hpp"
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

struct point_row {
  f64 sine, cosine, offset;
};

// V4 has the 16 rows in registers.
inline point_row point_at(const u64& k) {
  using namespace trigonometric_data;
  if constexpr (this_tier == 2) {
    const lane_table<double, 16> sine(accurate_sine), cosine(accurate_cosine), offset(accurate_offset);
    const auto j = table_index<double, 16, 0>(k);
    return {sine[j], cosine[j], offset[j]};
  } else {
    alignas(32) int32_t rows[lanes<double>];
    store_lower_words(reinterpret_cast<uint32_t*>(rows), k & u64(15));
    f64 column[4];
    load_columns(&accurate_angles[0][0], rows, column);
    return {column[0], column[1], column[2]};
  }
}

// An angle next to an accurate one.
struct point {
  point_row at;
  batch_pair<double> r;
  f64 cosine_less_one, sine_less_r;  // of r.high, over r^2; of r
  f64 sign;

  template <class Angle>
  explicit point(const Angle& angle) {
    using namespace trigonometric_data;
    const auto k = angle.template nearest<16>();
    at = point_at(k.bits);
    r = angle.template rest<16>(k.number, at.offset);
    const f64 z = r.high * r.high;
    cosine_less_one = z * polynomial_in_turn(z, near_cosine);
    sine_less_r = multiply_add(r.high * z, polynomial_in_turn(z, near_sine), r.low);
    sign = sign_of<4, double>(k.bits);
  }
  // base + slope r + ...: |base| is at least |slope r|, or 0. The lower part is small, not below half a unit.
  batch_pair<double> along(const f64& base, const f64& slope) const {
    const auto product = two_prod(slope, r.high);
    const auto [high, low] = fast_two_sum(base, product.high);
    const f64 rest = multiply_add(slope, sine_less_r, multiply_add(base, cosine_less_one, product.low));
    return {high, low + rest};
  }
  batch_pair<double> sine() const { return along(at.sine, at.cosine); }
  batch_pair<double> cosine() const { return along(at.cosine, -at.sine); }
};

// x + x^3 (c[0] + c[1] x^2 + ...)
template <class Value, class C, int Size>
Value odd_series(const Value& x, const C (&c)[Size]) {
  const Value z = x * x;
  return multiply_add(x * z, polynomial_in_turn(z, c), x);
}

// The sine of an angle, or its cosine: the sine one half step further on.
template <bool Cosine, class Angle, class C, int Size>
auto line(const Angle& angle, const C (&c)[Size]) {
  const auto k = angle.template nearest<1, Cosine>();
  return odd_series(angle.template rest<1>(k.number), c) ^ sign_of<0, C>(k.bits);
}

// Magnitudes and signs apart.
template <class Value>
struct quadrant {
  Value sine, cosine, sine_sign, cosine_sign;

  template <class Angle, class Real, int Sines, int Cosines>
  quadrant(const Angle& angle, const Real (&s)[Sines], const Real (&c)[Cosines]) {
    const bits_batch<Real> one(1);
    const auto k = angle.template nearest<2>();
    const Value r = angle.template rest<2>(k.number), z = r * r;
    const Value along = odd_series(r, s);
    const Value across = multiply_add(z, polynomial_in_turn(z, c), Value(Real(1)));
    const Value exchange = bits_as<Real>(bits_batch<Real>(0) - (k.bits & one));
    const Value difference = (along ^ across) & exchange;
    sine = along ^ difference;
    cosine = across ^ difference;
    sine_sign = sign_of<1, Real>(k.bits);
    cosine_sign = sign_of<1, Real>(k.bits + one);
  }
};

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
