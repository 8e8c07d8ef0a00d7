// SPDX-License-Identifier: Apache-2.0
// Blocks are copied variable by variable, in double, without the rows of weight 0: neither layout nor strides
// nor single precision reach the kernels.
#include "api/stats/block.hpp"

#include <algorithm>
#include <cmath>

namespace tmk::detail {

namespace {

// The block's rows in the matrix: `first` and those behind it, or as listed.
struct row_list {
  std::size_t first;
  std::vector<std::size_t> listed;
};

row_list rows_that_count(const weight_view& weights, std::size_t first, std::size_t last) {
  row_list rows{first, {}};
  if (!weights) return rows;
  const auto counts = [&](double w) { return w > 0; };
  if (std::all_of(weights->begin() + static_cast<std::ptrdiff_t>(first),
                  weights->begin() + static_cast<std::ptrdiff_t>(last), counts))
    return rows;
  for (std::size_t i = first; i < last; ++i)
    if (counts((*weights)[i])) rows.listed.push_back(i);
  return rows;
}

// In tiles of rows, so that the lines of a matrix that lies the other way are read once.
template <class T>
void gather(block& b, const matrix_view<const T>& x, const row_list& rows) {
  constexpr std::size_t tile = 16;
  for (std::size_t from = 0; from < b.n; from += tile) {
    const std::size_t to = std::min(b.n, from + tile);
    for (std::size_t j = 0; j < b.p; ++j) {
      double* const column = b.column(j);
      if (rows.listed.empty())
        for (std::size_t k = from; k < to; ++k) column[k] = x(rows.first + k, j);
      else
        for (std::size_t k = from; k < to; ++k) column[k] = x(rows.listed[k], j);
    }
  }
}

template <class T>
void gather_columns(block& b, const matrix_view<const T>& x, std::size_t first) {
  for (std::size_t j = 0; j < b.p; ++j) std::copy_n(&x(first, j), b.n, b.column(j));
}

}  // namespace

bool contains_nan(const double* x, std::size_t n) {
  return std::any_of(x, x + n, [](double value) { return std::isnan(value); });
}

void read_block(block& b, const data_view& x, const weight_view& weights, std::size_t first,
                std::size_t last) {
  const row_list rows = rows_that_count(weights, first, last);
  b.weights.clear();
  if (weights)
    std::copy_if(weights->begin() + static_cast<std::ptrdiff_t>(first),
                 weights->begin() + static_cast<std::ptrdiff_t>(last), std::back_inserter(b.weights),
                 [](double w) { return w > 0; });
  b.n = weights ? b.weights.size() : last - first;
  b.p = cols_of(x);
  b.x.resize(b.n * b.p);
  if (b.n == 0) return;
  std::visit(
      [&](const auto& view) {
        if (view.row_stride() == 1 && rows.listed.empty())
          gather_columns(b, view, first);
        else
          gather(b, view, rows);
      },
      x);
}

block without_nan(const block& b, std::size_t first, std::size_t last) {
  std::vector<std::size_t> rows;
  const auto defined = [&](std::size_t k) {
    for (std::size_t j = first; j < last; ++j)
      if (std::isnan(b.x[j * b.n + k])) return false;
    return true;
  };
  for (std::size_t k = 0; k < b.n; ++k)
    if (defined(k)) rows.push_back(k);
  block r{.n = rows.size(), .p = last - first, .x = {}, .weights = {}};
  for (std::size_t j = first; j < last; ++j)
    for (const std::size_t k : rows) r.x.push_back(b.x[j * b.n + k]);
  if (!b.weights.empty())
    for (const std::size_t k : rows) r.weights.push_back(b.weights[k]);
  return r;
}

}  // namespace tmk::detail
