// SPDX-License-Identifier: Apache-2.0
// Natural logarithm on the wide tiers.
#include "vector/real/wide/log.hpp"

// Maximum errors in ulp over 2^20 samples (V3):
//   single LA: 1.565 at 0x1.961af2p-2: got -0x1.d9873p-1, want -0x1.d9872cdfp-1
//   single HA: 0.531 (every x in [0.5, 2)) at 0x1.1ac6fap+0: got 0x1.977a7cp-4, want 0x1.977a7d0fcp-4
//   single EP: 1096 at 0x1.e0fdc4p-1: got -0x1.ffd53p-5, want -0x1.ffcc9f08p-5
//   double LA, HA: 0.5838 at 0x1.1e80c3be9a3c2p+0: got 0x1.cd17ca7479a2ap-4, want 0x1.cd17ca7479a2a96p-4
//   double EP: 1.1e+07 at 0x1.1aab6cd87f096p+0: got 0x1.95eb55586097ap-4, want 0x1.95eb5562cd6737fp-4
TMK_DEFINE_KERNEL(s, Ln, LAynn, run_masked<wide_log<float, log_base::e, level::la>>)
TMK_DEFINE_KERNEL(s, Ln, HAynn, run_masked<wide_log<float, log_base::e, level::ha>>)
TMK_DEFINE_KERNEL(s, Ln, EPnnn, run_masked<wide_log<float, log_base::e, level::ep>>)
TMK_DEFINE_KERNEL(d, Ln, HAynn, run_masked<wide_log<double, log_base::e, level::ha>>)
TMK_DEFINE_KERNEL(d, Ln, EPnnn, run_masked<wide_log<double, log_base::e, level::ep>>)
