// SPDX-License-Identifier: Apache-2.0
// What the baseline's sqrt and inv_sqrt share around the estimate of 1 / sqrt(x).
#pragma once

#include "vector/roots/estimates.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// The leading 9 bits of a single, the leading 21 of a double: products of two such values are exact.
inline f32 keep_high_bits(const f32& x) { return bits_as<float>(bits_as<uint32_t>(x) & u32(0xFFFF8000)); }
inline f64 keep_high_bits(const f64& x) {
  return bits_as<double>(bits_as<uint64_t>(x) & u64(0xFFFFFFFF00000000u));
}

// (1 + e)^(-1/2) - 1 to the degree the level needs: |e| stays below 2^-10.4.
template <level Level>
f64 inverse_root_series(const f64& e) {
  if constexpr (Level == level::la) return e * polynomial(e, -0.5, 0.375, -0.3125, 0.2734375);
  return e * polynomial(e, -0.5, 0.375, -0.3125, 0.2734375, -0.24609375);
}

}  // namespace
TMK_TIER_CLOSE
