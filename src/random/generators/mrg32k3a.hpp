// SPDX-License-Identifier: Apache-2.0
// MRG32K3A's recurrences, and the kernel that is compiled once per tier.
//   x[n] = a x[n - 2] - b x[n - 3] mod m,   y[n] = c y[n - 1] - d y[n - 3] mod m',   output x - y mod m
#pragma once

#include <cstdint>

#include "platform/by_tier.hpp"
#include "random/core/states.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {

// z[n] = c1 z[n - 1] + c2 z[n - 2] + c3 z[n - 3] mod m, with coefficients below m = 2^32 - Deficit.
template <uint32_t Deficit>
struct third_order {
  static constexpr uint32_t deficit = Deficit;
  static constexpr uint32_t modulus = 0 - Deficit;
  uint32_t c1, c2, c3;

  static constexpr uint32_t multiply(uint32_t a, uint32_t b) {
    return static_cast<uint32_t>(uint64_t{a} * b % modulus);
  }
  static constexpr uint32_t add(uint32_t a, uint32_t b) {
    const uint64_t sum = uint64_t{a} + b;
    return static_cast<uint32_t>(sum >= modulus ? sum - modulus : sum);
  }
  // z: oldest first; takes the new element in.
  constexpr uint32_t step(uint32_t (&z)[3]) const {
    const uint32_t next = add(add(multiply(c1, z[2]), multiply(c2, z[1])), multiply(c3, z[0]));
    z[0] = z[1];
    z[1] = z[2];
    return z[2] = next;
  }
};

using mrg_first = third_order<209>;
using mrg_second = third_order<22853>;
inline constexpr mrg_first mrg_x{0, 1403580, mrg_first::modulus - 810728};
inline constexpr mrg_second mrg_y{527612, 0, mrg_second::modulus - 1370589};

// The second modulus is the smaller one, so that y is also a residue modulo the first.
inline uint32_t mrg32k3a_next(mrg32k3a_state& s) {
  const uint32_t x = mrg_x.step(s.x), y = mrg_y.step(s.y);
  return x >= y ? x - y : x + (mrg_first::modulus - y);
}

}  // namespace TMK_TIER
}  // namespace tmk::rng

namespace tmk::rng {

struct mrg32k3a_kernels {
  void (*words)(mrg32k3a_state* state, int32_t n, uint32_t* r);
};

TMK_DECLARE_TIER_KERNELS(mrg32k3a_kernels)

}  // namespace tmk::rng
