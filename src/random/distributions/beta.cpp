// SPDX-License-Identifier: Apache-2.0
// The beta law: x / (x + y) of two standard gamma variates, whose candidates are one candidate of the ratio,
// accepted where both are. With powers u^(1/p) and w^(1/q) for shapes below 1 the ratio is
//   x f / (x f + y / f),   f = e^((ln u / p - ln w / q) / 2),
// which loses no variate to underflow before it is a subnormal number itself.
#include <cmath>

#include "random/distributions/candidates.hpp"
#include "random/distributions/gamma.hpp"
#include "random/distributions/kernel_calls.hpp"
#include "random/distributions/laws_by_candidates_continuous.hpp"

namespace tmk::rng {

namespace {

// Half the difference of the powers' logarithms, to block.log_u of x. Beyond 700 the ratio is 0 or 1.
bool balance(const gamma_shape& p, const gamma_shape& q, int32_t n, gamma_block& x, gamma_block& y) {
  const auto halve = [n](const gamma_shape& shape, gamma_block& block) {
    if (shape.boosted())
      gamma_kernels_now().scale_from(n, block.log_u, 0.5 / shape.shape, -1e300);
    else
      std::fill_n(block.log_u, n, 0.0);
  };
  if (!p.boosted() && !q.boosted()) return false;
  halve(p, x);
  halve(q, y);
  for (int32_t i = 0; i < n; ++i) x.log_u[i] = std::clamp(x.log_u[i] - y.log_u[i], -700.0, 700.0);
  run_kernel<double, TMK_SLOT_LA>(tmk_vtm_kernel_dExp_ttab, n, +x.log_u, +x.log_u);
  return true;
}

template <class Real>
int32_t draw_block(VtsStreamHandle stream, int32_t n, Real* r, const gamma_shape& p, const gamma_shape& q,
                   Real a, Real beta) {
  alignas(64) unit_column column[most_columns];
  gamma_block x, y;
  const int32_t status = draw_columns(stream, n, p.uniforms() + q.uniforms(), column);
  if (status < 0) return status;
  standard_gamma(p, n, column, x);
  standard_gamma(q, n, column + p.uniforms(), y);
  int32_t rejected_at[2 * distribution_block];
  const int32_t* const end = std::set_union(x.rejected_at, x.rejected_at + x.rejected, y.rejected_at,
                                            y.rejected_at + y.rejected, rejected_at);
  const auto ratio = [&](double* to) {
    const bool powers = balance(p, q, n, x, y);
    gamma_kernels_now().part_of_sum(n, x.g, x.scale, y.g, y.scale, powers ? x.log_u : nullptr, to);
    precision<double>::steps().place(n, to, beta, a);
  };
  return finish_candidates(n, r, static_cast<int32_t>(end - rejected_at), rejected_at, ratio);
}

template <class Real>
int32_t candidates(VtsStreamHandle stream, int32_t count, Real* r, Real p, Real q, Real a, Real beta) {
  const kernel_scope scope(leave_result);
  const gamma_shape first(p), second(q);
  return candidates_in_blocks(
      count, r, [&](int32_t n, Real* block) { return draw_block(stream, n, block, first, second, a, beta); });
}

template <class Real>
int32_t checked(int32_t method, VtsStreamHandle stream, int32_t n, Real* r, Real p, Real q, Real a,
                Real beta) {
  if (method != 0) return VTS_STATUS_BAD_METHOD;
  if (!is_positive(p) || !is_positive(q) || !std::isfinite(a) || !is_positive(beta))
    return VTS_STATUS_BAD_ARGUMENT;
  return fill_with_accepted(
      n, r, [=](int32_t count, Real* block) { return candidates(stream, count, block, p, q, a, beta); });
}

}  // namespace

int32_t beta_candidates(VtsStreamHandle stream, int32_t count, double* r, double p, double q, double a,
                        double beta) {
  return candidates(stream, count, r, p, q, a, beta);
}
int32_t beta_candidates(VtsStreamHandle stream, int32_t count, float* r, float p, float q, float a,
                        float beta) {
  return candidates(stream, count, r, p, q, a, beta);
}
int beta_uniforms(double p, double q) { return gamma_uniforms(p) + gamma_uniforms(q); }

}  // namespace tmk::rng

extern "C" {
int32_t _vtsdRngBeta(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double p, double q,
                     double a, double beta) {
  return tmk::rng::checked(method, stream, n, r, p, q, a, beta);
}
int32_t _vtssRngBeta(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float p, float q, float a,
                     float beta) {
  return tmk::rng::checked(method, stream, n, r, p, q, a, beta);
}
}
