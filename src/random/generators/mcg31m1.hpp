// SPDX-License-Identifier: Apache-2.0
// x <- a x mod 2^31 - 1. The state holds the next element.
#pragma once

#include <cstdint>

#include "platform/by_tier.hpp"
#include "random/core/states.hpp"

namespace tmk::rng {

constexpr uint32_t mcg31m1_modulus = 0x7FFFFFFF;

// 2^31 = 1 mod m folds the upper part of a product onto the lower.
constexpr uint32_t multiply_mod_2p31m1(uint32_t a, uint32_t x) {
  const uint64_t product = uint64_t{a} * x;
  const uint32_t sum =
      static_cast<uint32_t>(product & mcg31m1_modulus) + static_cast<uint32_t>(product >> 31);
  return sum >= mcg31m1_modulus ? sum - mcg31m1_modulus : sum;
}

struct mcg31m1_kernels {
  void (*words)(mcg31m1_state* state, int32_t n, uint32_t* r);
};

TMK_DECLARE_TIER_KERNELS(mcg31m1_kernels)

}  // namespace tmk::rng

extern "C" uint32_t __vtsiPowMod2P31M1(uint32_t base, uint64_t e);
