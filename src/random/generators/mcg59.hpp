// SPDX-License-Identifier: Apache-2.0
// x <- a x mod 2^59. The state holds the next element.
#pragma once

#include <cstdint>

#include "platform/by_tier.hpp"
#include "random/core/states.hpp"

namespace tmk::rng {

constexpr uint64_t mcg59_mask = 0x07FFFFFFFFFFFFFF;

struct mcg59_kernels {
  void (*words)(mcg59_state* state, int32_t n, uint64_t* r);
  // Elements to numbers of an interval, k = (b - a) 2^-59. The two differ in the order of their additions,
  // which the interface fixes.
  void (*to_double)(int32_t n, const uint64_t* x, double* r, double k, double a);  // r may be x
  void (*to_single)(int32_t n, const uint64_t* x, float* r, double k, double a);
};

TMK_DECLARE_TIER_KERNELS(mcg59_kernels)

}  // namespace tmk::rng

extern "C" uint64_t __vtsiPowMod2P59(uint64_t base, uint64_t e);
