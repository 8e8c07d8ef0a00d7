// SPDX-License-Identifier: Apache-2.0
// What kernels include: registers of the tier, the small functions of its instruction set, partial moves and
// tables. Vector intrinsics are used in src/simd, and elsewhere only by the generator that consists of AES
// rounds.
#pragma once

#include "simd/instructions.hpp"  // IWYU pragma: export
#include "simd/partial.hpp"       // IWYU pragma: export
#include "simd/tables.hpp"        // IWYU pragma: export
#include "simd/types.hpp"         // IWYU pragma: export

TMK_TIER_OPEN

#if TMK_TIER_NUMBER(TMK_TIER) != 1  // V3 has others
template <class T>
two_batches<T> load_deinterleaved(const T* p) {
  return deinterleave(load(p), load(p + lanes<T>));
}
template <class T>
void store_interleaved(T* p, const batch<T>& even, const batch<T>& odd) {
  const auto [first, second] = interleave(even, odd);
  store(p, first);
  store(p + lanes<T>, second);
}
#endif

// f of singles, computed in double precision.
template <class F, class... Singles>
[[gnu::always_inline]] inline f32 in_double(const F& f, const Singles&... x) {
  return narrow({f(widen(x).low...), f(widen(x).high...)});
}

TMK_TIER_CLOSE
