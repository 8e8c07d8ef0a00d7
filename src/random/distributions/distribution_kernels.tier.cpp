// SPDX-License-Identifier: Apache-2.0
// Element-wise steps between uniforms, vector kernels and variates.
#include "random/distributions/distribution_kernels.hpp"

#include <bit>

#include "simd/batch.hpp"
#include "simd/integer.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

// r[i] = f(r[i], p[i]...), where f takes vectors. The elements that do not fill a register are computed in
// one that is partly filled.
template <class Real, class F, class... Pointers>
void map(int32_t n, Real* r, F f, Pointers... p) {
  constexpr int width = lanes<Real>;
  int32_t i = 0;
  for (; n - i >= 2 * width; i += 2 * width) {
    const batch<Real> first = f(load(r + i), load(p + i)...);
    const batch<Real> second = f(load(r + i + width), load(p + i + width)...);
    store(r + i, first);
    store(r + i + width, second);
  }
  for (int count; i < n; i += count) {
    count = std::min(n - i, width);
    store_partial(r + i, count,
                  f(load_partial(r + i, count, Real{0}), load_partial(p + i, count, Real{0})...));
  }
}

template <class Real>
void scale(int32_t n, Real* r, Real factor) {
  map(n, r, [=](const auto& x) { return x * factor; });
}
template <class Real>
void place(int32_t n, Real* r, Real factor, Real a) {
  map(n, r, [=](const auto& x) { return x * factor + a; });
}

// Where x is not a number, or equal to the bound, the bound.
template <class Real>
batch<Real> at_least(const batch<Real>& x, Real bound) {
  return xsimd::max(x, batch<Real>(bound));
}

template <class Real>
void place_above(int32_t n, Real* r, Real factor, Real a) {
  map(n, r, [=](const auto& x) { return at_least<Real>(x * factor + a, a); });
}
template <class Real>
void subtract_above(int32_t n, Real* r, Real factor, Real a) {
  map(n, r, [=](const auto& x) { return at_least<Real>(a - x * factor, a); });
}
template <class Real>
void clamp(int32_t n, Real* r, Real a, Real b) {
  map(n, r, [=](const auto& x) { return xsimd::min(at_least<Real>(x, a), batch<Real>(b)); });
}

// In place: u[i] is written after the pairs up to i have been read, which begin at u[2 i].
template <class Real>
void split_pairs(int32_t n, Real* u, Real* r) {
  constexpr int width = lanes<Real>;
  int32_t i = 0;
  for (; n - i >= width; i += width) {
    const auto [first, second] = load_deinterleaved(u + 2 * i);
    store(r + i, first);
    store(u + i, second);
  }
  for (; i < n; ++i) {
    const Real second = u[2 * i + 1];
    r[i] = u[2 * i];
    u[i] = second;
  }
}

template <class Real>
void place_either_side(int32_t n, Real* r, const Real* u, Real beta, Real a) {
  const batch<Real> up(beta), down(-beta), half(Real{0.5});
  map(
      n, r, [&](const auto& x, const auto& side) { return x * xsimd::select(side <= half, down, up) + a; },
      u);
}

template <class Real>
void join_pairs(int32_t n, Real* r, const Real* radius, const Real* x, const Real* y, Real sigma, Real a) {
  constexpr int width = lanes<Real>;
  int32_t i = 0;
  for (; n - i >= width; i += width) {
    const batch<Real> rho = load(radius + i);
    store_interleaved(r + 2 * i, rho * load(x + i) * sigma + a, rho * load(y + i) * sigma + a);
  }
  for (; i < n; ++i) {
    r[2 * i] = radius[i] * x[i] * sigma + a;
    r[2 * i + 1] = radius[i] * y[i] * sigma + a;
  }
}

// Truncation, and one less where that rounded up. What does not fit becomes the least integer.
template <class Real>
void floor(int32_t n, const Real* x, int32_t* r) {
  constexpr int width = lanes<Real>;
  int32_t i = 0;
  for (; n - i >= width; i += width) store_floor(r + i, load(x + i));
  alignas(64) int32_t rest[width];
  store_floor(rest, load_partial(x + i, n - i, Real{0}));
  std::copy_n(rest, n - i, r + i);
}

void below(int32_t n, const int32_t* x, int32_t bound, int32_t* r) {
  constexpr int width = lanes<int32_t>;
  int32_t i = 0;
  for (; n - i >= width; i += width) store(r + i, xsimd::select(load(x + i) < i32(bound), i32(1), i32(0)));
  for (; i < n; ++i) r[i] = x[i] < bound;
}

void upper_32_of_59(int32_t n, const uint64_t* words, uint32_t* r) {
  for (int32_t i = 0; i < n; ++i) r[i] = static_cast<uint32_t>(words[i] >> 27);
}

void pairs_to_doubles(int32_t n, double* r, const pair_scale& s) {
  const u64 lower_word(0xFFFFFFFF), exponent_52(std::bit_cast<uint64_t>(0x1p52));
  const auto number = [&](const u64& word) { return bits_as<double>(word | exponent_52) - 0x1p52; };
  const f64 low(s.low), high(s.high);
  map(n, r, [&](const f64& pair) {
    const u64 x = bits_as<uint64_t>(pair);
    const f64 u = (number(x >> 32) * s.k + s.a) + (number(x & lower_word) * s.k_lower + s.a_lower);
    return xsimd::min(xsimd::max(u, low), high);
  });
}

void doubles_below(int32_t n, const double* x, double bound, int32_t* r) {
  constexpr int width = lanes<double>;
  const f64 one(1), zero(0), limit(bound);
  int32_t i = 0;
  for (; n - i >= width; i += width) store_truncated(r + i, xsimd::select(load(x + i) < limit, one, zero), 0);
  for (; i < n; ++i) r[i] = x[i] < bound;
}

// Of the 96 bits of word * width the upper 32 are the value. The values whose lower 64 are less than
// 2^64 mod width come from one word more than others (D. Lemire, Fast random integer generation in an
// interval, ACM TOMACS 29 (2019)); of those 64 the upper 32 are all zero, which is rare.
int32_t keep_even_values(int32_t n, const uint64_t* words, uint32_t width, int32_t low, int32_t* r) {
  const uint32_t surplus = static_cast<uint32_t>((0 - uint64_t{width}) % width);
  int32_t kept = 0;
  for (int32_t i = 0; i < n; ++i) {
    const uint64_t lower = (words[i] & 0xFFFFFFFF) * width, upper = (words[i] >> 32) * width + (lower >> 32);
    r[kept] = static_cast<int32_t>(static_cast<uint32_t>(low) + static_cast<uint32_t>(upper >> 32));
    kept += static_cast<uint32_t>(upper) != 0 || static_cast<uint32_t>(lower) >= surplus;
  }
  return kept;
}

int32_t bounded(int32_t n, const uint64_t* words, uint32_t width, int32_t low, int32_t* r) {
  constexpr int lanes_64 = lanes<double>;
  const u64 factor(width), offset(static_cast<uint32_t>(low)), lower_word(0xFFFFFFFF), zero(0);
  auto rare = zero != zero;
  int32_t i = 0;
  for (; n - i >= lanes_64; i += lanes_64) {
    const u64 x = load(words + i);
    const u64 upper = multiply_low_words(x >> 32, factor) + (multiply_low_words(x, factor) >> 32);
    rare = rare | ((upper & lower_word) == zero);
    store_lower_words(reinterpret_cast<uint32_t*>(r + i), (upper >> 32) + offset);
  }
  if (xsimd::any(rare)) return keep_even_values(n, words, width, low, r);
  return i + keep_even_values(n - i, words + i, width, low, r + i);
}

template <class Real>
constexpr distribution_kernels<Real> steps = {
    scale<Real>, place<Real>,       place_above<Real>,       subtract_above<Real>,
    clamp<Real>, split_pairs<Real>, place_either_side<Real>, join_pairs<Real>,
    floor<Real>};

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(distribution_doubles) = {steps<double>};
TMK_DEFINE_TIER_KERNELS(distribution_singles) = {steps<float>};
TMK_DEFINE_TIER_KERNELS(bit_kernels) = {below, upper_32_of_59, pairs_to_doubles, doubles_below, bounded};

}  // namespace tmk::rng
