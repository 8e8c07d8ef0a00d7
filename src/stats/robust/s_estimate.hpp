// SPDX-License-Identifier: Apache-2.0
// S-estimates of location and scatter: of all ellipsoids, the one of least size by the M-scale s of the
// distances d, which solves mean rho(d / s) = E rho (P. Davies, 1987; H. Lopuhaa, 1989). Weighted means and
// covariances lower s from step to step.
#pragma once

#include <vector>

#include "stats/robust/biweight.hpp"
#include "stats/robust/progress.hpp"
#include "stats/robust/scan.hpp"

namespace tmk::stats::robust {

struct s_state {
  estimate e;             // of the last step's weights; its covariance has determinant 1
  double scale = 0;       // of the distances from the estimate before
  std::vector<double> d;  // distances from the estimate before
  std::vector<double> weights;
  bool regular = true;  // false: the observations with weight lie on a hyperplane
};

// The estimate of the observations of the least half of the given squared distances.
s_state from_half(const TmkSSData& data, const std::vector<double>& d2, const ThreadingService* threading);

// One step, which lowers the scale; how much the weights changed, as the root of the mean square.
double s_step(const TmkSSData& data, const tuned_biweight& w, s_state& state,
              const ThreadingService* threading);

// The same fixed point in one walk over the data instead of two: the weights go by the scale of the step
// before. For states near the end.
double quick_step(const TmkSSData& data, const tuned_biweight& w, s_state& state,
                  const ThreadingService* threading);

struct s_rules {
  double tolerance;  // a change of the weights that ends the steps
  int64_t rounds;
};
struct s_result {
  estimate e;
  std::vector<double> weights;
  int64_t rounds = 0;
  bool converged = false;
};

// From several starts, of a sample of the observations where there are many, to the best. Throws
// VTS_STATUS_SS_NOT_POSITIVE where no start has an inverse.
s_result s_estimate(const std::vector<double>& x, size_t n, size_t p, const tuned_biweight& w,
                    const s_rules& rules, const ThreadingService* threading, const progress& report);

}  // namespace tmk::stats::robust
