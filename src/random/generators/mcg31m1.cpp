// SPDX-License-Identifier: Apache-2.0
// MCG31M1: multiplicative congruential generator modulo 2^31 - 1, multiplier 1132489760.
// P. L'Ecuyer, Tables of linear congruential generators of different sizes and good lattice structure,
// Mathematics of Computation 68 (1999).
#include "random/generators/mcg31m1.hpp"

#include "random/core/stream.hpp"
#include "random/generators/congruential.hpp"
#include "random/generators/draws.hpp"

namespace {
using namespace tmk::rng;

constexpr uint32_t multiplier = 1132489760;
// Elements are below 2^31: the signed conversion, the cheaper one, is right.
constexpr word_range below_modulus = {
    .is_signed = true, .scale = 0x1.00000002p-31 /* 1 / (2^31 - 1) */, .from_centre = false};

int32_t draw_words(VtsStreamHandle stream, int32_t n, uint32_t* r) {
  mcg31m1_kernels_now().words(&state_of<mcg31m1_state>(stream), n, r);
  return VTS_STATUS_OK;
}
}  // namespace

extern "C" {

uint32_t __vtsiPowMod2P31M1(uint32_t base, uint64_t e) { return power(base, e, multiply_mod_2p31m1); }

int32_t __vtsBRngMCG31M1InitStream(int32_t method, VtsStreamHandle stream, int32_t n,
                                   const uint32_t* params) {
  return answer_congruential_request(
      state_of<mcg31m1_state>(stream), method, n, params, multiplier, multiply_mod_2p31m1,
      [](int32_t count, const uint32_t* seed) { return count > 0 ? seed[0] % mcg31m1_modulus : 0; });
}

TMK_DEFINE_DRAWS(MCG31M1, word_draws<draw_words, below_modulus>)
}
