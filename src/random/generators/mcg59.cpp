// SPDX-License-Identifier: Apache-2.0
// MCG59: multiplicative congruential generator modulo 2^59, multiplier 13^13.
#include "random/generators/mcg59.hpp"

#include <algorithm>

#include "random/core/stream.hpp"
#include "random/generators/congruential.hpp"
#include "random/generators/draws.hpp"

namespace {
using namespace tmk::rng;

constexpr uint64_t multiplier = 302875106592253;
constexpr int32_t block = 1024;

constexpr uint64_t multiply_mod_2p59(uint64_t a, uint64_t x) { return a * x & mcg59_mask; }

// Elements have 64 bits. They take as many bytes as doubles, and are drawn into their place.
struct mcg59_draws {
  static int32_t words(VtsStreamHandle stream, int32_t n, void* r) {
    mcg59_kernels_now().words(&state_of<mcg59_state>(stream), n, static_cast<uint64_t*>(r));
    return VTS_STATUS_OK;
  }
  static int32_t uniforms(VtsStreamHandle stream, int32_t n, double* r, double a, double b) {
    const mcg59_kernels& kernels = mcg59_kernels_now();
    for (int32_t count; n > 0; n -= count, r += count) {
      count = std::min(n, block);
      uint64_t* elements = reinterpret_cast<uint64_t*>(r);
      kernels.words(&state_of<mcg59_state>(stream), count, elements);
      kernels.to_double(count, elements, r, (b - a) * 0x1p-59, a);
    }
    return VTS_STATUS_OK;
  }
  static int32_t uniforms(VtsStreamHandle stream, int32_t n, float* r, float a, float b) {
    const mcg59_kernels& kernels = mcg59_kernels_now();
    alignas(64) uint64_t elements[block];
    for (int32_t count; n > 0; n -= count, r += count) {
      count = std::min(n, block);
      kernels.words(&state_of<mcg59_state>(stream), count, elements);
      kernels.to_single(count, elements, r, (double{b} - a) * 0x1p-59, a);
    }
    return VTS_STATUS_OK;
  }
};
}  // namespace

extern "C" {

uint64_t __vtsiPowMod2P59(uint64_t base, uint64_t e) { return power(base, e, multiply_mod_2p59); }

int32_t __vtsBRngMCG59InitStream(int32_t method, VtsStreamHandle stream, int32_t n, const uint32_t* params) {
  return answer_congruential_request(state_of<mcg59_state>(stream), method, n, params, multiplier,
                                     multiply_mod_2p59, [](int32_t count, const uint32_t* seed) {
                                       uint64_t x = count > 0 ? seed[0] : 0;
                                       if (count > 1) x |= uint64_t{seed[1]} << 32 & mcg59_mask;
                                       return x;
                                     });
}

TMK_DEFINE_DRAWS(MCG59, mcg59_draws)
}
