// SPDX-License-Identifier: Apache-2.0
// One walk over all observations: their distances from a centre and their weighted products about it, by BLAS
// on tiles of one shape. Tiles make up chunks, whose number depends on the data's shape alone, and the sums
// of chunks are added in their order: results do not depend on threads. A last tile is filled with zeros,
// since BLAS rounds in another way for another count of columns.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "stats/pooled/data.hpp"
#include "stats/pooled/run.hpp"

namespace tmk::stats::robust {

constexpr size_t tile_length = 128;

// A matrix of double, variable by variable.
inline TmkSSData column_data(const double* x, size_t n, size_t p) {
  return {x, 0, static_cast<int64_t>(n), static_cast<int64_t>(p), 1, static_cast<int64_t>(n), nullptr};
}

// Value (k, j) of observations first to first + count - 1, less the centre, at tile[j tile_length + k].
void read_tile(const TmkSSData& data, size_t first, size_t count, const double* centre, double* tile);

// y = x a for a tile x and a p by p matrix, by columns.
void multiply_tile(size_t p, const double* x, const double* a, double* y);

// The sum over variables of x y, for every observation of two tiles.
void row_products(size_t p, const double* x, const double* y, double* sums);

// Sums about a centre: of weights, of their squares, and of the products of (z sqrt(w), sqrt(w)), of which
// the elements (i, j), j not above i, of order p + 1 are kept.
struct weighted_products {
  double squares = 0;
  std::vector<double> s;

  explicit weighted_products(size_t p) : s((p + 1) * (p + 1)) {}
  // Adds a tile, which has a spare column and is overwritten.
  void add(size_t p, double* tile, const double* weights);
  void add(const weighted_products& other);
};

// Mean, and products about it divided by the weight, by rows with both triangles.
struct estimate {
  std::vector<double> mean, covariance;
  double weight = 0, squares = 0;

  // W - W2 / W, the divisor of an unbiased covariance, in units of the weight.
  double unbiased() const { return (weight - squares / weight) / weight; }
};
estimate finish(size_t p, const weighted_products& sums, const double* centre);

struct chunks {
  size_t count, length;  // in observations, a multiple of tile_length

  chunks(size_t n, size_t p) {
    const size_t tiles = (n + tile_length - 1) / tile_length;
    const size_t affordable = std::clamp<size_t>((size_t{1} << 22) / ((p + 1) * (p + 1)), 1, 64);
    const size_t in_chunk = std::max<size_t>(32, (tiles + affordable - 1) / affordable);
    length = in_chunk * tile_length;
    count = (n + length - 1) / length;
  }
};

// visit(first, count, d2, w) for each tile: d2 has the squared distances by the inverse (null: the identity),
// and w takes the weights, if products are wanted. Tiles run at the same time.
template <class Visit>
weighted_products scan(const TmkSSData& data, const double* centre, const double* inverse, bool products,
                       const ThreadingService* threading, const Visit& visit) {
  const size_t n = pooled::rows_of(data), p = pooled::columns_of(data);
  const chunks cut(n, p);
  const size_t workers = pooled::worker_count(threading, cut.count);
  std::vector<weighted_products> sums(products ? cut.count : 0, weighted_products(p));
  const size_t own = (2 * p + 3) * tile_length;
  std::vector<double> memory(workers * own);
  pooled::for_each_item(threading, workers, cut.count, [&](size_t chunk, size_t worker) {
    double *const tile = memory.data() + worker * own, *const y = tile + (p + 1) * tile_length,
                  *const d2 = y + p * tile_length, *const w = d2 + tile_length;
    const size_t end = std::min(n, (chunk + 1) * cut.length);
    for (size_t first = chunk * cut.length; first < end; first += tile_length) {
      const size_t count = std::min(tile_length, end - first);
      read_tile(data, first, count, centre, tile);
      if (inverse != nullptr) multiply_tile(p, tile, inverse, y);
      row_products(p, tile, inverse != nullptr ? y : tile, d2);
      visit(first, count, d2, w);
      if (!products) continue;
      std::fill(w + count, w + tile_length, 0.0);
      sums[chunk].add(p, tile, w);
    }
  });
  weighted_products all(products ? p : 0);
  for (const auto& part : sums) all.add(part);
  return all;
}

// The estimate of weighted observations about a centre near their mean. No weights: each counts 1.
estimate weighted_estimate(const TmkSSData& data, const double* weights, const double* centre,
                           const ThreadingService* threading);

// The distances, not squared, of all observations.
void distances(const TmkSSData& data, const double* centre, const double* inverse, double* d,
               const ThreadingService* threading);

}  // namespace tmk::stats::robust
