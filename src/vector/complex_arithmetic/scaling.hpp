// SPDX-License-Identifier: Apache-2.0
// Complex doubles too large or too small for products of pairs, scaled by a power of two.
#pragma once

#include "vector/complex_arithmetic/special_lanes.hpp"

TMK_TIER_OPEN
namespace {

// Lanes that are not scaled are spared the work on subnormal numbers that an infinity brings to its
// neighbour.
inline complex_value<double> or_one(const lane_mask<double>& scaled, const complex_value<double>& z) {
  const f64 one(1.0);
  return select(scaled, z, {one, one});
}

// value = z root^2 where nothing was lost. (The factor itself, times another operand's, could overflow.)
struct scaled_complex {
  complex_value<double> value;
  f64 root, inverse_root;
  lane_mask<double> lost;
};

// To the order of 1: half the exponent of the larger part, negated, is the root's.
inline scaled_complex into_window(const complex_value<double>& z) {
  constexpr uint64_t place = uint64_t{1} << format<double>::fraction_bits, bias = format<double>::bias;
  const f64 larger = maximum_or_second(xsimd::abs(z.re), xsimd::abs(z.im));
  const u64 half = ((bits_as<uint64_t>(larger) + u64(place)) >> 1) & u64(format<double>::infinity);
  const f64 root = bits_as<double>(u64((bias + bias / 2 + 1) * place) - half);
  const f64 inverse = bits_as<double>(u64((bias - bias / 2 - 1) * place) + half);
  const complex_value<double> value = {z.re * root * root, z.im * root * root};
  const auto lost = (value.re * inverse * inverse != z.re) | (value.im * inverse * inverse != z.im);
  return {value, root, inverse, lost};
}

// A result on its own scale. Lost is one that is rounded a second time, or overflows.
struct scaled_result {
  complex_value<double> value;
  lane_mask<double> lost;
};
inline scaled_result out_of_window(const complex_value<double>& z, const f64& root) {
  const complex_value<double> value = {z.re * root * root, z.im * root * root};
  const f64 zero(0.0);
  return {value, (not_normal(value.re) & (z.re != zero)) | (not_normal(value.im) & (z.im != zero))};
}

}  // namespace
TMK_TIER_CLOSE
