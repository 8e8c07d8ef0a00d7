// SPDX-License-Identifier: Apache-2.0
// Small twisters of one shape, 69 words with a middle of 34, and 6024 sets of constants: a stream per set.
#pragma once

#include <cstdint>

#include "platform/by_tier.hpp"
#include "random/core/states.hpp"

namespace tmk::rng {

struct mt2203_kernels {
  void (*words)(mt2203_state* state, int32_t n, uint32_t* r);
};

TMK_DECLARE_TIER_KERNELS(mt2203_kernels)

}  // namespace tmk::rng
