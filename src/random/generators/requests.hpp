// SPDX-License-Identifier: Apache-2.0
// The requests of initStream as three functions: seed(n, words), leapfrog(k, nstreams) and skip_ahead(count)
// each return a status. Both counts are 64-bit; that of streams is sign-extended.
#pragma once

#include <cstdint>
#include <cstring>

#include "tmk/abi/vts.h"

namespace tmk::rng {

template <class Seed, class Leapfrog, class SkipAhead>
int32_t answer_request(int32_t method, int32_t n, const uint32_t* params, Seed seed, Leapfrog leapfrog,
                       SkipAhead skip_ahead) {
  switch (method) {
    case VTS_INIT_SEED:
      return seed(n, params);
    case VTS_INIT_LEAPFROG:
      return leapfrog(params[0], static_cast<uint64_t>(int64_t{n}));
    case VTS_INIT_SKIPAHEAD: {
      uint64_t count;
      std::memcpy(&count, params, sizeof count);
      return skip_ahead(count);
    }
    default:
      return VTS_STATUS_BAD_METHOD;
  }
}

// For requests that a generator does not support.
constexpr auto no_leapfrog = [](uint32_t, uint64_t) -> int32_t { return VTS_STATUS_NO_LEAPFROG; };
constexpr auto no_skip_ahead = [](uint64_t) -> int32_t { return VTS_STATUS_NO_SKIPAHEAD; };

}  // namespace tmk::rng
