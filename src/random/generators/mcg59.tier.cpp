// SPDX-License-Identifier: Apache-2.0
// MCG59, several vectors of elements in flight to hide the latency of the product.
#include "random/generators/mcg59.hpp"

#include <algorithm>
#include <cstring>

#include "simd/integer.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

// Modulo 2^64: the lower 59 bits do not depend on those above, so the mask waits until an element is written.
struct stepper {
  u64 lower, upper;  // words of the multiplier
  explicit stepper(uint64_t a) : lower(a), upper(a >> 32) {}
  u64 operator()(const u64& x) const {
    const u64 cross = multiply_low_words(x, upper) + multiply_low_words(x >> 32, lower);
    return multiply_low_words(x, lower) + (cross << 32);
  }
};

void words(mcg59_state* state, int32_t n, uint64_t* r) {
  constexpr int width = lanes<uint64_t>, vectors = 4, group = vectors * width;
  uint64_t x = state->x;
  const uint64_t a = state->a;
  if (n < 2 * group) {
    for (int32_t i = 0; i < n; ++i, x *= a) r[i] = x & mcg59_mask;
    state->x = x & mcg59_mask;
    return;
  }
  alignas(64) uint64_t next[group];
  for (int i = 0; i < width; ++i, x *= a) next[i] = x;
  uint64_t step = a;
  for (int i = 1; i < width; i *= 2) step *= step;
  u64 v[vectors] = {u64::load_aligned(next)};
  for (int k = 1; k < vectors; ++k) v[k] = stepper(step)(v[k - 1]);
  for (int i = 1; i < vectors; i *= 2) step *= step;
  const stepper group_step(step);
  const u64 mask(mcg59_mask);
  int32_t i = 0;
  for (; n - i >= group; i += group) {
#pragma GCC unroll 4
    for (int k = 0; k < vectors; ++k) {
      store(r + i + k * width, v[k] & mask);
      v[k] = group_step(v[k]);
    }
  }
  for (int k = 0; k < vectors; ++k) (v[k] & mask).store_aligned(next + k * width);
  std::copy_n(next, n - i, r + i);
  state->x = next[n - i];
}

// Both parts of an element are exact doubles: the lower word as the low end of 2^52 + lower, the upper one as
// that of 2^84 + 2^32 upper.
struct parts {
  f64 lower, upper;
  explicit parts(const u64& x)
      : lower(bits_as<double>((x & u64(0xFFFFFFFF)) | bits_as<uint64_t>(f64(0x1p52))) - 0x1p52),
        upper(bits_as<double>((x >> 32) | bits_as<uint64_t>(f64(0x1p84))) - 0x1p84) {}
};
struct scalar_parts {
  double lower, upper;
  explicit scalar_parts(uint64_t x)
      : lower(static_cast<uint32_t>(x)), upper(static_cast<double>(x >> 32) * 0x1p32) {}
};

template <class Value>
Value double_of(Value lower, Value upper, double k, double a) {
  return (lower * k + upper * k) + a;
}
template <class Value>
Value wide_single_of(Value lower, Value upper, double k, double a) {
  return (lower + upper) * k + a;
}

void to_double(int32_t n, const uint64_t* x, double* r, double k, double a) {
  int32_t i = 0;
  for (; n - i >= lanes<double>; i += lanes<double>) {
    const parts p(load(x + i));
    store(r + i, double_of(p.lower, p.upper, k, a));
  }
  for (; i < n; ++i) {
    uint64_t element;  // may lie in an array of doubles
    std::memcpy(&element, x + i, sizeof element);
    const scalar_parts p(element);
    r[i] = double_of(p.lower, p.upper, k, a);
  }
}

void to_single(int32_t n, const uint64_t* x, float* r, double k, double a) {
  int32_t i = 0;
  for (; n - i >= lanes<double>; i += lanes<double>) {
    const parts p(load(x + i));
    store_singles(r + i, wide_single_of(p.lower, p.upper, k, a));
  }
  for (; i < n; ++i) {
    const scalar_parts p(x[i]);
    r[i] = static_cast<float>(wide_single_of(p.lower, p.upper, k, a));
  }
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(mcg59_kernels) = {words, to_double, to_single};

}  // namespace tmk::rng
