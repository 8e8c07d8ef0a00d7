// SPDX-License-Identifier: Apache-2.0
// The tier's registers as xsimd's batches: their types, whole loads and stores, and their bits read as lanes
// of another type.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>

#include "platform/fp.hpp"
#include "platform/tier.hpp"
#include "simd/fused_avx512.hpp"

TMK_TIER_OPEN

template <class T>
using batch = xsimd::batch<T>;
template <class T>
using lane_mask = typename batch<T>::batch_bool_type;

using f32 = batch<float>;
using f64 = batch<double>;
using i32 = batch<int32_t>;
using u32 = batch<uint32_t>;
using i64 = batch<int64_t>;
using u64 = batch<uint64_t>;

template <class T>
constexpr int lanes = static_cast<int>(batch<T>::size);

// What deinterleave returns (the even lanes of two registers in their order, then the odd ones) and
// interleave (the first register of lanes in turn, then the second): complex elements as parts, and back.
template <class T>
struct two_batches {
  batch<T> first, second;
};

// What widen makes of singles: their values as doubles, those of the lower half in `low`. narrow() is the way
// back.
struct widened {
  f64 low, high;
};

// The same bits, read as lanes of another type.
template <class To, class From>
batch<To> bits_as(const batch<From>& x) {
  if constexpr (std::same_as<To, From>)
    return x;
  else
    return xsimd::bitwise_cast<batch<To>>(x);
}

// A mask over lanes of another type of the same width.
template <class To, class From>
lane_mask<To> mask_as(const xsimd::batch_bool<From>& m) {
  static_assert(sizeof(To) == sizeof(From));
  return lane_mask<To>(std::bit_cast<typename lane_mask<To>::register_type>(m.data));
}

template <class T>
batch<T> load(const T* p) {
  return batch<T>::load_unaligned(p);
}

template <class T>
void store(T* p, const batch<T>& x) {
  x.store_unaligned(p);
}

TMK_TIER_CLOSE
