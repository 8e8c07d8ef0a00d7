// SPDX-License-Identifier: Apache-2.0
// Loads and stores of the first lanes of a register, which touch no memory past them, and stores past the
// caches.
#pragma once

#include "simd/instructions.hpp"

TMK_TIER_OPEN

// Lanes from `count` on get the filler; nothing past p[count - 1] is read.
template <class T>
batch<T> load_partial(const T* p, int count, T filler) {
  if (count == lanes<T>) return load(p);
  return load_leading(p, count, filler);
}

// Nothing past p[count - 1] is written.
template <class T>
void store_partial(T* p, int count, const batch<T>& x) {
  if (count == lanes<T>) return store(p, x);
  store_leading(p, count, x);
}

// Makes the stores of stream() visible in order.
inline void streaming_done() { _mm_sfence(); }

TMK_TIER_CLOSE
