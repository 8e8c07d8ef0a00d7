// SPDX-License-Identifier: Apache-2.0
// The processor's own generator, by its RDRAND instruction.
#include <immintrin.h>

#include "random/core/stream.hpp"
#include "random/generators/requests.hpp"
#include "random/generators/scale.hpp"

namespace {
using namespace tmk;

constexpr int tries = 10;  // the maker's rule: after so many failures in a row the unit counts as broken

[[gnu::target("rdrnd")]] bool next_word(uint32_t* word) {
  unsigned int value;
  for (int i = 0; i < tries; ++i)
    if (_rdrand32_step(&value)) {
      *word = value;
      return true;
    }
  return false;
}

int32_t draw(int32_t n, uint32_t* r) {
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

int32_t __vtsiBRngTRNG(VtsStreamHandle, int32_t n, void* r) { return draw(n, static_cast<uint32_t*>(r)); }

int32_t __vtsdBRngTRNG(VtsStreamHandle, int32_t n, double* r, double a, double b) {
  int32_t status = VTS_STATUS_OK;
  doubles_from_words(n, r, scale_loops_now().unsigned_to_double, (b - a) * 0x1p-32, a,
                     [&](int32_t count, uint32_t* words) {
                       if (status == VTS_STATUS_OK) status = draw(count, words);
                     });
  return status;
}

int32_t __vtssBRngTRNG(VtsStreamHandle, int32_t n, float* r, float a, float b) {
  int32_t status = VTS_STATUS_OK;
  singles_from_words(n, r, scale_loops_now().unsigned_to_single, (double{b} - a) * 0x1p-32, a,
                     [&](int32_t count, uint32_t* words) {
                       if (status == VTS_STATUS_OK) status = draw(count, words);
                     });
  return status;
}
}
