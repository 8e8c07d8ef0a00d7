// SPDX-License-Identifier: Apache-2.0
// Digital shifts and nested uniform scrambling of coordinates.
#include "random/generators/owen.hpp"

#include "simd/integer.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

template <class F>
void map(int32_t n, uint32_t* x, const uint32_t* key, F f) {
  for (int32_t i = 0; i < n; i += lanes<uint32_t>) store(x + i, f(load(x + i), load(key + i)));
}

u32 reversed(u32 x) {
  const auto exchange = [&x](int by, uint32_t lower) {
    x = ((x >> by) & u32(lower)) | ((x & u32(lower)) << by);
  };
  exchange(1, 0x55555555);
  exchange(2, 0x33333333);
  exchange(4, 0x0F0F0F0F);
  exchange(8, 0x00FF00FF);
  return (x >> 16) | (x << 16);
}

// Additions, products with odd numbers and sums with even multiples: no bit reaches one below it.
u32 hashed_upwards(u32 x, const u32& key) {
  x = x ^ x * u32(0x3d20adea);
  x = x + key;
  x = x * ((key >> 16) | u32(1));
  x = x ^ x * u32(0x05526c56);
  return x ^ x * u32(0x53a22864);
}

void shift(int32_t n, uint32_t* x, const uint32_t* key) {
  map(n, x, key, [](const u32& a, const u32& k) { return a ^ k; });
}
void scramble(int32_t n, uint32_t* x, const uint32_t* key) {
  map(n, x, key, [](const u32& a, const u32& k) { return reversed(hashed_upwards(reversed(a), k)); });
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(point_kernels) = {shift, scramble};

}  // namespace tmk::rng
