// SPDX-License-Identifier: Apache-2.0
// Antiderivatives of many pieces.
//   F(d) = d (c0 + d (c1/2 + d (c2/3 + d c3/4)))
#include "fitting/evaluation/integration_kernels.hpp"
#include "simd/rows.hpp"

namespace tmk::fitting {
inline namespace TMK_TIER {
namespace {

template <int Order, class Real>
batch<Real> antiderivative(const Real* rows, const int32_t* pieces, const Real* distances) {
  batch<Real> c[Order];
  load_columns(rows, pieces, c);
  const batch<Real> d = load(distances);
  batch<Real> sum = c[Order - 1] * batch<Real>(Real(1) / Order);
#pragma GCC unroll 4
  for (int power = Order - 2; power > 0; --power)
    sum = xsimd::fma(sum, d, c[power] * batch<Real>(Real(1) / Real(power + 1)));
  return xsimd::fma(sum, d, c[0]) * d;
}

template <class Real, int Order>
void differences(const Real* rows, const int32_t* left_pieces, const Real* left_distances,
                 const int32_t* right_pieces, const Real* right_distances, int count, Real* out) {
  for (int i = 0; i < count; i += lanes<Real>)
    store(out + i, antiderivative<Order>(rows, right_pieces + i, right_distances + i) -
                       antiderivative<Order>(rows, left_pieces + i, left_distances + i));
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(integration_doubles) = {
    {differences<double, 2>, differences<double, 3>, differences<double, 4>}};
TMK_DEFINE_TIER_KERNELS(integration_singles) = {
    {differences<float, 2>, differences<float, 3>, differences<float, 4>}};

}  // namespace tmk::fitting
