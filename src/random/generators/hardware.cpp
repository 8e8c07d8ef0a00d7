// SPDX-License-Identifier: Apache-2.0
// The processor's own generator, by its RDRAND instruction.
#include <immintrin.h>

#include "random/core/stream.hpp"
#include "random/generators/draws.hpp"
#include "random/generators/requests.hpp"

namespace {
using namespace tmk::rng;

constexpr int tries = 10;  // the manufacturer's rule: after so many failures in a row the unit is broken

[[gnu::target("rdrnd")]] bool next_word(uint32_t* word) {
  unsigned int value;
  for (int i = 0; i < tries; ++i)
    if (_rdrand32_step(&value)) {
      *word = value;
      return true;
    }
  return false;
}

int32_t draw_words(VtsStreamHandle, int32_t n, uint32_t* r) {
  if (!__vtsCPUisRDRAND()) return VTS_STATUS_NO_RDRAND;
  for (int32_t i = 0; i < n; ++i)
    if (!next_word(r + i)) return VTS_STATUS_NO_RDRAND;
  return VTS_STATUS_OK;
}
}  // namespace

extern "C" {

// There is no seed.
int32_t __vtsBRngTRNGInitStream(int32_t method, VtsStreamHandle, int32_t n, const uint32_t* params) {
  return answer_request(
      method, n, params,
      [](int32_t, const uint32_t*) -> int32_t {
        return __vtsCPUisRDRAND() ? VTS_STATUS_OK : VTS_STATUS_NO_RDRAND;
      },
      no_leapfrog, no_skip_ahead);
}

TMK_DEFINE_DRAWS(TRNG, word_draws<draw_words>)
}
