// SPDX-License-Identifier: Apache-2.0
// Rows of T in blocks of a few registers, column after column, zeros above the diagonal: a column times one
// component of each of several vectors. The last block is first, since results replace the components that
// blocks above it no longer read.
#include "random/distributions/triangular_product.hpp"

#include <algorithm>

#include "simd/batch.hpp"
#include "simd/partial.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

constexpr int most_registers = 4, vectors_together = 4;

template <class Real>
constexpr ptrdiff_t block_rows = most_registers* lanes<Real>;

// Registers of the block that begins at a row.
template <class Real>
int registers_of(ptrdiff_t order, ptrdiff_t first) {
  const ptrdiff_t rows = std::min(order - first, block_rows<Real>);
  return static_cast<int>((rows + lanes<Real> - 1) / lanes<Real>);
}

template <class Real>
ptrdiff_t packed_size(ptrdiff_t order) {
  ptrdiff_t size = 0;
  for (ptrdiff_t first = 0; first < order; first += block_rows<Real>)
    size += std::min(order, first + block_rows<Real>) * registers_of<Real>(order, first) * lanes<Real>;
  return size;
}

template <class Real>
void pack(ptrdiff_t order, const Real* t, bool short_rows, Real* packed) {
  for (ptrdiff_t first = 0; first < order; first += block_rows<Real>) {
    const ptrdiff_t columns = std::min(order, first + block_rows<Real>);
    const ptrdiff_t rows = registers_of<Real>(order, first) * lanes<Real>;
    for (ptrdiff_t j = 0; j < columns; ++j)
      for (ptrdiff_t i = first; i < first + rows; ++i)
        *packed++ = i < order && j <= i ? t[(short_rows ? i * (i + 1) / 2 : i * order) + j] : Real{0};
  }
}

template <int Vectors, int Registers, class Real>
void multiply_block(ptrdiff_t order, ptrdiff_t first, const Real* columns, const Real* a, Real* z) {
  constexpr int width = lanes<Real>;
  batch<Real> sum[Vectors][Registers];
  for (auto& of_vector : sum)
    for (auto& s : of_vector) s = batch<Real>(Real{0});
  const ptrdiff_t end = std::min(order, first + Registers * width);
  for (ptrdiff_t j = 0; j < end; ++j, columns += Registers * width)
#pragma GCC unroll 4
    for (int v = 0; v < Vectors; ++v) {
      const batch<Real> component(z[v * order + j]);
#pragma GCC unroll 4
      for (int k = 0; k < Registers; ++k)
        sum[v][k] = xsimd::fma(load(columns + k * width), component, sum[v][k]);
    }
  for (int v = 0; v < Vectors; ++v)
    for (int k = 0; k < Registers; ++k) {
      const ptrdiff_t row = first + k * width;
      const int rows = static_cast<int>(std::min<ptrdiff_t>(width, order - row));
      store_partial(z + v * order + row, rows, sum[v][k] + load_partial(a + row, rows, Real{0}));
    }
}

template <int Vectors, class Real>
void multiply_vectors(ptrdiff_t order, const Real* packed, const Real* a, Real* z) {
  static constexpr void (*by_registers[])(ptrdiff_t, ptrdiff_t, const Real*, const Real*, Real*) = {
      multiply_block<Vectors, 1, Real>, multiply_block<Vectors, 2, Real>, multiply_block<Vectors, 3, Real>,
      multiply_block<Vectors, 4, Real>};
  const Real* columns = packed + packed_size<Real>(order);
  for (ptrdiff_t first = (order - 1) / block_rows<Real> * block_rows<Real>; first >= 0;
       first -= block_rows<Real>) {
    const int registers = registers_of<Real>(order, first);
    columns -= std::min(order, first + block_rows<Real>) * registers * lanes<Real>;
    by_registers[registers - 1](order, first, columns, a, z);
  }
}

template <class Real>
void multiply(ptrdiff_t order, ptrdiff_t vectors, const Real* packed, const Real* a, Real* z) {
  for (; vectors >= vectors_together; vectors -= vectors_together, z += vectors_together * order)
    multiply_vectors<vectors_together>(order, packed, a, z);
  for (; vectors > 0; --vectors, z += order) multiply_vectors<1>(order, packed, a, z);
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(triangular_doubles) = {packed_size<double>, pack<double>, multiply<double>};
TMK_DEFINE_TIER_KERNELS(triangular_singles) = {packed_size<float>, pack<float>, multiply<float>};

}  // namespace tmk::rng
