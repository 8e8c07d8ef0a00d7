/* SPDX-License-Identifier: Apache-2.0 */
/* Processor features. The compiler's own test covers CPUID and the register state the system saves. */
#include "platform/cpu.h"

#include "tmk/abi/vtm.h"

int32_t tmk_cpu_has_tier(int32_t tier) {
  __builtin_cpu_init();
  switch (tier) {
    case TMK_TIER_W7:
      return __builtin_cpu_supports("sse2") != 0;
    case TMK_TIER_V3:
      return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
             __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
             __builtin_cpu_supports("f16c") && __builtin_cpu_supports("lzcnt");
    case TMK_TIER_V4:
      return tmk_cpu_has_tier(TMK_TIER_V3) && __builtin_cpu_supports("avx512f") &&
             __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
             __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512cd");
    default:
      return 0;
  }
}
