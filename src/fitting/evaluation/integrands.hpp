// SPDX-License-Identifier: Apache-2.0
// What integrators need of a kind of spline: limits in pieces, differences of antiderivatives, and the V of
// `count` cells from `first` on.
#pragma once

#include <algorithm>

#include "fitting/evaluation/integration.hpp"
#include "fitting/evaluation/integration_kernels.hpp"
#include "fitting/evaluation/pieces.hpp"

namespace tmk::fitting {

template <class Real, spline_kind Kind>
struct polynomials {
  const integration<Real>& call;

  void locate(int count, const Real* limits, const int32_t* cells, located_sites<Real>& at) const {
    fitting::locate(call.spline, call.points, Kind, count, limits, cells, at);
  }
  void differences(ptrdiff_t function, const located_sites<Real>& left, const located_sites<Real>& right,
                   int count, Real* out) const {
    integration_kernels_now<Real>().antiderivatives[spline_order(Kind) - 2](
        call.spline.coeff_rows[function], left.piece, left.distance, right.piece, right.distance, count, out);
  }
  void cells(ptrdiff_t function, int64_t first, int count, Real* out) const {
    const auto& x = call.points;
    located_sites<Real> left, right;
    for (int i = 0; i < count; ++i) {
      const int64_t k = first + i;
      left.piece[i] = right.piece[i] = static_cast<int32_t>(k);
      left.distance[i] = 0;
      right.distance[i] = x.given != nullptr ? x[k + 1] - x[k] : x.step;
      if constexpr (Kind == spline_kind::subbotin) {
        const Real knot = subbotin_knots_of(call.spline)[k + 1];
        left.piece[i] = static_cast<int32_t>(k + 1);
        left.distance[i] = knot - x[k + 1];
        right.distance[i] = knot - x[k];
      }
    }
    left.pad(count);
    right.pad(count);
    differences(function, left, right, count, out);
  }
};

// Piece k is the cell k of a search, which for k = 0 and nx lies outside; the first two have the same base.
template <class Real, spline_kind Kind>
struct steps {
  const integration<Real>& call;

  Real height(const samples<Real>& y, int64_t k) const {
    const int64_t point = Kind == spline_kind::step_left ? k : k - 1;
    return y[static_cast<ptrdiff_t>(std::clamp<int64_t>(point, 0, call.points.nx - 1))];
  }
  void locate(int count, const Real* limits, const int32_t* cells, located_sites<Real>& at) const {
    const int64_t nx = call.points.nx;
    for (int i = 0; i < count; ++i) {
      at.piece[i] = static_cast<int32_t>(std::clamp<int64_t>(cells[i], 0, nx));
      const int64_t base = std::max(at.piece[i] - 1, 0);
      at.distance[i] = limits[i] - (base == nx - 1 ? call.points.last : call.points[base]);
    }
  }
  void differences(ptrdiff_t function, const located_sites<Real>& left, const located_sites<Real>& right,
                   int count, Real* out) const {
    const auto y = function_of(call.spline, function);
    for (int i = 0; i < count; ++i)
      out[i] = height(y, right.piece[i]) * right.distance[i] - height(y, left.piece[i]) * left.distance[i];
  }
  void cells(ptrdiff_t function, int64_t first, int count, Real* out) const {
    const auto y = function_of(call.spline, function);
    const auto& x = call.points;
    for (int i = 0; i < count; ++i) {
      const int64_t k = first + i;
      out[i] = k == 0 ? Real(0) : height(y, k) * (x.given != nullptr ? x[k] - x[k - 1] : x.step);
    }
  }
};

}  // namespace tmk::fitting
