// SPDX-License-Identifier: Apache-2.0
// V4 compresses and expands registers. Stores to memory by the same instructions take some processors ten
// times as long: these are of leading lanes.
#pragma once

#include <immintrin.h>

#include <bit>
#include <cstdint>

#include "platform/tier.hpp"

TMK_TIER_OPEN

constexpr int compaction_bytes = 64;

template <int Count>
uint32_t nonzero(const int32_t* mask) {
  if constexpr (Count == 16) {
    const __m512i m = _mm512_loadu_si512(mask);
    return _mm512_test_epi32_mask(m, m);
  } else if constexpr (Count == 8) {
    const __m256i m = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(mask));
    return _mm256_test_epi32_mask(m, m);
  } else {
    const __m128i m = _mm_loadu_si128(reinterpret_cast<const __m128i*>(mask));
    return _mm_test_epi32_mask(m, m);
  }
}

// Lanes of 16 bytes are pairs of 8.
template <int Bytes>
uint32_t lanes_of_set(uint32_t set) {
  return Bytes == 16 ? 3 * _pdep_u32(set, 0x55) : set;
}
inline uint32_t leading_bits(uint32_t set) { return (1u << std::popcount(set)) - 1; }

template <int Bytes>
void pack_set(const void* from, uint32_t set, void* to) {
  const uint32_t lanes = lanes_of_set<Bytes>(set);
  if constexpr (Bytes == 4) {
    const auto some = static_cast<__mmask16>(lanes), leading = static_cast<__mmask16>(leading_bits(lanes));
    _mm512_mask_storeu_epi32(to, leading, _mm512_maskz_compress_epi32(some, _mm512_loadu_si512(from)));
  } else {
    const auto some = static_cast<__mmask8>(lanes), leading = static_cast<__mmask8>(leading_bits(lanes));
    _mm512_mask_storeu_epi64(to, leading, _mm512_maskz_compress_epi64(some, _mm512_loadu_si512(from)));
  }
}

template <int Bytes>
void unpack_set(const void* from, uint32_t set, void* to) {
  const uint32_t lanes = lanes_of_set<Bytes>(set);
  if constexpr (Bytes == 4) {
    const auto some = static_cast<__mmask16>(lanes), leading = static_cast<__mmask16>(leading_bits(lanes));
    const __m512i dense = _mm512_maskz_loadu_epi32(leading, from);
    _mm512_mask_storeu_epi32(to, some, _mm512_maskz_expand_epi32(some, dense));
  } else {
    const auto some = static_cast<__mmask8>(lanes), leading = static_cast<__mmask8>(leading_bits(lanes));
    const __m512i dense = _mm512_maskz_loadu_epi64(leading, from);
    _mm512_mask_storeu_epi64(to, some, _mm512_maskz_expand_epi64(some, dense));
  }
}

TMK_TIER_CLOSE
