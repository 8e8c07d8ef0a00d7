// SPDX-License-Identifier: Apache-2.0
#include "stats/robust/scan.hpp"

#include <cmath>

#include "linalg/blas.hpp"

namespace tmk::stats::robust {
namespace {

// In groups of observations, so that each cache line of a row-major matrix is read once.
template <class Real>
void gather(const pooled::values_of<Real>& x, size_t p, size_t first, size_t count, const double* centre,
            double* tile) {
  constexpr size_t group = 16;
  for (size_t from = 0; from < count; from += group) {
    const size_t to = std::min(count, from + group);
    for (size_t j = 0; j < p; ++j) {
      const double c = centre != nullptr ? centre[j] : 0;
      for (size_t k = from; k < to; ++k) tile[j * tile_length + k] = static_cast<double>(x(first + k, j)) - c;
    }
  }
}

void gather_adjacent(const double* x, ptrdiff_t stride, size_t p, size_t count, const double* centre,
                     double* tile) {
  for (size_t j = 0; j < p; ++j) {
    const double* const from = x + static_cast<ptrdiff_t>(j) * stride;
    double* const to = tile + j * tile_length;
    const double c = centre != nullptr ? centre[j] : 0;
    if (count == tile_length)
      for (size_t k = 0; k < tile_length; ++k) to[k] = from[k] - c;
    else
      for (size_t k = 0; k < count; ++k) to[k] = from[k] - c;
  }
}

}  // namespace

void read_tile(const TmkSSData& data, size_t first, size_t count, const double* centre, double* tile) {
  const size_t p = pooled::columns_of(data);
  if (data.single == 0 && data.rowStride == 1)
    gather_adjacent(static_cast<const double*>(data.values) + first,
                    static_cast<ptrdiff_t>(data.columnStride), p, count, centre, tile);
  else
    pooled::visit(data, [&](const auto& x) { gather(x, p, first, count, centre, tile); });
  if (count < tile_length)
    for (size_t j = 0; j < p; ++j)
      std::fill(tile + j * tile_length + count, tile + (j + 1) * tile_length, 0.0);
}

void multiply_tile(size_t p, const double* x, const double* a, double* y) {
  const int rows = static_cast<int>(tile_length), order = static_cast<int>(p);
  const double one = 1, zero = 0;
  linalg::serial<double>::gemm("N", "N", &rows, &order, &order, &one, x, &rows, a, &order, &zero, y, &rows);
}

void row_products(size_t p, const double* x, const double* y, double* sums) {
  constexpr size_t lanes = 16;  // sums that stay in registers
  for (size_t first = 0; first < tile_length; first += lanes) {
    double sum[lanes] = {};
    for (size_t j = 0; j < p; ++j) {
      const double *const a = x + j * tile_length + first, *const b = y + j * tile_length + first;
      for (size_t k = 0; k < lanes; ++k) sum[k] += a[k] * b[k];
    }
    std::copy_n(sum, lanes, sums + first);
  }
}

void weighted_products::add(size_t p, double* tile, const double* weights) {
  double root[tile_length];
  for (size_t k = 0; k < tile_length; ++k) root[k] = std::sqrt(weights[k]);
  for (size_t k = 0; k < tile_length; ++k) squares += weights[k] * weights[k];
  for (size_t j = 0; j < p; ++j)
    for (size_t k = 0; k < tile_length; ++k) tile[j * tile_length + k] *= root[k];
  std::copy_n(root, tile_length, tile + p * tile_length);
  const int order = static_cast<int>(p + 1), rows = static_cast<int>(tile_length);
  const double one = 1;
  linalg::serial<double>::syrk("U", "T", &order, &rows, &one, tile, &rows, &one, s.data(), &order);
}

void weighted_products::add(const weighted_products& other) {
  squares += other.squares;
  for (size_t k = 0; k < s.size(); ++k) s[k] += other.s[k];
}

estimate finish(size_t p, const weighted_products& sums, const double* centre) {
  const double* const last = sums.s.data() + p * (p + 1);
  estimate e{std::vector<double>(p), std::vector<double>(p * p), last[p], sums.squares};
  for (size_t i = 0; i < p; ++i) {
    e.mean[i] = last[i] / e.weight + (centre != nullptr ? centre[i] : 0);
    for (size_t j = 0; j <= i; ++j)
      e.covariance[i * p + j] = e.covariance[j * p + i] =
          (sums.s[i * (p + 1) + j] - last[i] * (last[j] / e.weight)) / e.weight;
  }
  return e;
}

estimate weighted_estimate(const TmkSSData& data, const double* weights, const double* centre,
                           const ThreadingService* threading) {
  const auto sums =
      scan(data, centre, nullptr, true, threading, [&](size_t first, size_t count, const double*, double* w) {
        if (weights != nullptr)
          std::copy_n(weights + first, count, w);
        else
          std::fill_n(w, count, 1.0);
      });
  return finish(pooled::columns_of(data), sums, centre);
}

void distances(const TmkSSData& data, const double* centre, const double* inverse, double* d,
               const ThreadingService* threading) {
  scan(data, centre, inverse, false, threading, [&](size_t first, size_t count, const double* d2, double*) {
    for (size_t k = 0; k < count; ++k) d[first + k] = std::sqrt(d2[k]);
  });
}

}  // namespace tmk::stats::robust
