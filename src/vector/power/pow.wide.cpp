// SPDX-License-Identifier: Apache-2.0
// x^y on the wide tiers.
#include "vector/power/power.hpp"

TMK_REAL_KERNELS(Pow, binary, HHH, whole_power)
TMK_REAL_KERNELS(Powr, binary, HHE, positive_power)
