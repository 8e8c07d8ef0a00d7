// SPDX-License-Identifier: Apache-2.0
// NIEDERR: Niederreiter's sequence in base 2, in up to 318 dimensions.
// P. Bratley, B. L. Fox, H. Niederreiter, Implementation and tests of low-discrepancy sequences, ACM
// Transactions on Modeling and Computer Simulation 2 (1992).
#include "random/core/stream.hpp"
#include "random/generators/digital_sequence.hpp"
#include "random/generators/draws.hpp"

namespace {
using namespace tmk::rng;

constexpr int bits = 32;

// Polynomials over GF(2) as integers: bit i is the coefficient of x^i.
using polynomial = uint64_t;
int degree_of(polynomial p) { return std::bit_width(p) - 1; }

polynomial product(polynomial p, polynomial q) {
  polynomial r = 0;
  for (; q != 0; q &= q - 1) r ^= p << std::countr_zero(q);
  return r;
}

bool divides(polynomial divisor, polynomial p) {
  while (std::bit_width(p) >= std::bit_width(divisor)) p ^= divisor << (degree_of(p) - degree_of(divisor));
  return p == 0;
}

polynomial next_irreducible(polynomial p) {
  const auto is_reducible = [](polynomial q) {
    for (polynomial divisor = 2; 2 * degree_of(divisor) <= degree_of(q); ++divisor)
      if (divides(divisor, q)) return true;
    return false;
  };
  do ++p;
  while (is_reducible(p));
  return p;
}

// The expansions of 1 / power and its like, a power of p being the denominator: each sequence begins with
// zeros and a one, continues with ones where its terms are free, and then obeys the recurrence of the power.
struct expansion {
  static constexpr int terms = bits + 12;
  polynomial p, power = 1;
  uint8_t v[terms + bits] = {};

  void take_next_power() {
    const int zeros = degree_of(power);
    power = product(power, p);
    const int m = degree_of(power);
    for (int i = 0; i < m; ++i) v[i] = i >= zeros;
    for (int i = 0; i + m < terms; ++i) {
      int sum = 0;
      for (int k = 0; k < m; ++k) sum ^= static_cast<int>(power >> k & 1) & v[i + k];
      v[i + m] = static_cast<uint8_t>(sum);
    }
  }
};

void set_dimension(niederr_state& s, uint32_t dimension, polynomial p) {
  expansion e{.p = p};
  const int degree = degree_of(p);
  for (int row = 0; row < bits; ++row) {
    const int shift = row % degree;
    if (shift == 0) e.take_next_power();
    for (int column = 0; column < bits; ++column)
      s.direction[column][dimension] |= static_cast<uint32_t>(e.v[column + shift]) << (bits - 1 - row);
  }
}

int32_t set_directions(niederr_state& s) {
  polynomial p = 2;  // x
  for (uint32_t d = 0; d < s.dimensions; ++d, p = next_irreducible(p)) set_dimension(s, d, p);
  return VTS_STATUS_OK;
}
}  // namespace

extern "C" {

// Seed: the count of dimensions.
int32_t __vtsBRngNiederrInitStream(int32_t method, VtsStreamHandle stream, int32_t n,
                                   const uint32_t* params) {
  niederr_state& s = state_of<niederr_state>(stream);
  return answer_sequence_request(s, method, n, params,
                                 [&](auto&, int32_t, const uint32_t*) { return set_directions(s); });
}

TMK_DEFINE_DRAWS(Niederr, word_draws<draw_words<niederr_state>>)
}
