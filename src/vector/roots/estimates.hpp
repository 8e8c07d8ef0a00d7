// SPDX-License-Identifier: Apache-2.0
// Estimates of 1 / x and 1 / sqrt(x) in double, good to 11 bits on normal numbers (1 / x: 2^-1021 <= |x| <
// 2^1022). A processor that estimates singles only gives the estimate of the mantissa; the exponent follows
// by integer steps.
#pragma once

#include "simd/batch.hpp"

TMK_TIER_OPEN

#if TMK_TIER_NUMBER(TMK_TIER) < 2
// 20 fraction bits. The subtraction negates the exponent and, the sign lying within the mask, keeps the sign.
inline f64 reciprocal_estimate(const f64& x) {
  const i32 high = bits_as<int32_t>(x);
  const f32 mantissa = bits_as<float>(((high << 3) & i32(0x7FFFFF)) | i32(0x3F800000));
  const i32 exponent = i32(0x77F00000) - (high & i32(static_cast<int32_t>(0xFFF00000)));
  const i32 y0 = (bits_as<int32_t>(reciprocal_estimate(mantissa)) >> 3) + exponent;
  return bits_as<double>(bits_as<uint64_t>(y0) & u64(0xFFFFFFFF00000000u));
}

#if TMK_TIER_NUMBER(TMK_TIER) == 0
// 20 fraction bits. The parity of the exponent goes into the mantissa, which so lies in [1, 4), and half the
// exponent is negated.
inline f64 reciprocal_sqrt_estimate(const f64& x) {
  const u64 bits = bits_as<uint64_t>(x);
  const u64 mantissa = (((bits >> 29) & u64(0xFFFFFF)) ^ u64(0x800000)) + u64(0x3F800000);
  const u64 estimate =
      bits_as<uint64_t>(reciprocal_sqrt_estimate(bits_as<float>(mantissa))) & u64(0xFFFFFFFF);
  const u64 half_exponent = ((bits - u64(0x0010000000000000)) & u64(0xFFE0000000000000)) >> 1;
  return bits_as<double>((((estimate >> 3) + u64(0x57F00000)) << 32) - half_exponent);
}
#else
// On upper words. x = 4^j m with m in [1/2, 2), which takes the parity of the exponent along; lower words
// come out as they fall, far below the estimate's error.
inline f64 reciprocal_sqrt_estimate(const f64& x) {
  const i32 high = bits_as<int32_t>(x);
  const f32 mantissa = bits_as<float>(((high << 3) & i32(0xFFFFFF)) | i32(0x3F000000));
  const i32 half_exponent = (high >> 1) & i32(0x3FF00000);
  const i32 estimate = bits_as<int32_t>(reciprocal_sqrt_estimate(mantissa)) >> 3;
  return bits_as<double>(estimate + (i32(0x57F00000) - half_exponent));
}
#endif
#endif

TMK_TIER_CLOSE
