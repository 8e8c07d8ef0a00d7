// SPDX-License-Identifier: Apache-2.0
// Splines to be made, and points and functions on their way to the constructors.
#pragma once

#include <algorithm>

#include "api/spline/families.hpp"

namespace tmk::detail {

// A spline to be made over a partition: y and the given derivatives, everything checked.
template <class Real>
struct construction {
  const char* function;
  family kind;
  partition<Real> over;
  function_set<Real> y;
  boundary left, right;
  const function_set<Real>* given = nullptr;
  const Real* knots = nullptr;  // of a Subbotin spline, one more than points
};

// Fills the coefficients, a row per function.
template <class Real>
void construct(const construction<Real>& c, Real* coefficients);

// The same by the family's constructor as it is; usual slopes are set.
template <class Real>
void call_constructor(const construction<Real>& c, Real* coefficients);

template <class Real>
std::size_t row_length(const construction<Real>& c) {
  const auto& f = family_of<Real>(c.kind);
  return static_cast<std::size_t>(f.order) * (c.over.points - (f.type == DF_TYPE_SUBBOTIN ? 0 : 1));
}

template <class Real>
Real point(const partition<Real>& p, std::size_t i) {
  if (!p.grid) return p.x[i];
  return p.x[0] + static_cast<Real>(i) * ((p.x[1] - p.x[0]) / static_cast<Real>(p.points - 1));
}

template <class Real>
partition<Real> given_points(const std::vector<Real>& x) {
  return {x.size(), x.data(), false};
}

template <class Real>
function_set<Real> rows_in(const std::vector<Real>& block, std::size_t functions) {
  const auto points = static_cast<std::ptrdiff_t>(block.size() / functions);
  return {block.data(), functions, block.size() / functions, points, 1};
}

// A copy by rows, in tiles, for one of the strides is long.
template <class Real>
std::vector<Real> by_rows(const function_set<Real>& y) {
  constexpr std::size_t tile = 64;
  std::vector<Real> block(y.functions * y.points);
  for (std::size_t first = 0; first < y.points; first += tile)
    for (std::size_t f = 0; f < y.functions; ++f)
      for (std::size_t i = first; i < std::min(first + tile, y.points); ++i)
        block[f * y.points + i] = y(f, i);
  return block;
}

}  // namespace tmk::detail
