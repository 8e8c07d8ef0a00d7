// SPDX-License-Identifier: Apache-2.0
// The instruction set of the tier. Each set defines the same small functions: the one place that chooses
// between them.
#pragma once

#include "platform/tier.hpp"

#if TMK_TIER_NUMBER(TMK_TIER) == 2
#include "simd/v4.hpp"
#include "simd/v4_integer.hpp"
#include "simd/v4_tables.hpp"
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
#include "simd/v3.hpp"
#include "simd/v3_integer.hpp"
#include "simd/v3_tables.hpp"
#else
#include "simd/w7.hpp"
#include "simd/w7_integer.hpp"
#include "simd/w7_rounding.hpp"
#include "simd/w7_rows.hpp"
#include "simd/w7_tables.hpp"
#endif
