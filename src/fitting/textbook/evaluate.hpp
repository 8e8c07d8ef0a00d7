// SPDX-License-Identifier: Apache-2.0
// Evaluation and integration of a spline, with their arguments checked. They throw statuses.
#pragma once

#include "fitting/textbook/outside.hpp"

namespace tmk::fitting::textbook {

constexpr int most_order = 15;

// The derivatives of ascending orders at each site, in the layout of an interpolation.
template <class Real>
void interpolate(const spline<Real>& s, outside_rules<Real> rules, const given_sites<Real>& sites,
                 std::span<const int32_t> orders, Real* result, int64_t layout,
                 const ThreadingService* threading);

// Integrals, function by function; limits outside the partition are those of the outermost polynomials.
template <class Real>
void integrate_inside(const spline<Real>& s, std::span<const Real> lo, bool lo_ascends,
                      std::span<const Real> hi, bool hi_ascends, Real* result,
                      const ThreadingService* threading);

}  // namespace tmk::fitting::textbook
