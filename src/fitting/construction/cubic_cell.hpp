// SPDX-License-Identifier: Apache-2.0
// The coefficients of one cell of a cubic.
#pragma once

#include "platform/tier.hpp"

namespace tmk::fitting {
inline namespace TMK_TIER {

// c[0..3] in powers of t - x[i] by the derivatives at the ends of the cell; `slope` is the divided
// difference, `rate` the reciprocal width. Value is a number or a register of them.
template <class Value>
[[gnu::always_inline]] inline void cubic_cell(const Value& y, const Value& left, const Value& right,
                                              const Value& slope, const Value& rate, Value (&c)[4]) {
  const Value bend = (left - slope) + (right - slope);
  c[0] = y;
  c[1] = left;
  c[2] = ((slope - left) - bend) * rate;
  c[3] = bend * rate * rate;
}

}  // namespace TMK_TIER
}  // namespace tmk::fitting
