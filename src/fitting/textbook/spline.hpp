// SPDX-License-Identifier: Apache-2.0
// A spline as C callers hold it. It owns what its task points to, and never changes.
#pragma once

#include <memory>
#include <vector>

#include "fitting/textbook/task.hpp"
#include "tmk/abi/df_textbook.h"

namespace tmk::fitting::textbook {

template <class Real>
struct spline {
  size_t points = 0, functions = 0, order = 0, row = 0;
  Real first = 0, last = 0;
  std::vector<Real> x, knots, y;  // y: of a step function alone, which has no coefficients
  std::unique_ptr<Real[]> coefficients;
  owned_task<Real> task;
  bool even = false;  // a cell follows from the place of a site in proportion
};

template <class Real>
struct types;  // of the C interface
template <>
struct types<double> {
  using spline = DFdSpline;
  using points = DFdPoints;
  using rule = DFdRule;
};
template <>
struct types<float> {
  using spline = DFsSpline;
  using points = DFsPoints;
  using rule = DFsRule;
};

constexpr int64_t site_hint(bool ascending) { return ascending ? DF_SITES_SORTED : DF_SITES_UNKNOWN; }

}  // namespace tmk::fitting::textbook

struct DFdSpline : tmk::fitting::textbook::spline<double> {};
struct DFsSpline : tmk::fitting::textbook::spline<float> {};
