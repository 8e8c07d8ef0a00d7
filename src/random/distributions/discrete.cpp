// Bernoulli trials, and failures before the first success: floor(ln u / ln(1 - p)).
#include <bit>
#include <cmath>

#include "random/distributions/frame.hpp"

extern "C" {

int32_t _vtsiRngBernoulli(int32_t, VtsStreamHandle stream, int32_t n, int32_t* r, double p) {
  const int32_t bound = std::bit_cast<int32_t>(static_cast<float>(p));
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
}
