// SPDX-License-Identifier: Apache-2.0
// MCG31M1, several vectors of elements in flight to hide the latency of the product.
#include "random/generators/mcg31m1.hpp"

#include <algorithm>

#include "simd/integer.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

// Products of the even and the odd elements, folded together: p = 2^31 (p >> 31) + (p mod 2^31), and the
// upper word of 2 p is p >> 31.
u32 multiply(const u64& a, const u32& x) {
  const u64 even = multiply_low_words(a, bits_as<uint64_t>(x));
  const u64 odd = multiply_low_words(a, bits_as<uint64_t>(x) >> 32);
  const u32 modulus(mcg31m1_modulus);
  const u32 sum = (merge_words(even, odd << 32) & modulus) + merge_words(even >> 31, odd << 1);
  return xsimd::min(sum, sum - modulus);
}

void words(mcg31m1_state* state, int32_t n, uint32_t* r) {
  constexpr int width = lanes<uint32_t>, vectors = 4, group = vectors * width;
  uint32_t x = state->x;
  const uint32_t a = state->a;
  if (n < 2 * group) {
    for (int32_t i = 0; i < n; ++i, x = multiply_mod_2p31m1(a, x)) r[i] = x;
    state->x = x;
    return;
  }
  alignas(64) uint32_t next[group];
  for (int i = 0; i < width; ++i, x = multiply_mod_2p31m1(a, x)) next[i] = x;
  uint32_t step = a;
  for (int i = 1; i < width; i *= 2) step = multiply_mod_2p31m1(step, step);
  u32 v[vectors] = {u32::load_aligned(next)};
  for (int k = 1; k < vectors; ++k) v[k] = multiply(u64(step), v[k - 1]);
  for (int i = 1; i < vectors; i *= 2) step = multiply_mod_2p31m1(step, step);
  const u64 group_step(step);
  int32_t i = 0;
  for (; n - i >= group; i += group) {
#pragma GCC unroll 4
    for (int k = 0; k < vectors; ++k) {
      store(r + i + k * width, v[k]);
      v[k] = multiply(group_step, v[k]);
    }
  }
  for (int k = 0; k < vectors; ++k) v[k].store_aligned(next + k * width);
  std::copy_n(next, n - i, r + i);
  state->x = next[n - i];
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(mcg31m1_kernels) = {words};

}  // namespace tmk::rng
