// SPDX-License-Identifier: Apache-2.0
// Elements that the fast formulas of the logarithm family do not serve, on every tier. All tests are made on
// bits: neither flush control changes an answer.
#pragma once

#include <bit>
#include <type_traits>

#include "platform/fp.hpp"
#include "tmk/abi/vtm.h"

TMK_TIER_OPEN
namespace {

template <class Real>
constexpr Real log_of_zero = from_bits<Real>(format<Real>::sign | format<Real>::infinity);

// A logarithm in any base of any element. `formula(x, k)` gives log(x 2^k) for a positive normal x and
// an integer k: 0 for ordinary elements, and for a subnormal the exponent of its unit,
// with x its integer fraction.
template <class Real, class Formula>
int32_t log_rare(const Real* a, Real* r, Formula formula) {
  using integer = std::make_signed_t<typename format<Real>::bits>;
  const Real x = *a;
  const auto bits = to_bits(x);
  const bool negative = (bits & format<Real>::sign) != 0;
  if (magnitude_bits(x) == 0) {
    *r = log_of_zero<Real>;
    return VTM_STATUS_SINGULARITY;
  }
  if (negative && magnitude_bits(x) <= format<Real>::infinity) {
    *r = negative_nan<Real>;
    return VTM_STATUS_DOMAIN;
  }
  if (magnitude_bits(x) >= format<Real>::infinity) {
    *r = x + x;
  } else if (bits >> format<Real>::fraction_bits == 0) {
    constexpr int unit = 1 - format<Real>::bias - format<Real>::fraction_bits;
    *r = formula(static_cast<Real>(static_cast<integer>(bits)), unit);
  } else {
    *r = formula(x, 0);
  }
  return VTM_STATUS_OK;
}

// log(1 + x) of any element. `formula(x)` serves finite x > -1 with |x| >= 2^-25 (single), 2^-54 (double);
// below that log(1 + x) rounds to x.
template <class Real, class Formula>
int32_t log1p_rare(const Real* a, Real* r, Formula formula) {
  const Real x = *a;
  constexpr Real tiny = from_bits<Real>(
      static_cast<typename format<Real>::bits>(format<Real>::bias - format<Real>::precision - 1)
      << format<Real>::fraction_bits);
  constexpr auto minus_one = to_bits(Real(-1));
  if (magnitude_bits(x) > format<Real>::infinity || to_bits(x) == format<Real>::infinity) {
    *r = x + x;
  } else if (to_bits(x) == minus_one) {
    *r = log_of_zero<Real>;
    return VTM_STATUS_SINGULARITY;
  } else if (to_bits(x) > minus_one) {
    *r = negative_nan<Real>;
    return VTM_STATUS_DOMAIN;
  } else {
    *r = magnitude_bits(x) < to_bits(tiny) ? x : formula(x);
  }
  return VTM_STATUS_OK;
}

// The unbiased exponent of any element.
template <class Real>
int32_t logb_rare(const Real* a, Real* r) {
  const auto magnitude = magnitude_bits(*a);
  if (magnitude == 0) {
    *r = log_of_zero<Real>;
    return VTM_STATUS_SINGULARITY;
  }
  const int field = static_cast<int>(magnitude >> format<Real>::fraction_bits);
  if (magnitude >= format<Real>::infinity)
    *r = *a * *a;
  else if (field == 0)
    *r = static_cast<Real>(static_cast<int>(std::bit_width(magnitude)) - format<Real>::bias -
                           format<Real>::fraction_bits);
  else
    *r = static_cast<Real>(field - format<Real>::bias);
  return VTM_STATUS_OK;
}

}  // namespace
TMK_TIER_CLOSE
