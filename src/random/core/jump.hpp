// SPDX-License-Identifier: Apache-2.0
// Jumps of generators that are linear over GF(2): the state after n steps is g(T) s with g = x^n modulo the
// characteristic polynomial of the step T. Polynomials are given by the exponents of their terms, in
// ascending order.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/by_tier.hpp"
#include "tmk/abi/vts.h"

namespace tmk::rng {

// What a generator does with its states. Work states have the layout of its streams, without a meaningful
// header. Each state has its own position in its ring, and additions align the two positions.
using zero_state = void (*)(VtsStreamHandle work);
using combine_states = void (*)(VtsStreamHandle destination, VtsStreamHandle source, int32_t offset);
using step_state = void (*)(VtsStreamHandle work);
// Skips what needs no jump and subtracts it from *nskip; returns 0 when nothing remains. The remainder counts
// steps, and *offset is passed to the copy back.
using absorb_skip = int32_t (*)(VtsStreamHandle stream, uint64_t* nskip, int32_t* offset);

struct jump_kernels {
  void (*add)(unsigned char* r, const unsigned char* a, int32_t bytes);  // r ^= a
};

TMK_DECLARE_TIER_KERNELS(jump_kernels)

// r ^= a for rings of `size` words whose oldest words are at these positions.
inline void add_ring(uint32_t* r, int32_t r_position, const uint32_t* a, int32_t a_position, int32_t size) {
  const auto add = jump_kernels_now().add;
  for (int32_t run, left = size; left > 0; left -= run, r_position += run, a_position += run) {
    r_position %= size;
    a_position %= size;
    run = std::min({left, size - r_position, size - a_position});
    add(reinterpret_cast<unsigned char*>(r + r_position),
        reinterpret_cast<const unsigned char*>(a + a_position), 4 * run);
  }
}

}  // namespace tmk::rng

extern "C" {
// Both leave the stream as nskip steps would and return 0, or -4 when there is no memory: then the stream has
// moved by what absorb took alone. `words` is the count of 32-bit words that hold a polynomial below
// `degree`.
int32_t __vts_SkipAheadHorner(VtsStreamHandle stream, tmk::rng::zero_state zero, tmk::rng::combine_states add,
                              tmk::rng::combine_states copy_to_work, tmk::rng::step_state step,
                              tmk::rng::combine_states copy_back, tmk::rng::absorb_skip absorb,
                              uint32_t nskip_low, uint32_t nskip_high, int32_t words, int32_t degree,
                              int32_t state_bytes, int32_t terms, const int32_t* polynomial);
int32_t __vts_SkipAheadSWin(VtsStreamHandle stream, tmk::rng::zero_state zero, tmk::rng::combine_states add,
                            tmk::rng::combine_states copy_to_work, tmk::rng::step_state step,
                            tmk::rng::combine_states copy_back, tmk::rng::absorb_skip absorb,
                            uint32_t nskip_low, uint32_t nskip_high, int32_t words, int32_t degree,
                            int32_t state_bytes, int32_t terms, const int32_t* polynomial);

// x^nskip modulo the polynomial into out[0] to out[2 * words - 1], the words from `words` on zero. Returns 0,
// or -4 when there is no memory.
int32_t x_pow_nskip_mod_cpoly(uint64_t nskip, int32_t degree, int32_t terms, const int32_t* polynomial,
                              int32_t words, uint32_t* out);
}
