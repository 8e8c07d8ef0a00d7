// SPDX-License-Identifier: Apache-2.0
#include "stats/pooled/data.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/checks.hpp"

namespace tmk::stats::pooled {

namespace {

// In tiles of rows, each by columns: the search stays near the data in both layouts.
template <class Real>
bool find_nan(const TmkSSData& data, const values_of<Real>& value, size_t& row, size_t& column) {
  constexpr size_t tile = 64;
  const size_t rows = rows_of(data), columns = columns_of(data);
  for (size_t first = 0; first < rows; first += tile) {
    const size_t last = std::min(rows, first + tile);
    row = last;
    for (size_t j = 0; j < columns; ++j)
      for (size_t i = first; i < row; ++i)
        if (std::isnan(value(i, j)) && (data.weights == nullptr || data.weights[i] > 0)) row = i, column = j;
    if (row != last) return true;
  }
  return false;
}

bool find_nan(const TmkSSData& data, size_t& row, size_t& column) {
  return visit(data, [&](const auto& value) { return find_nan(data, value, row, column); });
}

}  // namespace

int32_t check_shape(const TmkSSData* data, int64_t least_rows) {
  if (data == nullptr) return VTS_STATUS_SS_DATA_NULL;
  return first_status({{data->columns < 1 || data->columns > INT32_MAX, VTS_STATUS_SS_BAD_DIMENSION},
                       {data->rows < least_rows, VTS_STATUS_SS_BAD_OBSERVATIONS},
                       {data->rows != 0 && data->values == nullptr, VTS_STATUS_SS_DATA_NULL}});
}

int32_t check_weights(const TmkSSData& data, bool counts) {
  if (data.weights == nullptr) return 0;
  constexpr double largest = std::numeric_limits<double>::max();
  bool good = true;
  double sum = 0;
  for (size_t i = 0; i < rows_of(data); ++i) {
    const double w = data.weights[i];
    good &= w >= 0 && w <= largest && (!counts || w == std::trunc(w));
    sum += w;
  }
  return good && sum <= (counts ? 0x1p53 : largest) ? 0 : TMK_SS_BAD_WEIGHTS;
}

int32_t check_nans(const TmkSSData& data, int32_t policy) {
  size_t row, column;
  return policy == TMK_SS_NAN_REFUSE && find_nan(data, row, column) ? TMK_SS_NAN : 0;
}

}  // namespace tmk::stats::pooled

int32_t tmk_ss_pooled_find_nan(const TmkSSData* data, int64_t* row, int64_t* column) {
  if (const int32_t bad = tmk::stats::pooled::check_shape(data, 0); bad != 0) return bad;
  size_t i, j;
  if (!tmk::stats::pooled::find_nan(*data, i, j)) return 0;
  *row = static_cast<int64_t>(i);
  *column = static_cast<int64_t>(j);
  return 1;
}
