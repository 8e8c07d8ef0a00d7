// SPDX-License-Identifier: Apache-2.0
// Partitions and sites, each given by an array or by the two ends of even points.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tmk::fitting::textbook {

template <class Real>
struct partition {
  size_t points;
  const Real* x;  // the points, or the two ends of an even partition
  bool even;

  Real point(size_t i) const {
    if (!even) return x[i];
    return x[0] + static_cast<Real>(i) * ((x[1] - x[0]) / static_cast<Real>(points - 1));
  }
};

// `count` even points; the last one is exactly the end.
template <class Real>
std::vector<Real> expand(Real first, Real last, size_t count);

// Whether no point is farther than even_within of a step from its place in an even partition.
template <class Real>
bool evenly_spaced(std::span<const Real> x);

// Whether sites ascend, and whether all of them are in [first, last]. Without `need_inside` the pass over
// sites that do not ascend ends early, and `inside` is false.
struct site_order {
  bool ascending, inside;
};
template <class Real>
site_order order_of(std::span<const Real> sites, Real first, Real last, bool need_inside);

}  // namespace tmk::fitting::textbook
