// SPDX-License-Identifier: Apache-2.0
// Powers and roots.
#pragma once

#include "vector/reference/real/extended.hpp"

namespace tmk::reference {

inline extended inverse_root(extended x) { return 1 / sqrtl(x); }
inline extended inverse_cube_root(extended x) { return 1 / cbrtl(x); }

inline extended power_two_thirds(extended x) {
  const extended root = cbrtl(x);
  return root * root;
}

inline extended power_three_halves(extended x) { return x * sqrtl(x); }

// The power as exp(y ln x), x >= 0: undefined wherever y ln x is.
inline extended real_power(extended x, extended y) {
  const bool indefinite = y == 0 ? x == 0 || std::isinf(x) : std::isinf(y) && x == 1;
  if (x < 0 || indefinite) return std::numeric_limits<extended>::quiet_NaN();
  if (std::isnan(x) || std::isnan(y)) return x + y;
  return powl(std::fabs(x), y);
}

int InvSqrt(std::floating_point auto a, auto& r) { return apply(inverse_root, a, r); }
int Cbrt(std::floating_point auto a, auto& r) { return apply(cbrtl, a, r); }
int InvCbrt(std::floating_point auto a, auto& r) { return apply(inverse_cube_root, a, r); }
int Pow(std::floating_point auto a, auto b, auto& r) { return apply<exponential>(powl, a, b, r); }
int Powx(std::floating_point auto a, auto b, auto& r) { return apply<exponential>(powl, a, b, r); }
int Powr(std::floating_point auto a, auto b, auto& r) { return apply<exponential>(real_power, a, b, r); }
int Pow2o3(std::floating_point auto a, auto& r) { return apply<shrinking>(power_two_thirds, a, r); }
int Pow3o2(std::floating_point auto a, auto& r) { return apply<shrinking>(power_three_halves, a, r); }
int Hypot(std::floating_point auto a, auto b, auto& r) { return apply(hypotl, a, b, r); }

}  // namespace tmk::reference
