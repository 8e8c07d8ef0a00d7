// SPDX-License-Identifier: Apache-2.0
// A linear search that is fastest when it finds nothing.
#pragma once

#include <cstddef>

namespace tmk {

// The first i below n for which `bad(i)` holds, or n; Real is the type that `bad` compares. Blocks are tested
// without a branch. The marks have the compared type and fill two SSE registers, because the compiler then
// vectorises the loop without AVX, and an array without a match is read at the speed of memory.
template <class Real, class Bad>
std::size_t first_where(std::size_t n, const Bad& bad) {
  constexpr std::size_t block = 64, lanes = 32 / sizeof(Real);
  std::size_t first = 0;
  for (; first + block <= n; first += block) {
    Real found[lanes] = {};
    for (std::size_t j = 0; j < block; j += lanes)
      for (std::size_t l = 0; l < lanes; ++l) found[l] = bad(first + j + l) ? Real(1) : found[l];
    Real any = 0;
    for (const Real mark : found) any += mark;
    if (any != 0) break;
  }
  while (first < n && !bad(first)) ++first;
  return first;
}

}  // namespace tmk
