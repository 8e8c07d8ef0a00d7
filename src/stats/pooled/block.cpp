// SPDX-License-Identifier: Apache-2.0
// Blocks are copied variable by variable, in double, without the rows of weight 0: neither layout nor strides
// nor single precision reach the kernels.
#include "stats/pooled/block.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace tmk::stats::pooled {

namespace {

// The block's rows in the matrix: all from `first` on, unless they are listed.
struct row_list {
  size_t first;
  std::vector<size_t> listed;
};

bool has_weight(double w) { return w > 0; }

row_list rows_that_count(const double* weights, size_t first, size_t last) {
  row_list rows{first, {}};
  if (weights == nullptr || std::all_of(weights + first, weights + last, has_weight)) return rows;
  for (size_t i = first; i < last; ++i)
    if (has_weight(weights[i])) rows.listed.push_back(i);
  return rows;
}

// In tiles of rows, so that each cache line of a row-major matrix is read once.
template <class Real>
void gather(block& b, const values_of<Real>& x, const row_list& rows) {
  constexpr size_t tile = 16;
  for (size_t from = 0; from < b.n; from += tile) {
    const size_t to = std::min(b.n, from + tile);
    for (size_t j = 0; j < b.p; ++j) {
      double* const column = b.column(j);
      if (rows.listed.empty())
        for (size_t k = from; k < to; ++k) column[k] = x(rows.first + k, j);
      else
        for (size_t k = from; k < to; ++k) column[k] = x(rows.listed[k], j);
    }
  }
}

template <class Real>
void gather_columns(block& b, const values_of<Real>& x, size_t first) {
  for (size_t j = 0; j < b.p; ++j) std::copy_n(&x(first, j), b.n, b.column(j));
}

}  // namespace

bool contains_nan(const double* x, size_t n) {
  return std::any_of(x, x + n, [](double value) { return std::isnan(value); });
}

void read_block(block& b, const TmkSSData& data, size_t first, size_t last) {
  const double* const weights = data.weights;
  const row_list rows = rows_that_count(weights, first, last);
  b.weights.clear();
  if (weights != nullptr)
    std::copy_if(weights + first, weights + last, std::back_inserter(b.weights), has_weight);
  b.n = weights != nullptr ? b.weights.size() : last - first;
  b.p = columns_of(data);
  b.x.resize(b.n * b.p);
  if (b.n == 0) return;
  visit(data, [&](const auto& x) {
    if (x.row_stride == 1 && rows.listed.empty())
      gather_columns(b, x, first);
    else
      gather(b, x, rows);
  });
}

block without_nan(const block& b, size_t first, size_t last) {
  std::vector<size_t> rows;
  const auto defined = [&](size_t k) {
    for (size_t j = first; j < last; ++j)
      if (std::isnan(b.x[j * b.n + k])) return false;
    return true;
  };
  for (size_t k = 0; k < b.n; ++k)
    if (defined(k)) rows.push_back(k);
  block r{.n = rows.size(), .p = last - first, .x = {}, .weights = {}};
  for (size_t j = first; j < last; ++j)
    for (const size_t k : rows) r.x.push_back(b.x[j * b.n + k]);
  if (!b.weights.empty())
    for (const size_t k : rows) r.weights.push_back(b.weights[k]);
  return r;
}

}  // namespace tmk::stats::pooled
