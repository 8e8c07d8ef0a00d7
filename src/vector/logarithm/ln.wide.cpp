// SPDX-License-Identifier: Apache-2.0
// Natural logarithm on the wide tiers.
#include "vector/logarithm/wide.hpp"

// Maximum errors in ulp (V3, V4), by tmk-accuracy Ln --search thorough:
//   single LA: 1.592 at 0x1.5b6604p+1: got 0x1.ff33dp-1, want 0x1.ff33d32fp-1
//   single HA: 0.5075 at 0x1.1a394cp+0: got 0x1.8f7444p-4, want 0x1.8f7442fcp-4
//   single EP: 1097 at 0x1.e0fac2p-1: got -0x1.000436p-4, want -0x1.ffffd971p-5
//   double LA, HA: 0.5083 at 0x1.1aaa8e8eb1be9p+0: got 0x1.95dec05137cp-4, want 0x1.95dec05137bff7ep-4
//   double EP: 1.1e+07 at 0x1.1aaaaaaaab136p+0: got 0x1.95e0579899ddcp-4, want 0x1.95e057a30859af1p-4
TMK_KERNELS(s, Ln, unary, LHE, wide_ln)
TMK_KERNELS(d, Ln, unary, HHE, wide_ln)
