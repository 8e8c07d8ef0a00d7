// SPDX-License-Identifier: Apache-2.0
// SOBOL: Sobol's sequence in up to 40 dimensions.
// I. M. Sobol, On the distribution of points in a cube and the approximate evaluation of integrals, USSR
// Computational Mathematics and Mathematical Physics 7 (1967); direction numbers of Joe and Kuo.
#include "random/core/stream.hpp"
#include "random/generators/digital_sequence.hpp"
#include "random/generators/draws.hpp"
#include "random/generators/sobol_data.hpp"

namespace {
using namespace tmk::rng;

constexpr int bits = 32;

// Direction number i of a dimension is m[i] 2^(32 - i), m odd and below 2^i; after the initial ones m
// follows a recurrence by the dimension's polynomial.
void set_dimension(sobol_state& s, uint32_t dimension) {
  const auto v = [&](int i) -> uint32_t& { return s.direction[i][dimension]; };
  if (dimension == 0) {
    for (int i = 0; i < bits; ++i) v(i) = 0x80000000u >> i;
    return;
  }
  const sobol_row& row = sobol_rows[dimension - 1];
  const int degree = row.degree;
  for (int i = 0; i < degree; ++i) v(i) = uint32_t{row.initial[i]} << (bits - 1 - i);
  for (int i = degree; i < bits; ++i) {
    v(i) = v(i - degree) ^ (v(i - degree) >> degree);
    for (int k = 1; k < degree; ++k)
      if (row.coefficients >> (degree - 1 - k) & 1) v(i) ^= v(i - k);
  }
}

// Seed: the count of dimensions; or that count, VTS_SOBOL_DIRECTIONS, and 32 direction numbers per dimension,
// dimension after dimension, as fractions of 2^32.
int32_t set_directions(sobol_state& s, int32_t n, const uint32_t* words) {
  const bool given = n > 1 && words[1] == VTS_SOBOL_DIRECTIONS;
  for (uint32_t d = 0; d < s.dimensions; ++d) set_dimension(s, d);
  if (!given) return VTS_STATUS_OK;
  if (words[0] != s.dimensions || n < 2 + bits * static_cast<int32_t>(s.dimensions))
    return VTS_STATUS_BAD_ARGUMENT;
  for (uint32_t d = 0; d < s.dimensions; ++d)
    for (uint32_t i = 0; i < bits; ++i) s.direction[i][d] = words[2 + bits * d + i];
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
