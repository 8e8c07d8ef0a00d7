// SPDX-License-Identifier: Apache-2.0
// MCG31M1: multiplicative congruential generator modulo 2^31 - 1, multiplier 1132489760.
// P. L'Ecuyer, Tables of linear congruential generators of different sizes and good lattice structure,
// Mathematics of Computation 68 (1999).
#include "random/generators/mcg31m1.hpp"

#include "random/core/stream.hpp"
#include "random/generators/requests.hpp"
#include "random/generators/scale.hpp"

namespace {
using namespace tmk;

constexpr uint32_t multiplier = 1132489760;
constexpr double scale = 0x1.00000002p-31;  // 1 / (2^31 - 1)

auto words_of(VtsStreamHandle stream) {
  return [state = &state_of<mcg31m1_state>(stream), draw = mcg31m1_loops_now().words](
             int32_t n, uint32_t* r) { draw(state, n, r); };
}
}  // namespace

extern "C" {

uint32_t __vtsiPowMod2P31M1(uint32_t base, uint64_t e) { return power(base, e, multiply_mod_2p31m1); }

int32_t __vtsBRngMCG31M1InitStream(int32_t method, VtsStreamHandle stream, int32_t n,
                                   const uint32_t* params) {
  mcg31m1_state& s = state_of<mcg31m1_state>(stream);
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* seed) {
        const uint32_t x = count > 0 ? seed[0] % mcg31m1_modulus : 0;
        s = {x == 0 ? 1 : x, multiplier};
        return VTS_STATUS_OK;
      },
      [&](uint32_t k, uint64_t nstreams) {
        s.x = multiply_mod_2p31m1(__vtsiPowMod2P31M1(s.a, k), s.x);
        s.a = __vtsiPowMod2P31M1(s.a, nstreams);
        return VTS_STATUS_OK;
      },
      [&](uint64_t count) {
        s.x = multiply_mod_2p31m1(__vtsiPowMod2P31M1(s.a, count), s.x);
        return VTS_STATUS_OK;
      });
}

int32_t __vtsiBRngMCG31M1(VtsStreamHandle stream, int32_t n, void* r) {
  words_of(stream)(n, static_cast<uint32_t*>(r));
  return VTS_STATUS_OK;
}

// Elements are below 2^31: the signed conversion, the cheaper one, is right.
int32_t __vtsdBRngMCG31M1(VtsStreamHandle stream, int32_t n, double* r, double a, double b) {
  doubles_from_words(n, r, scale_loops_now().signed_to_double, (b - a) * scale, a, words_of(stream));
  return VTS_STATUS_OK;
}

int32_t __vtssBRngMCG31M1(VtsStreamHandle stream, int32_t n, float* r, float a, float b) {
  singles_from_words(n, r, scale_loops_now().signed_to_single, (double{b} - a) * scale, a, words_of(stream));
  return VTS_STATUS_OK;
}
}
