// SPDX-License-Identifier: Apache-2.0
// SOBOL: Sobol's sequence in up to 40 dimensions.
// I. M. Sobol, On the distribution of points in a cube and the approximate evaluation of integrals, USSR
// Computational Mathematics and Mathematical Physics 7 (1967); direction numbers of Joe and Kuo.
#include "random/core/stream.hpp"
#include "random/generators/digital_sequence.hpp"
#include "random/generators/draws.hpp"
#include "random/generators/sobol_directions.hpp"

namespace {
using namespace tmk::rng;

// Seed: the count of dimensions; or that count, VTS_SOBOL_DIRECTIONS, and 32 direction numbers per dimension,
// dimension after dimension, as fractions of 2^32.
int32_t set_directions(sobol_state& s, int32_t n, const uint32_t* words) {
  const bool given = n > 1 && words[1] == VTS_SOBOL_DIRECTIONS;
  set_sobol_directions(s.dimensions, [&](int i, uint32_t d) -> uint32_t& { return s.direction[i][d]; });
  if (!given) return VTS_STATUS_OK;
  if (words[0] != s.dimensions || n < 2 + direction_bits * static_cast<int32_t>(s.dimensions))
    return VTS_STATUS_BAD_ARGUMENT;
  for (uint32_t d = 0; d < s.dimensions; ++d)
    for (uint32_t i = 0; i < direction_bits; ++i) s.direction[i][d] = words[2 + direction_bits * d + i];
  return VTS_STATUS_OK;
}
}  // namespace

extern "C" {

int32_t __vtsBRngSobolInitStream(int32_t method, VtsStreamHandle stream, int32_t n, const uint32_t* params) {
  sobol_state& s = state_of<sobol_state>(stream);
  return answer_sequence_request(s, method, n, params, [&](auto&, int32_t count, const uint32_t* words) {
    return set_directions(s, count, words);
  });
}

TMK_DEFINE_DRAWS(Sobol, word_draws<draw_words<sobol_state>>)
}
