// SPDX-License-Identifier: Apache-2.0
// Estimates of several completed data sets as one: with Q the estimates, U their variances, and means over m,
//   T = U + (1 + 1/m) B,   B the variance of Q,   l = (1 + 1/m) B / T,   v = (m - 1) / l^2
// and, for v0 degrees of freedom of complete data, 1 / df = 1 / v + 1 / ((v0 + 1) / (v0 + 3) v0 (1 - l)).
#include <algorithm>
#include <cmath>
#include <tmk/impute.hpp>

#include "api/call/refuse.hpp"

namespace tmk {

namespace {

void check_numbers(const char* function, const char* name, std::span<const double> values, bool negative) {
  for (std::size_t i = 0; i < values.size(); ++i)
    if (!std::isfinite(values[i]) || (!negative && values[i] < 0))
      detail::refuse_value(function, detail::place(name, i), detail::number(values[i]),
                           negative ? "a finite number" : "a finite number of 0 or more");
}

void check_sizes(const char* function, std::size_t estimates, std::size_t variances, std::size_t want) {
  if (estimates != want)
    detail::refuse_value(function, "estimates", detail::number(estimates), detail::number(want));
  if (variances != want)
    detail::refuse_value(function, "variances", detail::number(variances), detail::number(want));
}

pooled_estimate pooled(const char* function, std::span<const double> estimates,
                       std::span<const double> variances, double complete_df) {
  if (estimates.size() < 2)
    detail::refuse_value(function, "estimates", detail::number(estimates.size()), "2 or more");
  check_sizes(function, estimates.size(), variances.size(), estimates.size());
  check_numbers(function, "estimates", estimates, true);
  check_numbers(function, "variances", variances, false);
  if (!(complete_df > 0))
    detail::refuse_value(function, "complete_df", detail::number(complete_df), "a positive number");

  const auto m = static_cast<double>(estimates.size());
  pooled_estimate r{};
  // About the first, so that estimates that are all equal have no variance.
  for (const double q : estimates) r.estimate += (q - estimates[0]) / m;
  r.estimate += estimates[0];
  for (const double q : estimates) r.between += (q - r.estimate) * (q - r.estimate) / (m - 1);
  for (const double u : variances) r.within += u / m;
  const double increase = (1 + 1 / m) * r.between, total = r.within + increase;
  const double share = total > 0 ? increase / total : 0;
  r.se = std::sqrt(total);
  r.relative_increase = increase > 0 ? increase / r.within : 0;
  const double of_imputations = (m - 1) / (share * share);
  const double of_data = std::isinf(complete_df)
                             ? complete_df
                             : (complete_df + 1) / (complete_df + 3) * complete_df * (1 - share);
  r.df = 1 / (1 / of_imputations + 1 / of_data);
  // (r + 2 / (df + 3)) / (r + 1); nothing is missing where all estimates agree, all where nothing is within.
  r.missing_information = r.between == 0 ? 0
                          : r.within == 0
                              ? 1
                              : (r.relative_increase + 2 / (r.df + 3)) / (r.relative_increase + 1);
  return r;
}

std::vector<double> column_of(const matrix& m, std::size_t j) {
  std::vector<double> column(m.rows());
  for (std::size_t i = 0; i < m.rows(); ++i) column[i] = m(i, j);
  return column;
}

}  // namespace

pooled_estimate pool_estimates(std::span<const double> estimates, std::span<const double> variances,
                               double complete_df) {
  return pooled("pool_estimates", estimates, variances, complete_df);
}

pooled_estimate imputations::pool(std::span<const double> estimates, std::span<const double> variances,
                                  double complete_df) const {
  check_sizes("imputations::pool", estimates.size(), variances.size(), count());
  return pooled("imputations::pool", estimates, variances, complete_df);
}

std::vector<pooled_estimate> imputations::pool(const matrix& estimates, const matrix& variances,
                                               double complete_df) const {
  constexpr auto function = "imputations::pool";
  check_sizes(function, estimates.rows(), variances.rows(), count());
  if (variances.cols() != estimates.cols())
    detail::refuse_value(function, "variances.cols", detail::number(variances.cols()),
                         detail::number(estimates.cols()));
  std::vector<pooled_estimate> all;
  all.reserve(estimates.cols());
  for (std::size_t j = 0; j < estimates.cols(); ++j)
    all.push_back(pooled(function, column_of(estimates, j), column_of(variances, j), complete_df));
  return all;
}

}  // namespace tmk
