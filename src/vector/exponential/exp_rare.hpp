// SPDX-License-Identifier: Apache-2.0
// Elements that the fast formulas of the exponential family do not serve, on every tier: which case an
// argument is, what it returns and its status. Values between the limits come from two formulas of the
// caller:
//   ordinary(x)  the kernel's own formula: an element that fast() serves gets the same bits here
//   extreme(x)   where the exponent is at the format's ends: near overflow, and subnormal results
#pragma once

#include "platform/fp.hpp"
#include "tmk/abi/vtm.h"

TMK_TIER_OPEN
namespace {

// Limits of a growing exponential, in the order of the axis. All four belong to the case they name.
template <class Real>
struct exponential_limits {
  Real zero;       // at or below: 0, underflow
  Real subnormal;  // at or below: extreme(), underflow although the result is not zero
  Real large;      // at or above: extreme()
  Real overflow;   // at or above: infinity, overflow
};

template <class Real>
constexpr exponential_limits<Real> exp_limits{};
template <>
constexpr exponential_limits<float> exp_limits<float>{-0x1.9d1da2p+6f, -0x1.5d58a0p+6f, 0x1.5d58a0p+6f,
                                                      0x1.62e430p+6f};
template <>
constexpr exponential_limits<double> exp_limits<double>{-0x1.74910d52d3052p+9, -0x1.6232bdd7abcd3p+9,
                                                        0x1.62e37e7d8ba72p+9, 0x1.62e42fefa39f0p+9};

// 2^x: half of the least subnormal rounds to zero. Everything below the least normal number reports, exact
// powers as well.
template <class Real>
constexpr exponential_limits<Real> exp2_limits{};
template <>
constexpr exponential_limits<float> exp2_limits<float>{-150.0f, -0x1.f80002p+6f, 0x1.fcp+6f, 128.0f};
template <>
constexpr exponential_limits<double> exp2_limits<double>{-1075.0, -0x1.ff00000000001p+9, 0x1.ff8p+9, 1024.0};

// 10^x: log10 of half the least subnormal, of the least normal number, and of infinity's rounding border.
template <class Real>
constexpr exponential_limits<Real> exp10_limits{};
template <>
constexpr exponential_limits<float> exp10_limits<float>{-0x1.693c6cp+5f, -0x1.2f7032p+5f, 0x1.2f703p+5f,
                                                        0x1.344136p+5f};
template <>
constexpr exponential_limits<double> exp10_limits<double>{-0x1.439b746e36b53p+8, -0x1.33a7146f72a42p+8,
                                                          0x1.33f424bcb522cp+8, 0x1.34413509f79ffp+8};

// NaN and the infinities: true when that settles the element.
template <class Real>
bool exponential_special(Real x, Real at_minus_infinity, Real* r) {
  if (magnitude_bits(x) < format<Real>::infinity) return false;
  const bool minus_infinity = to_bits(x) == (format<Real>::sign | format<Real>::infinity);
  *r = minus_infinity ? at_minus_infinity : x + x;
  return true;
}

// Past the format's ends: the product that raises the processor's flags as well.
template <class Real>
int32_t exponential_overflow(Real* r) {
  const volatile Real huge = from_bits<Real>(format<Real>::infinity - 1);
  *r = huge * huge;
  return VTM_STATUS_OVERFLOW;
}

template <class Real>
int32_t exponential_underflow(Real* r) {
  const volatile Real tiny = from_bits<Real>(typename format<Real>::bits{1} << format<Real>::fraction_bits);
  *r = tiny * tiny;
  return VTM_STATUS_UNDERFLOW;
}

template <class Real, class Ordinary, class Extreme>
int32_t exponential_rare(const exponential_limits<Real>& limits, const Real* a, Real* r, Ordinary ordinary,
                         Extreme extreme) {
  const Real x = *a;
  if (exponential_special(x, Real(0), r)) return VTM_STATUS_OK;
  if (x >= limits.overflow) return exponential_overflow(r);
  if (x <= limits.zero) return exponential_underflow(r);
  if (x <= limits.subnormal) {
    *r = extreme(x);
    return VTM_STATUS_UNDERFLOW;
  }
  *r = x >= limits.large ? extreme(x) : ordinary(x);
  return VTM_STATUS_OK;
}

template <class Real, class Ordinary, class Extreme>
int32_t exp_rare(const Real* a, Real* r, Ordinary ordinary, Extreme extreme) {
  return exponential_rare(exp_limits<Real>, a, r, ordinary, extreme);
}

template <class Real, class Ordinary, class Extreme>
int32_t exp2_rare(const Real* a, Real* r, Ordinary ordinary, Extreme extreme) {
  return exponential_rare(exp2_limits<Real>, a, r, ordinary, extreme);
}

template <class Real, class Ordinary, class Extreme>
int32_t exp10_rare(const Real* a, Real* r, Ordinary ordinary, Extreme extreme) {
  return exponential_rare(exp10_limits<Real>, a, r, ordinary, extreme);
}

// e^x - 1: no argument is too small, for x itself is the answer there (and keeps the sign of zero); on the
// negative side the result ends at -1 without a status. extreme() serves the last step below overflow only.
template <class Real, class Ordinary, class Extreme>
int32_t expm1_rare(const Real* a, Real* r, Ordinary ordinary, Extreme extreme) {
  constexpr Real tiny = sizeof(Real) == 4 ? Real(0x1p-25) : Real(0x1p-54);
  constexpr Real minus_one = sizeof(Real) == 4 ? Real(-0x1.154246p+4) : Real(-0x1.2b708872320e2p+5);
  const Real x = *a;
  if (exponential_special(x, Real(-1), r)) return VTM_STATUS_OK;
  if (x >= exp_limits<Real>.overflow) return exponential_overflow(r);
  if (x <= minus_one)
    *r = Real(-1);
  else if (x < tiny && x > -tiny)
    *r = x;
  else
    *r = x >= exp_limits<Real>.large ? extreme(x) : ordinary(x);
  return VTM_STATUS_OK;
}

}  // namespace
TMK_TIER_CLOSE
