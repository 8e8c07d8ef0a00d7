// SPDX-License-Identifier: Apache-2.0
// Trigonometric functions of radians, half turns (pi) and degrees, and their inverses.
//   x = quarter * right_angle + rest,  |rest| <= right_angle / 2
// Both are exact for a right angle of 1/2 or 90, so that its multiples give exact values, and the quarter
// selects which of +-sin(rest), +-cos(rest) is meant.
#pragma once

#include <numbers>

#include "vector/reference/real/extended.hpp"

namespace tmk::reference {

constexpr extended pi = std::numbers::pi_v<extended>;
constexpr int half_turns = 1;  // the straight angle in each unit
constexpr int degrees = 180;

// sin of x and of x + `shift` right angles; zeros have the sign that IEEE 754 gives sinPi and cosPi.
template <int StraightAngle, int Shift>
extended sine(extended x) {
  constexpr extended right_angle = StraightAngle / 2.0L;
  if (!std::isfinite(x)) return x - x;
  const extended turn = fmodl(x, 2 * StraightAngle);
  const extended quarter = rintl(turn / right_angle);
  const extended angle = (turn - quarter * right_angle) * (pi / StraightAngle);
  const int quadrant = (static_cast<int>(quarter) + Shift) & 3;
  if (angle == 0 && (quadrant & 1) == 0) return Shift == 0 ? copysignl(0, x) : 0;
  const extended magnitude = (quadrant & 1) != 0 ? cosl(angle) : sinl(angle);
  return (quadrant & 2) != 0 ? -magnitude : magnitude;
}

// Zeros and poles take their sign from those of the quotient's parts.
template <int StraightAngle>
extended tangent(extended x) {
  return sine<StraightAngle, 0>(x) / sine<StraightAngle, 1>(x);
}

inline extended asin_pi(extended x) { return asinl(x) / pi; }
inline extended acos_pi(extended x) { return acosl(x) / pi; }
inline extended atan_pi(extended x) { return atanl(x) / pi; }
inline extended atan2_pi(extended y, extended x) { return atan2l(y, x) / pi; }

int Sin(std::floating_point auto a, auto& r) { return apply(sinl, a, r); }
int Cos(std::floating_point auto a, auto& r) { return apply(cosl, a, r); }
int Tan(std::floating_point auto a, auto& r) { return apply(tanl, a, r); }
int SinCos(std::floating_point auto a, auto& r1, auto& r2) { return Sin(a, r1) | Cos(a, r2); }

int Sinpi(std::floating_point auto a, auto& r) { return apply(sine<half_turns, 0>, a, r); }
int Cospi(std::floating_point auto a, auto& r) { return apply(sine<half_turns, 1>, a, r); }
int Tanpi(std::floating_point auto a, auto& r) { return apply(tangent<half_turns>, a, r); }
int Sind(std::floating_point auto a, auto& r) { return apply(sine<degrees, 0>, a, r); }
int Cosd(std::floating_point auto a, auto& r) { return apply(sine<degrees, 1>, a, r); }
int Tand(std::floating_point auto a, auto& r) { return apply(tangent<degrees>, a, r); }

int Asin(std::floating_point auto a, auto& r) { return apply(asinl, a, r); }
int Acos(std::floating_point auto a, auto& r) { return apply(acosl, a, r); }
int Atan(std::floating_point auto a, auto& r) { return apply(atanl, a, r); }
int Atan2(std::floating_point auto a, auto b, auto& r) { return apply(atan2l, a, b, r); }
int Asinpi(std::floating_point auto a, auto& r) { return apply(asin_pi, a, r); }
int Acospi(std::floating_point auto a, auto& r) { return apply(acos_pi, a, r); }
int Atanpi(std::floating_point auto a, auto& r) { return apply(atan_pi, a, r); }
int Atan2pi(std::floating_point auto a, auto b, auto& r) { return apply(atan2_pi, a, b, r); }

}  // namespace tmk::reference
