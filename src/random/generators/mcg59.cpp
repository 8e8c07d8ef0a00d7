// SPDX-License-Identifier: Apache-2.0
// MCG59: multiplicative congruential generator modulo 2^59, multiplier 13^13.
#include "random/generators/mcg59.hpp"

#include <algorithm>

#include "random/core/stream.hpp"
#include "random/generators/requests.hpp"

namespace {
using namespace tmk;

constexpr uint64_t multiplier = 302875106592253;
constexpr int32_t block = 1024;

constexpr uint64_t multiply_mod_2p59(uint64_t a, uint64_t x) { return a * x & mcg59_mask; }
}  // namespace

extern "C" {

uint64_t __vtsiPowMod2P59(uint64_t base, uint64_t e) { return power(base, e, multiply_mod_2p59); }

int32_t __vtsBRngMCG59InitStream(int32_t method, VtsStreamHandle stream, int32_t n, const uint32_t* params) {
  mcg59_state& s = state_of<mcg59_state>(stream);
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* seed) {
        uint64_t x = count > 0 ? seed[0] : 0;
        if (count > 1) x |= uint64_t{seed[1]} << 32 & mcg59_mask;
        s = {x == 0 ? 1 : x, multiplier};
        return VTS_STATUS_OK;
      },
      [&](uint32_t k, uint64_t nstreams) {
        s.x = multiply_mod_2p59(__vtsiPowMod2P59(s.a, k), s.x);
        s.a = __vtsiPowMod2P59(s.a, nstreams);
        return VTS_STATUS_OK;
      },
      [&](uint64_t count) {
        s.x = multiply_mod_2p59(__vtsiPowMod2P59(s.a, count), s.x);
        return VTS_STATUS_OK;
      });
}

int32_t __vtsiBRngMCG59(VtsStreamHandle stream, int32_t n, void* r) {
  mcg59_loops_now().words(&state_of<mcg59_state>(stream), n, static_cast<uint64_t*>(r));
  return VTS_STATUS_OK;
}

// Elements take as many bytes as doubles, and are drawn into their place.
int32_t __vtsdBRngMCG59(VtsStreamHandle stream, int32_t n, double* r, double a, double b) {
  const mcg59_loops& loops = mcg59_loops_now();
  for (int32_t count; n > 0; n -= count, r += count) {
    count = std::min(n, block);
    uint64_t* words = reinterpret_cast<uint64_t*>(r);
    loops.words(&state_of<mcg59_state>(stream), count, words);
    loops.to_double(count, words, r, (b - a) * 0x1p-59, a);
  }
  return VTS_STATUS_OK;
}

int32_t __vtssBRngMCG59(VtsStreamHandle stream, int32_t n, float* r, float a, float b) {
  const mcg59_loops& loops = mcg59_loops_now();
  alignas(64) uint64_t words[block];
  for (int32_t count; n > 0; n -= count, r += count) {
    count = std::min(n, block);
    loops.words(&state_of<mcg59_state>(stream), count, words);
    loops.to_single(count, words, r, (double{b} - a) * 0x1p-59, a);
  }
  return VTS_STATUS_OK;
}
}
