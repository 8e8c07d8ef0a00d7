// SPDX-License-Identifier: Apache-2.0
// The tau estimate of location and scale (V. Yohai, R. Zamar, 1988) with the constants of R. Maronna and
// R. Zamar, Robust estimates of location and dispersion for high-dimensional datasets, 2002: from the median
// m and the raw MAD s,
//   mu = mean of x weighted by (1 - ((x - m) / (4.5 s))^2)^2 within 4.5 s of m
//   sigma^2 = s^2 times the mean of min(((x - mu) / s)^2, 3^2)
#pragma once

#include <cstddef>

namespace tmk::stats::robust {

struct location_scale {
  double location, scale;
};

// A spread of 0 gives the mean and a scale of 0. `work` takes 2 n values.
location_scale tau_estimate(const double* x, size_t n, double* work);

}  // namespace tmk::stats::robust
