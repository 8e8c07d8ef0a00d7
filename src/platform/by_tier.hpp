// SPDX-License-Identifier: Apache-2.0
// Hot loops exist once per tier: a table of functions that a file in a folder loops/ fills for its tier.
//   struct mt19937_loops { void (*twist)(uint32_t* mt); };    in a header
//   TMK_DECLARE_LOOPS(mt19937_loops)              behind it; mt19937_loops_now() is in force
//   TMK_DEFINE_LOOPS(mt19937_loops) = {twist};    in the file that is compiled per tier
// A template search_loops<Real> has twins: TMK_DECLARE_TWIN_LOOPS(search) behind it declares search_doubles
// and search_singles, to be defined each, and search_loops_now<Real>().
#pragma once

#include "platform/tier.hpp"
#include "tmk/abi/vtm.h"

#if TMK_WITHOUT_V3
#define TMK_DECLARE_LOOPS(table)                                        \
  extern "C" const tmk::table table##_W7, table##_V4;                   \
  inline const tmk::table& table##_now() {                              \
    return tmk_current_tier() == TMK_TIER_V4 ? table##_V4 : table##_W7; \
  }
#elif defined(__x86_64__)
#define TMK_DECLARE_LOOPS(table)                                                          \
  extern "C" const tmk::table table##_W7, table##_V3, table##_V4;                         \
  inline const tmk::table& table##_now() {                                                \
    static constexpr const tmk::table* tiers[] = {&table##_W7, &table##_V3, &table##_V4}; \
    return *tiers[tmk_current_tier()];                                                    \
  }
#else
#define TMK_DECLARE_LOOPS(table)          \
  extern "C" const tmk::table table##_W7; \
  inline const tmk::table& table##_now() { return table##_W7; }
#endif

#define TMK_DECLARE_TWIN_LOOPS(name)               \
  namespace tmk {                                  \
  struct name##_doubles : name##_loops<double> {}; \
  struct name##_singles : name##_loops<float> {};  \
  }                                                \
  TMK_DECLARE_LOOPS(name##_doubles)                \
  TMK_DECLARE_LOOPS(name##_singles)                \
  namespace tmk {                                  \
  template <class Real>                            \
  const name##_loops<Real>& name##_loops_now() {   \
    if constexpr (sizeof(Real) == sizeof(double))  \
      return name##_doubles_now();                 \
    else                                           \
      return name##_singles_now();                 \
  }                                                \
  }

#define TMK_LOOPS_NAME_(table, tier) table##_##tier
#define TMK_LOOPS_NAME(table, tier) TMK_LOOPS_NAME_(table, tier)
#define TMK_DEFINE_LOOPS(table) extern "C" const tmk::table TMK_LOOPS_NAME(table, TMK_TIER)
