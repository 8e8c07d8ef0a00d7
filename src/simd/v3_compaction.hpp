// SPDX-License-Identifier: Apache-2.0
// V3 permutes 32-bit words by rows of a table: one row a set of 8 words. An element of 8 bytes is two
// words; of 16 bytes, a register has too few.
#pragma once

#include <immintrin.h>

#include <bit>
#include <cstdint>

#include "platform/tier.hpp"

TMK_TIER_OPEN
namespace {

constexpr int compaction_bytes = 32;

struct word_rows {
  uint8_t packed[256][8] = {}, unpacked[256][8] = {};
  constexpr word_rows() {
    for (int set = 0; set < 256; ++set)
      for (uint8_t word = 0, dense = 0; word < 8; ++word)
        if ((set >> word & 1) != 0) {
          packed[set][dense] = word;
          unpacked[set][word] = dense++;
        }
  }
};
constexpr word_rows rows_of_words;

inline __m256i row_of(const uint8_t (&row)[8]) {
  return _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(row)));
}

template <int Count>
uint32_t nonzero(const int32_t* mask) {
  if constexpr (Count == 8) {
    const __m256i m = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(mask));
    const __m256i zero = _mm256_cmpeq_epi32(m, _mm256_setzero_si256());
    return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(zero))) ^ 0xFF;
  } else {
    const __m128i m = _mm_loadu_si128(reinterpret_cast<const __m128i*>(mask));
    const __m128i zero = _mm_cmpeq_epi32(m, _mm_setzero_si128());
    return static_cast<uint32_t>(_mm_movemask_ps(_mm_castsi128_ps(zero))) ^ 0xF;
  }
}

// The words of a set of elements.
template <int Bytes>
uint32_t words_of_set(uint32_t set) {
  static_assert(Bytes == 4 || Bytes == 8);
  constexpr uint8_t pairs[] = {0x00, 0x03, 0x0C, 0x0F, 0x30, 0x33, 0x3C, 0x3F,
                               0xC0, 0xC3, 0xCC, 0xCF, 0xF0, 0xF3, 0xFC, 0xFF};
  return Bytes == 4 ? set : pairs[set];
}

inline __m256i leading_words(uint32_t set) {
  return _mm256_cmpgt_epi32(_mm256_set1_epi32(std::popcount(set)), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
}

template <int Bytes>
void pack_set(const void* from, uint32_t set, void* to) {
  const uint32_t words = words_of_set<Bytes>(set);
  const __m256i all = _mm256_loadu_si256(static_cast<const __m256i*>(from));
  const __m256i dense = _mm256_permutevar8x32_epi32(all, row_of(rows_of_words.packed[words]));
  _mm256_maskstore_epi32(static_cast<int*>(to), leading_words(words), dense);
}

template <int Bytes>
void unpack_set(const void* from, uint32_t set, void* to) {
  const uint32_t words = words_of_set<Bytes>(set);
  const __m256i dense = _mm256_maskload_epi32(static_cast<const int*>(from), leading_words(words));
  const __m256i all = _mm256_permutevar8x32_epi32(dense, row_of(rows_of_words.unpacked[words]));
  const __m256i bits = _mm256_setr_epi32(1, 2, 4, 8, 16, 32, 64, 128);
  const __m256i some =
      _mm256_cmpeq_epi32(_mm256_and_si256(_mm256_set1_epi32(static_cast<int>(words)), bits), bits);
  _mm256_maskstore_epi32(static_cast<int*>(to), some, all);
}

}  // namespace
TMK_TIER_CLOSE
