// SPDX-License-Identifier: Apache-2.0
// ARS5: five rounds of the AES cipher over a counter, with a Weyl sequence for key schedule.
// J. K. Salmon, M. A. Moraes, R. O. Dror, D. E. Shaw, Parallel random numbers: as easy as 1, 2, 3, SC 2011.
#include <immintrin.h>

#include <algorithm>

#include "random/core/states.hpp"
#include "random/core/stream.hpp"
#include "random/generators/counter_based.hpp"
#include "random/generators/draws.hpp"
#include "random/generators/requests.hpp"

namespace {
using namespace tmk::rng;

constexpr int rounds = 5;
constexpr int in_flight = 8;  // blocks, to hide the latency of a round

__m128i load_words(const uint32_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

[[gnu::target("aes")]] void blocks(const uint32_t* counter, const uint32_t* key, int32_t count, uint32_t* r) {
  __m128i round_key[rounds + 1] = {load_words(key)};
  const __m128i weyl =
      _mm_set_epi64x(static_cast<int64_t>(0xBB67AE8584CAA73B), static_cast<int64_t>(0x9E3779B97F4A7C15));
  for (int i = 0; i < rounds; ++i) round_key[i + 1] = _mm_add_epi64(round_key[i], weyl);

  uint32_t c[4] = {counter[0], counter[1], counter[2], counter[3]};
  while (count > 0) {
    const int part = std::min<int32_t>(in_flight, count);
    __m128i block[in_flight];
    if (c[0] < UINT32_MAX - in_flight) {
      const __m128i first = load_words(c);
#pragma GCC unroll 8
      for (int i = 0; i < in_flight; ++i) block[i] = _mm_add_epi32(first, _mm_cvtsi32_si128(i));
      c[0] += static_cast<uint32_t>(part);
    } else {
      for (int i = 0; i < in_flight; ++i) {
        block[i] = load_words(c);
        if (i < part) advance_counter(c, 1);
      }
    }
#pragma GCC unroll 8
    for (int i = 0; i < in_flight; ++i) block[i] = _mm_xor_si128(block[i], round_key[0]);
    for (int round = 1; round < rounds; ++round) {
#pragma GCC unroll 8
      for (int i = 0; i < in_flight; ++i) block[i] = _mm_aesenc_si128(block[i], round_key[round]);
    }
#pragma GCC unroll 8
    for (int i = 0; i < in_flight; ++i) block[i] = _mm_aesenclast_si128(block[i], round_key[rounds]);

    __m128i* to = reinterpret_cast<__m128i*>(r);
    if (part == in_flight) {
#pragma GCC unroll 8
      for (int i = 0; i < in_flight; ++i) _mm_storeu_si128(to + i, block[i]);
    } else {
      for (int i = 0; i < part; ++i) _mm_storeu_si128(to + i, block[i]);
    }
    count -= part;
    r += 4 * part;
  }
}

int32_t draw_words(VtsStreamHandle stream, int32_t n, uint32_t* r) {
  draw_counter_based(state_of<ars5_state>(stream), n, r, blocks);
  return VTS_STATUS_OK;
}
}  // namespace

extern "C" {

// Seed: four words of key, then four of the counter, least first.
int32_t __vtsBRngARS5InitStream(int32_t method, VtsStreamHandle stream, int32_t n, const uint32_t* params) {
  ars5_state& s = state_of<ars5_state>(stream);
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* seed) -> int32_t {
        if (!__vtsCPUisAES()) return VTS_STATUS_NO_AES;
        seed_counter_based(s, count, seed);
        return VTS_STATUS_OK;
      },
      no_leapfrog,
      [&](uint64_t count) {
        skip_counter_based(s, count, blocks);
        return VTS_STATUS_OK;
      });
}

TMK_DEFINE_DRAWS(ARS5, word_draws<draw_words>)
}
