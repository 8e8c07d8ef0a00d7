// SPDX-License-Identifier: Apache-2.0
// Units as places across layers. A layer's two edges are next to each other in memory: one load of both takes
// less than two gathered elements.
#include "random/distributions/ziggurat.hpp"

#include <algorithm>

#include "simd/batch.hpp"
#include "simd/integer.hpp"
#include "simd/rows.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

template <class Real>
using unit_of = typename ziggurat_unit<Real>::type;

template <class Real>
struct edge_table {
  Real of[256][2];
  constexpr edge_table() : of() {
    for (int i = 0; i < 256; ++i) {
      of[i][0] = static_cast<Real>(ziggurat_layers[i].edge);
      of[i][1] = static_cast<Real>(ziggurat_layers[i].inner);
    }
  }
};
template <class Real>
constexpr edge_table<Real> edges;

// Numbers from 2 to 4 by their fractions, less 3, in the middle of their steps: exact, and symmetric over
// (-1, 1). The four lowest bits of 64 are left out.
inline f64 across(const u64& unit) {
  const u64 fraction = (unit >> 4) & u64(0xFFFFFFFFFFFFF);
  return (bits_as<double>(fraction | u64(0x4000000000000000)) - 3.0) + 0x1p-52;
}
inline f32 across(const u32& unit) {
  return (bits_as<float>((unit & u32(0x7FFFFF)) | u32(0x40000000)) - 3.0F) + 0x1p-23F;
}

inline void store_layers(uint32_t* p, const u64& unit) { store_lower_words(p, unit >> 56); }
inline void store_layers(uint32_t* p, const u32& unit) { store(p, unit >> 24); }

// Bit i: lane i is beyond the inner edge.
template <class Real>
uint32_t place(const unit_of<Real>* units, Real* x) {
  const auto unit = load(units);
  alignas(64) uint32_t layer[lanes<Real>];
  store_layers(layer, unit);
  batch<Real> edge[2];
  load_columns<2>(&edges<Real>.of[0][0], reinterpret_cast<const int32_t*>(layer), edge);
  const batch<Real> placed = across(unit) * edge[0];
  store(x, placed);
  return lane_bits<Real>(xsimd::abs(placed) >= edge[1]);
}

inline int32_t append(uint32_t set, int32_t first, int32_t* escapes, int32_t count) {
  for (; set != 0; set &= set - 1) escapes[count++] = first + std::countr_zero(set);
  return count;
}

template <class Real>
int32_t place_across(int32_t n, const unit_of<Real>* units, Real* x, int32_t* escapes) {
  constexpr int width = lanes<Real>;
  int32_t i = 0, count = 0;
  for (; n - i >= width; i += width) count = append(place(units + i, x + i), i, escapes, count);
  if (i == n) return count;
  unit_of<Real> rest[width] = {};
  Real placed[width];
  std::copy_n(units + i, n - i, rest);
  const uint32_t set = place<Real>(rest, placed) & ((1U << (n - i)) - 1);
  std::copy_n(placed, n - i, x + i);
  return append(set, i, escapes, count);
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(ziggurat_doubles) = {place_across<double>};
TMK_DEFINE_TIER_KERNELS(ziggurat_singles) = {place_across<float>};

}  // namespace tmk::rng
