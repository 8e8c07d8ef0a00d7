// SPDX-License-Identifier: Apache-2.0
// Student's t by two uniforms, none rejected (R. Bailey, Polar generation of random variates with the
// t-distribution, Math. Comp. 62 (1994)):
//   t = sqrt(nu (u^(-2/nu) - 1)) cos(2 pi v) = sqrt(nu) sqrt(e) sqrt(e + 2) cos(2 pi v),  e = u^(-1/nu) - 1
// whose product overflows only where t does, and whose difference is expm1's.
#include <cmath>

#include "random/distributions/candidates.hpp"
#include "random/distributions/gamma.hpp"
#include "random/distributions/kernel_calls.hpp"
#include "random/distributions/laws_by_candidates_continuous.hpp"

namespace tmk::rng {

namespace {

constexpr auto& exact = run_kernel<double, TMK_SLOT_LA, double*>;

template <class Real>
int32_t draw_block(VtsStreamHandle stream, int32_t n, Real* r, double nu, double a, double beta) {
  constexpr double two_pi = 4 * precision<double>::half_pi;
  alignas(64) unit_column column[2];
  alignas(64) double e[distribution_block], angle[distribution_block];
  const int32_t status = draw_columns(stream, n, 2, column);
  if (status < 0) return status;
  gamma_kernels_now().fractions(n, column[0], e);
  exact(tmk_vtm_kernel_dLn_ttab, n, e, e);
  precision<double>::steps().scale(n, e, -1 / nu);
  exact(tmk_vtm_kernel_dExpm1_ttab, n, e, e);
  gamma_kernels_now().fractions(n, column[1], angle);
  precision<double>::steps().place(n, angle, two_pi, -two_pi / 2);
  exact(tmk_vtm_kernel_dCos_ttab, n, angle, angle);
  return finish_candidates(n, r, 0, nullptr, [&](double* x) {
    gamma_kernels_now().place_radius(n, e, angle, beta * std::sqrt(nu), a, x);
  });
}

template <class Real>
int32_t candidates(VtsStreamHandle stream, int32_t count, Real* r, double nu, double a, double beta) {
  const kernel_scope scope(leave_result);
  return candidates_in_blocks(
      count, r, [=](int32_t n, Real* block) { return draw_block(stream, n, block, nu, a, beta); });
}

}  // namespace

int32_t student_t_candidates(VtsStreamHandle stream, int32_t count, double* r, double nu, double a,
                             double beta) {
  return candidates(stream, count, r, nu, a, beta);
}
int32_t student_t_candidates(VtsStreamHandle stream, int32_t count, float* r, float nu, float a, float beta) {
  return candidates(stream, count, r, double{nu}, double{a}, double{beta});
}
int student_t_uniforms() { return 2; }

}  // namespace tmk::rng
