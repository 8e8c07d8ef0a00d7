// SPDX-License-Identifier: Apache-2.0
// A task as construction and evaluation read it: its functions whatever their layout, and a uniform partition
// as numbers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fitting/task.hpp"

namespace tmk::fitting {

template <class Real>
ptrdiff_t points(const task<Real>& t) {
  return static_cast<ptrdiff_t>(t.nx);
}

// A task without functions counts as one with one.
template <class Real>
ptrdiff_t functions(const task<Real>& t) {
  return std::max<ptrdiff_t>(static_cast<ptrdiff_t>(t.ny), 1);
}

// The values of one function at the points.
template <class Real>
struct samples {
  const Real* first;
  ptrdiff_t stride;

  Real operator[](ptrdiff_t i) const { return first[i * stride]; }
};

template <class Real>
samples<Real> function_of(const task<Real>& t, ptrdiff_t j) {
  return t.columns() ? samples<Real>{t.y_rows[0] + j, functions(t)} : samples<Real>{t.y_rows[j], 1};
}

// Whether a function ends where it began; a NaN does not.
template <class Real>
bool closes(const samples<Real>& y, ptrdiff_t nx) {
  return y[0] == y[nx - 1];
}

template <class Real>
bool all_close(const task<Real>& t) {
  for (ptrdiff_t j = 0; j < functions(t); ++j)
    if (!closes(function_of(t, j), points(t))) return false;
  return true;
}

// A uniform partition is its two ends and as many steps as there are cells.
template <class Real>
Real uniform_step(const task<Real>& t) {
  return (t.x[1] - t.x[0]) / static_cast<Real>(t.nx - 1);
}
template <class Real>
Real uniform_rate(const task<Real>& t) {
  return static_cast<Real>(t.nx - 1) / (t.x[1] - t.x[0]);
}

// Whether one of the first `count` pointers is null, or all of them are missing.
template <class Real>
bool any_missing(Real* const* pointers, ptrdiff_t count) {
  return pointers == nullptr || std::find(pointers, pointers + count, nullptr) != pointers + count;
}

}  // namespace tmk::fitting
