// SPDX-License-Identifier: Apache-2.0
// MT19937, the Mersenne twister.
// M. Matsumoto, T. Nishimura, Mersenne twister: a 623-dimensionally equidistributed uniform pseudo-random
// number generator, ACM TOMACS 8 (1998).
#include "random/generators/mt19937.hpp"

#include <algorithm>
#include <array>
#include <iterator>

#include "random/core/jump.hpp"
#include "random/core/stream.hpp"
#include "random/generators/draws.hpp"
#include "random/generators/requests.hpp"
#include "random/generators/twister_seed.hpp"

namespace {
using namespace tmk::rng;

int32_t draw_words(VtsStreamHandle stream, int32_t n, uint32_t* r) {
  mt19937_kernels_now().words(&state_of<mt19937_state>(stream), n, r);
  return VTS_STATUS_OK;
}

// The exponents of the characteristic polynomial. With u = x^624 + x^397 and v = x^623 + x^396 it is
//   u v^31 + (sum over bits i < 31 of A of u v^(30 - i)) + (bit 31 of A).
constexpr int degree = 19937;
constexpr auto polynomial = [] {
  std::array<bool, degree + 1> coefficient{};
  // u v^j = (x^624 + x^397) (sum of x^(623 s + 396 (j - s)) over the s whose bits are among those of j).
  const auto flip_product = [&](int j) {
    for (int s = j;; s = (s - 1) & j) {
      const int exponent = 623 * s + 396 * (j - s);
      coefficient[exponent + 624] ^= true;
      coefficient[exponent + 397] ^= true;
      if (s == 0) return;
    }
  };
  flip_product(31);
  for (int i = 0; i < 31; ++i)
    if (mt19937_matrix >> i & 1) flip_product(30 - i);
  coefficient[0] ^= mt19937_matrix >> 31;
  std::array<int32_t, 135> exponents{};
  size_t terms = 0;
  for (int i = 0; i <= degree; ++i)
    if (coefficient[i]) exponents[terms++] = i;
  return exponents;
}();

void drop(VtsStreamHandle stream, uint64_t count) {
  constexpr uint64_t block = 2048;
  uint32_t words[block];
  for (uint64_t part; count > 0; count -= part) {
    part = std::min(count, block);
    draw_words(stream, static_cast<int32_t>(part), words);
  }
}

void zero(VtsStreamHandle work) { state_of<mt19937_state>(work) = {}; }
void copy(VtsStreamHandle destination, VtsStreamHandle source, int32_t) {
  state_of<mt19937_state>(destination) = state_of<mt19937_state>(source);
}
void add(VtsStreamHandle destination, VtsStreamHandle source, int32_t) {
  mt19937_state& to = state_of<mt19937_state>(destination);
  const mt19937_state& from = state_of<mt19937_state>(source);
  add_ring(to.mt, static_cast<int32_t>(to.index), from.mt, static_cast<int32_t>(from.index),
           std::size(to.mt));
}
void step(VtsStreamHandle work) { drop(work, 1); }

// The words that are left in the ring cost less by generation than by a jump.
int32_t absorb(VtsStreamHandle stream, uint64_t* nskip, int32_t* offset) {
  const mt19937_state& s = state_of<mt19937_state>(stream);
  const uint64_t count = std::min<uint64_t>(*nskip, std::size(s.mt) - s.index);
  drop(stream, count);
  *nskip -= count;
  *offset = 0;
  return *nskip != 0;
}

// Below this count, generation takes less time than the polynomial: a jump takes as long as 9 (SSE2) to 19
// (AVX-512) million words.
constexpr uint64_t shortest_jump = 10'000'000;

int32_t skip(VtsStreamHandle stream, uint64_t count) {
  if (count < shortest_jump) {
    drop(stream, count);
    return VTS_STATUS_OK;
  }
  return __vts_SkipAheadSWin(stream, zero, add, copy, step, copy, absorb, static_cast<uint32_t>(count),
                             static_cast<uint32_t>(count >> 32), 624, degree,
                             sizeof(stream_header) + sizeof(mt19937_state), polynomial.size(),
                             polynomial.data());
}
}  // namespace

extern "C" {

int32_t __vtsBRngMT19937InitStream(int32_t method, VtsStreamHandle stream, int32_t n,
                                   const uint32_t* params) {
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* key) {
        mt19937_state& s = state_of<mt19937_state>(stream);
        seed_twister(s.mt, count, key);
        s.index = std::size(s.mt);
        return VTS_STATUS_OK;
      },
      no_leapfrog, [&](uint64_t count) { return skip(stream, count); });
}

TMK_DEFINE_DRAWS(MT19937, word_draws<draw_words>)
}
