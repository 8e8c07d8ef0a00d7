// SPDX-License-Identifier: Apache-2.0
// Pairs of the C interface: one thing for double, its counterpart for float.
#pragma once

#include <type_traits>

namespace tmk {

template <class Real, class Double, class Single>
constexpr auto by_precision(Double for_double, Single for_single) {
  if constexpr (std::is_same_v<Real, double>)
    return for_double;
  else
    return for_single;
}

}  // namespace tmk
