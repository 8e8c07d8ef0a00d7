/* SPDX-License-Identifier: Apache-2.0 */
/* Tiers: which kernels each has, which the processor can run, and which is in force. */
#include <string.h>

#include "platform/cpu.h"
#include "tmk/abi/serv.h"
#include "vector/registry/declarations.h"

typedef struct {
  VtmDispatchRecord* record;
  VtmDispatchRecord kernels;
} TierRow;

/* The rows whose kernels change with the tier. */
#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) TMK_ROW_##stage(letter##stem, slots, wide)
#define TMK_ROW(name, kernels) {&tmk_vtm_kernel_##name##_ttab, {kernels}},
#define TMK_ROW_scalar(name, slots, wide)

#define TMK_ROW_wide(name, slots, wide) TMK_ROW(name, TMK_SLOTS_PPP(name, ))
#define TMK_ROW_vectorized(name, slots, wide) TMK_ROW(name, TMK_SLOTS_##slots(name, W7))
static const TierRow rows_W7[] = {
#include "vector/registry/functions.def"
};
#undef TMK_ROW_wide
#undef TMK_ROW_vectorized

#define TMK_ROW_wide TMK_ROW_vectorized
#if TMK_HAS_WIDE_TIERS && !TMK_WITHOUT_V3
#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) TMK_ROW_##stage(letter##stem, slots, wide)
#define TMK_ROW_vectorized(name, slots, wide) TMK_ROW(name, TMK_SLOTS_##wide(name, V3))
static const TierRow rows_V3[] = {
#include "vector/registry/functions.def"
};
#undef TMK_ROW_vectorized
#endif

#if TMK_HAS_WIDE_TIERS
#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) TMK_ROW_##stage(letter##stem, slots, wide)
#define TMK_ROW_vectorized(name, slots, wide) TMK_ROW(name, TMK_SLOTS_##wide(name, V4))
static const TierRow rows_V4[] = {
#include "vector/registry/functions.def"
};
#endif

typedef struct {
  const char* name;
  const TierRow* rows;
  int32_t count;
} Tier;

#define TMK_TIER_ENTRY(tier) \
  { #tier, rows_##tier, sizeof rows_##tier / sizeof rows_##tier[0] }
static const Tier tiers[] = {
    TMK_TIER_ENTRY(W7),
#if TMK_HAS_WIDE_TIERS && !TMK_WITHOUT_V3
    TMK_TIER_ENTRY(V3),
#else
    {"V3", 0, 0},
#endif
#if TMK_HAS_WIDE_TIERS
    TMK_TIER_ENTRY(V4),
#else
    {"V4", 0, 0},
#endif
};
enum { tier_count = sizeof tiers / sizeof tiers[0] };

static int32_t current = TMK_TIER_W7;
static int32_t selected = 0;

/* The widest tier that TMK_TIER allows, or TMK_TIER_BAD_CAP. */
static int32_t environment_cap(void) {
  char text[8];
  int32_t tier;
  if (tmk_serv_getenv("TMK_TIER", text, sizeof text) == 0) return tier_count - 1;
  for (tier = 0; tier < tier_count; ++tier)
    if (strcmp(text, tiers[tier].name) == 0) return tier;
  return TMK_TIER_BAD_CAP;
}

static int32_t widest_up_to(int32_t tier) {
  while (tier > 0 && (tiers[tier].rows == 0 || !tmk_cpu_has_tier(tier))) --tier;
  return tier;
}

int32_t tmk_select_tier(int32_t tier) {
  const int32_t cap = environment_cap();
  int32_t widest, row;
  if (tier < 0 || tier > TMK_TIER_AUTO) return TMK_TIER_UNKNOWN;
  if (cap < 0) return cap;
  if (tier == TMK_TIER_AUTO && selected) return current;

  widest = widest_up_to(cap);
  if (tier >= tier_count) tier = widest;
  if (tier > widest || tier != widest_up_to(tier)) return TMK_TIER_UNAVAILABLE;
  for (row = 0; row < tiers[tier].count; ++row) *tiers[tier].rows[row].record = tiers[tier].rows[row].kernels;
  current = tier;
  selected = 1;
  return tier;
}

int32_t tmk_current_tier(void) { return current; }

const char* tmk_tier_name(int32_t tier) { return tier >= 0 && tier < tier_count ? tiers[tier].name : 0; }
