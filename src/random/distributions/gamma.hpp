// SPDX-License-Identifier: Apache-2.0
// Standard gamma variates as parts of candidates, for the gamma law and those made of it.
//   shape >= 1   d v, v = (1 + c x)^3, x normal, d = shape - 1/3, c = 1 / sqrt(9 d), accepted with
//   probability
//                e^h, h = x^2/2 + d (1 - v + ln v)
//                (G. Marsaglia and W. Tsang, A simple method for generating gamma variables, ACM TOMS 26
//                (2000))
//   shape < 1    u^(1/shape) times a variate of shape + 1, the logarithm of the power apart
//   shape 1      -ln u
//   shape 1/2    x^2 / 2
// The normal x is a place of the ziggurat, whose own wedges are left to the same uniform that accepts v.
#pragma once

#include <cmath>
#include <cstdint>

#include "platform/by_tier.hpp"
#include "random/core/chunk_kinds.hpp"
#include "random/distributions/continuous_candidates.hpp"

namespace tmk::rng {

// A column of units. Its length keeps columns next to each other apart in the cache: at distances of 4096
// bytes loads would wait for stores.
using unit_column = uint64_t[distribution_block + 40];

struct gamma_kernels {
  // Element c of group i of k units to column[c][i]; k at most 6.
  void (*deal)(int32_t n, int k, const uint64_t* units, unit_column* column);
  // Uniforms over (0, 1) by the upper 52 bits.
  void (*fractions)(int32_t n, const uint64_t* units, double* u);
  // (1 + c x)^3 to v, and the positions where u is not below 1 - squeeze x^4, ascending; how many.
  int32_t (*cube)(int32_t n, const double* x, const double* u, double c, double squeeze, double* v,
                  int32_t* undecided);
  void (*square)(int32_t n, const double* x, double* r);
  // max(x factor, least)
  void (*scale_from)(int32_t n, double* x, double factor, double least);
  // a + ((beta f) (g f)) f
  void (*place_power)(int32_t n, const double* g, const double* f, double beta, double a, double* r);
  // p f / (p f + q / f), p = x px, q = y qy; without f for f null
  void (*part_of_sum)(int32_t n, const double* x, double px, const double* y, double qy, const double* f,
                      double* r);
  // factor sqrt(e) sqrt(e + 2) c
  void (*place_radius)(int32_t n, const double* e, const double* c, double factor, double a, double* r);
};

TMK_DECLARE_TIER_KERNELS(gamma_kernels)

struct gamma_shape {
  double shape, c;
  explicit gamma_shape(double s);
  gamma_shape(double s, double constant) : shape(s), c(constant) {}

  bool boosted() const { return shape < 1 && shape != 0.5; }
  int uniforms() const { return shape == 1 ? 1 : boosted() ? 3 : 2; }
  static double cube_constant(double shape);
};

// Variates are scale g, or for a boosted shape scale g u^(1 / shape), whose ln u is in log_u. g is positive
// everywhere. Positions of rejected candidates ascend.
struct gamma_block {
  double scale;
  int32_t rejected = 0;
  int32_t rejected_at[distribution_block];
  alignas(64) double g[distribution_block], log_u[distribution_block];
};

// The set-up that a stream keeps. A single's constant is rounded up: with a greater c the ratio of densities
// is still at most 1, with a smaller one it is not.
template <class Real>
struct gamma_set_up {
  static constexpr chunk_kind kind = sizeof(Real) == 8 ? chunk_gamma_double : chunk_gamma_single;
  struct parameters {
    Real shape;
    bool operator==(const parameters&) const = default;
  } of;
  Real c;

  static bool accepts(const parameters& p) { return is_positive(p.shape); }
  explicit gamma_set_up(const parameters& p)
      : of(p), c(static_cast<Real>(gamma_shape::cube_constant(p.shape))) {
    if (sizeof(Real) == 4) c = std::nextafter(c, Real{1});
  }
};

// n candidates by their units, a column each for shape.uniforms() of them. Within a kernel_scope.
void standard_gamma(const gamma_shape& shape, int32_t n, const unit_column* column, gamma_block& out);

// k units each for n candidates, dealt to columns.
int32_t draw_columns(VtsStreamHandle stream, int32_t n, int k, unit_column* column);

constexpr int most_columns = 6;

}  // namespace tmk::rng
