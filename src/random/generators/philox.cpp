// SPDX-License-Identifier: Apache-2.0
// PHILOX4X32X10: ten rounds of multiplication and exchange over a counter.
// J. K. Salmon, M. A. Moraes, R. O. Dror, D. E. Shaw, Parallel random numbers: as easy as 1, 2, 3, SC 2011.
#include "random/generators/philox.hpp"

#include "random/core/states.hpp"
#include "random/core/stream.hpp"
#include "random/generators/counter_based.hpp"
#include "random/generators/draws.hpp"
#include "random/generators/requests.hpp"

namespace {
using namespace tmk::rng;

int32_t draw_words(VtsStreamHandle stream, int32_t n, uint32_t* r) {
  draw_counter_based(state_of<philox_state>(stream), n, r, philox_kernels_now().blocks);
  return VTS_STATUS_OK;
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
        skip_counter_based(s, count, philox_kernels_now().blocks);
        return VTS_STATUS_OK;
      });
}

TMK_DEFINE_DRAWS(PHILOX4X32X10, word_draws<draw_words>)
}
