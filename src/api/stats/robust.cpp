// SPDX-License-Identifier: Apache-2.0
// Robust covariance, outliers and distances: checks, and calls of the C interface.
#include <tmk/abi/ss.h>

#include <cmath>
#include <exception>
#include <tmk/robust.hpp>

#include "api/stats/checks.hpp"

namespace tmk {

namespace {

// The caller's function as the C interface calls it; what it throws waits for the end of the call.
struct watcher {
  const robust_watcher& watch;
  std::exception_ptr thrown = nullptr;

  TmkSSRobustProgress function() const { return watch ? &call : nullptr; }
  static int32_t call(void* context, int64_t round, double change) {
    auto& self = *static_cast<watcher*>(context);
    try {
      return self.watch({round, change}) ? 0 : 1;
    } catch (...) {
      self.thrown = std::current_exception();
      return 1;
    }
  }
  void rethrow() const {
    if (thrown) std::rethrow_exception(thrown);
  }
};

std::string element(const char* matrix, std::size_t i, std::size_t j) {
  return matrix + ('(' + detail::number(i)) + ", " + detail::number(j) + ')';
}

// Above low and, if `open`, below high, else at most high.
void refuse_outside(const char* function, const char* argument, double value, double high, bool open) {
  if (!(value > 0 && (open ? value < high : value <= high)))
    detail::refuse_value(function, argument, detail::number(value),
                         "above 0 and " + std::string(open ? "below " : "at most ") + detail::number(high));
}

void check_data(const char* function, const data_view& x, std::size_t least_rows, int threads) {
  detail::check_data(function, x, false);
  detail::refuse_unless_in(function, "x.cols", detail::cols_of(x), 1, detail::most_matrix_cols);
  detail::refuse_unless_in(function, "x.rows", detail::rows_of(x), least_rows, INT32_MAX);
  detail::refuse_below(function, "threads", threads, 1);
}

std::string value_text(const data_view& x, std::size_t row, std::size_t col) {
  return std::visit([=](const auto& view) { return detail::number(view(row, col)); }, x);
}

void check(const char* function, const data_view& x, const detail::data_call& call, int32_t status) {
  std::int64_t row = 0, col = 0;
  if (status == TMK_SS_NAN && tmk_ss_robust_find_not_finite(call.data(), &row, &col) == 1)
    detail::refuse_value(function, element("x", static_cast<std::size_t>(row), static_cast<std::size_t>(col)),
                         value_text(x, static_cast<std::size_t>(row), static_cast<std::size_t>(col)),
                         "a finite number");
  if (status == TMK_SS_FLAT && tmk_ss_robust_find_flat(call.data(), &col, call.threading()) == 1)
    detail::refuse(function, "x column " + detail::number(col), "0",
                   "has a median absolute deviation of 0: half its values or more are equal");
  if (status == VTS_STATUS_SS_NOT_POSITIVE)
    detail::refuse(function, "x", "singular",
                   "has too many rows on a hyperplane: their covariance is singular");
  detail::check_status(function, status);
}

matrix correlation_of(const matrix& c) {
  matrix r(c.rows(), c.cols());
  for (std::size_t i = 0; i < c.rows(); ++i)
    for (std::size_t j = 0; j < c.cols(); ++j)
      r(i, j) = i == j ? 1 : c(i, j) / (std::sqrt(c(i, i)) * std::sqrt(c(j, j)));
  return r;
}

}  // namespace

std::vector<std::size_t> robust_estimate::outliers(double alpha) const {
  detail::refuse_unless_in("robust_estimate::outliers", "alpha", alpha, 0, 1);
  const double limit = std::sqrt(__vtsdChi2ICDF(static_cast<double>(location.size()), 1 - alpha));
  std::vector<std::size_t> rows;
  for (std::size_t i = 0; i < distances.size(); ++i)
    if (distances[i] > limit) rows.push_back(i);
  return rows;
}

robust_estimate robust_covariance(const data_view& x, const robust_options& options) {
  constexpr auto function = "robust_covariance";
  const std::size_t rows = detail::rows_of(x), cols = detail::cols_of(x);
  const int method = static_cast<int>(options.method);
  check_data(function, x, 2 * cols + 1, options.threads);
  if (method != TMK_SS_TBS && method != TMK_SS_OGK)
    detail::refuse_value(function, "method", detail::number(method), "tbs or ogk");
  refuse_outside(function, "breakdown", options.breakdown, 0.5, false);
  refuse_outside(function, "rejection", options.rejection, 1, true);
  detail::refuse_below(function, "tolerance", options.tolerance, 0);
  detail::refuse_below(function, "max_rounds", options.max_rounds, 1);

  robust_estimate r;
  r.location.resize(cols), r.covariance = matrix(cols, cols);
  r.distances.resize(rows), r.weights.resize(rows);
  watcher w{options.progress};
  const TmkSSRobustOptions o{.method = method,
                             .breakdown = options.breakdown,
                             .rejection = options.rejection,
                             .tolerance = options.tolerance,
                             .rounds = options.max_rounds,
                             .reweight = options.reweight,
                             .progress = w.function(),
                             .context = &w};
  TmkSSRobustEstimate e{
      r.location.data(), r.covariance.row(0).data(), r.distances.data(), r.weights.data(), 0, 0, 0, 0};
  const detail::data_call c(x, {}, options.threads);
  const int32_t status = tmk_ss_robust_covariance(c.data(), &o, &e, c.threading());
  w.rethrow();
  check(function, x, c, status);
  r.correlation = correlation_of(r.covariance);
  r.rounds = e.rounds, r.converged = e.converged != 0;
  r.breakdown = e.breakdown, r.rejection = e.rejection;
  return r;
}

outlier_result outliers(const data_view& x, const outlier_options& options) {
  constexpr auto function = "outliers";
  const std::size_t rows = detail::rows_of(x);
  check_data(function, x, 3 * detail::cols_of(x) + 2, options.threads);
  refuse_outside(function, "alpha", options.alpha, 1, true);
  if (options.start != start::median && options.start != start::mahalanobis)
    detail::refuse_value(function, "start", detail::number(static_cast<int>(options.start)),
                         "median or mahalanobis");

  outlier_result r;
  r.distances.resize(rows);
  std::vector<double> weights(rows);
  watcher w{options.progress};
  const TmkSSOutlierOptions o{options.start == start::median ? TMK_SS_START_MEDIAN : TMK_SS_START_MAHALANOBIS,
                              options.alpha, w.function(), &w};
  TmkSSOutliers found{weights.data(), r.distances.data(), 0, 0, 0, 0};
  const detail::data_call c(x, {}, options.threads);
  const int32_t status = tmk_ss_robust_outliers(c.data(), &o, &found, c.threading());
  w.rethrow();
  check(function, x, c, status);
  for (std::size_t i = 0; i < rows; ++i)
    if (weights[i] == 0) r.rows.push_back(i);
  r.cutoff = found.cutoff, r.rounds = found.rounds, r.converged = found.converged != 0;
  return r;
}

std::vector<double> mahalanobis(const data_view& x, std::span<const double> location,
                                const matrix& covariance, int threads) {
  constexpr auto function = "mahalanobis";
  const std::size_t cols = detail::cols_of(x);
  detail::check_data(function, x, true);
  detail::refuse_unless_in(function, "x.cols", cols, 1, detail::most_matrix_cols);
  detail::refuse_below(function, "threads", threads, 1);
  detail::check_size(function, {"location", {location.data(), location.size()}, sizeof(double)}, cols);
  if (covariance.rows() != cols || covariance.cols() != cols)
    detail::refuse_value(function, "covariance",
                         detail::number(covariance.rows()) + " by " + detail::number(covariance.cols()),
                         detail::number(cols) + " by " + detail::number(cols));
  for (std::size_t i = 0; i < cols; ++i)
    for (std::size_t j = 0; j <= i; ++j) {
      const double a = covariance(i, j), b = covariance(j, i);
      if (!std::isfinite(a) || !std::isfinite(b) || std::fabs(a - b) > 1e-12 * (std::fabs(a) + std::fabs(b)))
        detail::refuse_value(function, element("covariance", i, j), detail::number(a),
                             "a finite number, as covariance(" + detail::number(j) + ", " +
                                 detail::number(i) + "), which is " + detail::number(b));
    }
  std::vector<double> d(detail::rows_of(x));
  const detail::data_call c(x, {}, threads);
  const int32_t status =
      tmk_ss_robust_distances(c.data(), location.data(), covariance.row(0).data(), d.data(), c.threading());
  if (status == VTS_STATUS_SS_NOT_POSITIVE)
    detail::refuse(function, "covariance", "singular", "is not positive definite, or nearly so");
  detail::check_status(function, status);
  return d;
}

}  // namespace tmk
