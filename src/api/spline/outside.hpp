// SPDX-License-Identifier: Apache-2.0
// Sites and limits as the C interface gets them, and what it does not answer: those outside the partition.
#pragma once

#include "api/spline/core.hpp"

namespace tmk::detail {

template <class Real>
using outside_rules = std::array<outside_rule<Real>, 2>;

// A site outside whose results the rule of its side makes; NaN has no side.
template <class Real>
struct stray_site {
  std::size_t index;
  Real site;
  const outside_rule<Real>* rule;  // null for a NaN
  bool right;
  Real periods;  // that a periodic rule moved it by
};

template <class Real>
struct prepared_sites {
  std::span<const Real> values;  // the caller's, or own
  bool ascending;                // or not looked for
  std::vector<stray_site<Real>> strays;
  std::vector<Real> own;
};

// What the answer to a call does by itself.
struct call_traits {
  bool nan_spreads;  // a NaN makes its results NaN
  bool order_helps;  // ascending sites are answered faster
};

// Moves strays to a place where the kernels' result is defined and of use to the rule: the end they lie
// beyond, or the place whole periods away.
template <class Real>
prepared_sites<Real> prepare(const spline_core<Real>& core, const outside_rules<Real>& rules,
                             const abscissae<Real>& sites, call_traits traits);

// Derivative `order` (-1: the integral from the end) of function f at a stray; `at_place` is that at the
// place it was moved to.
template <class Real>
Real outside_value(const spline_core<Real>& core, const stray_site<Real>& s, std::size_t f, int order,
                   Real at_place);

}  // namespace tmk::detail
