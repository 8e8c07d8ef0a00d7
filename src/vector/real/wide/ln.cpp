// Natural logarithm on the wide tiers.
#include "vector/real/wide/log.hpp"

TMK_DEFINE_KERNEL(s, Ln, LAynn, run_masked<wide_log<float, log_base::e, level::la>>)
TMK_DEFINE_KERNEL(s, Ln, HAynn, run_masked<wide_log<float, log_base::e, level::ha>>)
TMK_DEFINE_KERNEL(s, Ln, EPnnn, run_masked<wide_log<float, log_base::e, level::ep>>)
TMK_DEFINE_KERNEL(d, Ln, HAynn, run_masked<wide_log<double, log_base::e, level::ha>>)
TMK_DEFINE_KERNEL(d, Ln, EPnnn, run_masked<wide_log<double, log_base::e, level::ep>>)
