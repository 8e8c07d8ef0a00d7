// SPDX-License-Identifier: Apache-2.0
// Normal variates by a ziggurat: 512 regions of one area cover the density; a random layer and a random place
// across it are a variate wherever every height of the layer is under the density, which is 99.4 % of them
// (G. Marsaglia and W. Tsang, J. Statistical Software 5 (2000)). Layer and place are different bits of one
// unit of 64 or 32 (J. Doornik, An improved ziggurat method to generate normal random samples (2005)).
#pragma once

#include <bit>
#include <cstdint>

#include "platform/by_tier.hpp"
#include "random/distributions/ziggurat_data.hpp"
#include "tmk/abi/vts.h"

namespace tmk::rng {

template <class Real>
struct ziggurat_unit {
  using type = uint64_t;
  static int layer(uint64_t unit) { return static_cast<int>(unit >> (64 - ziggurat_layer_bits)); }
  // Over (0, 1), by the upper 52 bits.
  static double fraction(uint64_t unit) {
    return std::bit_cast<double>(unit >> 12 | 0x3FF0000000000000) - 1 + 0x1p-53;
  }
};
template <>
struct ziggurat_unit<float> {
  using type = uint32_t;
  static int layer(uint32_t unit) { return static_cast<int>(unit >> (32 - ziggurat_layer_bits)); }
  static double fraction(uint32_t unit) { return (unit + 0.5) * 0x1p-32; }
};

template <class Real>
struct ziggurat_kernels {
  using unit = typename ziggurat_unit<Real>::type;
  // The places of n units across their layers, and the positions of those that the density may leave out, in
  // ascending order, to `escapes`, which has room for n. Returns how many these are.
  int32_t (*place_across)(int32_t n, const unit* units, Real* x, int32_t* escapes);
};

TMK_DECLARE_TIER_KERNEL_PAIR(ziggurat)

// What `count` units give, as one sequence of records: a unit that is a variate at once, or an escape with
// the unit after it, which decides in a wedge or is the tail's uniform. An escape at the end draws its second
// unit. Returns how many variates, which are in r, or a negative status. At most a block.
template <class Real>
int32_t ziggurat_candidates(VtsStreamHandle stream, int32_t count, Real* r);

// The same places for laws that have a uniform u of their own for each: where |x| is beyond `inner`, a
// wedge's u is divided by the probability of its place, so that u < p asks for both; a place of the tail is
// one more uniform, by inversion. n units at most a block, whose x and escapes place_across has made.
void settle_escapes(int32_t escapes, const int32_t* at, const uint64_t* units, double* x, double* u);

}  // namespace tmk::rng
