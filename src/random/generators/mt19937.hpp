// SPDX-License-Identifier: Apache-2.0
// The twister of 624 words: a ring, whose words before the index are of the present round and the others of
// the round before.
#pragma once

#include <cstdint>

#include "platform/by_tier.hpp"
#include "random/core/states.hpp"

namespace tmk::rng {

constexpr uint32_t mt19937_matrix = 0x9908B0DF;

struct mt19937_kernels {
  void (*words)(mt19937_state* state, int32_t n, uint32_t* r);
};

TMK_DECLARE_TIER_KERNELS(mt19937_kernels)

}  // namespace tmk::rng
