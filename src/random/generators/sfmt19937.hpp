// SPDX-License-Identifier: Apache-2.0
// The SIMD-oriented twister of 156 lanes of 128 bits: a ring, and in `tail` the words of the last lane that
// are not handed out yet.
#pragma once

#include <cstdint>

#include "platform/by_tier.hpp"
#include "random/core/states.hpp"

namespace tmk::rng {

constexpr int sfmt19937_words = 624;

struct sfmt19937_kernels {
  void (*lanes)(sfmt19937_state* state, int32_t count, uint32_t* r);  // four words each, past the tail
};

TMK_DECLARE_TIER_KERNELS(sfmt19937_kernels)

}  // namespace tmk::rng
