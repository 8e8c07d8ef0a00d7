// SPDX-License-Identifier: Apache-2.0
// Logarithm in base 10 on the wide tiers.
#include "vector/real/wide/log.hpp"

// Maximum errors in ulp over 2^20 samples (V3):
//   single LA: 2.033 at 0x1.93f7bcp+1: got 0x1.ff1db4p-2, want 0x1.ff1dafefp-2
//   single HA: 0.5734 at 0x1.dd84eep-1: got -0x1.f017ap-6, want -0x1.f017a126p-6
//   single EP: 996 at 0x1.ede93ep-1: got -0x1.ffe7acp-7, want -0x1.ffdfe47dp-7
//   double LA, HA, EP: 0.5722 at 0x1.127f38bca9ae7p+0: got 0x1.f0653b41b8f04p-6, want 0x1.f0653b41b8f0492p-6
TMK_DEFINE_KERNEL(s, Log10, LAynn, run_masked<wide_log<float, log_base::ten, level::la>>)
TMK_DEFINE_KERNEL(s, Log10, HAynn, run_masked<wide_log<float, log_base::ten, level::ha>>)
TMK_DEFINE_KERNEL(s, Log10, EPnnn, run_masked<wide_log<float, log_base::ten, level::ep>>)
TMK_DEFINE_KERNEL(d, Log10, HAynn, run_masked<wide_log<double, log_base::ten, level::ha>>)
