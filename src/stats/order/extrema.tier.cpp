// SPDX-License-Identifier: Apache-2.0
// Running minima and maxima. The values come first in each operation: the processor's minimum and maximum
// then give the running one where a value is NaN, as the comparisons of the scalar tail do.
#include "simd/batch.hpp"
#include "stats/order/minmax.hpp"

namespace tmk::stats {
inline namespace TMK_TIER {
namespace {

template <class Real>
void fold(const Real* x, ptrdiff_t periods, ptrdiff_t step, int length, Real* low, Real* high) {
  constexpr int width = lanes<Real>;
  for (ptrdiff_t i = 0; i < periods; ++i, x += step) {
    int j = 0;
    for (; j <= length - width; j += width) {
      const batch<Real> v = load(x + j);
      store(low + j, xsimd::min(v, load(low + j)));
      store(high + j, xsimd::max(v, load(high + j)));
    }
    for (; j < length; ++j) {
      if (x[j] < low[j]) low[j] = x[j];
      if (x[j] > high[j]) high[j] = x[j];
    }
  }
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(extrema_doubles) = {{fold<double>}};
TMK_DEFINE_TIER_KERNELS(extrema_singles) = {{fold<float>}};

}  // namespace tmk::stats
