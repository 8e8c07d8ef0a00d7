// SPDX-License-Identifier: Apache-2.0
// What a file of kernels includes: descriptions, their walks, and the line that makes a family's kernels.
//
//   TMK_KERNELS(s, Sin, unary, LHE, sine)
//
// repeats the row of functions.def, and names the template of the family's descriptions: sine<Real, level>,
// sine<level> or sine<Real>. Each letter but P becomes a kernel of this tier, so that
//   L: tmk_vtm_kernel_sSin_V3LAynn is sine<float, level::la>, H: ..._V3HAynn, E: ..._V3EPnnn.
#pragma once

#include "vector/registry/shapes.h"
#include "vector/toolbox/polynomial.hpp"
#include "vector/walk/walk.hpp"

#define TMK_KERNEL_NAME_(letter, stem, tier, tag) tmk_vtm_kernel_##letter##stem##_##tier##tag
#define TMK_KERNEL_NAME(letter, stem, tier, tag) TMK_KERNEL_NAME_(letter, stem, tier, tag)

// The arrays that a shape reads and those that it writes, then its scalars.
#define TMK_ARRAYS_unary \
  tmk::pack{a}, tmk::pack { r }
#define TMK_ARRAYS_real_result TMK_ARRAYS_unary
#define TMK_ARRAYS_real_argument TMK_ARRAYS_unary
#define TMK_ARRAYS_binary \
  tmk::pack{a, b}, tmk::pack { r }
#define TMK_ARRAYS_two_results \
  tmk::pack{a}, tmk::pack { r1, r2 }
#define TMK_ARRAYS_scalar_exponent tmk::pack{a}, tmk::pack{r}, b
#define TMK_ARRAYS_linear_fraction tmk::pack{a, b}, tmk::pack{r}, scalea, shifta, scaleb, shiftb

#define TMK_DEFINE_KERNEL(kernel_name, letter, stem, shape, Level, ...)                      \
  extern "C" void kernel_name TMK_ROW_KERNEL_PARAMETERS(letter, shape) {                     \
    using namespace tmk;                                                                     \
    using kernel = decltype(family_member<__VA_ARGS__, TMK_REAL_##letter, Level>());         \
    run<kernel>("v" #letter #stem, tmk_vtm_reference_##letter##stem, n, TMK_ARRAYS_##shape); \
  }

#define TMK_KERNELS(letter, stem, shape, slots, ...)                                               \
  extern "C" int32_t tmk_vtm_reference_##letter##stem TMK_ROW_REFERENCE_PARAMETERS(letter, shape); \
  TMK_KERNELS_##slots(letter, stem, shape, __VA_ARGS__)

#define TMK_KERNELS_LA(letter, stem, shape, ...)                                                         \
  TMK_DEFINE_KERNEL(TMK_KERNEL_NAME(letter, stem, TMK_TIER, LAynn), letter, stem, shape, tmk::level::la, \
                    __VA_ARGS__)
#define TMK_KERNELS_HA(letter, stem, shape, ...)                                                         \
  TMK_DEFINE_KERNEL(TMK_KERNEL_NAME(letter, stem, TMK_TIER, HAynn), letter, stem, shape, tmk::level::ha, \
                    __VA_ARGS__)
#define TMK_KERNELS_EP(letter, stem, shape, ...)                                                         \
  TMK_DEFINE_KERNEL(TMK_KERNEL_NAME(letter, stem, TMK_TIER, EPnnn), letter, stem, shape, tmk::level::ep, \
                    __VA_ARGS__)
#define TMK_KERNELS_HHH TMK_KERNELS_HA
#define TMK_KERNELS_PPE TMK_KERNELS_EP
#define TMK_KERNELS_LPL TMK_KERNELS_LA
#define TMK_KERNELS_LHL(...) TMK_KERNELS_LA(__VA_ARGS__) TMK_KERNELS_HA(__VA_ARGS__)
#define TMK_KERNELS_HHE(...) TMK_KERNELS_HA(__VA_ARGS__) TMK_KERNELS_EP(__VA_ARGS__)
#define TMK_KERNELS_LHE(...) TMK_KERNELS_LHL(__VA_ARGS__) TMK_KERNELS_EP(__VA_ARGS__)

// One line for both precisions of a real function.
#define TMK_REAL_KERNELS(stem, shape, slots, ...) \
  TMK_KERNELS(s, stem, shape, slots, __VA_ARGS__) \
  TMK_KERNELS(d, stem, shape, slots, __VA_ARGS__)
