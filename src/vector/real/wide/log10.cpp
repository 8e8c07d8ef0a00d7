// Logarithm in base 10 on the wide tiers.
#include "vector/real/wide/log.hpp"

TMK_DEFINE_KERNEL(s, Log10, LAynn, run_masked<wide_log<float, log_base::ten, level::la>>)
TMK_DEFINE_KERNEL(s, Log10, HAynn, run_masked<wide_log<float, log_base::ten, level::ha>>)
TMK_DEFINE_KERNEL(s, Log10, EPnnn, run_masked<wide_log<float, log_base::ten, level::ep>>)
TMK_DEFINE_KERNEL(d, Log10, HAynn, run_masked<wide_log<double, log_base::ten, level::ha>>)
