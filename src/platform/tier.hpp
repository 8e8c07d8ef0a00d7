// SPDX-License-Identifier: Apache-2.0
// The tier that a translation unit is compiled for. Everything inline that a kernel may use is defined in the
// inline namespace of its tier: otherwise the linker might keep an instantiation made for wide registers
// where one for narrow registers is needed.
#pragma once

#ifndef TMK_TIER
#define TMK_TIER W7
#endif

#define TMK_TIER_OPEN \
  namespace tmk {     \
  inline namespace TMK_TIER {
#define TMK_TIER_CLOSE \
  }                    \
  }

#define TMK_TIER_NUMBER_W7 0
#define TMK_TIER_NUMBER_V3 1
#define TMK_TIER_NUMBER_V4 2
#define TMK_TIER_NUMBER_(tier) TMK_TIER_NUMBER_##tier
#define TMK_TIER_NUMBER(tier) TMK_TIER_NUMBER_(tier)

TMK_TIER_OPEN
constexpr int this_tier = TMK_TIER_NUMBER(TMK_TIER);
constexpr bool is_baseline = this_tier == 0;
TMK_TIER_CLOSE
