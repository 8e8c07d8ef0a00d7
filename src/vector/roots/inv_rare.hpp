// SPDX-License-Identifier: Apache-2.0
// Elements that the fast formulas of the reciprocal family do not serve, on every tier.
#pragma once

#include <cmath>
#include <type_traits>

#include "platform/fp.hpp"
#include "tmk/abi/vtm.h"

TMK_TIER_OPEN
namespace {

template <class Real>
bool is_nan(Real x) {
  return magnitude_bits(x) > format<Real>::infinity;
}

template <class Real>
bool is_negative(Real x) {
  return (to_bits(x) & format<Real>::sign) != 0;
}

// A positive subnormal times 2^Exponent, from its integer fraction: no flush control reaches that.
template <int Exponent, class Real>
Real scaled_subnormal(Real x) {
  using bits = typename format<Real>::bits;
  constexpr int unit = 1 - format<Real>::bias - format<Real>::fraction_bits;
  constexpr Real scale =
      from_bits<Real>(static_cast<bits>(unit + Exponent + format<Real>::bias) << format<Real>::fraction_bits);
  return static_cast<Real>(static_cast<std::make_signed_t<bits>>(to_bits(x))) * scale;
}

// The quotient 1 / x, rounded once, whatever the flush controls say: arguments and results below the normal
// numbers go by their integer fractions. Single takes the quotient in double, whose 53 bits leave one
// rounding.
inline int32_t reciprocal_rare(const float* a, float* r) {
  const uint32_t magnitude = magnitude_bits(*a);
  if (magnitude == 0 || magnitude >= format<float>::infinity) {
    *r = 1.0f / *a;
    return magnitude == 0 ? VTM_STATUS_SINGULARITY : VTM_STATUS_OK;
  }
  const double x = magnitude < 0x00800000 ? magnitude * 0x1p-149 : double{from_bits<float>(magnitude)};
  const double quotient = 1 / x;
  constexpr double shifter = 0x1p52;  // its last place counts units
  const float y = quotient < 0x1p-126
                      ? from_bits<float>(static_cast<uint32_t>(to_bits(quotient * 0x1p149 + shifter)))
                      : static_cast<float>(quotient);
  *r = std::copysign(y, *a);
  return VTM_STATUS_OK;
}

// A double's reciprocal is no subnormal where the argument is one.
inline int32_t reciprocal_rare(const double* a, double* r) {
  const uint64_t magnitude = magnitude_bits(*a);
  if (magnitude == 0 || magnitude >= uint64_t{1} << format<double>::fraction_bits) {
    *r = 1.0 / *a;
    return magnitude == 0 ? VTM_STATUS_SINGULARITY : VTM_STATUS_OK;
  }
  // x = fraction 2^-1074
  *r = std::copysign(0x1p537 / static_cast<double>(magnitude) * 0x1p537, *a);
  return VTM_STATUS_OK;
}

// What sqrt and 1 / sqrt have in common: NaN and the domain. True when that settles the element.
template <class Real>
bool root_special(Real x, Real* r, int32_t* status) {
  *status = VTM_STATUS_OK;
  if (is_nan(x)) {
    *r = x + x;  // quiet; a product with 1 would be folded away
    return true;
  }
  if (is_negative(x) && magnitude_bits(x) != 0) {
    *r = negative_nan<Real>;
    *status = VTM_STATUS_DOMAIN;
    return true;
  }
  return false;
}

// sqrt(x) by a formula for normal numbers: a subnormal is scaled into range and the root back, both exactly.
template <class Real, class Formula>
int32_t sqrt_rare(const Real* a, Real* r, Formula formula) {
  constexpr int up = sizeof(Real) == 4 ? 26 : 54;
  constexpr Real down = sizeof(Real) == 4 ? Real(0x1p-13) : Real(0x1p-27);
  int32_t status;
  if (root_special(*a, r, &status)) return status;
  const auto bits = to_bits(*a);
  if (magnitude_bits(*a) == 0 || bits == format<Real>::infinity)
    *r = *a;
  else if (bits >> format<Real>::fraction_bits == 0)
    *r = formula(scaled_subnormal<up>(*a)) * down;
  else
    *r = formula(*a);
  return VTM_STATUS_OK;
}

// 1 / sqrt(x), likewise.
template <class Real, class Formula>
int32_t inv_sqrt_rare(const Real* a, Real* r, Formula formula) {
  constexpr int up = sizeof(Real) == 4 ? 126 : 54;
  constexpr Real down = sizeof(Real) == 4 ? Real(0x1p63) : Real(0x1p27);
  int32_t status;
  if (root_special(*a, r, &status)) return status;
  const auto bits = to_bits(*a);
  if (magnitude_bits(*a) == 0) {
    *r = from_bits<Real>(bits | format<Real>::infinity);
    return VTM_STATUS_SINGULARITY;
  }
  if (bits == format<Real>::infinity)
    *r = 0;
  else if (bits >> format<Real>::fraction_bits == 0)
    *r = formula(scaled_subnormal<up>(*a)) * down;
  else
    *r = formula(*a);
  return VTM_STATUS_OK;
}

}  // namespace
TMK_TIER_CLOSE
