// SPDX-License-Identifier: Apache-2.0
// Laws whose variates are a function of one uniform each (Laplace: of two), by vector kernels and an affine
// step.
//   exponential  a - beta ln u          Rayleigh   a + beta sqrt(-ln u), no 2 under the root
//   Gumbel       a + beta ln(-ln u)     Weibull    a + beta (-ln u)^(1/alpha)
//   Cauchy       a + beta tan(pi (u - 1/2))
//   Laplace      a -+ beta ln u, the sign from a second uniform
// Where the law has a bound, rounding must not carry a variate across it.
#include "random/distributions/kernel_calls.hpp"

namespace {
using namespace tmk::rng;

// The natural logarithms of n uniforms.
template <class Real>
int32_t draw_logarithms(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r) {
  const int32_t status = draw_uniforms(kind, stream, n, r, Real{0}, Real{1});
  if (status >= 0) run_kernel(precision<Real>::ln, n, r, r);
  return status;
}

template <class Real>
int32_t draw_exponential(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real beta) {
  const int32_t status = draw_logarithms(kind, stream, n, r);
  if (status >= 0) precision<Real>::steps().subtract_above(n, r, beta, a);
  return status;
}

template <class Real>
int32_t exponential(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real beta) {
  const kernel_scope scope(repair_ln<Real>);
  return in_blocks(n, r, [=](int32_t count, Real* block) {
    return draw_exponential(kind, stream, count, block, a, beta);
  });
}

template <class Real>
int32_t cauchy(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real beta) {
  return in_blocks(n, r, [=](int32_t count, Real* block) {
    constexpr Real edge = precision<Real>::half_pi;
    const int32_t status = draw_uniforms(kind, stream, count, block, -edge, edge);
    if (status < 0) return status;
    run_kernel(precision<Real>::tan, count, block, block);
    precision<Real>::steps().place(count, block, beta, a);
    return status;
  });
}

template <class Real>
int32_t gumbel(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real beta) {
  const kernel_scope scope(repair_ln<Real>);
  return in_blocks(n, r, [=](int32_t count, Real* block) {
    const int32_t status = draw_exponential(kind, stream, count, block, Real{0}, Real{1});
    if (status < 0) return status;
    run_kernel(precision<Real>::ln, count, block, block);
    precision<Real>::steps().place(count, block, beta, a);
    return status;
  });
}

template <class Real>
int32_t laplace(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real beta) {
  const kernel_scope scope(repair_ln<Real>);
  alignas(64) Real pairs[2 * distribution_block];
  return in_blocks(n, r, [=, &pairs](int32_t count, Real* block) {
    const int32_t status = draw_uniforms(kind, stream, 2 * count, +pairs, Real{0}, Real{1});
    if (status < 0) return status;
    precision<Real>::steps().split_pairs(count, pairs, block);
    run_kernel(precision<Real>::ln, count, block, block);
    precision<Real>::steps().place_either_side(count, block, pairs, beta, a);
    return status;
  });
}

template <class Real>
int32_t rayleigh(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real beta) {
  const kernel_scope scope(repair_ln_of_zero_only<Real>);
  return in_blocks(n, r, [=](int32_t count, Real* block) {
    const int32_t status = draw_logarithms(kind, stream, count, block);
    if (status < 0) return status;
    precision<Real>::steps().scale(count, block, -1);
    run_kernel(precision<Real>::sqrt, count, block, block);
    precision<Real>::steps().place_above(count, block, beta, a);
    return status;
  });
}

template <class Real>
int32_t weibull(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real alpha, Real a, Real beta) {
  const kernel_scope scope(repair_ln_of_zero_only<Real>);
  return in_blocks(n, r, [=](int32_t count, Real* block) {
    const int32_t status = draw_logarithms(kind, stream, count, block);
    if (status < 0) return status;
    precision<Real>::steps().scale(count, block, -1);
    if (alpha != 1) run_kernel(precision<Real>::powx, count, block, 1 / alpha, block);
    precision<Real>::steps().place_above(count, block, beta, a);
    return status;
  });
}

}  // namespace

extern "C" {

#define TMK_LAW(Name, function)                                                                          \
  int32_t _vtsdRng##Name(int32_t, VtsStreamHandle stream, int32_t n, double* r, double a, double beta) { \
    return function(uniforms::own, stream, n, r, a, beta);                                               \
  }                                                                                                      \
  int32_t _vtssRng##Name(int32_t, VtsStreamHandle stream, int32_t n, float* r, float a, float beta) {    \
    return function(uniforms::own, stream, n, r, a, beta);                                               \
  }                                                                                                      \
  int32_t tmk_vtsdRng##Name(VtsStreamHandle stream, int32_t n, double* r, double a, double beta) {       \
    return function(uniforms::open, stream, n, r, a, beta);                                              \
  }                                                                                                      \
  int32_t tmk_vtssRng##Name(VtsStreamHandle stream, int32_t n, float* r, float a, float beta) {          \
    return function(uniforms::open, stream, n, r, a, beta);                                              \
  }
TMK_LAW(Exponential, exponential)
TMK_LAW(Cauchy, cauchy)
TMK_LAW(Gumbel, gumbel)
TMK_LAW(Laplace, laplace)
TMK_LAW(Rayleigh, rayleigh)
#undef TMK_LAW

int32_t _vtsdRngWeibull(int32_t, VtsStreamHandle stream, int32_t n, double* r, double alpha, double a,
                        double beta) {
  return weibull(uniforms::own, stream, n, r, alpha, a, beta);
}
int32_t _vtssRngWeibull(int32_t, VtsStreamHandle stream, int32_t n, float* r, float alpha, float a,
                        float beta) {
  return weibull(uniforms::own, stream, n, r, alpha, a, beta);
}
int32_t tmk_vtsdRngWeibull(VtsStreamHandle stream, int32_t n, double* r, double alpha, double a,
                           double beta) {
  return weibull(uniforms::open, stream, n, r, alpha, a, beta);
}
int32_t tmk_vtssRngWeibull(VtsStreamHandle stream, int32_t n, float* r, float alpha, float a, float beta) {
  return weibull(uniforms::open, stream, n, r, alpha, a, beta);
}
}
