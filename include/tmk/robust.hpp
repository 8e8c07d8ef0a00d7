// SPDX-License-Identifier: Apache-2.0
// Location, covariance and outliers of data some of which are wrong.
//
//   tmk::matrix_view<const double> x(data, rows, cols);
//   auto r = tmk::robust_covariance(x, {.breakdown = 0.5, .threads = 2});
//   r.location; r.covariance; r.distances; r.weights;
//   r.outliers(0.025);                           // rows beyond the chi-square quantile of 1 - 0.025
//   auto o = tmk::outliers(x, {.alpha = 0.05});  // BACON: o.rows, o.distances, o.cutoff
//   tmk::mad(x);
//   tmk::mahalanobis(x, r.location, r.covariance);
//
// Everything is computed in double, on a copy in which each variable is less its median and divided by its
// MAD: a change of units changes estimates as it should, and flags not at all. On one tier, results are the
// same to the bit for any number of threads, layout and strides.
//
// A refused call throws tmk::error naming argument and value, and for data row and column; one that finds no
// memory throws std::bad_alloc. Data hold no NaN and no infinity, but in mad, where they are as in median.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <tmk/stats.hpp>
#include <vector>

namespace tmk {

/// The state of an iteration after a round. A function of it that returns false stops the iteration; an
/// exception that it throws reaches the caller.
struct robust_progress {
  std::int64_t round;  ///< from 1
  double change;       ///< what the convergence test looks at
};
using robust_watcher = std::function<bool(const robust_progress&)>;

enum class robust {
  tbs,  ///< S-estimate with the translated biweight (D. Rocke, Robustness properties of S-estimators of
        ///< multivariate location and shape in high dimension, 1996) from deterministic starts (M. Hubert,
        ///< P. Rousseeuw, T. Verdonck, A deterministic algorithm for robust location and scatter, 2012)
  ogk,  ///< orthogonalized Gnanadesikan-Kettenring estimate, one step, reweighted (R. Maronna, R. Zamar,
        ///< Robust estimates of location and dispersion for high-dimensional datasets, 2002)
};

struct robust_options {
  robust method = robust::tbs;
  double breakdown = 0.5;    ///< share of wrong rows to withstand, above 0 and at most 0.5
  double rejection = 0.001;  ///< share of the rows of normal data that get weight 0, above 0 and below 1
  double tolerance = 1e-6;   ///< stops when weights change by less, as the root of the mean square
  std::int64_t max_rounds = 200;
  /// Of tbs: ends with the mean and covariance of the rows within the 0.975 quantile of the S-estimate, which
  /// in one variable vary less than half as much. Without it, the S-estimate is the result.
  bool reweight = true;
  int threads = 1;
  // NOLINTNEXTLINE(readability-redundant-member-init): for callers that warn of missing initializers
  robust_watcher progress = {};
};

/// What robust_covariance returns.
struct robust_estimate {
  std::vector<double> location;
  matrix covariance;              ///< consistent at the normal distribution
  matrix correlation;             ///< its diagonal is exactly 1
  std::vector<double> distances;  ///< Mahalanobis distance of each row
  std::vector<double> weights;    ///< of each row, from 0 to 1
  std::int64_t rounds = 0;
  bool converged = false;
  double breakdown = 0;  ///< in force: at most (rows - cols) / (2 rows)
  double rejection = 0;  ///< in force: raised where no translated biweight has the breakdown point, which is
                         ///< so for few variables; then the S-estimate is that of Tukey's biweight. 0.025
                         ///< after reweighting

  /// The rows whose squared distance is above the chi-square quantile of 1 - alpha. Throws for an alpha
  /// outside 0 to 1.
  [[nodiscard]] std::vector<std::size_t> outliers(double alpha = 0.025) const;
};

/// Throws tmk::error for data of fewer than 2 cols + 1 rows, more than 32768 columns, a NaN or infinity, a
/// variable whose MAD is 0, options out of range, and data of which more than half lies on a hyperplane.
[[nodiscard]] robust_estimate robust_covariance(const data_view& x, const robust_options& options = {});

enum class start {
  median,       ///< the rows nearest to the medians in MADs: withstands up to some 40 % of outliers
  mahalanobis,  ///< those nearest to the mean by the covariance: affine equivariant, withstands some 20 %
};

struct outlier_options {
  double alpha = 0.05;  ///< probability that clean normal data have an outlier; each row is tested at alpha
                        ///< over the number of rows
  tmk::start start = tmk::start::median;
  int threads = 1;
  // NOLINTNEXTLINE(readability-redundant-member-init): for callers that warn of missing initializers
  robust_watcher progress = {};
};

/// What outliers returns.
struct outlier_result {
  std::vector<std::size_t> rows;  ///< the outliers, ascending
  std::vector<double> distances;  ///< Mahalanobis distance of each row from the regular ones
  double cutoff = 0;              ///< distances of outliers are not below this
  std::int64_t rounds = 0;
  bool converged = false;
};

/// Outliers by BACON (N. Billor, A. Hadi, P. Velleman, BACON: blocked adaptive computationally efficient
/// outlier nominators, 2000). Throws as robust_covariance, and for fewer than 3 cols + 2 rows.
[[nodiscard]] outlier_result outliers(const data_view& x, const outlier_options& options = {});

/// The median of |x - median| of each variable, as in summary; times 1.4826 it estimates the standard
/// deviation of normal data. Throws as median does.
[[nodiscard]] std::vector<double> mad(const data_view& x, const quantile_options& options = {});

/// Mahalanobis distances, not squared, of the rows. Throws for a location or a covariance of another size,
/// and a covariance that is not finite, not symmetric or not positive definite. A NaN in a row makes its
/// distance NaN.
[[nodiscard]] std::vector<double> mahalanobis(const data_view& x, std::span<const double> location,
                                              const matrix& covariance, int threads = 1);

}  // namespace tmk
