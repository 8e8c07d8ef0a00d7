// SPDX-License-Identifier: Apache-2.0
// Values in the order of the sorts.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "stats/quantiles/sketch.hpp"
#include "tmk/abi/tpp.h"

namespace tmk::stats {

// The order of the radix sorts as signed integers: -0.0 below +0.0, NaNs outside all numbers by their sign.
// The map is its own inverse.
template <class Real>
using key = std::conditional_t<sizeof(Real) == 8, int64_t, int32_t>;

template <class Real>
key<Real> fold_sign(key<Real> k) {
  return k ^ ((k >> (8 * sizeof(Real) - 1)) & std::numeric_limits<key<Real>>::max());
}

template <class Real>
key<Real> key_of(Real x) {
  return fold_sign<Real>(std::bit_cast<key<Real>>(x));
}

template <class Real>
Real value_of(key<Real> k) {
  return std::bit_cast<Real>(fold_sign<Real>(k));
}

inline void sort(double* values, double* workspace, int32_t n) {
  tmk_dft_t4_tppsSortRadixAscend_64f_I(values, workspace, n);
}
inline void sort(float* values, float* workspace, int32_t n) {
  tmk_dft_t4_tppsSortRadixAscend_32f_I(values, workspace, n);
}

}  // namespace tmk::stats
