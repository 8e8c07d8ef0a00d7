// SPDX-License-Identifier: Apache-2.0
// The likeliest normal model of data with holes, by EM that is extrapolated: two steps of EM from theta, r
// and r + v, lead to theta + 2 a r + a^2 v with a = |r| / |v| (the scheme S3 of R. Varadhan and C. Roland,
// Scand. J. Statist. 35, 2008), and one more step of EM from there. Where the covariance is not positive
// definite or the likelihood is less than before, the plain steps are taken, so that it never falls.
#pragma once

#include "stats/missing/likelihood.hpp"

namespace tmk::stats::missing {

struct em_result {
  square<double> theta;
  double log_likelihood;
  int64_t rounds;
  bool converged, stopped;
};

// Ends when the distance to the maximum, d rate / (1 - rate) for a last change d of an EM step that is `rate`
// times the one before, is within the tolerance. Throws failed{TMK_SS_NOT_REGULAR}.
em_result maximise_likelihood(likelihood& l, const TmkSSEmOptions& options);

}  // namespace tmk::stats::missing
