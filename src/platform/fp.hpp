// SPDX-License-Identifier: Apache-2.0
// Floating-point basics: the bits of a value, Horner's rule, and values as exact sums of two. Values may be
// float, double, long double, or a batch of them.
#pragma once

#include <bit>
#include <cstdint>

#include "platform/tier.hpp"

TMK_TIER_OPEN

template <class Real>
struct format;

template <>
struct format<float> {
  using bits = uint32_t;
  static constexpr int precision = 24;
  static constexpr int fraction_bits = 23;
  static constexpr int bias = 127;
  static constexpr bits sign = 0x80000000u;
  static constexpr bits infinity = 0x7F800000u;
  static constexpr bits quiet_nan = 0x7FC00000u;
};

template <>
struct format<double> {
  using bits = uint64_t;
  static constexpr int precision = 53;
  static constexpr int fraction_bits = 52;
  static constexpr int bias = 1023;
  static constexpr bits sign = 0x8000000000000000u;
  static constexpr bits infinity = 0x7FF0000000000000u;
  static constexpr bits quiet_nan = 0x7FF8000000000000u;
};

template <class Real>
constexpr auto to_bits(Real x) {
  return std::bit_cast<typename format<Real>::bits>(x);
}

template <class Real>
constexpr Real from_bits(typename format<Real>::bits b) {
  return std::bit_cast<Real>(b);
}

// What a function returns outside its domain.
template <class Real>
constexpr Real negative_nan = from_bits<Real>(format<Real>::sign | format<Real>::quiet_nan);

template <class Real>
constexpr auto magnitude_bits(Real x) {
  return to_bits(x) & ~format<Real>::sign;
}

// A value as an unevaluated sum high + low, |low| <= ulp(high) / 2.
template <class Value>
struct value_pair {
  Value high, low;
};

// Exact for |a| >= |b|, and whenever the exponent of a is not below that of b.
template <class Value>
constexpr value_pair<Value> fast_two_sum(const Value& a, const Value& b) {
  const Value s = a + b;
  return {s, b - (s - a)};
}

// Exact without condition (Knuth).
template <class Value>
constexpr value_pair<Value> two_sum(const Value& a, const Value& b) {
  const Value s = a + b;
  const Value t = s - a;
  return {s, (a - (s - t)) + (b - t)};
}

TMK_TIER_CLOSE
