// SPDX-License-Identifier: Apache-2.0
// PHILOX4X32X10: ten rounds of multiplication and exchange over a counter.
// J. K. Salmon, M. A. Moraes, R. O. Dror, D. E. Shaw, Parallel random numbers: as easy as 1, 2, 3, SC 2011.
#include "random/generators/philox.hpp"

#include "random/core/states.hpp"
#include "random/core/stream.hpp"
#include "random/generators/counter_based.hpp"
#include "random/generators/requests.hpp"
#include "random/generators/scale.hpp"

namespace {
using namespace tmk;

auto words_of(VtsStreamHandle stream) {
  return [state = &state_of<philox_state>(stream), blocks = philox_loops_now().blocks](
             int32_t n, uint32_t* r) { draw_counter_based(*state, n, r, blocks); };
}
}  // namespace

extern "C" {

// Seed: two words of key, then four of the counter, least first.
int32_t __vtsBRngPHILOX4X32X10InitStream(int32_t method, VtsStreamHandle stream, int32_t n,
                                         const uint32_t* params) {
  philox_state& s = state_of<philox_state>(stream);
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* seed) {
        seed_counter_based(s, count, seed);
        return VTS_STATUS_OK;
      },
      no_leapfrog,
      [&](uint64_t count) {
        skip_counter_based(s, count, philox_loops_now().blocks);
        return VTS_STATUS_OK;
      });
}

int32_t __vtsiBRngPHILOX4X32X10(VtsStreamHandle stream, int32_t n, void* r) {
  words_of(stream)(n, static_cast<uint32_t*>(r));
  return VTS_STATUS_OK;
}

int32_t __vtsdBRngPHILOX4X32X10(VtsStreamHandle stream, int32_t n, double* r, double a, double b) {
  return uniforms_from_words(n, r, a, b, 0x1p-32, words_of(stream));
}

int32_t __vtssBRngPHILOX4X32X10(VtsStreamHandle stream, int32_t n, float* r, float a, float b) {
  return uniforms_from_words(n, r, a, b, 0x1p-32, words_of(stream));
}
}
