// SPDX-License-Identifier: Apache-2.0
// Logarithm in base 2 on the wide tiers.
#include "vector/logarithm/wide.hpp"

// Maximum errors in ulp (V3, V4), by tmk-accuracy Log2 --search thorough:
//   single LA: 1.593 at 0x1.63e19ap+0: got 0x1.e6a87cp-2, want 0x1.e6a87f3p-2
//   single HA: 0.5056 at 0x1.1711d2p+0: got 0x1.fde004p-4, want 0x1.fde00503p-4
//   single EP: 1099 at 0x1.ea4b16p-1: got -0x1.0002fcp-4, want -0x1.fffd610ap-5
//   double LA: 1.664 at 0x1.20f0286831bbp+0: got 0x1.659d7434dbbdep-3, want 0x1.659d7434dbbdfaap-3
//   double HA: 0.5076 at 0x1.16ef33892956dp+0: got 0x1.fb02c97cc4d32p-4, want 0x1.fb02c97cc4d3282p-4
//   double EP: 7.9e+06 at 0x1.1aaaaaaab0d3fp+0: got 0x1.24c723bc5d2eap-3, want 0x1.24c723c3e3877f9p-3
TMK_REAL_KERNELS(Log2, unary, LHE, wide_log2)
