// SPDX-License-Identifier: Apache-2.0
// What the laws share: the two precisions with their kernels and constants, uniforms, and the walk over
// blocks that stay in the first cache.
//
// Elements do not depend on how the stream's draws and the kernels' calls are cut, so a law works through the
// caller's array block by block.
#pragma once

#include <algorithm>
#include <cstdint>

#include "random/distributions/distribution_kernels.hpp"
#include "random/distributions/open_uniforms.hpp"
#include "tmk/abi/vts.h"

namespace tmk::rng {

constexpr int32_t distribution_block = 1024;  // even: a block holds whole pairs

template <class Real>
struct precision;

// Doubles are made by the kernels of lowest accuracy, singles by those one level up.
template <>
struct precision<double> {
  static constexpr int slot = TMK_SLOT_EP;
  static constexpr double log_of_zero = -744.4400719213812;  // ln 2^-1074
  static constexpr double half_pi = 0x1.921fb54442d18p+0;
  static constexpr double sqrt_2 = 1.4142135623730951;
  static constexpr auto uniform = &_vtsdRngUniform;
  static constexpr VtmDispatchRecord &ln = tmk_vtm_kernel_dLn_ttab, &sqrt = tmk_vtm_kernel_dSqrt_ttab,
                                     &exp = tmk_vtm_kernel_dExp_ttab, &tan = tmk_vtm_kernel_dTan_ttab,
                                     &powx = tmk_vtm_kernel_dPowx_ttab,
                                     &erf_inv = tmk_vtm_kernel_dErfInv_ttab,
                                     &sin_cos = tmk_vtm_kernel_dSinCos_ttab;
  static const auto& steps() { return distribution_kernels_now<double>(); }
};

template <>
struct precision<float> {
  static constexpr int slot = TMK_SLOT_LA;
  static constexpr double log_of_zero = -103.2789306640625;
  static constexpr float half_pi = 0x1.921fb6p+0f;
  static constexpr float sqrt_2 = 1.4142135f;
  static constexpr auto uniform = &_vtssRngUniform;
  static constexpr VtmDispatchRecord &ln = tmk_vtm_kernel_sLn_ttab, &sqrt = tmk_vtm_kernel_sSqrt_ttab,
                                     &exp = tmk_vtm_kernel_sExp_ttab, &tan = tmk_vtm_kernel_sTan_ttab,
                                     &powx = tmk_vtm_kernel_sPowx_ttab,
                                     &erf_inv = tmk_vtm_kernel_sErfInv_ttab,
                                     &sin_cos = tmk_vtm_kernel_sSinCos_ttab;
  static const auto& steps() { return distribution_kernels_now<float>(); }
};

// Which uniforms a law uses. The generator's own may be either end of the interval, which a law with a pole
// there repairs; open ones are neither.
enum class uniforms { own, open };

template <class Real>
int32_t draw_uniforms(uniforms kind, VtsStreamHandle stream, int32_t n, Real* r, Real a, Real b) {
  return kind == uniforms::open ? draw_open(stream, n, r, a, b)
                                : precision<Real>::uniform(0, stream, n, r, a, b);
}

// block(count, r) for the blocks of an array; the first negative status ends the walk, the last is returned.
template <class Real, class Block>
int32_t in_blocks(int32_t n, Real* r, Block block) {
  int32_t status = VTS_STATUS_OK;
  for (int32_t count; n > 0 && status >= 0; n -= count, r += count) {
    count = std::min(n, distribution_block);
    status = block(count, r);
  }
  return status;
}

}  // namespace tmk::rng
