// SPDX-License-Identifier: Apache-2.0
// What the baseline's logarithms share: x = 2^k m, the row r of a table by the leading bits of m, and
//   log(x) = k log(2) + log(1 / r) + log(1 + t),   t = m r - 1.
// k = -1 meets the row of 2 when x is just below 1, and the first two terms cancel exactly.
#pragma once

#include "vector/logarithm/log_256_data.hpp"
#include "vector/logarithm/log_rare.hpp"
#include "vector/logarithm/log_row.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

inline f32 keep_bits(const f32& x, uint32_t kept) { return bits_as<float>(bits_as<uint32_t>(x) & u32(kept)); }

inline i32 exponent_field(const f32& x) { return bits_as<int32_t>(x) >> 23; }

// The mantissa as a value in [1, 2).
inline f32 mantissa(const f32& x) {
  return bits_as<float>((bits_as<uint32_t>(x) & u32(0x007FFFFF)) | u32(0x3F800000));
}

inline f64 mantissa(const f64& x) {
  return bits_as<double>((bits_as<uint64_t>(x) & u64(0x000FFFFFFFFFFFFF)) | u64(0x3FF0000000000000));
}

// The exponent of a positive x, plus k0: the field becomes the last bits of 2^52 + field.
inline f64 exponent(const f64& x, int k0) {
  const u64 biased = (bits_as<uint64_t>(x) >> 52) | u64(0x4330000000000000);
  return bits_as<double>(biased) - f64(0x1p52 + format<double>::bias - k0);
}

// t = m r - 1 in two parts: the first, of the leading 10 (21) bits of m, is exact for short reciprocals.
inline value_pair<f32> split_product(const f32& m, const f32& reciprocal) {
  const f32 mh = keep_bits(m, 0xFFFFC000);
  return {mh * reciprocal - f32(1.0f), (m - mh) * reciprocal};
}

inline value_pair<f64> split_product(const f64& m, const f64& reciprocal) {
  const f64 mh = bits_as<double>(bits_as<uint64_t>(m) & u64(0xFFFFFFFF00000000));
  return {mh * reciprocal - f64(1.0), (m - mh) * reciprocal};
}

// log(x 2^k0) = high + low + log(1 + t). high is exact.
template <class Value>
struct reduced {
  Value high, low;
  value_pair<Value> t;
};

// By 65 rows: the first 6 fraction bits, rounded. Between 1 - 2^-7 and 1 + 2^-6 the rows of 1 and 2 serve, by
// which t is x - 1 and nothing cancels.
inline reduced<f32> reduce_by_64(const f32& x, int k0, const log_row<float>* rows,
                                 const log_unit<float>& unit) {
  const i32 bits = bits_as<int32_t>(x);
  const auto near_one = bits + i32(0x407E0000) > i32(0x7FFC0000);
  const i32 down_or_up = i32(8) - ((bits >> 19) & i32(0x10));  // the exponent's last bit is set from 1 on
  const i32 rounding = i32(8) + xsimd::select(near_one, down_or_up, i32(0));
  f32 row[4];
  load_rows(rows, (((bits >> 13) & i32(0x3F8)) + rounding) & i32(0x7F0), row);
  const f32 k = xsimd::to_float(exponent_field(x) - i32(format<float>::bias - k0));
  return {k * f32(unit.high) + row[1], k * f32(unit.low) + row[2], split_product(mantissa(x), row[0])};
}

// By the same rows with full reciprocals and the logarithms of their centers: t is the distance to the
// center, times the reciprocal, in one part.
inline reduced<f32> reduce_by_center(const f32& x, int k0, const log_row<float>* rows,
                                     const log_unit<float>& unit) {
  f32 row[4];
  load_rows(rows, (((bits_as<int32_t>(x) >> 13) & i32(0x3F8)) + i32(8)) & i32(0x7F0), row);
  const f32 k = xsimd::to_float(exponent_field(x) - i32(format<float>::bias - k0));
  const f32 m = mantissa(x);
  const f32 center = keep_bits(bits_as<float>(bits_as<int32_t>(m) + i32(0x10000)), 0xFFFE0000);
  return {k * f32(unit.high) + row[1], k * f32(unit.low) + row[2], {(m - center) * row[0], f32(0.0f)}};
}

// By 513 rows: the first 9 fraction bits, rounded.
inline reduced<f64> reduce_by_512(const f64& x, int k0, const log_row<double>* rows,
                                  const log_unit<double>& unit) {
  const i32 offset = (((bits_as<int32_t>(x) & i32(0xFFC00)) + i32(0x400)) & i32(0x1FF800)) >> 6;
  f64 row[2], low_column[2];
  load_rows(rows, offset, row);
  load_rows(&rows->low, offset, low_column);
  const f64 k = exponent(x, k0);
  return {k * f64(unit.high) + row[1], k * f64(unit.low) + low_column[0], split_product(mantissa(x), row[0])};
}

// The row of the 256 by the first 8 fraction bits of a positive x, cut off.
struct log_row_256 {
  f64 reciprocal, high, low;
};
inline log_row_256 row_256(const f64& x, const log_parts* logarithms) {
  const i32 offset = (bits_as<int32_t>(x) >> 8) & i32(0xFF0);
  f64 parts[2];
  load_rows(logarithms, offset, parts);
  return {load_values(log_256_data::reciprocals, offset >> 1), parts[0], parts[1]};
}

// x = 2^k (1 + f) with 1 + f in [2/3, 4/3).
struct about_one {
  f32 k, f;
};
inline about_one reduce_about_one(const f32& x, int k0) {
  constexpr int two_thirds = 0x3F2AAAAB;
  const i32 i = bits_as<int32_t>(x) - i32(two_thirds);
  const f32 m = bits_as<float>((i & i32(0x007FFFFF)) + i32(two_thirds));
  return {xsimd::to_float((i >> 23) + i32(k0)), m - f32(1.0f)};
}

// log(x 2^k0) to 12 bits: the series in f.
inline f32 coarse_ln(const f32& x, int k0) {
  const auto [k, f] = reduce_about_one(x, k0);
  const f32 p = polynomial(f, -0.5f, 0x1.54e2bep-2f, -0x1.11d1fcp-2f, 0x1.c25262p-3f);
  return k * f32(0x1.62e43p-1f) + (f + (f * f) * p);
}

// high + tail + rest, correct to little more than half a unit: high + tail keeps its rounding error.
template <class Value>
Value sum_of_three(const Value& high, const Value& tail, const Value& rest) {
  const auto sum = fast_two_sum(high, tail);
  return sum.high + (sum.low + rest);
}

// What the kernels have in common: `formula(x, k)` gives log(x 2^k) of positive normal numbers.
template <class Real, class Kernel>
struct positive_logarithm : description<Real> {
  static batch<Real> fast(const batch<Real>& x) { return Kernel::formula(x, 0); }
  static lane_mask<Real> flagged(const batch<Real>& x, const batch<Real>&) { return not_positive_normal(x); }
  static int32_t rare(const Real* a, Real* r) {
    return log_rare(a, r, [](Real x, int k) { return Kernel::formula(batch<Real>(x), k).get(0); });
  }
};

}  // namespace
TMK_TIER_CLOSE
