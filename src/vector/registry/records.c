/* SPDX-License-Identifier: Apache-2.0 */
/* The dispatch records and the cost records, one of each per function.
 * The dispatch records are writable: tiers.c and a layer above may put other kernels into their slots. */
#include "vector/registry/declarations.h"

#define TMK_RECORD_scalar(name, slots) TMK_SLOTS_PPP(name, )
#define TMK_RECORD_wide TMK_RECORD_scalar
#define TMK_RECORD_vectorized(name, slots) TMK_SLOTS_##slots(name, W7)

#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) \
  VtmDispatchRecord tmk_vtm_kernel_##letter##stem##_ttab = {TMK_RECORD_##stage(letter##stem, slots)};
#include "vector/registry/functions.def"

#define TMK_COST(name, la, ha, ep) const VtmCostRecord tmk_vtm_kernel_##name##_ctab = {{la, ha, ep}};
#include "vector/registry/costs.inc"
