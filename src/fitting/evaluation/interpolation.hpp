// SPDX-License-Identifier: Apache-2.0
// One call of an interpolation, as all blocks of its sites share it, and the evaluators by kind of spline.
#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

#include "fitting/evaluation/kinds.hpp"
#include "fitting/evaluation/regions.hpp"
#include "fitting/evaluation/results.hpp"
#include "fitting/evaluation/sites.hpp"

namespace tmk::fitting {

template <class Real>
using evaluation_hook = hook_of_region<std::conditional_t<sizeof(Real) == 8, DFdHook, DFsHook>>;

template <class Real>
struct interpolation {
  const task<Real>& spline;
  partition<Real> points;
  spline_kind kind;
  derivative_request request;
  result_layout layout;
  evaluation_hook<Real> hooks[regions];
};

// Sites of a block, at most site_block, and where their results go: those of site i into row `place[i]`
// from `result` on, or row i where place is null.
template <class Real>
struct sites_of_block {
  int count;
  const Real* sites;
  const int32_t* cells;
  Real* result;
  const int32_t* place;

  int row(int i) const { return place != nullptr ? place[i] : i; }
};

template <class Real>
using evaluator = int32_t (*)(const interpolation<Real>& call, const sites_of_block<Real>& block);

// By spline_kind; those with hooks call the hook of each site's region, and the plain ones where it has none.
template <class Real>
struct evaluators {
  using table = std::array<evaluator<Real>, spline_kinds>;
  static const table _Interpolate1D32Dispatch;
  static const table _Interpolate1D32DispatchCB;
};

}  // namespace tmk::fitting
