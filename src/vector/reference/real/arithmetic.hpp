// SPDX-License-Identifier: Apache-2.0
// Arithmetic, comparison and the functions that pick a representation apart. Sums, products, quotients and
// square roots are rounded once: the extended result is made odd by its exact error first.
#pragma once

#include "vector/reference/real/extended.hpp"

namespace tmk::reference {

inline extended sum(extended x, extended y) { return round_to_odd(two_sum(x, y)); }
inline extended difference(extended x, extended y) { return sum(x, -y); }
inline extended product(extended x, extended y) { return round_to_odd(two_prod(x, y)); }
inline extended square(extended x) { return product(x, x); }

// The residuals of a quotient and of a square root are representable, and so computed exactly.
inline extended quotient(extended x, extended y) {
  const extended q = x / y;
  const extended_pair p = two_prod(q, y);
  return round_to_odd({q, ((x - p.high) - p.low) / y});
}

inline extended reciprocal(extended x) { return quotient(1, x); }

inline extended square_root(extended x) {
  const extended root = sqrtl(x);
  const extended_pair p = two_prod(root, root);
  return round_to_odd({root, ((x - p.high) - p.low) / root});
}

inline extended positive_difference(extended x, extended y) { return x <= y ? 0 : difference(x, y); }

// A NaN loses, and +0 is above -0.
inline extended larger(extended x, extended y) {
  if (std::isnan(x)) return y;
  if (x == y) return std::signbit(x) ? y : x;
  return x < y ? y : x;
}

inline extended smaller(extended x, extended y) { return -larger(-x, -y); }

inline extended larger_magnitude(extended x, extended y) {
  if (std::fabs(x) > std::fabs(y)) return x;
  return std::fabs(x) < std::fabs(y) ? y : larger(x, y);
}

inline extended smaller_magnitude(extended x, extended y) {
  if (std::fabs(x) < std::fabs(y)) return x;
  return std::fabs(x) > std::fabs(y) ? y : smaller(x, y);
}

// scale x + shift to the last extended bit, however much cancels: where the sum of product and shift is
// inexact, it is large compared with the product's error.
inline extended linear(extended scale, extended x, extended shift) {
  const extended rough = scale * x + shift;
  if (!std::isfinite(rough)) return rough;
  const extended_pair p = two_prod(scale, x);
  const extended_pair s = two_sum(p.high, shift);
  return s.high + (s.low + p.low);
}

inline extended fraction(extended x) { return copysignl(std::isinf(x) ? 0 : x - truncl(x), x); }

int Add(std::floating_point auto a, auto b, auto& r) { return apply(sum, a, b, r); }
int Sub(std::floating_point auto a, auto b, auto& r) { return apply(difference, a, b, r); }
int Mul(std::floating_point auto a, auto b, auto& r) { return apply<shrinking>(product, a, b, r); }
int Div(std::floating_point auto a, auto b, auto& r) { return apply<shrinking>(quotient, a, b, r); }
int Sqr(std::floating_point auto a, auto& r) { return apply<shrinking>(square, a, r); }
int Inv(std::floating_point auto a, auto& r) { return apply(reciprocal, a, r); }
int Sqrt(std::floating_point auto a, auto& r) { return apply(square_root, a, r); }
int Abs(std::floating_point auto a, auto& r) { return apply(fabsl, a, r); }

int Fmod(std::floating_point auto a, auto b, auto& r) { return apply(fmodl, a, b, r); }
int Remainder(std::floating_point auto a, auto b, auto& r) { return apply(remainderl, a, b, r); }
int Fdim(std::floating_point auto a, auto b, auto& r) { return apply(positive_difference, a, b, r); }
int Fmax(std::floating_point auto a, auto b, auto& r) { return apply(larger, a, b, r); }
int Fmin(std::floating_point auto a, auto b, auto& r) { return apply(smaller, a, b, r); }
int MaxMag(std::floating_point auto a, auto b, auto& r) { return apply(larger_magnitude, a, b, r); }
int MinMag(std::floating_point auto a, auto b, auto& r) { return apply(smaller_magnitude, a, b, r); }
int CopySign(std::floating_point auto a, auto b, auto& r) { return apply(copysignl, a, b, r); }

// Steps through the patterns of Real: the extended neighbour would be far too near.
template <std::floating_point Real>
int NextAfter(Real a, Real b, Real& r) {
  const extended x = extend(a), y = extend(b);
  if (std::isnan(x) || std::isnan(y))
    r = static_cast<Real>(x + y);
  else if (x == y)
    r = b;
  else if (x == 0)
    r = std::copysign(std::numeric_limits<Real>::denorm_min(), b);
  else
    r = from_bits<Real>((x < y) == (x > 0) ? to_bits(a) + 1 : to_bits(a) - 1);
  const extended towards = std::isinf(y) ? x : y;  // infinity is but a direction
  return conclude<exponential>(extend(r), r, x, towards);
}

template <std::floating_point Real>
int LinearFrac(Real a, Real b, Real scalea, Real shifta, Real scaleb, Real shiftb, Real& r) {
  const extended x = extend(a), sx = extend(scalea), tx = extend(shifta);
  const extended y = extend(b), sy = extend(scaleb), ty = extend(shiftb);
  return conclude<shrinking>(linear(sx, x, tx) / linear(sy, y, ty), r, x, y, sx, tx, sy, ty);
}

int Floor(std::floating_point auto a, auto& r) { return apply(floorl, a, r); }
int Ceil(std::floating_point auto a, auto& r) { return apply(ceill, a, r); }
int Trunc(std::floating_point auto a, auto& r) { return apply(truncl, a, r); }
int Round(std::floating_point auto a, auto& r) { return apply(roundl, a, r); }  // halves away from 0

// In the direction that the SSE unit is set to, which the extended format does not know: the sum with a
// number whose unit is 1 is rounded so. (The compiler's own rint rounds magnitudes, the wrong way for
// negative numbers.)
template <std::floating_point Real>
int Rint(Real a, Real& r) {
  constexpr Real unit = 1 / std::numeric_limits<Real>::epsilon();
  if (std::fabs(a) < unit) {
    const Real shifter = std::copysign(unit, a);
    const Real shifted = a + shifter;
    r = std::copysign(shifted - shifter, a);
  } else {
    r = std::isnan(a) ? a + a : a;
  }
  return VTM_STATUS_OK;
}
template <std::floating_point Real>
int NearbyInt(Real a, Real& r) {
  return Rint(a, r);
}

int Frac(std::floating_point auto a, auto& r) { return apply(fraction, a, r); }

// r1: the integer part; r2: the fraction; both with the sign of a.
int Modf(std::floating_point auto a, auto& r1, auto& r2) {
  return apply(truncl, a, r1) | apply(fraction, a, r2);
}

}  // namespace tmk::reference
