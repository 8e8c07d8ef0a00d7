// SPDX-License-Identifier: Apache-2.0
// Cross-products of a block of observations by BLAS, and of single vectors. Symmetric matrices are p by p
// with the elements (i, j), j <= i, of row i kept: the upper triangle of BLAS, whose matrices go by columns.
#pragma once

#include <cstddef>

namespace tmk::stats {

// A block of observations: in rows layout variables are `stride` apart, in columns layout observations are p
// apart. Counts and stride are below 2^31.
template <class Real>
struct observations_block {
  bool columns;
  ptrdiff_t count, p, stride;
  const Real* x;
};

// c += X' X, in the calling thread alone or with all of BLAS's threads.
template <class Real>
void add_products(const observations_block<Real>& block, Real* c, bool alone);

// c += X' diag(w) X for weights of any sign. `scratch` takes count p reals. The other triangle of c is used
// as well.
template <class Real>
void add_weighted_products(const observations_block<Real>& block, const Real* w, Real* scratch, Real* c);

// c += factor m m'.
template <class Real>
void add_outer_product(ptrdiff_t p, Real factor, const Real* m, Real* c, bool alone);

}  // namespace tmk::stats
