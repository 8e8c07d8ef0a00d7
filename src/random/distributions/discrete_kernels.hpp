// SPDX-License-Identifier: Apache-2.0
// What the discrete laws do element by element. The same bits on every tier.
#pragma once

#include <cstdint>

#include "platform/by_tier.hpp"

namespace tmk::rng {

struct log_gamma_factor {
  double z, direction, weight;
};

struct discrete_kernels {
  // Kernels read uniforms up to a whole register past the last one, within the unit interval like all.
  static constexpr int32_t padding = 16;

  // The cell of an alias table (alias_table.hpp) that each uniform falls into: least + its number or its
  // alias.
  void (*of_cells)(int32_t n, const double* u, const double* cells, int32_t bits, int32_t least, int32_t* r);
  // Each pair of uniforms as a variate by a strip table (strip_table.hpp). The positions of those that need a
  // closer look go to `undecided`; returns how many they are.
  int32_t (*of_strips)(int32_t n, const double* pairs, const double* cuts, int32_t count, double mode,
                       int32_t* r, int32_t* undecided);
  // The terms of a log_ratio, where `logarithm` has been made of what the step before it computed.
  void (*line)(int32_t n, const double* d, double slope, double constant, double* r);
  void (*add_multiple)(int32_t n, const double* x, double factor, double* r);
  void (*add_factor)(int32_t n, const double* d, log_gamma_factor f, const double* logarithm, double* r);
  void (*quotient)(int32_t n, const double* d, double z, double offset, double* r);
  void (*add_quotient)(int32_t n, const double* d, double z, double offset, const double* logarithm,
                       double* r);
  void (*clear_at_zero)(int32_t n, const double* d, double* r);
};

TMK_DECLARE_TIER_KERNELS(discrete_kernels)

}  // namespace tmk::rng
