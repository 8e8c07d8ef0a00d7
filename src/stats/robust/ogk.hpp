// SPDX-License-Identifier: Apache-2.0
// The orthogonalized Gnanadesikan-Kettenring estimate (R. Maronna, R. Zamar, Robust estimates of location and
// dispersion for high-dimensional datasets, 2002): covariances of pairs of variables from the scales of their
// sums and differences, made positive definite by taking locations and scales anew along the eigenvectors.
#pragma once

#include <cstddef>
#include <vector>

#include "stats/robust/scan.hpp"

namespace tmk::stats::robust {

// Axes e_k in which the data are seen as uncorrelated, with the tau location and scale of x'e_k along each.
struct principal_axes {
  std::vector<double> axes;  // p by p; axis k is column k of LAPACK
  std::vector<double> location, scale;
};

// Locations and scales of variable by variable data along given axes; squared distances to d2 (n values).
void measure_along(const double* x, size_t n, principal_axes& a, double* d2,
                   const ThreadingService* threading);

// One step. Throws VTS_STATUS_SS_SPECTRAL_FAILED where the eigenvectors are not found.
principal_axes ogk_step(const double* x, size_t n, size_t p, double* d2, const ThreadingService* threading);

// The eigenvectors, by columns, of a symmetric matrix with both triangles, in place of it; eigenvalues
// ascend.
void eigenvectors(size_t p, std::vector<double>& matrix, std::vector<double>& values);

// Weights 1 and 0: whether a squared distance is at most median(d2) chi2(0.9) / chi2(0.5).
void reject_far(const std::vector<double>& d2, size_t p, double* weights);

}  // namespace tmk::stats::robust
