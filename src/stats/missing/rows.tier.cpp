// SPDX-License-Identifier: Apache-2.0
// With y the row whose holes hold half of their values, value a times y goes to row holes[a]: products of a
// hole and an observed variable are then there once, and those of two holes half here and half in the other's
// row.
#include "stats/missing/rows.hpp"

#include "simd/batch.hpp"

namespace tmk::stats::missing {
inline namespace TMK_TIER {
namespace {

template <class Real>
Real dot(ptrdiff_t width, const Real* a, const Real* b) {
  batch<Real> sum(Real{0});
  for (ptrdiff_t l = 0; l < width; l += lanes<Real>) sum = xsimd::fma(load(a + l), load(b + l), sum);
  return xsimd::hadd(sum);
}

template <class Real>
void products(const row_block<Real>& b, const Real* matrix, Real* values) {
  const Real* row = b.rows;
  for (ptrdiff_t i = 0; i < b.count; ++i, row += b.width)
    for (ptrdiff_t a = 0; a < b.k; ++a) *values++ = dot(b.width, matrix + b.holes[a] * b.width, row);
}

template <class Real>
void accumulate(const row_block<Real>& b, const Real* values, Real* half) {
  const Real* row = b.rows;
  for (ptrdiff_t i = 0; i < b.count; ++i, row += b.width, values += b.k)
    for (ptrdiff_t a = 0; a < b.k; ++a) {
      Real* const to = half + b.holes[a] * b.width;
      const batch<Real> value(values[a]);
      for (ptrdiff_t l = 0; l < b.width; l += lanes<Real>)
        store(to + l, xsimd::fma(value, load(row + l), load(to + l)));
      for (ptrdiff_t c = 0; c < b.k; ++c) to[b.holes[c]] += values[a] * values[c] / 2;
    }
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(row_doubles) = {products<double>, accumulate<double>};
TMK_DEFINE_TIER_KERNELS(row_singles) = {products<float>, accumulate<float>};

}  // namespace tmk::stats::missing
