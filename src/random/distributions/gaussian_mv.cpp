// SPDX-License-Identifier: Apache-2.0
// Normal vectors: a + T z, T lower triangular, z one sequence of standard normal variates. Blocks of vectors
// that stay in the second cache are drawn where they are wanted and multiplied there.
#include <algorithm>
#include <cmath>
#include <cstddef>

#include "platform/scratch.hpp"
#include "random/distributions/triangular_product.hpp"
#include "tmk/abi/vts.h"

namespace {
using namespace tmk::rng;

enum storage : int32_t { storage_full, storage_packed, storage_diagonal };

constexpr int32_t methods = 4;
constexpr ptrdiff_t block_elements = 32768;

template <class Real>
using gaussian_draw = int32_t (*)(int32_t, VtsStreamHandle, int32_t, Real*, Real, Real);

template <class Real>
bool are_finite(const Real* x, ptrdiff_t n) {
  return std::all_of(x, x + n, [](Real v) { return std::isfinite(v); });
}

// T's elements that count, by rows: all of them finite.
template <class Real>
bool is_finite_factor(const Real* t, ptrdiff_t order, int32_t storage) {
  if (storage == storage_diagonal) return are_finite(t, order);
  if (storage == storage_packed) return are_finite(t, order * (order + 1) / 2);
  for (ptrdiff_t i = 0; i < order; ++i)
    if (!are_finite(t + i * order, i + 1)) return false;
  return true;
}

// Parts of 2^30: method 0 drops no variate at an even number.
template <class Real>
int32_t draw(gaussian_draw<Real> gaussian, int32_t method, VtsStreamHandle stream, ptrdiff_t n, Real* r) {
  constexpr ptrdiff_t most = 1 << 30;
  int32_t status = VTS_STATUS_OK;
  for (ptrdiff_t count; n > 0 && status >= 0; n -= count, r += count) {
    count = std::min(n, most);
    status = gaussian(method, stream, static_cast<int32_t>(count), r, 0, 1);
  }
  return status;
}

template <class Real>
void scale_components(ptrdiff_t order, ptrdiff_t vectors, const Real* t, const Real* a, Real* z) {
  for (Real* const end = z + vectors * order; z != end; z += order)
    for (ptrdiff_t j = 0; j < order; ++j) z[j] = t[j] * z[j] + a[j];
}

template <class Real>
int32_t gaussian_mv(gaussian_draw<Real> gaussian, int32_t method, VtsStreamHandle stream, int32_t n, Real* r,
                    int32_t dimen, int32_t storage, const Real* a, const Real* t) {
  if (method < 0 || method >= methods) return VTS_STATUS_BAD_METHOD;
  const ptrdiff_t order = dimen;
  if (storage < storage_full || storage > storage_diagonal || order < 1 || a == nullptr || t == nullptr ||
      !are_finite(a, order) || !is_finite_factor(t, order, storage))
    return VTS_STATUS_BAD_ARGUMENT;
  if (n <= 0) return VTS_STATUS_OK;
  const auto& kernels = triangular_kernels_now<Real>();
  const bool diagonal = storage == storage_diagonal;
  const tmk::scratch<Real> packed(diagonal ? 1 : static_cast<size_t>(kernels.packed_size(order)));
  if (!packed) return VTS_STATUS_NO_MEMORY;
  if (!diagonal) kernels.pack(order, t, storage == storage_packed, packed.get());
  const ptrdiff_t most = std::max<ptrdiff_t>(2, block_elements / order & -2);
  int32_t status = VTS_STATUS_OK;
  for (ptrdiff_t left = n, vectors; left > 0; left -= vectors, r += vectors * order) {
    vectors = std::min(left, most);
    status = draw(gaussian, method, stream, vectors * order, r);
    if (status < 0) return status;
    diagonal ? scale_components(order, vectors, t, a, r)
             : kernels.multiply(order, vectors, packed.get(), a, r);
  }
  return status;
}

}  // namespace

extern "C" {

int32_t _vtsdRngGaussianMV(int32_t method, VtsStreamHandle stream, int32_t n, double* r, int32_t dimen,
                           int32_t storage, const double* a, const double* t) {
  return gaussian_mv(&_vtsdRngGaussian, method, stream, n, r, dimen, storage, a, t);
}
int32_t _vtssRngGaussianMV(int32_t method, VtsStreamHandle stream, int32_t n, float* r, int32_t dimen,
                           int32_t storage, const float* a, const float* t) {
  return gaussian_mv(&_vtssRngGaussian, method, stream, n, r, dimen, storage, a, t);
}
int32_t tmk_vtsdRngGaussianMV(int32_t method, VtsStreamHandle stream, int32_t n, double* r, int32_t dimen,
                              int32_t storage, const double* a, const double* t) {
  return gaussian_mv(&tmk_vtsdRngGaussian, method, stream, n, r, dimen, storage, a, t);
}
int32_t tmk_vtssRngGaussianMV(int32_t method, VtsStreamHandle stream, int32_t n, float* r, int32_t dimen,
                              int32_t storage, const float* a, const float* t) {
  return gaussian_mv(&tmk_vtssRngGaussian, method, stream, n, r, dimen, storage, a, t);
}
}
