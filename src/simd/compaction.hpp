// SPDX-License-Identifier: Apache-2.0
// Elements of 4, 8 or, on V4, 16 bytes, chosen by a mask, moved as bit patterns to a dense array and back, a
// register of them at a time: bit k of `set` is element k. No other element is written, and of the dense
// array no other one read.
#pragma once

#include "platform/tier.hpp"

#if TMK_TIER_NUMBER(TMK_TIER) == 2
#include "simd/v4_compaction.hpp"
#elif TMK_TIER_NUMBER(TMK_TIER) == 1
#include "simd/v3_compaction.hpp"
#else
#error "the baseline moves elements one by one"
#endif
