// SPDX-License-Identifier: Apache-2.0
// BACON: a basic subset that is free of outliers grows by all observations whose distance from it is below a
// cut-off (N. Billor, A. Hadi, P. Velleman, BACON: blocked adaptive computationally efficient outlier
// nominators, 2000).
#pragma once

#include <cstdint>

#include "stats/pooled/data.hpp"
#include "stats/robust/progress.hpp"

namespace tmk::stats::robust {

enum class bacon_start { mahalanobis = 1, medians = 2 };

struct bacon_rules {
  bacon_start start;
  double tail;            // the probability that the cut-off leaves to normal observations
  double growth;          // a relative growth of the subset below this ends the search, and so does none
  size_t subset;          // size of the first one
  const double* medians;  // of the variables, if they are known
  const double* weights;  // what observations weigh in the subset; null: 1
  bool ridge;  // a singular covariance gets a ridge; otherwise the first subset grows until it is none
};

struct bacon_result {
  double cutoff = 0;
  size_t regular = 0;
  int64_t rounds = 0;
  bool converged = false;
};

// Writes the weight of each observation, 0 for an outlier, and the distances, if `d` is not null. Throws the
// status of a covariance without an inverse.
bacon_result bacon(const TmkSSData& data, const bacon_rules& rules, double* weights, double* d,
                   const ThreadingService* threading, const progress& report);

}  // namespace tmk::stats::robust
