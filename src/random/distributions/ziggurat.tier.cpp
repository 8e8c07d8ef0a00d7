// SPDX-License-Identifier: Apache-2.0
// Units as places across layers. A layer's two edges are next to each other in memory: one load of both takes
// less than two gathered elements.
#include "random/distributions/ziggurat.hpp"

#include <algorithm>
#include <cstring>

#include "simd/batch.hpp"
#include "simd/integer.hpp"
#include "simd/rows.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

template <class Real>
using unit_of = typename ziggurat_unit<Real>::type;

constexpr int layers = 1 << ziggurat_layer_bits;

template <class Real>
struct edge_table {
  Real of[layers][2];
  constexpr edge_table() : of() {
    for (int i = 0; i < layers; ++i) {
      of[i][0] = static_cast<Real>(ziggurat_layers[i].edge);
      of[i][1] = static_cast<Real>(ziggurat_layers[i].inner);
    }
  }
};
template <class Real>
constexpr edge_table<Real> edges;

// Numbers from 2 to 4 by their fractions, less 3, in the middle of their steps: exact, and symmetric over
// (-1, 1). Of the bits below those of the layer the lowest are left out.
inline f64 across(const u64& unit) {
  const u64 fraction = (unit >> (12 - ziggurat_layer_bits)) & u64(0xFFFFFFFFFFFFF);
  return (bits_as<double>(fraction | u64(0x4000000000000000)) - 3.0) + 0x1p-52;
}
inline f32 across(const u32& unit) {
  constexpr int bits = 32 - ziggurat_layer_bits;  // 23 or less: a fraction's upper ones
  const u32 fraction = (unit & u32((1U << bits) - 1)) << (23 - bits);
  constexpr float half_step = 1.0F / (1U << bits);
  return (bits_as<float>(fraction | u32(0x40000000)) - 3.0F) + half_step;
}

// The layers of units in memory, by their upper 16 bits.
template <class Unit>
struct layers_of {
  const Unit* units;
  int operator[](int lane) const {
    uint16_t upper;
    std::memcpy(&upper, reinterpret_cast<const char*>(units + lane) + sizeof(Unit) - 2, 2);
    return upper >> (16 - ziggurat_layer_bits);
  }
};

// Bit i: lane i is beyond the inner edge.
template <class Real>
[[gnu::always_inline]] inline uint32_t place(const unit_of<Real>* units, Real* x) {
  batch<Real> edge[2];
  load_columns<2>(&edges<Real>.of[0][0], layers_of<unit_of<Real>>{units}, edge);
  const batch<Real> placed = across(load(units)) * edge[0];
  store(x, placed);
  return lane_bits<Real>(xsimd::abs(placed) >= edge[1]);
}

constexpr int group = 32;  // units whose escapes are looked for together

template <class Real>
[[gnu::always_inline]] inline uint32_t place_group(const unit_of<Real>* units, Real* x) {
  uint32_t set = 0;
#pragma GCC unroll 16
  for (int i = 0; i < group; i += lanes<Real>) set |= place<Real>(units + i, x + i) << i;
  return set;
}

inline int32_t append(uint32_t set, int32_t first, int32_t* escapes, int32_t count) {
  for (; set != 0; set &= set - 1) escapes[count++] = first + std::countr_zero(set);
  return count;
}

template <class Real>
int32_t place_across(int32_t n, const unit_of<Real>* units, Real* x, int32_t* escapes) {
  int32_t i = 0, count = 0;
  for (; n - i >= group; i += group) count = append(place_group<Real>(units + i, x + i), i, escapes, count);
  if (i == n) return count;
  unit_of<Real> rest[group] = {};
  Real placed[group];
  std::copy_n(units + i, n - i, rest);
  const uint32_t set = place_group<Real>(rest, +placed) & ((1U << (n - i)) - 1);
  std::copy_n(placed, n - i, x + i);
  return append(set, i, escapes, count);
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(ziggurat_doubles) = {place_across<double>};
TMK_DEFINE_TIER_KERNELS(ziggurat_singles) = {place_across<float>};

}  // namespace tmk::rng
