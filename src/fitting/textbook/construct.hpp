// SPDX-License-Identifier: Apache-2.0
// A spline that is to be made, with everything checked.
#pragma once

#include "fitting/textbook/families.hpp"
#include "fitting/textbook/functions.hpp"
#include "fitting/textbook/partition.hpp"

namespace tmk::fitting::textbook {

template <class Real>
struct end_condition {
  int32_t what;  // TMK_DF_END_...
  Real value;
};

template <class Real>
struct construction {
  int32_t family;
  partition<Real> over;
  function_values<Real> y;
  end_condition<Real> left, right;
  const function_values<Real>* derivatives = nullptr;  // where they are given
  const Real* knots = nullptr;                         // of a Subbotin spline, one more than points
  const ThreadingService* threading;
};

// Fills the coefficients, a row per function. Throws a status.
template <class Real>
void construct(const construction<Real>& c, Real* coefficients);

// The same by the family's constructor as it is, after setting the usual slopes.
template <class Real>
void call_constructor(const construction<Real>& c, Real* coefficients);

template <class Real>
size_t row_length(const construction<Real>& c) {
  const auto& f = family_of<Real>(c.family);
  return static_cast<size_t>(f.order) * (c.over.points - (f.type == DF_TYPE_SUBBOTIN ? 0 : 1));
}

}  // namespace tmk::fitting::textbook
