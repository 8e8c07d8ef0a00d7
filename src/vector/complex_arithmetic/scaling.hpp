// SPDX-License-Identifier: Apache-2.0
// Complex doubles too large or too small for products of pairs, scaled by a power of two.
#pragma once

#include "vector/complex_arithmetic/special_lanes.hpp"

TMK_TIER_OPEN
namespace {

// value = z root^2, where nothing was lost.
struct scaled_complex {
  complex_value<double> value;
  f64 root, inverse_root;
  lane_mask<double> lost;
};

// Numbers between 2^-300 and 2^300 stay as they are; the squares of all others are in the format.
inline scaled_complex into_window(const complex_value<double>& z) {
  const f64 one(1.0), up(0x1p270), down(0x1p-270);
  const f64 magnitude = maximum_or_second(xsimd::abs(z.re), xsimd::abs(z.im));
  const auto large = magnitude > f64(0x1p300), small = magnitude < f64(0x1p-300);
  const f64 root = xsimd::select(large, down, xsimd::select(small, up, one));
  const f64 inverse = xsimd::select(large, up, xsimd::select(small, down, one));
  const complex_value<double> value = {z.re * root * root, z.im * root * root};
  const auto lost = (value.re * inverse * inverse != z.re) | (value.im * inverse * inverse != z.im);
  return {value, root, inverse, lost};
}

// A result on its own scale, and whether it is a normal number, not rounded a second time.
inline f64 scaled(const f64& x, const f64& root) { return x * root * root; }

}  // namespace
TMK_TIER_CLOSE
