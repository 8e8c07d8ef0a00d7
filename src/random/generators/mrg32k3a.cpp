// SPDX-License-Identifier: Apache-2.0
// MRG32K3A: two multiple recursive generators of order three, combined.
// P. L'Ecuyer, Good parameters and implementations for combined multiple recursive random number generators,
// Operations Research 47 (1999).
#include "random/generators/mrg32k3a.hpp"

#include <algorithm>

#include "random/core/stream.hpp"
#include "random/generators/draws.hpp"
#include "random/generators/requests.hpp"

namespace {
using namespace tmk::rng;

struct matrix {
  uint32_t at[3][3];
};

// The matrix of one step on a state, oldest first.
template <class Recurrence>
constexpr matrix companion(const Recurrence& r) {
  return {{{0, 1, 0}, {0, 0, 1}, {r.c3, r.c2, r.c1}}};
}

template <class Recurrence>
matrix product(const matrix& a, const matrix& b) {
  matrix r{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k)
        r.at[i][j] = Recurrence::add(r.at[i][j], Recurrence::multiply(a.at[i][k], b.at[k][j]));
  return r;
}

// z moved on by `count` steps: the powers of two of the matrix that make it up.
template <class Recurrence>
void skip(const Recurrence& recurrence, uint64_t count, uint32_t (&z)[3]) {
  matrix a = companion(recurrence);
  for (; count != 0; count >>= 1, a = product<Recurrence>(a, a)) {
    if ((count & 1) == 0) continue;
    uint32_t next[3] = {};
    for (int i = 0; i < 3; ++i)
      for (int k = 0; k < 3; ++k) next[i] = Recurrence::add(next[i], Recurrence::multiply(a.at[i][k], z[k]));
    std::copy_n(next, 3, z);
  }
}

// From a seed's word `first` on. Absent words are 1, and so is the first of three that are all 0.
template <class Recurrence>
void seed(const Recurrence&, int32_t n, const uint32_t* words, int32_t first, uint32_t (&z)[3]) {
  for (int32_t i = 0; i < 3; ++i) z[i] = first + i < n ? words[first + i] % Recurrence::modulus : 1;
  if (z[0] == 0 && z[1] == 0 && z[2] == 0) z[0] = 1;
}

int32_t draw_words(VtsStreamHandle stream, int32_t n, uint32_t* r) {
  mrg32k3a_kernels_now().words(&state_of<mrg32k3a_state>(stream), n, r);
  return VTS_STATUS_OK;
}

constexpr word_range below_modulus = {
    .is_signed = false, .scale = 1.0 / mrg_first::modulus, .from_centre = false};
}  // namespace

extern "C" {

// Seed: three words of the first recurrence, then three of the second, oldest first.
int32_t __vtsBRngMRG32K3AInitStream(int32_t method, VtsStreamHandle stream, int32_t n,
                                    const uint32_t* params) {
  mrg32k3a_state& s = state_of<mrg32k3a_state>(stream);
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* words) {
        seed(mrg_x, count, words, 0, s.x);
        seed(mrg_y, count, words, 3, s.y);
        return VTS_STATUS_OK;
      },
      no_leapfrog,
      [&](uint64_t count) {
        skip(mrg_x, count, s.x);
        skip(mrg_y, count, s.y);
        return VTS_STATUS_OK;
      });
}

TMK_DEFINE_DRAWS(MRG32K3A, word_draws<draw_words, below_modulus>)
}
