// SPDX-License-Identifier: Apache-2.0
// The translated biweight of D. Rocke, Robustness properties of S-estimators of multivariate location and
// shape in high dimension, 1996: distances up to M count in full, those above M + c not at all.
//   w(d) = 1,  (1 - ((d - M) / c)^2)^2,  0      and rho(d) the integral of d w(d) from 0
// M = 0 is Tukey's biweight; c = 0 rejects at M. The breakdown point b asks for E rho(d) = b rho(infinity)
// with d^2 chi-square, the rejection probability a for P(d > M + c) = a.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tmk::stats::robust {

struct biweight {
  double M, c;

  // Without branches, so that loops over distances compile to vector code. A c of 0 is taken as a range that
  // is too short to matter.
  double weight(double d) const {
    const double u = 1 - square(transition(d));
    return d < M ? 1 : c > 0 ? u * u : 0;
  }
  double rho(double d) const {
    const double low = d < M ? d : M, t = transition(d), t2 = t * t;
    return 0.5 * low * low +
           c * t * (M * (1 - t2 * (2.0 / 3 - t2 / 5)) + c * t * (0.5 - t2 * (0.5 - t2 / 6)));
  }
  double top() const { return (c / 6 + M * (8.0 / 15)) * c + M * M / 2; }

 private:
  static double square(double x) { return x * x; }
  // From 0 at M to 1 at M + c.
  double transition(double d) const {
    const double t = (d - M) / (c > 0 ? c : 1e-300), above = t > 0 ? t : 0;
    return above < 1 ? above : 1;
  }
};

// E rho(d) with d^2 chi-square with p degrees of freedom.
double mean_rho(int32_t order, const biweight& w);

// Newton's method from sqrt(p), and rejection at the quantile where it does not converge, or where even
// rejection at the quantile breaks down later than b.
biweight task_biweight(int32_t p, double b, double a);

// The biweight with that breakdown point, and with that rejection probability if there is one. Where the
// biweight without a full range breaks down too early, a larger probability; where rejection at the quantile
// still breaks down too early, that.
struct tuned_biweight {
  biweight w;
  double breakdown, rejection, mean_rho;
};
tuned_biweight tune_biweight(int32_t p, double b, double a);

}  // namespace tmk::stats::robust
