// SPDX-License-Identifier: Apache-2.0
// The generators' own words, and words of 32 and 64 random bits from those that can give them.
#include <cstddef>

#include "random/core/registry.hpp"
#include "random/distributions/precision.hpp"

namespace {
using namespace tmk::rng;

constexpr int32_t mcg59_block = 2048;

// Generators whose words do not hold 32 or 64 random bits.
int32_t none(VtsStreamHandle, int32_t, void*) { return VTS_STATUS_NO_FIXED_WIDTH_BITS; }

int32_t whole_words(VtsStreamHandle stream, int32_t n, void* r) {
  return _vtsiRngUniformBits(0, stream, n, r);
}

// The upper 32 of each word's 59 bits: the period of a bit doubles with its position.
int32_t upper_bits(VtsStreamHandle stream, int32_t n, void* r) {
  alignas(64) uint64_t words[mcg59_block];
  int32_t status = VTS_STATUS_OK;
  uint32_t* to = static_cast<uint32_t*>(r);
  for (int32_t count; n > 0; n -= count, to += count) {
    count = std::min(n, mcg59_block);
    status = _vtsiRngUniformBits(0, stream, count, words);
    if (status < 0) return status;
    bit_kernels_now().upper_32_of_59(count, words, to);
  }
  return status;
}

// Twice as many words of 32 bits, the lower one first; in parts, since twice n may exceed a 32-bit count.
template <auto Draw>
int32_t twice(VtsStreamHandle stream, int32_t n, void* r) {
  constexpr int32_t longest = 1 << 29;
  int32_t status = VTS_STATUS_OK;
  uint64_t* to = static_cast<uint64_t*>(r);
  for (int32_t count; n > 0 && status >= 0; n -= count, to += count) {
    count = std::min(n, longest);
    status = Draw(stream, 2 * count, to);
  }
  return status;
}
template <>
int32_t twice<none>(VtsStreamHandle stream, int32_t n, void* r) {
  return none(stream, n, r);
}

using fixed_width_draw = int32_t (*)(VtsStreamHandle, int32_t, void*);

// A generator that a program registered has no entry, and gives no bits of a fixed width.
int32_t dispatch(const fixed_width_draw (&draws)[16], VtsStreamHandle stream, int32_t n, void* r) {
  int32_t row, offset;
  __vtsGetBrngBaseOffset(header_of(stream).brng_id, &row, &offset);
  return row < 16 ? draws[row](stream, n, r) : VTS_STATUS_NO_FIXED_WIDTH_BITS;
}

}  // namespace

extern "C" {

int32_t _vtsiRngUniformBits(int32_t, VtsStreamHandle stream, int32_t n, void* r) {
  return n <= 0 ? VTS_STATUS_OK : record_of(stream).iBrng(stream, n, r);
}

#define TMK_FIXED_WIDTH(name, draw)                                               \
  int32_t _viRngUniformBits32##name(VtsStreamHandle stream, int32_t n, void* r) { \
    return draw(stream, n, r);                                                    \
  }                                                                               \
  int32_t _viRngUniformBits64##name(VtsStreamHandle stream, int32_t n, void* r) { \
    return twice<draw>(stream, n, r);                                             \
  }
#include "random/distributions/fixed_width.def"
#undef TMK_FIXED_WIDTH

int32_t _vtsiRngUniformBits32(int32_t, VtsStreamHandle stream, int32_t n, uint32_t* r) {
#define TMK_FIXED_WIDTH(name, draw) _viRngUniformBits32##name,
  static constexpr fixed_width_draw draws[] = {
#include "random/distributions/fixed_width.def"
  };
#undef TMK_FIXED_WIDTH
  return dispatch(draws, stream, n, r);
}

int32_t _vtsiRngUniformBits64(int32_t, VtsStreamHandle stream, int32_t n, uint64_t* r) {
#define TMK_FIXED_WIDTH(name, draw) _viRngUniformBits64##name,
  static constexpr fixed_width_draw draws[] = {
#include "random/distributions/fixed_width.def"
  };
#undef TMK_FIXED_WIDTH
  return dispatch(draws, stream, n, r);
}
}
