// SPDX-License-Identifier: Apache-2.0
// The toolbox of every tier for toolbox_test.cpp: toolbox.tier.cpp is compiled with each tier's flags. All
// functions work on one register of values.
#pragma once

#include "platform/by_tier.hpp"
#include "platform/fp.hpp"

namespace tmk {

template <class Real>
struct toolbox_kernels {
  using bits = typename format<Real>::bits;
  using operation = void (*)(const Real* x_high, const Real* x_low, const Real* y_high, const Real* y_low,
                             Real* high, Real* low);
  int lanes;
  operation pairs[10];  // in the order of the test's rows
  Real (*multiply_add)(Real x, Real y, Real z);
  void (*deinterleave)(const Real* x, Real* even_odd);
  void (*interleave)(const Real* even_odd, Real* x);
  // Of 4, 8, 16 and 32 entries: by the last bits of x, the leading parts of these, and by the fraction's
  // first bits.
  void (*look_up[4])(const Real* entries, const bits* x, Real* entry, Real* leading, Real* by_fraction);
  Real (*polynomial[8])(Real x,
                        const Real* coefficients);  // of 1 to 8 coefficients, the last one from c[1] on
};

TMK_DECLARE_TIER_KERNEL_PAIR(toolbox)

}  // namespace tmk
