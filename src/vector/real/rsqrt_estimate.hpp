// The baseline's estimates of 1 / sqrt(x) and the series that refines them, for sqrt and inv_sqrt.
#pragma once

#include "platform/simd.hpp"
#include "vector/frame/kernel.hpp"

TMK_TIER_OPEN
namespace {

// The leading 9 bits of a single, the leading 21 of a double: products of two such values are exact.
inline f32 keep_high_bits(const f32& x) { return bits_as<float>(bits_as<uint32_t>(x) & u32(0xFFFF8000)); }
inline f64 keep_high_bits(const f64& x) { return bits_as<double>(bits_as<uint64_t>(x) & u64(0xFFFFFFFF00000000u)); }

// 21 bits wide, good to about 11: the single estimate of the mantissa, scaled by the parity of the exponent into
// [1, 4), with half the exponent negated.
inline f64 rsqrt_estimate(const f64& x) {
  const u64 bits = bits_as<uint64_t>(x);
  const u64 mantissa = (((bits >> 29) & u64(0xFFFFFF)) ^ u64(0x800000)) + u64(0x3F800000);
  const u64 estimate = bits_as<uint64_t>(reciprocal_sqrt_estimate(bits_as<float>(mantissa)));
  const u64 half_exponent = ((bits - u64(0x0010000000000000)) & u64(0xFFE0000000000000)) >> 1;
  const u64 high = (((estimate & u64(0xFFFFFFFF)) >> 3) + u64(0x57F00000)) << 32;
  return bits_as<double>(high - half_exponent);
}

inline lane_mask<double> not_positive_normal(const f64& x) {
  return mask_of_high_words(bits_as<int32_t>(x) - i32(static_cast<int32_t>(0x80100000)) >
                            i32(static_cast<int32_t>(0xFFDFFFFF)));
}

// (1 + e)^(-1/2) - 1 to the degree the level needs: |e| stays below 2^-10.4.
template <level Level>
f64 inverse_root_series(const f64& e) {
  if constexpr (Level == level::la) return e * polyeval(e, f64(-0.5), f64(0.375), f64(-0.3125), f64(0.2734375));
  return e * polyeval(e, f64(-0.5), f64(0.375), f64(-0.3125), f64(0.2734375), f64(-0.24609375));
}

}  // namespace
TMK_TIER_CLOSE
