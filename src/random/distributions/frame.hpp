// SPDX-License-Identifier: Apache-2.0
// What the distributions share: the two precisions, draws and vector kernels over blocks that stay in the
// first cache, and the frame that keeps a singular logarithm from becoming an infinity.
//
// Elements do not depend on how the stream's draws and the kernels' calls are cut, so a law works through the
// caller's array block by block.
#pragma once

#include <xmmintrin.h>

#include <algorithm>
#include <cstdint>

#include "random/distributions/loops.hpp"
#include "random/distributions/open_uniforms.hpp"
#include "tmk/abi/vts.h"

namespace tmk {

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
  static const auto& loops() { return double_loops_now(); }
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
  static const auto& loops() { return single_loops_now(); }
};

// Whose uniforms a law takes. The generator's own may be either end of the interval, which a law with a pole
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

// kernel(n, a, arguments...) of the record, with subnormals kept whatever the thread's mode says.
template <class Real, class... Arguments>
void run_kernel(const VtmDispatchRecord& record, int32_t n, const Real* a, Arguments... arguments) {
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT);
  reinterpret_cast<void (*)(int32_t, const Real*, Arguments...)>(record.kernel[precision<Real>::slot])(
      n, a, arguments...);
  tmk_vtm_kernel_SetMode(mode);
}

// Callbacks. A repaired logarithm is that of the smallest positive number.
template <class Real>
int32_t repair_ln(VtmErrorContext* context) {
  context->r1 = context->r2 = precision<Real>::log_of_zero;
  return 0;
}

template <class Real>
int32_t repair_ln_of_zero_only(VtmErrorContext* context) {
  return context->code == VTM_STATUS_SINGULARITY ? repair_ln<Real>(context) : 0;
}

// For the life of the object: exceptions masked, and bad elements reported to the callback alone. Kernels
// merge the SSE flags that they raise into the caller's; the frame discards them where it had to change the
// controls.
class distribution_frame {
 public:
  explicit distribution_frame(VtmErrorCallback callback) {
    asm volatile("fnclex\n\tfnstcw %0" : "=m"(x87_));
    const uint16_t masked = x87_ | 0x3F;
    x87_changed_ = masked != x87_;
    if (x87_changed_) asm volatile("fldcw %0" : : "m"(masked));
    sse_ = _mm_getcsr();
    sse_changed_ = (sse_ | sse_masks) != sse_;
    if (sse_changed_) _mm_setcsr(sse_ | sse_masks);
    mode_ = tmk_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK);
    callback_ = tmk_vtm_kernel_SetErrorCallBack(callback);
  }
  ~distribution_frame() {
    tmk_vtm_kernel_SetErrorCallBack(callback_);
    tmk_vtm_kernel_SetMode(mode_);
    asm volatile("fnclex");
    if (x87_changed_) asm volatile("fldcw %0" : : "m"(x87_));
    if (sse_changed_) _mm_setcsr(sse_);
  }
  distribution_frame(const distribution_frame&) = delete;
  distribution_frame& operator=(const distribution_frame&) = delete;

 private:
  static constexpr uint32_t sse_masks = 0x1F80;
  uint16_t x87_;
  bool x87_changed_, sse_changed_;
  uint32_t sse_, mode_;
  VtmErrorCallback callback_;
};

}  // namespace tmk
