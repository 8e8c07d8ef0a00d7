// SPDX-License-Identifier: Apache-2.0
// The shapes of the logarithm tables. For an interval of the mantissa m, a reciprocal r of its center, and
// log(1 / r) in two parts: log(m) = high + low + log(1 + t) with t = m r - 1.
#pragma once

namespace tmk {

template <class Real>
struct alignas(4 * sizeof(Real)) log_row {
  Real reciprocal, high, low;
};

// log(2) in two parts: its multiples by an exponent, taken of the first, are exact.
template <class Real>
struct log_unit {
  Real high, low;
};

struct alignas(2 * sizeof(double)) log_parts {
  double high, low;
};

}  // namespace tmk
