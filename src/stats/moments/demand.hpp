// SPDX-License-Identifier: Apache-2.0
// What a call of the moments requests: estimates with all that they depend on, and the method.
#pragma once

#include "stats/task.hpp"

namespace tmk::stats {

// Estimates by their index in a demand.
enum estimate : int {
  mean_estimate,  // raw 2 to 4 follow
  central2_estimate = 4,
  covariance_estimate = 7,
  correlation_estimate,
  kurtosis_estimate,
  skewness_estimate,
  variation_estimate,
  sum_estimate,  // raw sums 2 to 4 follow
  central_sum2_estimate = 16,
  cross_estimate = 19,
  estimates,
  out_of_reach = estimates  // what a method cannot give
};

enum class method { fast, one_pass, two_pass, convert };

struct demand {
  uint32_t wanted;  // bit 1 << estimate
  method by;
  bool wants(int estimate) const { return (wanted >> estimate & 1) != 0; }
  bool wants_matrix() const {
    return wants(cross_estimate) || wants(covariance_estimate) || wants(correlation_estimate);
  }
};

// The demand of the caller's masks, or the status of the first check that fails.
template <class Real>
int32_t check_demand(const task<Real>& task, uint32_t low, uint32_t high, uint32_t method_low, demand& r);

}  // namespace tmk::stats
