// SPDX-License-Identifier: Apache-2.0
// Elements that a shortcut() settles without computing.
#pragma once

#include <cmath>
#include <limits>
#include <optional>

#include "platform/fp.hpp"
#include "tmk/abi/vtm.h"

TMK_TIER_OPEN
namespace {

// Outside of the domain.
template <class Real>
int32_t undefined(Real* r) {
  *r = negative_nan<Real>;
  return VTM_STATUS_DOMAIN;
}

// Infinity with the sign of x: a pole, an overflow, or a limit.
template <class Real>
int32_t infinite(Real x, int32_t status, Real* r) {
  *r = std::copysign(std::numeric_limits<Real>::infinity(), x);
  return status;
}

}  // namespace
TMK_TIER_CLOSE
