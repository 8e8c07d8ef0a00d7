// SPDX-License-Identifier: Apache-2.0
// Bernoulli trials, and failures before the first success: floor(ln u / ln(1 - p)).
#include <bit>
#include <cmath>

#include "random/distributions/kernel_calls.hpp"

namespace {
using namespace tmk::rng;
}

extern "C" {

int32_t _vtsiRngBernoulli(int32_t, VtsStreamHandle stream, int32_t n, int32_t* r, double p) {
  const float single = static_cast<float>(p);
  // Uniforms round to 1 once in 2^25 draws, and a probability of 1 is above that, too.
  const int32_t bound = std::bit_cast<int32_t>(single < 1 ? single : 2.0F);
  return in_blocks(n, r, [=](int32_t count, int32_t* block) {
    const int32_t status = _vtssRngUniform(0, stream, count, reinterpret_cast<float*>(block), 0, 1);
    if (status >= 0) bit_kernels_now().below(count, block, bound, block);
    return status;
  });
}

int32_t _vtsiRngGeometric(int32_t, VtsStreamHandle stream, int32_t n, int32_t* r, double p) {
  const float c = static_cast<float>(1 / std::log(1 - p));
  alignas(64) float x[distribution_block];
  const kernel_scope scope(repair_ln<float>);
  return in_blocks(n, r, [=, &x](int32_t count, int32_t* block) {
    const int32_t status = _vtssRngUniform(0, stream, count, x, 0, 1);
    if (status < 0) return status;
    run_kernel(tmk_vtm_kernel_sLn_ttab, count, x, static_cast<float*>(x));
    precision<float>::steps().scale(count, x, c);
    precision<float>::steps().floor(count, x, block);
    return status;
  });
}

// In doubles, whose logarithms of open uniforms are above -37.5: every variate fits.
int32_t tmk_vtsiRngGeometric(VtsStreamHandle stream, int32_t n, int32_t* r, double p) {
  const double c = 1 / std::log1p(-p);
  alignas(64) double x[distribution_block];
  const kernel_scope scope(repair_ln<double>);
  return in_blocks(n, r, [=, &x](int32_t count, int32_t* block) {
    const int32_t status = draw_open(stream, count, +x, 0.0, 1.0);
    if (status < 0) return status;
    run_kernel(tmk_vtm_kernel_dLn_ttab, count, x, +x);
    precision<double>::steps().scale(count, x, c);
    precision<double>::steps().floor(count, x, block);
    return status;
  });
}
}
