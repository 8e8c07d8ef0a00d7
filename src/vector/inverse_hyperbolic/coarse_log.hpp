// SPDX-License-Identifier: Apache-2.0
// The logarithms of level EP: of a positive normal number, to half the bits.
#pragma once

#include "vector/logarithm/log_of_pair.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
batch<Real> coarse_log(const batch<Real>& x) {
#if TMK_TIER_NUMBER(TMK_TIER) == 0
  if constexpr (sizeof(Real) == 4)
    return coarse_ln(x, 0);
  else
    return log_for_single(x);
#else
  return log_of<Real, log_base::e, level::ep>(split_for_log(x));
#endif
}

}  // namespace
TMK_TIER_CLOSE
