// SPDX-License-Identifier: Apache-2.0
// R250: generalised feedback shift register, x[n] = x[n - 103] ^ x[n - 250].
// S. Kirkpatrick, E. P. Stoll, A very fast shift-register sequence random number generator, Journal of
// Computational Physics 40 (1981).
#include <algorithm>

#include "random/core/states.hpp"
#include "random/core/stream.hpp"
#include "random/generators/draws.hpp"
#include "random/generators/requests.hpp"

namespace {
using namespace tmk::rng;

constexpr uint32_t ring = 250, lag = 103;

// 250 words are the state. Fewer are continued by a congruential sequence from the last one, and 32 words get
// a unit triangle of bits, without which the columns might be linearly dependent.
void seed(r250_state& s, int32_t n, const uint32_t* words) {
  const auto given = static_cast<uint32_t>(std::clamp<int32_t>(n, 0, ring));
  std::copy_n(words, given, s.word);
  uint32_t x = given > 0 ? s.word[given - 1] : 1;
  for (uint32_t i = given; i < ring; ++i) s.word[i] = x = 69069 * x + 1;
  if (given < ring)
    for (uint32_t bit = 0; bit < 32; ++bit) {
      uint32_t& word = s.word[7 * bit + 3];
      const uint32_t top = 0x80000000u >> bit;
      word = (word & (top - 1)) | top;
    }
  s.index = 0;
  s.lagged = ring - lag;
}

// In runs in which neither position passes the end of the ring.
void draw(r250_state* s, int32_t n, uint32_t* r) {
  while (n > 0) {
    const uint32_t run = std::min({static_cast<uint32_t>(n), ring - s->index, ring - s->lagged});
    for (uint32_t i = 0; i < run; ++i) r[i] = s->word[s->index + i] ^= s->word[s->lagged + i];
    s->index = (s->index + run) % ring;
    s->lagged = (s->lagged + run) % ring;
    r += run;
    n -= static_cast<int32_t>(run);
  }
}

int32_t draw_words(VtsStreamHandle stream, int32_t n, uint32_t* r) {
  draw(&state_of<r250_state>(stream), n, r);
  return VTS_STATUS_OK;
}
}  // namespace

extern "C" {

int32_t __vtsBRngR250InitStream(int32_t method, VtsStreamHandle stream, int32_t n, const uint32_t* params) {
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* words) {
        seed(state_of<r250_state>(stream), count, words);
        return VTS_STATUS_OK;
      },
      no_leapfrog, no_skip_ahead);
}

TMK_DEFINE_DRAWS(R250, word_draws<draw_words>)
}
