// SPDX-License-Identifier: Apache-2.0
// SFMT19937, the SIMD-oriented Mersenne twister.
// M. Saito, M. Matsumoto, SIMD-oriented fast Mersenne twister: a 128-bit pseudorandom number generator, Monte
// Carlo and Quasi-Monte Carlo Methods 2006.
#include "random/generators/sfmt19937.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

#include "random/core/jump.hpp"
#include "random/core/stream.hpp"
#include "random/generators/draws.hpp"
#include "random/generators/requests.hpp"
#include "random/generators/sfmt19937_data.hpp"

namespace {
using namespace tmk::rng;

constexpr int ring = sfmt19937_words;

// Every word of the key reaches every word of the state; a key of no words is the single word 1.
void initialise(uint32_t (&s)[ring], int32_t n, const uint32_t* key) {
  constexpr int lag = 11, middle = 306;
  constexpr uint32_t one = 1;
  if (n < 1) {
    n = 1;
    key = &one;
  }
  std::memset(s, 0x8B, sizeof s);
  uint32_t i = 0;
  // mix and spread are the operations of a pass; `extra` is added between the two spreads.
  const auto round = [&](auto mix, auto spread, uint32_t extra) {
    uint32_t r = mix(s[i], s[(i + middle) % ring], s[(i + ring - 1) % ring]);
    spread(s[(i + middle) % ring], r);
    r += extra;
    spread(s[(i + middle + lag) % ring], r);
    s[i] = r;
    i = (i + 1) % ring;
  };
  const auto folded = [](uint32_t x) { return x ^ (x >> 27); };
  const auto mix_bits = [&](uint32_t x, uint32_t y, uint32_t z) { return folded(x ^ y ^ z) * 1664525; };
  const auto mix_sums = [&](uint32_t x, uint32_t y, uint32_t z) { return folded(x + y + z) * 1566083941; };
  const auto add = [](uint32_t& x, uint32_t r) { x += r; };
  const auto invert = [](uint32_t& x, uint32_t r) { x ^= r; };

  round(mix_bits, add, static_cast<uint32_t>(n));
  for (int32_t j = 0; j < std::max(n, ring - 1); ++j) round(mix_bits, add, i + (j < n ? key[j] : 0));
  for (int j = 0; j < ring; ++j) round(mix_sums, invert, 0 - i);
}

// The period is a multiple of 2^19937 - 1 when these bits of the first lane have odd parity.
void certify_period(uint32_t (&s)[ring]) {
  constexpr uint32_t parity[4] = {0x00000001, 0x00000000, 0x00000000, 0x13C9E684};
  uint32_t bits = 0;
  for (int i = 0; i < 4; ++i) bits ^= s[i] & parity[i];
  if (__builtin_parity(bits) == 0) s[0] ^= 1;
}

// First what is left of the last lane, then whole lanes, then the beginning of one more, the rest of which is
// kept.
void draw(sfmt19937_state* s, int32_t n, uint32_t* r) {
  const int32_t kept = std::min(n, s->tail_end - s->tail_position);
  std::copy_n(s->tail + s->tail_position, kept, r);
  s->tail_position += kept;
  r += kept;
  n -= kept;
  const auto lanes = sfmt19937_kernels_now().lanes;
  if (n >= 4) lanes(s, n / 4, r);
  const int32_t rest = n % 4;
  if (rest == 0) return;
  uint32_t lane[4];
  lanes(s, 1, lane);
  std::copy_n(lane, rest, r + (n - rest));
  std::copy_n(lane + rest, 4 - rest, s->tail);
  s->tail_position = 0;
  s->tail_end = 4 - rest;
}

int32_t draw_words(VtsStreamHandle stream, int32_t n, uint32_t* r) {
  draw(&state_of<sfmt19937_state>(stream), n, r);
  return VTS_STATUS_OK;
}

// Those with a clear top bit fill the upper half of the interval.
constexpr word_range signed_range = {.is_signed = true, .scale = 0x1p-32, .from_centre = true};

// Jumps are over lanes, on the ring alone.
constexpr int degree = 64 * static_cast<int>(std::size(sfmt19937_polynomial));

const std::vector<int32_t>& exponents() {
  static const auto list = [] {
    std::vector<int32_t> exponents;
    for (int i = 0; i < degree; ++i)
      if (sfmt19937_polynomial[i / 64] >> i % 64 & 1) exponents.push_back(i);
    exponents.push_back(degree);
    return exponents;
  }();
  return list;
}

void zero(VtsStreamHandle work) { state_of<sfmt19937_state>(work) = {}; }
void copy_ring(VtsStreamHandle destination, VtsStreamHandle source, int32_t) {
  sfmt19937_state& to = state_of<sfmt19937_state>(destination);
  const sfmt19937_state& from = state_of<sfmt19937_state>(source);
  std::copy_n(from.sfmt, ring, to.sfmt);
  to.index = from.index;
}
void add_rings(VtsStreamHandle destination, VtsStreamHandle source, int32_t) {
  sfmt19937_state& to = state_of<sfmt19937_state>(destination);
  const sfmt19937_state& from = state_of<sfmt19937_state>(source);
  add_ring(to.sfmt, static_cast<int32_t>(to.index), from.sfmt, static_cast<int32_t>(from.index), ring);
}
void step(VtsStreamHandle work) {
  uint32_t lane[4];
  sfmt19937_kernels_now().lanes(&state_of<sfmt19937_state>(work), 1, lane);
}

void drop(VtsStreamHandle stream, uint64_t count) {
  constexpr uint64_t block = 2048;
  uint32_t words[block];
  for (uint64_t part; count > 0; count -= part) {
    part = std::min(count, block);
    draw(&state_of<sfmt19937_state>(stream), static_cast<int32_t>(part), words);
  }
}
void copy_back(VtsStreamHandle stream, VtsStreamHandle work, int32_t words_beyond) {
  copy_ring(stream, work, 0);
  drop(stream, static_cast<uint64_t>(words_beyond));
}

// Skips what is left of the last lane. Whole lanes are the steps of the jump; the words beyond these are
// dropped in the copy back.
int32_t absorb(VtsStreamHandle stream, uint64_t* nskip, int32_t* words_beyond) {
  sfmt19937_state& s = state_of<sfmt19937_state>(stream);
  const uint64_t kept = static_cast<uint64_t>(s.tail_end - s.tail_position);
  const uint64_t count = std::min(*nskip, kept);
  s.tail_position += static_cast<int32_t>(count);
  *nskip -= count;
  *words_beyond = static_cast<int32_t>(*nskip % 4);
  *nskip /= 4;
  if (*nskip != 0) return 1;
  drop(stream, static_cast<uint64_t>(*words_beyond));
  return 0;
}

// Below this count, generation takes less time than the polynomial: a jump takes as long as 13 (AVX2 and
// AVX-512) to 18 (SSE2) million words.
constexpr uint64_t shortest_jump = 14'000'000;

int32_t skip(VtsStreamHandle stream, uint64_t count) {
  if (count < shortest_jump) {
    drop(stream, count);
    return VTS_STATUS_OK;
  }
  return __vts_SkipAheadSWin(stream, zero, add_rings, copy_ring, step, copy_back, absorb,
                             static_cast<uint32_t>(count), static_cast<uint32_t>(count >> 32), ring, degree,
                             sizeof(stream_header) + sizeof(sfmt19937_state),
                             static_cast<int32_t>(exponents().size()), exponents().data());
}
}  // namespace

extern "C" {

int32_t __vtsBRngSFMT19937InitStream(int32_t method, VtsStreamHandle stream, int32_t n,
                                     const uint32_t* params) {
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* key) {
        sfmt19937_state& s = state_of<sfmt19937_state>(stream);
        initialise(s.sfmt, count, key);
        certify_period(s.sfmt);
        s.index = ring;
        s.tail_position = s.tail_end = 0;
        return VTS_STATUS_OK;
      },
      no_leapfrog, [&](uint64_t count) { return skip(stream, count); });
}

TMK_DEFINE_DRAWS(SFMT19937, word_draws<draw_words, signed_range>)
}
