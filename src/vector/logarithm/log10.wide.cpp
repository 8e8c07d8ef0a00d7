// SPDX-License-Identifier: Apache-2.0
// Logarithm in base 10 on the wide tiers.
#include "vector/logarithm/wide.hpp"

// Maximum errors in ulp (V3, V4), by tmk-accuracy Log10 --search thorough:
//   single LA: 1.841 at 0x1.25f914p+0: got 0x1.ec128p-5, want 0x1.ec1283aep-5
//   single HA: 0.5057 at 0x1.1a9ddap+0: got 0x1.5fe8dcp-5, want 0x1.5fe8dafdp-5
//   single EP: 997 at 0x1.ede828p-1: got -0x1.00037cp-6, want -0x1.ffff2e7bp-7
//   double LA, HA, EP: 0.5079 at 0x1.1b7a6c12e821p+0: got 0x1.6abd4d0f71d4ap-5, want 0x1.6abd4d0f71d4a82p-5
TMK_KERNELS(s, Log10, unary, LHE, wide_log10)
TMK_KERNELS(d, Log10, unary, HHH, wide_log10)
