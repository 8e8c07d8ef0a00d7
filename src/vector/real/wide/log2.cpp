// Logarithm in base 2 on the wide tiers.
#include "vector/real/wide/log.hpp"

TMK_DEFINE_KERNEL(s, Log2, LAynn, run_masked<wide_log<float, log_base::two, level::la>>)
TMK_DEFINE_KERNEL(s, Log2, HAynn, run_masked<wide_log<float, log_base::two, level::ha>>)
TMK_DEFINE_KERNEL(s, Log2, EPnnn, run_masked<wide_log<float, log_base::two, level::ep>>)
TMK_DEFINE_KERNEL(d, Log2, LAynn, run_masked<wide_log<double, log_base::two, level::la>>)
TMK_DEFINE_KERNEL(d, Log2, HAynn, run_masked<wide_log<double, log_base::two, level::ha>>)
TMK_DEFINE_KERNEL(d, Log2, EPnnn, run_masked<wide_log<double, log_base::two, level::ep>>)
