// SPDX-License-Identifier: Apache-2.0
// The caller's observations in units of each variable's own mean and deviation, and what they are refused
// for.
#pragma once

#include "stats/missing/data.hpp"
#include "tmk/abi/ss_pooled.h"

namespace tmk::stats::missing {

struct column_scale {
  double centre = 0, spread = 1;
  double outside(double x) const { return centre + spread * x; }
};

struct standardised_data {
  std::vector<column_scale> scales;
  data_rows<double> rows;

  // Observations of holes alone come first: no pattern precedes the empty one.
  ptrdiff_t empty_rows() const;
  // Sum of the logarithms of the spreads over observed values.
  double log_spread() const;
  // Rows of the model in the caller's units.
  double mean(const square<double>& theta, ptrdiff_t j) const {
    return scales[static_cast<size_t>(j)].outside(theta[0][j + 1]);
  }
  double covariance(const square<double>& theta, ptrdiff_t i, ptrdiff_t j) const {
    return theta[i + 1][j + 1] * scales[static_cast<size_t>(i)].spread *
           scales[static_cast<size_t>(j)].spread;
  }
};

struct refusal {
  int32_t status = 0;
  int64_t row = -1, column = -1;
};
refusal find_refusal(const TmkSSData* data);

int64_t count_nans(const TmkSSData& data);

// Of data that are not refused. Throws std::bad_alloc.
standardised_data standardise(const TmkSSData& data);

}  // namespace tmk::stats::missing
