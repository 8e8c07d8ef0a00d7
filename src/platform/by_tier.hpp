// SPDX-License-Identifier: Apache-2.0
// Kernels that exist once per tier: a table of functions, defined in a file x.tier.cpp for each tier.
//   struct mt19937_kernels { void (*words)(...); };       in a header, in the service's namespace
//   TMK_DECLARE_TIER_KERNELS(mt19937_kernels)             after it: mt19937_kernels_now() is the table of the
//                                                         tier in use
//   TMK_DEFINE_TIER_KERNELS(mt19937_kernels) = {words};   in x.tier.cpp, in the same namespace
// A template search_kernels<Real> has a table for each precision: TMK_DECLARE_TIER_KERNEL_PAIR(search) after
// it declares search_doubles and search_singles, each to be defined, and search_kernels_now<Real>().
#pragma once

#include "platform/tier.hpp"
#include "tmk/abi/vtm.h"

#if TMK_WITHOUT_V3
#define TMK_DECLARE_TIER_KERNELS(table)          \
  extern "C" const table table##_W7, table##_V4; \
  inline const table& table##_now() { return tmk_current_tier() == TMK_TIER_V4 ? table##_V4 : table##_W7; }
#elif defined(__x86_64__)
#define TMK_DECLARE_TIER_KERNELS(table)                                              \
  extern "C" const table table##_W7, table##_V3, table##_V4;                         \
  inline const table& table##_now() {                                                \
    static constexpr const table* tiers[] = {&table##_W7, &table##_V3, &table##_V4}; \
    return *tiers[tmk_current_tier()];                                               \
  }
#else
#define TMK_DECLARE_TIER_KERNELS(table) \
  extern "C" const table table##_W7;    \
  inline const table& table##_now() { return table##_W7; }
#endif

#define TMK_DECLARE_TIER_KERNEL_PAIR(name)           \
  struct name##_doubles : name##_kernels<double> {}; \
  struct name##_singles : name##_kernels<float> {};  \
  TMK_DECLARE_TIER_KERNELS(name##_doubles)           \
  TMK_DECLARE_TIER_KERNELS(name##_singles)           \
  template <class Real>                              \
  const name##_kernels<Real>& name##_kernels_now() { \
    if constexpr (sizeof(Real) == sizeof(double))    \
      return name##_doubles_now();                   \
    else                                             \
      return name##_singles_now();                   \
  }

#define TMK_TIER_KERNELS_NAME_(table, tier) table##_##tier
#define TMK_TIER_KERNELS_NAME(table, tier) TMK_TIER_KERNELS_NAME_(table, tier)
#define TMK_DEFINE_TIER_KERNELS(table) extern "C" const table TMK_TIER_KERNELS_NAME(table, TMK_TIER)
