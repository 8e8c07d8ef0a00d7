// SPDX-License-Identifier: Apache-2.0
// Variates of a law with few values from one uniform each: A. J. Walker, ACM TOMS 3 (1977); the table by
// M. D. Vose, IEEE Trans. Software Eng. 17 (1991).
//   2^bits cells of equal probability. The fraction of u 2^bits below the cell's bound gives the cell's own
//   value, otherwise its alias, whose number replaces the lowest bits of the bound.
// The bounds of a cell keep 53 - bits bits, as the fractions do: a probability is right to about 2^-53.
#pragma once

#include <cstdint>

#include "random/distributions/unimodal_law.hpp"
#include "tmk/abi/vts.h"

namespace tmk::rng {

template <int Most>
struct alignas(8) alias_table {
  int32_t bits, least;
  double cells[Most];
};

// False for laws with more than `most` values, a power of 2, once those are dropped that have together less
// than 2^-53 of the probability.
bool fill_alias_table(const unimodal_law& law, int32_t most, int32_t& bits, int32_t& least, double* cells);

// `count` variates, at most a block. The count, or a negative status.
int32_t variates_of_cells(VtsStreamHandle stream, int32_t count, int32_t* r, int32_t bits, int32_t least,
                          const double* cells);

}  // namespace tmk::rng
