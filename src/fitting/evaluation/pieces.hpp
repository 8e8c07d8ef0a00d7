// Sites as piece and distance from its base: what cells mean to each kind of piecewise polynomial.
#pragma once

#include <algorithm>
#include <cstdint>

#include "fitting/construction/subbotin.hpp"
#include "fitting/evaluation/kinds.hpp"
#include "fitting/evaluation/loops.hpp"

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

// A cell outside the partition takes the nearest polynomial, so that ends are carried on; cells of a caller's
// hook that are outside every range do so, too.
template <class Real>
void pieces_of_cells(const task<Real>& t, bool subbotin, int count, const Real* sites, const int32_t* cells,
                     int32_t* piece) {
  if (subbotin) {
    const auto knots = subbotin_knots_of(t);
    for (int i = 0; i < count; ++i) piece[i] = static_cast<int32_t>(knots.piece(cells[i], sites[i]));
  } else {
    const auto last = static_cast<int32_t>(t.nx - 2);
    for (int i = 0; i < count; ++i) piece[i] = std::clamp(cells[i] - 1, 0, last);
  }
}

template <class Real>
void locate(const task<Real>& t, const partition<Real>& points, spline_kind kind, int count,
            const Real* sites, const int32_t* cells, located_sites<Real>& located) {
  pieces_of_cells(t, kind == spline_kind::subbotin, count, sites, cells, located.piece);
  located.pad(count);
  const auto& loops = evaluation_now<Real>();
  if (points.given != nullptr)
    loops.from_given(sites, located.piece, count, points.given, located.distance);
  else
    loops.from_uniform(sites, located.piece, count, points.first, points.step, located.distance);
}

constexpr int spline_order(spline_kind kind) {
  return kind == spline_kind::linear ? 2 : kind == spline_kind::cubic ? 4 : 3;
}

}  // namespace tmk::fitting
