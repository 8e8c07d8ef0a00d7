/* SPDX-License-Identifier: Apache-2.0 */
/* Declares every kernel that functions.def names. For C, where the address of a function in the
 * initialiser of a static record is a constant whatever its type. */
#ifndef TMK_VECTOR_REGISTRY_DECLARATIONS_H
#define TMK_VECTOR_REGISTRY_DECLARATIONS_H

#include "tmk/abi/vtm.h"
#include "vector/registry/shapes.h"

#define TMK_KERNEL(letter, stem, tag, shape) \
  void tmk_vtm_kernel_##letter##stem##_##tag TMK_ROW_KERNEL_PARAMETERS(letter, shape);

#define TMK_LEVELS(letter, stem, shape, tier)  \
  TMK_KERNEL(letter, stem, tier##LAynn, shape) \
  TMK_KERNEL(letter, stem, tier##HAynn, shape) \
  TMK_KERNEL(letter, stem, tier##EPnnn, shape)

#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) \
  TMK_KERNEL(letter, stem, PXHAynn, shape)                    \
  TMK_LEVELS(letter, stem, shape, W7)                         \
  TMK_LEVELS(letter, stem, shape, V3)                         \
  TMK_LEVELS(letter, stem, shape, V4)
#include "vector/registry/functions.def"

/* The kernels of a row's three slots in one tier, as initialisers: L, H, E are the tier's own, P the generic.
 */
#define TMK_ADDRESS(name, tag) (VtmKernel) tmk_vtm_kernel_##name##_##tag
#define TMK_SLOTS_HHH(name, tier) \
  { TMK_ADDRESS(name, tier##HAynn), TMK_ADDRESS(name, tier##HAynn), TMK_ADDRESS(name, tier##HAynn) }
#define TMK_SLOTS_HHE(name, tier) \
  { TMK_ADDRESS(name, tier##HAynn), TMK_ADDRESS(name, tier##HAynn), TMK_ADDRESS(name, tier##EPnnn) }
#define TMK_SLOTS_LHE(name, tier) \
  { TMK_ADDRESS(name, tier##LAynn), TMK_ADDRESS(name, tier##HAynn), TMK_ADDRESS(name, tier##EPnnn) }
#define TMK_SLOTS_LHL(name, tier) \
  { TMK_ADDRESS(name, tier##LAynn), TMK_ADDRESS(name, tier##HAynn), TMK_ADDRESS(name, tier##LAynn) }
#define TMK_SLOTS_PPP(name, tier) \
  { TMK_ADDRESS(name, PXHAynn), TMK_ADDRESS(name, PXHAynn), TMK_ADDRESS(name, PXHAynn) }
#define TMK_SLOTS_PPE(name, tier) \
  { TMK_ADDRESS(name, PXHAynn), TMK_ADDRESS(name, PXHAynn), TMK_ADDRESS(name, tier##EPnnn) }
#define TMK_SLOTS_LPL(name, tier) \
  { TMK_ADDRESS(name, tier##LAynn), TMK_ADDRESS(name, PXHAynn), TMK_ADDRESS(name, tier##LAynn) }

#endif
