// SPDX-License-Identifier: Apache-2.0
// The values of one variable that count, and quantiles of them.
#pragma once

#include <span>
#include <vector>

#include "stats/pooled/data.hpp"

namespace tmk::stats::pooled {

struct sample {
  std::vector<double> values;
  std::vector<double> weights;  // positive and up to a common factor; none if they are all equal
  double unit = 1;              // the weight of one effective observation
  int64_t nans = 0;             // among the observations of positive weight, omitted or not
  bool defined = false;         // whether there are values, and none that is NaN

  // Of variable j. Where weights are given, observations of weight 0 are left out.
  static sample of(const TmkSSData& data, size_t j, const TmkSSOptions& options);

  // By the definitions of tmk_ss_pooled_quantiles; NaN if the sample is not defined.
  void quantiles(std::span<const double> orders, std::span<double> result) const;
  double quantile(double order) const;

  // The median of the distances from `centre`, of the same weights. NaN if that is not finite.
  double deviation_from(double centre) const;
};

}  // namespace tmk::stats::pooled
