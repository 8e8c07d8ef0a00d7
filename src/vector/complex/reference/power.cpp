// Complex power, by its logarithm in polar form.
//   ln a  = ln|a| + i (quarter + fraction) pi/2,      quarter a whole number, |fraction| <= 1/2
//   a^b   = e^E (cos(T pi/2) + i sin(T pi/2)),        E = re(b ln a), T = im(b ln a) 2/pi
// Angles are counted in right angles because those of the axes and diagonals are exact then: (1 + i)^4 is -4
// with no imaginary part. An error of ln a is magnified by b, so that 64 bits may be too few. They are tried
// first; the logarithm is refined to a pair where they do not suffice.
#include "vector/complex/reference/power.hpp"

#include <utility>

namespace tmk::reference {
namespace {

constexpr extended_pair ln_2{0x1.62e42fefa39ef358p-1L, -0x1.b0e2633fe0684a86p-67L};
constexpr extended_pair right_angle{0x1.921fb54442d1846ap+0L, -0x1.d9cceba3f91f1976p-66L};
constexpr extended_pair per_right_angle{0x1.45f306dc9c882a54p-1L, -0x1.ec54170565911f92p-71L};

extended_pair pair(extended x) { return {x, 0}; }

struct complex_pair {
  extended_pair re, im;

  friend complex_pair operator*(const complex_pair& x, const complex_pair& y) {
    return {x.re * y.re - x.im * y.im, x.re * y.im + x.im * y.re};
  }
};

// e^z for |z| <= 1: (sum of (z/32)^n / n!)^32, with an error near 2^-120. The sum runs to n = 16 over the
// common denominator 16!, since its numerators 16! / n! are exact.
complex_pair exponential_of(extended_complex z) {
  const complex_pair x{pair(z.real() / 32), pair(z.imag() / 32)};
  extended numerator = 1;
  complex_pair sum{pair(1), pair(0)};
  for (int n = 16; n > 0; --n) {
    numerator *= n;
    sum = sum * x;
    sum.re = sum.re + pair(numerator);
  }
  const extended inverse = 1 / numerator;
  const extended_pair product = two_prod(inverse, numerator);
  const extended_pair scale{inverse, ((1 - product.high) - product.low) * inverse};
  sum = {sum.re * scale, sum.im * scale};
  for (int i = 0; i < 5; ++i) sum = sum * sum;
  return sum;
}

struct polar_log {
  extended_pair modulus;  // ln|a|
  extended quarter;
  extended_pair fraction;
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

bool on_diagonal(extended_complex near_axis) { return std::fabs(near_axis.imag()) == near_axis.real(); }

polar_log first_logarithm(extended_complex a) {
  const auto [z, quarter] = turned(a);
  const extended_complex w = std::log(z);
  const extended fraction = on_diagonal(z) ? std::copysign(0.5L, z.imag()) : w.imag() * per_right_angle.high;
  return {pair(w.real()), quarter, pair(fraction)};
}

// Newton's step from the logarithm w of z = 2^-k a near |z| = 1:  ln z = w + (z e^-w - 1), to twice its bits.
polar_log refined_logarithm(extended_complex a, const polar_log& first) {
  const auto [unscaled, quarter] = turned(a);
  const int k = static_cast<int>(rintl(first.modulus.high / ln_2.high));
  const extended_complex z{scalbnl(unscaled.real(), -k), scalbnl(unscaled.imag(), -k)};
  const extended_complex w = std::log(z);
  complex_pair step{pair(0), pair(0)};
  if (std::abs(w) > 0x1p-50L) {  // below, the step would drown in the error of e^-w
    step = complex_pair{pair(z.real()), pair(z.imag())} * exponential_of(-w);
    step.re = step.re - pair(1);
  }
  const extended_pair fraction =
      on_diagonal(z) ? first.fraction : (pair(w.imag()) + step.im) * per_right_angle;
  return {pair(k) * ln_2 + (pair(w.real()) + step.re), quarter, fraction};
}

// b ln a. The turn is split again, so that what the functions of the angle see keeps its low bits.
struct polar_exponent {
  extended_pair modulus;
  extended quarter;  // modulo 4
  extended fraction;
};

polar_exponent times(extended_complex b, const polar_log& log) {
  const extended_pair br = pair(b.real()), bi = pair(b.imag());
  const extended_pair angle = (pair(log.quarter) + log.fraction) * right_angle;
  const extended_pair spin = br * log.fraction + bi * log.modulus * per_right_angle;
  const extended_pair turn = two_sum(fmodl(b.real() * log.quarter, 4), fmodl(spin.high, 4));
  const extended quarter = rintl(turn.high);
  extended fraction = (turn.high - quarter) + (turn.low + spin.low);
  if (fraction == 0) {  // the sum of pairs has no sign of zero
    const extended on_axis = b.real() * log.fraction.high;
    fraction = std::copysign(0, b.imag() == 0 ? on_axis : on_axis + b.imag() * log.modulus.high);
  }
  return {br * log.modulus - bi * angle, quarter, fraction};
}

// Bounds of the error that the first logarithm leaves in E and in the angle of a^b.
bool suffices(const polar_log& log, extended_complex b, const polar_exponent& product, int precision) {
  constexpr extended unit = 0x1p-62L;
  const extended tolerance = std::ldexp(extended{1}, -(precision + 5));
  const extended br = std::fabs(b.real()), bi = std::fabs(b.imag());
  const extended length = std::fabs(log.modulus.high), angle = 2 * std::fabs(log.quarter + log.fraction.high);
  const bool exact_angle = log.fraction.high == 0 || std::fabs(log.fraction.high) == 0.5L;
  const extended angle_error = unit * (bi * length + (exact_angle ? 0 : br));
  const extended error = unit * (br * length + bi * angle) + angle_error;
  const extended off_axis = std::fabs(product.fraction);
  return error <= tolerance && angle_error <= tolerance * off_axis;
}

extended_complex exponential_of(const polar_exponent& x) {
  const extended scale = expl(x.modulus.high) * (1 + x.modulus.low);
  const extended angle = x.fraction * right_angle.high;
  const auto scaled = [=](extended part) { return part == 0 ? part : scale * part; };
  const extended c = scaled(cosl(angle)), s = scaled(sinl(angle));
  const extended_complex turned[] = {{c, s}, {-s, c}, {-c, -s}, {s, -c}};
  return turned[static_cast<int>(x.quarter) & 3];
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
  const polar_log first = first_logarithm(a);
  const polar_exponent product = times(b, first);
  if (suffices(first, b, product, precision)) return exponential_of(product);
  return exponential_of(times(b, refined_logarithm(a, first)));
}

}  // namespace tmk::reference
