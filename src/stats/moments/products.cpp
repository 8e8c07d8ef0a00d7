// SPDX-License-Identifier: Apache-2.0
#include "stats/moments/products.hpp"

#include "linalg/blas.hpp"

namespace tmk::stats {
template <class Real>
void add_products(const observations_block<Real>& block, Real* c, bool alone) {
  const int p = static_cast<int>(block.p), count = static_cast<int>(block.count),
            stride = static_cast<int>(block.columns ? block.p : block.stride);
  const Real one = 1;
  (alone ? linalg::serial<Real>::syrk : linalg::threaded<Real>::syrk)(
      "U", block.columns ? "N" : "T", &p, &count, &one, block.x, &stride, &one, c, &p);
}

template <class Real>
void add_weighted_products(const observations_block<Real>& block, const Real* w, Real* scratch, Real* c) {
  const ptrdiff_t n = block.count;
  for (ptrdiff_t outer = 0; block.columns && outer < n; ++outer)
    for (ptrdiff_t j = 0; j < block.p; ++j)
      scratch[outer * block.p + j] = block.x[outer * block.p + j] * w[outer];
  for (ptrdiff_t outer = 0; !block.columns && outer < block.p; ++outer)
    for (ptrdiff_t i = 0; i < n; ++i) scratch[outer * n + i] = block.x[outer * block.stride + i] * w[i];
  const int p = static_cast<int>(block.p), count = static_cast<int>(n);
  const int stride = static_cast<int>(block.columns ? block.p : block.stride),
            own = block.columns ? p : count;
  const Real one = 1;
  linalg::serial<Real>::gemm(block.columns ? "N" : "T", block.columns ? "T" : "N", &p, &p, &count, &one,
                             block.x, &stride, scratch, &own, &one, c, &p);
}

template <class Real>
void add_outer_product(ptrdiff_t p, Real factor, const Real* m, Real* c, bool alone) {
  const int order = static_cast<int>(p), step = 1;
  (alone ? linalg::serial<Real>::syr : linalg::threaded<Real>::syr)("U", &order, &factor, m, &step, c,
                                                                    &order);
}

#define TMK_INSTANTIATE(Real)                                                                      \
  template void add_products(const observations_block<Real>&, Real*, bool);                        \
  template void add_weighted_products(const observations_block<Real>&, const Real*, Real*, Real*); \
  template void add_outer_product(ptrdiff_t, Real, const Real*, Real*, bool);
TMK_INSTANTIATE(double)
TMK_INSTANTIATE(float)
#undef TMK_INSTANTIATE

}  // namespace tmk::stats
