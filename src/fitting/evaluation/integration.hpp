// SPDX-License-Identifier: Apache-2.0
// One call of an integration, as all blocks of its limits share it, and the integrators by kind of spline.
//
// Between limits in pieces a and b the integral is
//   F(b, r - base[b]) - F(a, l - base[a]) + V[a] + ... + V[b-1],   V[k] from base[k] to base[k+1],
// F the antiderivative of a piece that vanishes at its base; with a > b the V have the other sign. The sum
// over V is a loop, or the difference of two running sums.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "fitting/evaluation/kinds.hpp"
#include "fitting/evaluation/regions.hpp"
#include "platform/fp.hpp"

namespace tmk::fitting {

template <class Real>
using integration_hook =
    hook_of_region<std::conditional_t<sizeof(Real) == 8, DFdIntegrationHook, DFsIntegrationHook>>;

// V[0] + ... + V[k-1] of a function in entry k, as a sum of two numbers: over long spans the difference of
// two entries keeps all digits that adding up the span would have.
template <class Real>
using running_sum = value_pair<Real>;

template <class Real>
struct integration {
  const task<Real>& spline;
  partition<Real> points;
  spline_kind kind;
  ptrdiff_t function_stride, pair_stride;
  integration_hook<Real> hooks[regions];
  // The functions that are being integrated, and their running sums one after the other; null where spans are
  // added up.
  ptrdiff_t first_function, end_function;
  running_sum<Real>* sums;

  ptrdiff_t entries() const { return static_cast<ptrdiff_t>(points.nx) + 1; }
};

// Pairs of limits, at most site_block. Integrals are added to what is in the result, those of pair i in
// row `place[i]`, or i where place is null.
template <class Real>
struct pairs_of_block {
  int count;
  const Real *left, *right;
  const int32_t *left_cells, *right_cells;
  Real* result;
  const int32_t* place;

  int row(int i) const { return place != nullptr ? place[i] : i; }
};

template <class Real>
using integrator = int32_t (*)(const integration<Real>& call, const pairs_of_block<Real>& block);

// By spline_kind up to step_right; those with hooks call the hook of each region that a pair reaches into,
// and the plain ones where it has none.
constexpr int integrable_kinds = 7;
template <class Real>
struct integrators {
  using table = std::array<integrator<Real>, integrable_kinds>;
  static const table _Integrate1DDispatch;
  static const table _Integrate1DDispatchCB;
  // Fills the running sums of one function.
  static void add_up(const integration<Real>& call, ptrdiff_t function);
};

}  // namespace tmk::fitting
