// SPDX-License-Identifier: Apache-2.0
// The processor's floating-point controls as a kernel needs them, saved and restored with the scope.
//
// Every kernel runs with all exceptions masked. Its class says what else it requires of the x87 unit, its
// sse_control what it requires of the SSE unit. On exit the sticky flags raised inside are merged into the
// caller's.
#pragma once

#include <xmmintrin.h>

#include <cstdint>

#include "platform/tier.hpp"
#include "tmk/abi/vtm.h"

TMK_TIER_OPEN

enum class control_class {
  a,  // x87: masks set, precision and rounding as found
  b,  // x87: masks set, round to nearest, 53-bit precision
  c,  // x87: masks set, round to nearest, 64-bit precision
};

enum class sse_control {
  by_mode,     // round to nearest, subnormals by the mode word's denormal field
  nearest,     // round to nearest, flush as found
  exact,       // round to nearest, subnormals kept
  masks_only,  // rounding and flush as found
};

constexpr uint32_t sse_flush_bits = 0x8040;  // flush to zero, denormals are zero

// Whether subnormal numbers are lost in the SSE unit as it is set now.
inline bool subnormals_are_flushed() { return (_mm_getcsr() & sse_flush_bits) != 0; }

class control_scope {
 public:
  explicit control_scope(control_class x87, sse_control sse = sse_control::by_mode) {
    set_x87(x87);
    set_sse(sse);
  }

  ~control_scope() {
    if (x87_changed_) asm volatile("fldcw %0" : : "m"(x87_));
    if (sse_changed_) _mm_setcsr(sse_ | (_mm_getcsr() & sticky));
  }

  control_scope(const control_scope&) = delete;
  control_scope& operator=(const control_scope&) = delete;

 private:
  static constexpr uint32_t sticky = 0x3F;
  static constexpr uint32_t sse_masks = 0x1F80;
  static constexpr uint32_t sse_rounding = 0x6000;

  void set_x87(control_class wanted_class) {
    struct field {
      uint16_t mask, value;
    };
    constexpr field fields[] = {{0x003F, 0x003F}, {0x0F3F, 0x023F}, {0x0F3F, 0x033F}};
    const field f = fields[static_cast<int>(wanted_class)];
    asm volatile("fnstcw %0" : "=m"(x87_));
    const uint16_t wanted = static_cast<uint16_t>((x87_ & ~f.mask) | f.value);
    if (wanted == x87_) return;
    asm volatile("fnclex\n\tfldcw %0" : : "m"(wanted));
    x87_changed_ = true;
  }

  void set_sse(sse_control kind) {
    sse_ = _mm_getcsr();
    uint32_t wanted = sse_ | sse_masks;
    if (kind != sse_control::masks_only) wanted &= ~sse_rounding;
    if (kind == sse_control::exact) wanted &= ~sse_flush_bits;
    if (kind == sse_control::by_mode) {
      const bool flush = (tmk_vtm_kernel_GetMode() & VTM_DENORMALS_MASK) == VTM_DENORMALS_FLUSHED;
      wanted = (wanted & ~sse_flush_bits) | (flush ? sse_flush_bits : 0u);
    }
    if (wanted == sse_) return;
    _mm_setcsr(wanted);
    sse_changed_ = true;
  }

  uint16_t x87_ = 0;
  bool x87_changed_ = false;
  bool sse_changed_ = false;
  uint32_t sse_ = 0;
};

TMK_TIER_CLOSE
