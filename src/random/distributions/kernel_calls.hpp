// SPDX-License-Identifier: Apache-2.0
// Vector kernels as the laws call them: a singular logarithm is repaired, so that it does not become an
// infinite variate, and the caller's controls are back afterwards.
#pragma once

#include <xmmintrin.h>

#include <cstdint>

#include "random/distributions/precision.hpp"
#include "tmk/abi/vtm.h"

namespace tmk::rng {

// kernel(n, a, arguments...) of the record, with subnormals kept whatever the thread's mode.
template <class Real, int Slot = precision<Real>::slot, class... Arguments>
void run_kernel(const VtmDispatchRecord& record, int32_t n, const Real* a, Arguments... arguments) {
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT);
  reinterpret_cast<void (*)(int32_t, const Real*, Arguments...)>(record.kernel[Slot])(n, a, arguments...);
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
// merge the SSE flags that they raise into the caller's; the destructor discards them where the
// constructor had to change the controls.
class kernel_scope {
 public:
  explicit kernel_scope(VtmErrorCallback callback) {
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
  ~kernel_scope() {
    tmk_vtm_kernel_SetErrorCallBack(callback_);
    tmk_vtm_kernel_SetMode(mode_);
    asm volatile("fnclex");
    if (x87_changed_) asm volatile("fldcw %0" : : "m"(x87_));
    if (sse_changed_) _mm_setcsr(sse_);
  }
  kernel_scope(const kernel_scope&) = delete;
  kernel_scope& operator=(const kernel_scope&) = delete;

 private:
  static constexpr uint32_t sse_masks = 0x1F80;
  uint16_t x87_;
  bool x87_changed_, sse_changed_;
  uint32_t sse_, mode_;
  VtmErrorCallback callback_;
};

}  // namespace tmk::rng
