// SPDX-License-Identifier: Apache-2.0
// What the reference functions compute in: the x87 extended format, exact sums and products of it, and the
// last step of each of them: the rounding to the result's format, with the status that goes with it.
//
// Nothing is left to the SSE unit, whose controls are the caller's: it may treat subnormals as zero.
#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>

#include "platform/fp.hpp"
#include "tmk/abi/vtm.h"

namespace tmk::reference {

using extended = long double;
using extended_pair = value_pair<extended>;

// Hides the widening from the compiler, which would else compare and round to integers in the narrow format.
inline extended extend(std::floating_point auto a) {
  extended x = a;
  asm("" : "+t"(x));
  return x;
}

// Exact for 64-bit factors whose product and its error neither overflow nor underflow (Dekker); `low` is NaN
// where `high` is not finite.
inline extended_pair two_prod(extended a, extended b) {
  const auto halves = [](extended x) {
    const extended scaled = x * 0x100000001p0L;
    const extended upper = scaled - (scaled - x);
    return extended_pair{upper, x - upper};
  };
  const auto [a1, a0] = halves(a);
  const auto [b1, b0] = halves(b);
  const extended p = a * b;
  return {p, ((a1 * b1 - p) + a1 * b0 + a0 * b1) + a0 * b0};
}

// The neighbour of an inexact sum high + low whose last bit is set. Rounding it to a format at least two bits
// shorter rounds the sum itself, so that a result is as if it had been rounded once (round to odd).
inline extended round_to_odd(extended_pair sum) {
  uint64_t significand;
  std::memcpy(&significand, &sum.high, sizeof significand);
  const bool exact = !(sum.low < 0) && !(sum.low > 0);  // `low` is a NaN where `high` needs no rounding
  if (exact || (significand & 1) != 0) return sum.high;
  return nextafterl(sum.high, sum.low > 0 ? HUGE_VALL : -HUGE_VALL);
}

// How the magnitude of a function moves, which decides what a vanishing or infinite result is called.
enum growth : unsigned {
  plain = 0,
  shrinking = 1,                        // results that vanish have underflowed
  expanding = 2,                        // may pass even the extended range: infinity is a pole at zero alone
  exponential = shrinking | expanding,  // may fall below even the extended range: 0 is exact at zero alone
};

// Rounds a value of the function to the result and says what became of it. `first` and the others are the
// arguments it was computed from.
template <growth Growth, std::floating_point Real, class... Others>
int conclude(extended value, Real& r, extended first, Others... others) {
  r = static_cast<Real>(value);
  if (std::isnan(value)) {
    const bool inherited = std::isnan(first) || (std::isnan(others) || ...);
    return inherited ? VTM_STATUS_OK : VTM_STATUS_DOMAIN;
  }
  const bool finite = std::isfinite(first) && (std::isfinite(others) && ...);
  if (!finite) return VTM_STATUS_OK;

  const extended rounded = extend(r);
  const bool out_of_range = (Growth & expanding) != 0 && first != 0;
  if (std::isinf(rounded))
    return std::isinf(value) && !out_of_range ? VTM_STATUS_SINGULARITY : VTM_STATUS_OVERFLOW;
  if ((Growth & shrinking) == 0 || std::fabs(rounded) >= std::numeric_limits<Real>::min())
    return VTM_STATUS_OK;
  const bool vanished = value == 0 && out_of_range;
  return rounded != value || vanished ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
}

template <growth Growth = plain, std::floating_point Real>
int apply(extended (*function)(extended), Real a, Real& r) {
  const extended x = extend(a);
  return conclude<Growth>(function(x), r, x);
}

template <growth Growth = plain, std::floating_point Real>
int apply(extended (*function)(extended, extended), Real a, Real b, Real& r) {
  const extended x = extend(a), y = extend(b);
  return conclude<Growth>(function(x, y), r, x, y);
}

}  // namespace tmk::reference
