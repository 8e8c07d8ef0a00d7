// SPDX-License-Identifier: Apache-2.0
// Words to numbers of an interval: r[i] = value(w[i]) * k + a in double, each operation rounded; singles are
// rounded once more at the end. The same bits on every tier.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/by_tier.hpp"
#include "tmk/abi/vts.h"

namespace tmk::rng {

// The words may be the last n of the memory of r, which is where uniforms_from_words puts them:
//   doubles   |-- r[0] --|-- r[1] --| ... |      the results are written from the left, and no word is
//             |                w[0] w[1] ... |   overwritten before it is read
//   singles   w is r
template <class Real>
using scale_words = void(int32_t n, const uint32_t* w, Real* r, double k, double a);

template <class Real>
struct scale_kernels {
  scale_words<Real>*of_unsigned, *of_signed;
};

TMK_DECLARE_TIER_KERNEL_PAIR(scale)

// Words and what is made of them stay in the first cache.
constexpr int32_t scale_block = 2048;

// The uniforms of a generator of 32-bit words: draw(count, words) returns a status, and a negative one ends
// the call.
template <class Real, class Draw>
int32_t uniforms_from_words(int32_t n, Real* r, scale_words<Real>* convert, double k, double a, Draw draw) {
  for (int32_t count; n > 0; n -= count, r += count) {
    count = std::min(n, scale_block);
    uint32_t* words = reinterpret_cast<uint32_t*>(r + count) - count;
    if (const int32_t status = draw(count, words); status < 0) return status;
    convert(count, words, r, k, a);
  }
  return VTS_STATUS_OK;
}

}  // namespace tmk::rng
