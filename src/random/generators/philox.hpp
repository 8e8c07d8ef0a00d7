// SPDX-License-Identifier: Apache-2.0
// Philox4x32-10's blocks, once per tier.
#pragma once

#include "platform/by_tier.hpp"

namespace tmk::rng {

struct philox_kernels {
  // `count` blocks of four words each, from the counter on.
  void (*blocks)(const uint32_t* counter, const uint32_t* key, int32_t count, uint32_t* r);
};

TMK_DECLARE_TIER_KERNELS(philox_kernels)

}  // namespace tmk::rng
