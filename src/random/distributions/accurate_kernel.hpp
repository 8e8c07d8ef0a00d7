// SPDX-License-Identifier: Apache-2.0
// A vector function of doubles at its highest level, for decisions that rest on logarithms.
#pragma once

#include <cstdint>

#include "tmk/abi/vtm.h"

namespace tmk::rng {

inline void run_accurate(const VtmDispatchRecord& record, int32_t n, const double* a, double* r) {
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT);
  reinterpret_cast<void (*)(int32_t, const double*, double*)>(record.kernel[TMK_SLOT_HA])(n, a, r);
  tmk_vtm_kernel_SetMode(mode);
}

}  // namespace tmk::rng
