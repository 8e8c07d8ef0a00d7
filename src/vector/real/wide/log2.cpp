// SPDX-License-Identifier: Apache-2.0
// Logarithm in base 2 on the wide tiers.
#include "vector/real/wide/log.hpp"

// Maximum errors in ulp over 2^20 samples (V3):
//   single LA: 1.589 at 0x1.642288p+0: got 0x1.e7b5ecp-2, want 0x1.e7b5ef2dp-2
//   single HA: 0.5570 at 0x1.14d73ap+0: got 0x1.ce7d3cp-4, want 0x1.ce7d3ae3p-4
//   single EP: 1098 at 0x1.ea4d04p-1: got -0x1.ffd772p-5, want -0x1.ffcedd39p-5
//   double LA: 1.628 at 0x1.d94ad3267122ep-1: got -0x1.d089871f57ea8p-4, want -0x1.d089871f57ea65fp-4
//   double HA: 0.5901 at 0x1.16e797196eb97p+0: got 0x1.fa618948aa3d4p-4, want 0x1.fa618948aa3d369p-4
//   double EP: 7.9e+06 at 0x1.1aab6cd87f096p+0: got 0x1.24cf116d037fbp-3, want 0x1.24cf117488a3918p-3
TMK_DEFINE_KERNEL(s, Log2, LAynn, run_masked<wide_log<float, log_base::two, level::la>>)
TMK_DEFINE_KERNEL(s, Log2, HAynn, run_masked<wide_log<float, log_base::two, level::ha>>)
TMK_DEFINE_KERNEL(s, Log2, EPnnn, run_masked<wide_log<float, log_base::two, level::ep>>)
TMK_DEFINE_KERNEL(d, Log2, LAynn, run_masked<wide_log<double, log_base::two, level::la>>)
TMK_DEFINE_KERNEL(d, Log2, HAynn, run_masked<wide_log<double, log_base::two, level::ha>>)
TMK_DEFINE_KERNEL(d, Log2, EPnnn, run_masked<wide_log<double, log_base::two, level::ep>>)
