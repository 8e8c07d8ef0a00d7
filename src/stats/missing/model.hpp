// SPDX-License-Identifier: Apache-2.0
// A normal model and sums of products, both as symmetric matrices of order p + 1, by rows of `width`
// elements. Row and column 0 belong to the constant 1, so that means and intercepts need no formulas of their
// own:
//   theta   (0, 0) = -1   (0, j) = mean of variable j          (i, j) = covariance
//   sums    (0, 0) = n    (0, j) = sum over observations       (i, j) = sum of products
// A row of data is (1, x_1, ..., x_p), filled with zeros to the width, with zeros where a value is missing.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace tmk::stats::missing {

// Whole registers of any tier.
template <class Real>
constexpr ptrdiff_t row_width(ptrdiff_t p) {
  constexpr auto most_lanes = static_cast<ptrdiff_t>(64 / sizeof(Real));
  return (p + most_lanes) / most_lanes * most_lanes;
}

template <class Real>
struct square {
  ptrdiff_t order, width;
  std::vector<Real> values;

  explicit square(ptrdiff_t p)
      : order(p + 1), width(row_width<Real>(p)), values(static_cast<size_t>(order * width)) {}
  Real* operator[](ptrdiff_t i) { return values.data() + i * width; }
  const Real* operator[](ptrdiff_t i) const { return values.data() + i * width; }
  ptrdiff_t p() const { return order - 1; }
  void clear() { std::fill(values.begin(), values.end(), Real{0}); }
};

// Mean 0 and unit covariance.
template <class Real>
square<Real> standard_model(ptrdiff_t p) {
  square<Real> theta(p);
  theta[0][0] = -1;
  for (ptrdiff_t j = 1; j <= p; ++j) theta[j][j] = 1;
  return theta;
}

constexpr ptrdiff_t packed_size(ptrdiff_t p) { return p * (p + 3) / 2; }

// Means, then the lower triangle by rows.
template <class Real, class To>
void pack_model(const square<Real>& theta, To* packed) {
  for (ptrdiff_t j = 1; j <= theta.p(); ++j) *packed++ = theta[0][j];
  for (ptrdiff_t i = 1; i <= theta.p(); ++i)
    for (ptrdiff_t j = 1; j <= i; ++j) *packed++ = theta[i][j];
}

template <class Real>
void unpack_model(const Real* packed, square<Real>& theta) {
  theta[0][0] = -1;
  for (ptrdiff_t j = 1; j <= theta.p(); ++j) theta[0][j] = theta[j][0] = *packed++;
  for (ptrdiff_t i = 1; i <= theta.p(); ++i)
    for (ptrdiff_t j = 1; j <= i; ++j) theta[i][j] = theta[j][i] = *packed++;
}

// The likeliest model of complete data: mean = S(0, j) / n, covariance = S(i, j) / n - mean mean'.
template <class Real>
void maximise(const square<Real>& sums, square<Real>& theta) {
  const Real n = sums[0][0];
  theta[0][0] = -1;
  for (ptrdiff_t j = 1; j <= theta.p(); ++j) theta[0][j] = theta[j][0] = sums[0][j] / n;
  for (ptrdiff_t i = 1; i <= theta.p(); ++i)
    for (ptrdiff_t j = 1; j <= i; ++j) theta[i][j] = theta[j][i] = sums[i][j] / n - theta[0][i] * theta[0][j];
}

// NaN where an element is.
template <class Real>
Real largest_difference(const square<Real>& a, const square<Real>& b) {
  Real largest = 0;
  for (ptrdiff_t i = 0; i < a.order; ++i)
    for (ptrdiff_t j = std::max<ptrdiff_t>(i, 1); j < a.order; ++j) {
      const Real d = std::fabs(a[i][j] - b[i][j]);
      if (!(d <= largest)) largest = d;
      if (std::isnan(largest)) return largest;
    }
  return largest;
}

}  // namespace tmk::stats::missing
