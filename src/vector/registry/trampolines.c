/* SPDX-License-Identifier: Apache-2.0 */
/* The 928 entry points. Each jumps through its slot of the function's record and decides nothing itself. */
#include "tmk/abi/vtm.h"
#include "vector/registry/shapes.h"

#define TMK_ENTRY(entry, letter, stem, shape, slot)                                    \
  void entry TMK_ROW_PARAMETERS(letter, shape) {                                       \
    typedef void(*kernel) TMK_ROW_KERNEL_PARAMETERS(letter, shape);                    \
    ((kernel)tmk_vtm_kernel_##letter##stem##_ttab.kernel[slot]) TMK_ARGUMENTS_##shape; \
  }

#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage)                                        \
  TMK_ENTRY(_vtm##letter##stem, letter, stem, shape, TMK_SLOT_HA)                                    \
  TMK_ENTRY(_vtm##letter##stem##_HA, letter, stem, shape, TMK_SLOT_HA)                               \
  TMK_ENTRY(TMK_JOIN(_vtm##letter##stem##_, TMK_LA_BITS_##letter), letter, stem, shape, TMK_SLOT_LA) \
  TMK_ENTRY(TMK_JOIN(_vtm##letter##stem##_, TMK_EP_BITS_##letter), letter, stem, shape, TMK_SLOT_EP)
#include "vector/registry/functions.def"
