// SPDX-License-Identifier: Apache-2.0
// Akima's constructor as the C++ API calls it: the same at every scale. The exported one has a fixed
// threshold.
#pragma once

#include <cstdint>

#include "tmk/abi/df.h"
#include "tmk/abi/threading.h"

namespace tmk::fitting {

// As tmk_df_kernel_dDFAkimaCubicSpline1D, but two weights count as none where they are within what rounding
// of the points and values can make of them: then the slope is the mean of its neighbours.
template <class Real>
int32_t construct_akima_of_any_scale(DFTask* task, int64_t format, int64_t method,
                                     const ThreadingService* threading);

}  // namespace tmk::fitting
