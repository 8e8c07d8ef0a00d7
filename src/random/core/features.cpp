// SPDX-License-Identifier: Apache-2.0
// Processor features that some generators need. CPUID leaf 1 has them all.
#include <cpuid.h>

#include <cstdint>

#include "tmk/abi/vts.h"

namespace {

struct features {
  uint32_t ecx, edx;
};

// Read once: a virtual machine traps the instruction, which takes microseconds, and every draw needs the
// answer.
features leaf_1() {
  static const features of_this_processor = [] {
    uint32_t eax, ebx, ecx = 0, edx = 0;
    __get_cpuid(1, &eax, &ebx, &ecx, &edx);
    return features{ecx, edx};
  }();
  return of_this_processor;
}

constexpr uint32_t sse2_of_edx = 1u << 26, aes_of_ecx = 1u << 25, rdrand_of_ecx = 1u << 30;

}  // namespace

extern "C" {

int32_t __vtsCPUisAES(void) {
  const features f = leaf_1();
  return (f.edx & sse2_of_edx) != 0 && (f.ecx & aes_of_ecx) != 0;
}

int32_t __vtsCPUisRDRAND(void) { return (leaf_1().ecx & rdrand_of_ecx) != 0; }

}  // extern "C"
