// SPDX-License-Identifier: Apache-2.0
// Values of several functions at the same points.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tmk::fitting::textbook {

// Function f at point i is data[f function_stride + i point_stride].
template <class Real>
struct function_values {
  const Real* data;
  size_t functions, points;
  ptrdiff_t function_stride, point_stride;

  Real operator()(size_t f, size_t i) const {
    return data[static_cast<ptrdiff_t>(f) * function_stride + static_cast<ptrdiff_t>(i) * point_stride];
  }
};

template <class Real>
function_values<Real> rows_in(const std::vector<Real>& block, size_t functions) {
  const size_t points = block.size() / functions;
  return {block.data(), functions, points, static_cast<ptrdiff_t>(points), 1};
}

// A copy by rows, in tiles, since one of the strides is long.
template <class Real>
std::vector<Real> by_rows(const function_values<Real>& y) {
  constexpr size_t tile = 64;
  std::vector<Real> block(y.functions * y.points);
  for (size_t first = 0; first < y.points; first += tile)
    for (size_t f = 0; f < y.functions; ++f)
      for (size_t i = first; i < std::min(first + tile, y.points); ++i) block[f * y.points + i] = y(f, i);
  return block;
}

}  // namespace tmk::fitting::textbook
