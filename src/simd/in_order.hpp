// SPDX-License-Identifier: Apache-2.0
// Sums and products whose first operand stays the first, which says which of two NaNs is the result.
#pragma once

#include "simd/types.hpp"

TMK_TIER_OPEN

// The compiler takes sums and products for commutative.
#if TMK_TIER_NUMBER(TMK_TIER) == 0
#define TMK_IN_ORDER(name, instruction, type)           \
  inline type name(const type& x, const type& y) {      \
    type::register_type r = x;                          \
    asm(instruction " %1, %0" : "+x"(r) : "x"(y.data)); \
    return type(r);                                     \
  }
#else
#define TMK_IN_ORDER(name, instruction, type)                                \
  inline type name(const type& x, const type& y) {                           \
    type::register_type r;                                                   \
    asm("v" instruction " %2, %1, %0" : "=v"(r) : "v"(x.data), "v"(y.data)); \
    return type(r);                                                          \
  }
#endif
TMK_IN_ORDER(add_in_order, "addps", f32)
TMK_IN_ORDER(add_in_order, "addpd", f64)
TMK_IN_ORDER(multiply_in_order, "mulps", f32)
TMK_IN_ORDER(multiply_in_order, "mulpd", f64)
#undef TMK_IN_ORDER

TMK_TIER_CLOSE
