// SPDX-License-Identifier: Apache-2.0
// Sites as piece and distance from its base: what cells mean to each kind of piecewise polynomial.
#pragma once

#include <algorithm>
#include <cstdint>

#include "fitting/evaluation/evaluation_kernels.hpp"
#include "fitting/evaluation/kinds.hpp"
#include "fitting/subbotin_knots.hpp"

namespace tmk::fitting {

// Sites of a block in their pieces, padded to whole registers of any tier.
template <class Real>
struct located_sites {
  alignas(64) int32_t piece[site_block];
  alignas(64) Real distance[site_block];

  void pad(int count) {
    constexpr int widest = 16;
    for (int i = count; i % widest != 0; ++i) {
      piece[i] = 0;
      distance[i] = 0;
    }
  }
};

// A cell outside the partition takes the nearest polynomial, so that the ends are extrapolated; cells of a
// caller's hook that are outside every range do so, too. A Subbotin spline has its pieces around the points:
// the kernel gets piece + 1 for a cell.
template <class Real>
void locate(const task<Real>& t, const partition<Real>& points, spline_kind kind, int count,
            const Real* sites, const int32_t* cells, located_sites<Real>& at) {
  const bool subbotin = kind == spline_kind::subbotin;
  if (subbotin) {
    const auto knots = subbotin_knots_of(t);
    for (int i = 0; i < count; ++i) at.piece[i] = static_cast<int32_t>(knots.piece(cells[i], sites[i])) + 1;
    cells = at.piece;
  }
  const auto last = static_cast<int32_t>(t.nx) - (subbotin ? 1 : 2);
  const auto& kernels = evaluation_kernels_now<Real>();
  if (points.given != nullptr)
    kernels.locate_given(sites, cells, count, last, points.given, at.piece, at.distance);
  else
    kernels.locate_uniform(sites, cells, count, last, points.first, points.step, at.piece, at.distance);
}

constexpr int spline_order(spline_kind kind) {
  return kind == spline_kind::linear ? 2 : kind == spline_kind::cubic ? 4 : 3;
}

}  // namespace tmk::fitting
