// SPDX-License-Identifier: Apache-2.0
// The sweep operator on a symmetric matrix (J. Schafer, Analysis of Incomplete Multivariate Data, 1997,
// section 5.2). Swept on the observed variables, theta has the regression of the missing ones: intercepts in
// row 0, coefficients in the rows of observed variables, the residual covariance in the rest.
//   g = a(k, k):  a(k, k) -> -1 / g,  a(j, k) -> sign a(j, k) / g,  a(i, j) -> a(i, j) - a(i, k) a(k, j) / g
// with sign 1 forward and -1 in reverse. The diagonal shows what is swept: a covariance is positive, and
// negative after the sweep.
#pragma once

#include "stats/missing/model.hpp"
#include "stats/missing/patterns.hpp"

namespace tmk::stats::missing {

template <class Real>
void sweep(square<Real>& a, ptrdiff_t k, Real sign) {
  Real* const pivot_row = a[k];
  const Real g = pivot_row[k];
  for (ptrdiff_t i = 0; i < a.order; ++i) {
    if (i == k) continue;
    Real* const row = a[i];
    const Real factor = row[k] / g;
    for (ptrdiff_t j = 0; j < a.order; ++j) row[j] -= factor * pivot_row[j];
    row[k] = sign * factor;
  }
  for (ptrdiff_t j = 0; j < a.order; ++j) pivot_row[j] *= sign / g;
  pivot_row[k] = -1 / g;
}

// A model, swept on the observed variables of one pattern after the other.
template <class Real>
class swept_model {
 public:
  explicit swept_model(ptrdiff_t p) : swept_(p) {}

  void begin(const square<Real>& theta) {
    swept_ = theta;
    patterns_left_ = fresh_after;
  }

  const square<Real>& at(const square<Real>& theta, const uint64_t* pattern) {
    // Each sweep there and back leaves its roundings.
    if (patterns_left_-- == 0) begin(theta);
    for (ptrdiff_t j = 1; j < swept_.order; ++j) {
      const Real diagonal = swept_[j][j];
      if (has_variable(pattern, j - 1)) {
        if (diagonal > 0) sweep(swept_, j, Real{1});
      } else if (diagonal < 0) {
        sweep(swept_, j, Real{-1});
      }
    }
    return swept_;
  }

 private:
  static constexpr int fresh_after = 256;
  square<Real> swept_;
  int patterns_left_ = 0;
};

}  // namespace tmk::stats::missing
