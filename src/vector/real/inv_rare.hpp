// Elements that the fast formulas of the reciprocal family do not serve, on every tier.
#pragma once

#include <cmath>

#include "platform/fp.hpp"
#include "tmk/abi/vtm.h"

TMK_TIER_OPEN
namespace {

template <class Real>
constexpr Real negative_nan = from_bits<Real>(format<Real>::sign | format<Real>::quiet_nan);

template <class Real>
bool is_nan(Real x) {
  return magnitude_bits(x) > format<Real>::infinity;
}

template <class Real>
bool is_negative(Real x) {
  return (to_bits(x) & format<Real>::sign) != 0;
}

// An exact quotient 1 / x whatever the flush controls say. Single: the x87 quotient, whose 64 bits leave one
// rounding. Double: a subnormal is scaled up by its integer fraction first; its reciprocal is never
// subnormal.
inline int32_t reciprocal_rare(const float* a, float* r) {
  *r = static_cast<float>(1.0L / *a);
  return magnitude_bits(*a) == 0 ? VTM_STATUS_SINGULARITY : VTM_STATUS_OK;
}

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
  constexpr Real up = sizeof(Real) == 4 ? Real(0x1p26) : Real(0x1p54);
  constexpr Real down = sizeof(Real) == 4 ? Real(0x1p-13) : Real(0x1p-27);
  int32_t status;
  if (root_special(*a, r, &status)) return status;
  const auto bits = to_bits(*a);
  if (magnitude_bits(*a) == 0 || bits == format<Real>::infinity)
    *r = *a;
  else if (bits >> format<Real>::fraction_bits == 0)
    *r = formula(*a * up) * down;
  else
    *r = formula(*a);
  return VTM_STATUS_OK;
}

// 1 / sqrt(x), likewise.
template <class Real, class Formula>
int32_t inv_sqrt_rare(const Real* a, Real* r, Formula formula) {
  constexpr Real up = sizeof(Real) == 4 ? Real(0x1p126) : Real(0x1p54);
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
    *r = formula(*a * up) * down;
  else
    *r = formula(*a);
  return VTM_STATUS_OK;
}

}  // namespace
TMK_TIER_CLOSE
