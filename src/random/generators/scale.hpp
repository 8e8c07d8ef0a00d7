// SPDX-License-Identifier: Apache-2.0
// Words to numbers of an interval: r[i] = value(w[i]) * k + a in double, each operation rounded; singles are
// rounded once more at the end. The same bits on every tier.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/by_tier.hpp"
#include "tmk/abi/vts.h"

namespace tmk {

// Element n - 1 down to 0 of w may lie in the upper half of r (in-place expansion, in rising order).
struct scale_loops {
  void (*unsigned_to_double)(int32_t n, const uint32_t* w, double* r, double k, double a);
  void (*signed_to_double)(int32_t n, const uint32_t* w, double* r, double k, double a);
  void (*unsigned_to_single)(int32_t n, const uint32_t* w, float* r, double k, double a);  // r may be w
  void (*signed_to_single)(int32_t n, const uint32_t* w, float* r, double k, double a);    // r may be w
};

// Words and what is made of them stay in the first cache.
constexpr int32_t scale_block = 2048;

// Doubles from a generator of 32-bit words: draw(count, words) fills the upper half of a block of r, convert
// is one of the loops above.
template <class Draw>
void doubles_from_words(int32_t n, double* r, decltype(scale_loops::unsigned_to_double) convert, double k,
                        double a, Draw draw) {
  for (int32_t count; n > 0; n -= count, r += count) {
    count = std::min(n, scale_block);
    uint32_t* words = reinterpret_cast<uint32_t*>(r) + count;
    draw(count, words);
    convert(count, words, r, k, a);
  }
}

template <class Draw>
void singles_from_words(int32_t n, float* r, decltype(scale_loops::unsigned_to_single) convert, double k,
                        double a, Draw draw) {
  for (int32_t count; n > 0; n -= count, r += count) {
    count = std::min(n, scale_block);
    uint32_t* words = reinterpret_cast<uint32_t*>(r);
    draw(count, words);
    convert(count, words, r, k, a);
  }
}

}  // namespace tmk

TMK_DECLARE_LOOPS(scale_loops)

namespace tmk {

// The draw of a generator whose words fill [0, 1 / scale): uniforms from a to b, in either precision.
template <class Real, class Draw>
int32_t uniforms_from_words(int32_t n, Real* r, Real a, Real b, double scale, Draw draw) {
  const double k = (double{b} - a) * scale;
  if constexpr (sizeof(Real) == sizeof(double))
    doubles_from_words(n, r, scale_loops_now().unsigned_to_double, k, a, draw);
  else
    singles_from_words(n, r, scale_loops_now().unsigned_to_single, k, a, draw);
  return VTS_STATUS_OK;
}

}  // namespace tmk
