// Natural logarithm on the wide tiers.
#include "vector/real/wide/log.hpp"

TMK_DEFINE_KERNEL(s, Ln, LAynn, run_masked<wide_log<float, log_base::e, level::la>>)
// Maximum error 0.531 ulp (single HA, every x in [0.5, 2)) at 0x1.1ac6fap+0: got 0x1.977a7cp-4, want
// 0x1.977a7d0fcp-4.
TMK_DEFINE_KERNEL(s, Ln, HAynn, run_masked<wide_log<float, log_base::e, level::ha>>)
TMK_DEFINE_KERNEL(s, Ln, EPnnn, run_masked<wide_log<float, log_base::e, level::ep>>)
TMK_DEFINE_KERNEL(d, Ln, HAynn, run_masked<wide_log<double, log_base::e, level::ha>>)
TMK_DEFINE_KERNEL(d, Ln, EPnnn, run_masked<wide_log<double, log_base::e, level::ep>>)
