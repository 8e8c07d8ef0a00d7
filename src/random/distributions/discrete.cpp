// SPDX-License-Identifier: Apache-2.0
// Bernoulli trials, and failures before the first success: floor(ln u / ln(1 - p)).
#include <bit>
#include <cmath>

#include "random/distributions/frame.hpp"

extern "C" {

int32_t _vtsiRngBernoulli(int32_t, VtsStreamHandle stream, int32_t n, int32_t* r, double p) {
  const float single = static_cast<float>(p);
  // Uniforms round to 1 once in 2^25 draws, and a probability of 1 is above that, too.
  const int32_t bound = std::bit_cast<int32_t>(single < 1 ? single : 2.0F);
  return tmk::in_blocks(n, r, [=](int32_t count, int32_t* block) {
    const int32_t status = _vtssRngUniform(0, stream, count, reinterpret_cast<float*>(block), 0, 1);
    if (status >= 0) bit_loops_now().below(count, block, bound, block);
    return status;
  });
}

int32_t _vtsiRngGeometric(int32_t, VtsStreamHandle stream, int32_t n, int32_t* r, double p) {
  const float c = static_cast<float>(1 / std::log(1 - p));
  alignas(64) float x[tmk::distribution_block];
  const tmk::distribution_frame frame(tmk::repair_ln<float>);
  return tmk::in_blocks(n, r, [=, &x](int32_t count, int32_t* block) {
    const int32_t status = _vtssRngUniform(0, stream, count, x, 0, 1);
    if (status < 0) return status;
    tmk::run_kernel(tmk_vtm_kernel_sLn_ttab, count, x, static_cast<float*>(x));
    single_loops_now().scale(count, x, c);
    single_loops_now().floor(count, x, block);
    return status;
  });
}

// In doubles, whose logarithms of open uniforms are above -37.5: every variate fits.
int32_t tmk_vtsiRngGeometric(VtsStreamHandle stream, int32_t n, int32_t* r, double p) {
  const double c = 1 / std::log1p(-p);
  alignas(64) double x[tmk::distribution_block];
  const tmk::distribution_frame frame(tmk::repair_ln<double>);
  return tmk::in_blocks(n, r, [=, &x](int32_t count, int32_t* block) {
    const int32_t status = tmk::draw_open(stream, count, +x, 0.0, 1.0);
    if (status < 0) return status;
    tmk::run_kernel(tmk_vtm_kernel_dLn_ttab, count, x, +x);
    double_loops_now().scale(count, x, c);
    double_loops_now().floor(count, x, block);
    return status;
  });
}
}
