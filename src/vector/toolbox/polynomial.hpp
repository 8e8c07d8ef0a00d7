// SPDX-License-Identifier: Apache-2.0
// Polynomials c[0] + c[1] x + c[2] x^2 + ...
//
// The baseline evaluates them by Horner's rule with two roundings a step: the bits of its functions rest on
// this order. The wide tiers have two fused chains, of even and of odd powers above c[0], half as long for
// one more product, which most formulas need in any case; c[0] comes last, with the only rounding that
// counts.
#pragma once

#include <concepts>
#include <type_traits>

#include "simd/batch.hpp"

TMK_TIER_OPEN

// The coefficients from c[First] on: c[First] + c[First + 1] x + ... One value, not in a register, is
// evaluated as on the baseline.
template <int First = 0, class Value, class C, int Size>
[[gnu::always_inline]] inline Value polynomial(const Value& x, const C (&c)[Size]) {
  static_assert(Size > First);
  const auto coefficient = [&](int i) { return Value(c[First + i]); };
  constexpr int last = Size - First - 1;
  Value p = coefficient(last);
  if constexpr (is_baseline || std::floating_point<Value>) {
#pragma GCC unroll 32
    for (int i = last - 1; i >= 0; --i) p = coefficient(i) + x * p;
    return p;
  } else if constexpr (last == 0) {
    return p;
  } else {
    if constexpr (last > 1) {
      const Value x2 = x * x;
      Value other = coefficient(last - 1);
#pragma GCC unroll 32
      for (int i = last - 2; i > 1; i -= 2) {
        p = multiply_add(p, x2, coefficient(i));
        other = multiply_add(other, x2, coefficient(i - 1));
      }
      if constexpr (last % 2 == 1) {
        p = multiply_add(p, x2, coefficient(1));
        p = multiply_add(other, x, p);
      } else {
        p = multiply_add(p, x, other);
      }
    }
    return multiply_add(p, x, coefficient(0));
  }
}

// The same by Horner's rule on every tier: one product less on the wide ones, for formulas whose registers
// are many enough to wait for each other.
template <class Value, class C, int Size>
[[gnu::always_inline]] inline Value polynomial_in_turn(const Value& x, const C (&c)[Size]) {
  Value p(c[Size - 1]);
#pragma GCC unroll 32
  for (int i = Size - 2; i >= 0; --i) p = multiply_add(p, x, Value(c[i]));
  return p;
}

// The same with coefficients one by one.
template <class Value, class C, class... More>
requires(std::is_arithmetic_v<C>) [[gnu::always_inline]] inline Value
    polynomial(const Value& x, C c0, More... more) {
  const C coefficients[] = {c0, static_cast<C>(more)...};
  return polynomial(x, coefficients);
}

TMK_TIER_CLOSE
