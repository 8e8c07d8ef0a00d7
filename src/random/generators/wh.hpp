// SPDX-License-Identifier: Apache-2.0
// Four congruential generators of 24 bits, drawn together, x[j] <- a[j] x[j] mod m[j], in 273 parameter sets.
#pragma once

#include <cstdint>

#include "platform/by_tier.hpp"
#include "random/core/states.hpp"

namespace tmk::rng {

// Moduli are below 2^24: products are exact in double, too.
constexpr uint32_t multiply_mod(uint32_t a, uint32_t x, uint32_t m) {
  return static_cast<uint32_t>(uint64_t{a} * x % m);
}

struct wh_moduli_row {
  uint32_t m[4];
  double reciprocal[4];  // 1.0 / m[j]
};

struct wh_kernels {
  void (*words)(wh_state* state, const wh_moduli_row& row, int32_t n, uint32_t* r);
  void (*doubles)(wh_state* state, const wh_moduli_row& row, int32_t n, double* r, double a, double b);
  void (*singles)(wh_state* state, const wh_moduli_row& row, int32_t n, float* r, double a, double b);
};

TMK_DECLARE_TIER_KERNELS(wh_kernels)

}  // namespace tmk::rng

extern "C" uint32_t __vtsiPowMod(uint32_t base, uint64_t e, uint32_t m);
