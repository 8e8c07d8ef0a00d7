// SPDX-License-Identifier: Apache-2.0
// Observations with holes: the likeliest normal model, and multiple imputation.
//
//   auto e = tmk::em_estimate(x);  // every NaN is a hole; e.mean, e.covariance
//   auto m = tmk::impute(x, {.count = 20, .rounds = 100, .seed = 7});
//   for (std::size_t k = 0; k < m.count(); ++k)
//     analyse(m.completed(k));  // an estimate and its variance each
//   auto r = m.pool(estimates, variances);  // r.estimate, r.se, r.df
//
// The observations are taken as normal vectors whose holes are missing at random: whether a value is missing
// may depend on what is observed, not on the value itself. Variables are brought to mean 0 and deviation 1
// first, so that results follow a change of units. On one tier (tmk::select_tier) they are the same to the
// bit for any number of threads, layout and strides.
//
// Refused with tmk::error naming argument and value, nothing written: no rows or columns, null data, an
// infinite value (with row and column), a variable without values or whose values are all equal, not more
// observations with a value than variables, variables that depend on one another linearly, and options
// outside their range.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <tmk/error.hpp>
#include <tmk/matrix_view.hpp>
#include <tmk/stats.hpp>
#include <vector>

namespace tmk {

class stream;

struct normal_model {
  std::vector<double> mean;
  matrix covariance;
};

/// Where a computation is: the round, from 1, of EM (imputation is -1) or of an imputation, and the largest
/// change in it of a mean or covariance, in units of the variables' deviations.
struct impute_progress {
  std::int64_t imputation, round;
  double change;
};

/// Called after each round; false stops. With several threads it may be called from any of them, one at a
/// time. What it throws leaves the function that calls it.
using impute_watcher = std::function<bool(const impute_progress&)>;

struct em_options {
  double tolerance = 1e-11;      ///< bound of the estimates' distance from the maximum, in deviations
  std::int64_t rounds = 10'000;  ///< the most
  int threads = 1;
  // NOLINTNEXTLINE(readability-redundant-member-init): for callers that warn of missing initializers
  impute_watcher progress = {};
};

struct em_estimates : normal_model {  ///< the covariance with divisor n
  double log_likelihood = 0;          ///< of the observed values
  std::int64_t rounds = 0;
  bool converged = false;
};

/// The likeliest normal model of the observed values: EM (Dempster, Laird and Rubin, 1977), extrapolated by
/// the scheme S3 of Varadhan and Roland (Simple and globally convergent methods for accelerating the
/// convergence of any EM algorithm, 2008) where the likelihood does not fall. It ends when the distance that
/// is left, which the last two changes show, is within the tolerance.
[[nodiscard]] em_estimates em_estimate(const data_view& x, const em_options& options = {});

struct impute_options {
  int count = 5;     ///< imputations
  int rounds = 100;  ///< of augmentation before each imputation
  std::uint64_t seed = 0;
  stream* generator = nullptr;  ///< where given, eight words of it are the seed instead
  bool one_chain = false;       ///< one chain gives all imputations, `rounds` apart; else each has its own
  bool keep_chain = true;       ///< count rounds cols (cols + 3) / 2 numbers
  int threads = 1;              ///< at work on different imputations, and on EM
  // NOLINTNEXTLINE(readability-redundant-member-init): for callers that warn of missing initializers
  impute_watcher progress = {};
};

/// One quantity, from its estimates in each of m completed data sets, by the rules of D. Rubin (Multiple
/// Imputation for Nonresponse in Surveys, 1987).
struct pooled_estimate {
  double estimate;             ///< the mean
  double se;                   ///< sqrt(within + (1 + 1/m) between)
  double within, between;      ///< mean of the variances, variance of the estimates
  double df;                   ///< of the t distribution of (estimate - truth) / se
  double relative_increase;    ///< (1 + 1/m) between / within
  double missing_information;  ///< the share of the information that the holes cost
};

/// From m >= 2 estimates and their variances (squared standard errors). With the degrees of freedom that
/// complete data would have, those of J. Barnard and D. Rubin (Small-sample degrees of freedom with multiple
/// imputation, Biometrika 86, 1999). Throws for sizes that differ or are below 2, a number that is not
/// finite, a negative variance, and complete_df not above 0.
[[nodiscard]] pooled_estimate pool_estimates(std::span<const double> estimates,
                                             std::span<const double> variances,
                                             double complete_df = std::numeric_limits<double>::infinity());

/// What impute returns. It keeps a copy of the data.
class imputations {
 public:
  struct hole {
    std::size_t row, col;
  };

  std::size_t count() const { return values_.rows(); }

  /// The data with their holes filled by imputation k; observed values are to the bit what they were. Throws
  /// for an imputation that does not exist.
  [[nodiscard]] matrix completed(std::size_t k) const;

  /// The holes, by rows, and what imputation k puts there.
  const std::vector<hole>& holes() const { return holes_; }
  [[nodiscard]] std::span<const double> values(std::size_t k) const;

  /// The chain's models: row k rounds + r has means and lower triangle of the covariance, by rows, after
  /// round r (from 0) of imputation k. Empty without the option.
  const matrix& chain() const { return chain_; }
  /// One of them. Throws for one that does not exist.
  [[nodiscard]] normal_model model(std::size_t k, std::size_t round) const;

  /// The estimate from which the chains began.
  const em_estimates& start() const { return start_; }

  /// pool_estimates, for as many estimates as there are imputations; of matrices for each column, with a row
  /// for each imputation.
  [[nodiscard]] pooled_estimate pool(std::span<const double> estimates, std::span<const double> variances,
                                     double complete_df = std::numeric_limits<double>::infinity()) const;
  [[nodiscard]] std::vector<pooled_estimate> pool(
      const matrix& estimates, const matrix& variances,
      double complete_df = std::numeric_limits<double>::infinity()) const;

 private:
  friend imputations impute(const data_view& x, const impute_options& options);
  imputations() = default;
  matrix data_, values_, chain_;
  std::vector<hole> holes_;
  em_estimates start_;
  std::size_t rounds_ = 0;
};

/// Multiple imputation under a normal model by data augmentation (J. Schafer, Analysis of Incomplete
/// Multivariate Data, 1997): holes are drawn given mean and covariance, these given the completed data under
/// Jeffreys' prior, in turn. Chains begin at em_estimate, and forget their beginning the more slowly the more
/// rounds EM took (start().rounds). Observations of holes alone are drawn from the last model. Streams are of
/// philox4x32x10. Throws also where `progress` stopped it, and for a generator that was moved from.
[[nodiscard]] imputations impute(const data_view& x, const impute_options& options = {});

}  // namespace tmk
