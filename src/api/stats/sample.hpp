// SPDX-License-Identifier: Apache-2.0
// The values of one variable that count, and quantiles of them.
#pragma once

#include "api/stats/checks.hpp"

namespace tmk::detail {

struct sample_options {
  nan_policy nan;
  bool weights_are_counts;
};

struct sample {
  const char* function;
  std::vector<double> values;
  std::vector<double> weights;  // of positive weight, in proportion; none if they are all equal
  double unit = 1;              // the weight of one effective observation
  std::int64_t nans = 0;        // met, omitted or not
  bool defined = false;         // whether there are values, and none that is NaN

  // Where weights are given, those of weight 0 are left out.
  static sample of(const char* function, const data_view& x, std::size_t j, const weight_view& weights,
                   const sample_options& options);

  // As tmk::quantiles defines them; NaN if the sample is not defined.
  void quantiles(std::span<const double> orders, std::span<double> result) const;
  double quantile(double order) const;

  // The median of the distances from `centre`, of the same weights. NaN if that is not finite.
  double deviation_from(double centre) const;
};

}  // namespace tmk::detail
