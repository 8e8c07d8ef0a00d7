// SPDX-License-Identifier: Apache-2.0
// The caller's observations by variables, and the checks of them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tmk/abi/ss_pooled.h"

namespace tmk::stats::pooled {

// A cross-product has half the square of them.
constexpr int64_t most_matrix_columns = 32768;

constexpr bool is_nan_policy(int32_t policy) {
  return policy >= TMK_SS_NAN_PROPAGATE && policy <= TMK_SS_NAN_REFUSE;
}

// Value (i, j) of TmkSSData whose type is known.
template <class Real>
struct values_of {
  const Real* first;
  ptrdiff_t row_stride, column_stride;

  explicit values_of(const TmkSSData& data)
      : first(static_cast<const Real*>(data.values)),
        row_stride(static_cast<ptrdiff_t>(data.rowStride)),
        column_stride(static_cast<ptrdiff_t>(data.columnStride)) {}
  const Real& operator()(size_t i, size_t j) const {
    return first[static_cast<ptrdiff_t>(i) * row_stride + static_cast<ptrdiff_t>(j) * column_stride];
  }
};

template <class Visitor>
auto visit(const TmkSSData& data, const Visitor& visitor) {
  return data.single != 0 ? visitor(values_of<float>(data)) : visitor(values_of<double>(data));
}

inline size_t rows_of(const TmkSSData& data) { return static_cast<size_t>(data.rows); }
inline size_t columns_of(const TmkSSData& data) { return static_cast<size_t>(data.columns); }

// Pointers, rows (at least `least_rows`) and columns.
int32_t check_shape(const TmkSSData* data, int64_t least_rows);
// TMK_SS_BAD_WEIGHTS for a weight, or a sum of them, that the estimates have no meaning for.
int32_t check_weights(const TmkSSData& data, bool counts);
// TMK_SS_NAN under the policy that refuses them.
int32_t check_nans(const TmkSSData& data, int32_t policy);

}  // namespace tmk::stats::pooled
