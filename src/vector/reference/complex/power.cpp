// SPDX-License-Identifier: Apache-2.0
// Complex power, by its logarithm in polar form.
//   ln a  = ln|a| + i (quarter + fraction) pi/2,      quarter a whole number, |fraction| <= 1/2
//   a^b   = e^E (cos(T pi/2) + i sin(T pi/2)),        E = re(b ln a), T = im(b ln a) 2/pi
// Angles are counted in right angles because those of the axes and diagonals are exact then: (1 + i)^4 is -4
// with no imaginary part. An error of ln a is magnified by b, so that 64 bits may be too few. They are tried
// first, and 113 bits, which the processor has to emulate, where they do not suffice.
#include "vector/reference/complex/power.hpp"

#include <math.h>

#include <utility>

namespace tmk::reference {
namespace {

using quadruple = _Float128;

constexpr quadruple right_angle = quadruple{0x1.921fb54442d1846ap+0L} - 0x1.d9cceba3f91f1976p-66L;
constexpr quadruple per_right_angle = quadruple{0x1.45f306dc9c882a54p-1L} - 0x1.ec54170565911f92p-71L;

extended whole(extended x) { return roundevenl(x); }
quadruple whole(quadruple x) { return roundevenf128(x); }

template <class Number>
struct polar_log {
  Number modulus;  // ln|a|
  extended quarter;
  Number fraction;
};

// Turns a by whole right angles next to the positive real axis.
std::pair<extended_complex, extended> turned(extended_complex a) {
  const auto [x, y] = std::pair(a.real(), a.imag());
  if (std::fabs(x) < std::fabs(y)) {
    if (y > 0) return {{y, -x}, 1};
    return {{-y, x}, -1};
  }
  if (x > 0) return {a, 0};
  return {-a, std::signbit(y) ? -2 : 2};
}

void logarithm(extended x, extended y, extended& modulus, extended& angle) {
  const extended_complex w = std::log(extended_complex(x, y));
  modulus = w.real();
  angle = w.imag();
}

// For doubles with x >= |y|; x^2 + y^2 - 1 is exact where it is small.
void logarithm(quadruple x, quadruple y, quadruple& modulus, quadruple& angle) {
  const quadruple excess = (x - 1) * (x + 1) + y * y;
  const bool near_circle = excess > -0.5L && excess < 1;
  modulus = (near_circle ? log1pf128(excess) : logf128(x * x + y * y)) / 2;
  angle = atan2f128(y, x);
}

template <class Number>
polar_log<Number> logarithm(extended_complex a) {
  const auto [z, quarter] = turned(a);
  Number modulus, angle;
  logarithm(z.real(), z.imag(), modulus, angle);
  const bool diagonal = std::fabs(z.imag()) == z.real();
  const Number fraction = diagonal ? std::copysign(0.5L, z.imag()) : angle * Number(per_right_angle);
  return {modulus, quarter, fraction};
}

// b ln a, parted anew: the functions of the angle see its low bits, the exponential those of E.
struct polar_exponent {
  extended modulus, modulus_rest;
  extended quarter;  // modulo 4
  extended fraction;
};

template <class Number>
polar_exponent operator*(extended_complex b, const polar_log<Number>& log) {
  const Number br = b.real(), bi = b.imag();
  const Number modulus = br * log.modulus - bi * (log.quarter + log.fraction) * Number(right_angle);
  Number spin = br * log.fraction;
  if (bi != 0) spin += bi * log.modulus * Number(per_right_angle);

  const extended turn = fmodl(b.real() * log.quarter, 4);
  const Number parts = (spin - whole(spin)) + (turn - whole(turn));
  const extended fraction = parts - whole(parts);
  const extended quarter = fmodl(whole(spin), 4) + whole(turn) + static_cast<extended>(whole(parts));
  const extended high = modulus;
  return {high, static_cast<extended>(modulus - high), quarter,
          fraction == 0 ? copysignl(0, static_cast<extended>(spin)) : fraction};
}

// Whether the errors that 64 bits leave in E and in the angle of a^b are below 1/8 of the last place.
bool suffices(const polar_log<extended>& log, extended_complex b, const polar_exponent& product,
              int precision) {
  constexpr extended unit = 0x1p-62L;
  const extended tolerance = std::ldexp(extended{1}, -(precision + 3));
  const extended br = std::fabs(b.real()), bi = std::fabs(b.imag());
  const extended length = std::fabs(log.modulus), angle = 2 * std::fabs(log.quarter + log.fraction);
  const bool exact_angle = log.fraction == 0 || std::fabs(log.fraction) == 0.5L;
  const extended angle_error = unit * (bi * length + (exact_angle ? 0 : br * std::fabs(log.fraction)));
  const extended error = unit * (br * length + bi * angle) + angle_error;
  return error <= tolerance && angle_error <= tolerance * std::fabs(product.fraction);
}

extended_complex from_polar(const polar_exponent& x) {
  const bool in_range = std::fabs(x.modulus) < 0x1p14L;  // beyond, the rest need not be small
  const extended scale = expl(x.modulus) * (in_range ? 1 + x.modulus_rest : 1);
  const extended angle = x.fraction * static_cast<extended>(right_angle);
  const auto scaled = [=](extended part) { return part == 0 ? part : scale * part; };
  const extended c = scaled(cosl(angle)), s = scaled(sinl(angle));
  const extended_complex rotated[] = {{c, s}, {-s, c}, {-c, -s}, {s, -c}};
  return rotated[static_cast<int>(x.quarter) & 3];
}

extended_complex power_of_zero(extended_complex b) {
  constexpr extended nan = std::numeric_limits<extended>::quiet_NaN();
  if (has_nan(b) || b.real() == 0) return {nan, nan};
  if (b.real() > 0) return 0;
  return {std::numeric_limits<extended>::infinity(), nan};
}

// e^(b ln a) by parts; a component of b that is zero takes no part, nor does a vanishing angle.
extended_complex special_power(extended_complex a, extended_complex b) {
  if (b.imag() == 0 && a.imag() == 0 && a.real() > 0) return {powl(a.real(), b.real()), a.imag()};
  const extended_complex log = std::log(a);
  if (b.imag() == 0) return std::exp(log * b.real());
  if (b.real() == 0) return std::exp(extended_complex(-log.imag() * b.imag(), log.real() * b.imag()));
  return std::exp(log * b);
}

}  // namespace

extended_complex power(extended_complex a, extended_complex b, int precision) {
  if (b == extended{0}) return 1;
  if (a == extended{0}) return power_of_zero(b);
  if (!is_finite(a) || !is_finite(b)) return special_power(a, b);
  const auto log = logarithm<extended>(a);
  const polar_exponent product = b * log;
  if (suffices(log, b, product, precision)) return from_polar(product);
  return from_polar(b * logarithm<quadruple>(a));
}

}  // namespace tmk::reference
