// SPDX-License-Identifier: Apache-2.0
// The gamma law (gamma.hpp). Singles are doubles, rounded: a power u^(1/shape) of a small shape needs all
// bits of u.
#include "random/distributions/gamma.hpp"

#include <cmath>

#include "random/distributions/candidates.hpp"
#include "random/distributions/kernel_calls.hpp"
#include "random/distributions/laws_by_candidates_continuous.hpp"
#include "random/distributions/ziggurat.hpp"

namespace tmk::rng {

namespace {

constexpr auto& exact = run_kernel<double, TMK_SLOT_LA, double*>;

// Normal places and the uniforms that settle them.
void draw_places(int32_t n, const unit_column* column, double* x, double* u) {
  int32_t escapes[distribution_block];
  gamma_kernels_now().fractions(n, column[1], u);
  const int32_t found = ziggurat_kernels_now<double>().place_across(n, column[0], x, escapes);
  settle_escapes(found, escapes, column[0], x, u);
}

void reject(gamma_block& out, int32_t at) {
  out.g[at] = 1;
  out.rejected_at[out.rejected++] = at;
}

// ln u < h for the few that the squeeze leaves open.
void decide(int32_t open, const int32_t* at, const double* x, const double* u, double d, gamma_block& out) {
  alignas(64) double log_u[distribution_block], log_v[distribution_block];
  for (int32_t k = 0; k < open; ++k) {
    const double v = out.g[at[k]];
    log_u[k] = u[at[k]];
    log_v[k] = v > 0 ? v : 1;
  }
  exact(tmk_vtm_kernel_dLn_ttab, open, log_u, log_u);
  exact(tmk_vtm_kernel_dLn_ttab, open, log_v, log_v);
  for (int32_t k = 0; k < open; ++k) {
    const double v = out.g[at[k]], z = x[at[k]];
    const double h = 0.5 * z * z + d * (1 - v + log_v[k]);
    if (!(v > 0 && log_u[k] < h)) reject(out, at[k]);
  }
}

void by_cubes(double shape, double c, int32_t n, const unit_column* column, gamma_block& out) {
  alignas(64) double x[distribution_block], u[distribution_block];
  int32_t undecided[distribution_block];
  draw_places(n, column, x, u);
  out.scale = shape - 1.0 / 3;
  // e^h is at least 1 - 0.0331 x^4 for d = 2/3, by the paper; h falls as 1 / d, so that for all d from 2/3 to
  // 10^6, at every x, it is at least this.
  const double squeeze = 0.0331 * (2.0 / 3) / out.scale;
  const int32_t open = gamma_kernels_now().cube(n, x, u, c, squeeze, out.g, undecided);
  if (open > 0) decide(open, undecided, x, u, out.scale, out);
}

void by_squares(int32_t n, const unit_column* column, gamma_block& out) {
  alignas(64) double x[distribution_block], u[distribution_block];
  int32_t escapes[distribution_block];
  const int32_t found = ziggurat_kernels_now<double>().place_across(n, column[0], x, escapes);
  for (int32_t k = 0; k < found; ++k) u[escapes[k]] = ziggurat_unit<double>::fraction(column[1][escapes[k]]);
  settle_escapes(found, escapes, column[0], x, u);
  out.scale = 0.5;
  gamma_kernels_now().square(n, x, out.g);
  for (int32_t k = 0; k < found; ++k)
    if (u[escapes[k]] >= 1) reject(out, escapes[k]);
}

void draw_log(int32_t n, const uint64_t* units, double* r) {
  gamma_kernels_now().fractions(n, units, r);
  exact(tmk_vtm_kernel_dLn_ttab, n, r, r);
}

// The third root of the power keeps every factor of the product normal, for any beta.
void place(const gamma_shape& shape, int32_t n, gamma_block& block, double a, double beta, double* r) {
  const double factor = beta * block.scale;
  if (!shape.boosted()) {
    std::copy_n(block.g, n, r);
    return precision<double>::steps().place(n, r, factor, a);
  }
  constexpr double least_log = -708;
  gamma_kernels_now().scale_from(n, block.log_u, 1 / (3 * shape.shape), least_log);
  exact(tmk_vtm_kernel_dExp_ttab, n, block.log_u, block.log_u);
  gamma_kernels_now().place_power(n, block.g, block.log_u, factor, a, r);
}

template <class Real>
int32_t draw_block(VtsStreamHandle stream, int32_t n, Real* r, Real shape, Real a, Real beta) {
  const auto* const set_up = attached_set_up<gamma_set_up<Real>>(stream, {shape});
  if (set_up == nullptr) return VTS_STATUS_NO_MEMORY;
  const gamma_shape form(shape, set_up->c);
  alignas(64) unit_column column[3];
  gamma_block block;
  const int32_t status = draw_columns(stream, n, form.uniforms(), column);
  if (status < 0) return status;
  standard_gamma(form, n, column, block);
  return finish_candidates(n, r, block.rejected, block.rejected_at,
                           [&](double* x) { place(form, n, block, a, beta, x); });
}

template <class Real>
int32_t gamma(int32_t method, VtsStreamHandle stream, int32_t n, Real* r, Real shape, Real a, Real beta) {
  if (method != 0) return VTS_STATUS_BAD_METHOD;
  if (!gamma_set_up<Real>::accepts({shape}) || !std::isfinite(a) || !is_positive(beta))
    return VTS_STATUS_BAD_ARGUMENT;
  return fill_with_accepted(n, r, [=](int32_t count, Real* block) {
    return gamma_candidates(stream, count, block, shape, a, beta);
  });
}

}  // namespace

double gamma_shape::cube_constant(double shape) {
  return 1 / std::sqrt(9 * ((shape < 1 ? shape + 1 : shape) - 1.0 / 3));
}
gamma_shape::gamma_shape(double s) : gamma_shape(s, cube_constant(s)) {}

void standard_gamma(const gamma_shape& shape, int32_t n, const unit_column* column, gamma_block& out) {
  out.rejected = 0;
  if (shape.shape == 1) {
    draw_log(n, column[0], out.g);
    precision<double>::steps().scale(n, out.g, -1);
    out.scale = 1;
  } else if (shape.shape == 0.5) {
    by_squares(n, column, out);
  } else {
    by_cubes(shape.boosted() ? shape.shape + 1 : shape.shape, shape.c, n, column, out);
    if (shape.boosted()) draw_log(n, column[2], out.log_u);
  }
}

int32_t draw_columns(VtsStreamHandle stream, int32_t n, int k, unit_column* column) {
  alignas(64) uint64_t units[most_columns * distribution_block];
  const int32_t status = draw_units(stream, n * k, k == 1 ? column[0] : units);
  if (status >= 0 && k > 1) gamma_kernels_now().deal(n, k, units, column);
  return status;
}

int gamma_uniforms(double shape) { return gamma_shape(shape).uniforms(); }

int32_t gamma_candidates(VtsStreamHandle stream, int32_t count, double* r, double shape, double a,
                         double beta) {
  const kernel_scope scope(leave_result);
  return candidates_in_blocks(
      count, r, [=](int32_t n, double* block) { return draw_block(stream, n, block, shape, a, beta); });
}
int32_t gamma_candidates(VtsStreamHandle stream, int32_t count, float* r, float shape, float a, float beta) {
  const kernel_scope scope(leave_result);
  return candidates_in_blocks(
      count, r, [=](int32_t n, float* block) { return draw_block(stream, n, block, shape, a, beta); });
}

}  // namespace tmk::rng

extern "C" {
int32_t _vtsdRngGamma(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double alpha, double a,
                      double beta) {
  return tmk::rng::gamma(method, stream, n, r, alpha, a, beta);
}
int32_t _vtssRngGamma(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float alpha, float a,
                      float beta) {
  return tmk::rng::gamma(method, stream, n, r, alpha, a, beta);
}
}
