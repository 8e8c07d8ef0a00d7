// SPDX-License-Identifier: Apache-2.0
// x^y on the baseline. LA has the formula of HA: ln x needs all its bits where y is large.
#include "vector/power/power.hpp"

TMK_KERNELS(s, Pow, binary, HHH, whole_power)
TMK_KERNELS(d, Pow, binary, LHL, whole_power)
TMK_REAL_KERNELS(Powr, binary, LHE, positive_power)
