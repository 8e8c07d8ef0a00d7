// SPDX-License-Identifier: Apache-2.0
// The real functions in extended precision, one overload set per stem of functions.def:
//   int Stem(Real a, [Real b,] Real& r, [Real& r2])  for float and double
// stores the value rounded once and returns its status. They serve where no faster kernel exists, and as what
// the kernels are checked against. The largest errors measured: 0.50001 ulp in single, 0.502 in double
// (TGamma). They require exceptions masked and the x87 unit at 64 bits, rounding to nearest.
#pragma once

#include "vector/reference/real/arithmetic.hpp"
#include "vector/reference/real/exponentials.hpp"
#include "vector/reference/real/powers.hpp"
#include "vector/reference/real/special.hpp"
#include "vector/reference/real/trigonometric.hpp"
