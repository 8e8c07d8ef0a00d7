// SPDX-License-Identifier: Apache-2.0
// Sites outside the partition: moved to a place where the kernels' result is of use, and then given the
// result of their side's rule.
#pragma once

#include <vector>

#include "fitting/textbook/spline.hpp"

namespace tmk::fitting::textbook {

// The rules of the left and the right side.
template <class Real>
using outside_rules = const typename types<Real>::rule*;

template <class Real>
constexpr typename types<Real>::rule polynomials[2] = {};

// The caller's rules, or polynomials. Throws a status for a rule that is incomplete.
template <class Real>
outside_rules<Real> rules_of(outside_rules<Real> outside);

// Sites of the caller's: an array, or the two ends of even ones.
template <class Real>
struct given_sites {
  const Real* values;
  size_t count;
  bool even;
};

// A site outside, whose results are made by a rule. NaN belongs to no side.
template <class Real>
struct stray_site {
  size_t index;
  Real site;
  const typename types<Real>::rule* rule;  // null for a NaN
  bool right;
  Real periods;  // that a periodic rule moved it by
};

template <class Real>
struct prepared_sites {
  std::span<const Real> values;  // the caller's, or own
  bool ascending;                // false where it was not looked for
  std::vector<stray_site<Real>> strays;
  std::vector<Real> own;
};

// What the answer to a call does by itself.
struct call_traits {
  bool nan_spreads;  // a NaN makes its results NaN
  bool order_helps;  // ascending sites are answered faster
};

// Moves strays to the end of the partition that they lie past, or whole periods into it.
template <class Real>
prepared_sites<Real> prepare(const spline<Real>& s, outside_rules<Real> rules, const given_sites<Real>& sites,
                             call_traits traits);

// Derivative `order` (-1: the integral from the end) of function f at a stray, from the kernels' result at
// the place it was moved to.
template <class Real>
Real outside_value(const spline<Real>& s, const stray_site<Real>& stray, size_t f, int order, Real at_place);

}  // namespace tmk::fitting::textbook
