// SPDX-License-Identifier: Apache-2.0
// Direction numbers of Sobol's sequence. Number i of a dimension is m[i] 2^(32 - i), m odd and below 2^i;
// after the initial ones m follows a recurrence by the dimension's polynomial.
#pragma once

#include "random/generators/sobol_data.hpp"

namespace tmk::rng {

constexpr int direction_bits = 32;

// Sets direction(i, d) for i of 0 to 31 and the first dimensions d; the table has them in this order.
template <class Direction>
void set_sobol_directions(uint32_t dimensions, Direction direction) {
  for (int i = 0; i < direction_bits; ++i) direction(i, 0) = 0x80000000u >> i;
  const uint16_t* row = sobol_table;
  for (uint32_t d = 1; d < dimensions; ++d) {
    const int degree = row[0];
    const uint32_t coefficients = row[1];
    const auto v = [&](int i) -> uint32_t& { return direction(i, d); };
    for (int i = 0; i < degree; ++i) v(i) = uint32_t{row[2 + i]} << (direction_bits - 1 - i);
    for (int i = degree; i < direction_bits; ++i) {
      v(i) = v(i - degree) ^ (v(i - degree) >> degree);
      for (int k = 1; k < degree; ++k)
        if (coefficients >> (degree - 1 - k) & 1) v(i) ^= v(i - k);
    }
    row += 2 + degree;
  }
}

}  // namespace tmk::rng
