// SPDX-License-Identifier: Apache-2.0
// Functions of covariance and correlation matrices: checks, and calls of the C interface.
#include <algorithm>
#include <cmath>

#include "api/call/settings.hpp"
#include "api/stats/checks.hpp"

namespace tmk {

namespace {

struct delete_task {
  void operator()(SSTask* task) const { __vtsSSDeleteTask(&task); }
};

// A copy of a square, finite and symmetric matrix; sides that differ by rounding are averaged.
matrix checked(const char* function, const char* name, const matrix_view<const double>& m) {
  const std::string rows = std::string(name) + ".rows", cols = std::string(name) + ".cols";
  detail::refuse_unless_in(function, rows.c_str(), m.rows(), 1, detail::most_matrix_cols);
  if (m.cols() != m.rows())
    detail::refuse_value(function, cols, detail::number(m.cols()), detail::number(m.rows()));
  if (m.data() == nullptr) detail::refuse(function, name, "null", "is null");
  const auto place = [name](std::size_t i, std::size_t j) {
    return std::string(name) + '(' + detail::number(i) + ", " + detail::number(j) + ')';
  };
  matrix r(m.rows(), m.rows());
  for (std::size_t i = 0; i < m.rows(); ++i)
    for (std::size_t j = 0; j < m.rows(); ++j)
      if (!std::isfinite(m(i, j)))
        detail::refuse_value(function, place(i, j), detail::number(m(i, j)), "a finite number");
  for (std::size_t i = 0; i < m.rows(); ++i)
    for (std::size_t j = 0; j <= i; ++j) {
      const double scale = std::max(std::sqrt(std::abs(m(i, i))) * std::sqrt(std::abs(m(j, j))),
                                    std::min(std::abs(m(i, j)), std::abs(m(j, i))));
      if (std::abs(m(i, j) - m(j, i)) > 1e-10 * scale)
        detail::refuse_value(function, place(i, j), detail::number(m(i, j)),
                             detail::number(m(j, i)) + " as " + place(j, i) + " is");
      r(i, j) = r(j, i) = m(i, j) + (m(j, i) - m(i, j)) / 2;
    }
  return r;
}

// 1 for each listed variable.
std::vector<std::int32_t> marks(const char* function, std::size_t p, const std::vector<std::size_t>& given) {
  std::vector<std::int32_t> r(p);
  if (given.empty()) detail::refuse_value(function, "given.size", "0", "1 or more");
  for (std::size_t k = 0; k < given.size(); ++k) {
    const std::string place = detail::place("given", k);
    detail::refuse_unless_in(function, place.c_str(), given[k], 0, p - 1);
    if (r[given[k]] != 0) detail::refuse(function, place, detail::number(given[k]), "is listed twice");
    r[given[k]] = 1;
  }
  if (given.size() == p)
    detail::refuse(function, "given", detail::number(p) + " variables", "takes all variables");
  return r;
}

matrix partial(const char* function, const matrix_view<const double>& cov,
               const std::vector<std::size_t>& given, bool as_correlation) {
  matrix source = checked(function, "cov", cov);
  const std::vector<std::int32_t> in_second = marks(function, source.rows(), given);
  const auto p = static_cast<std::int32_t>(source.rows());
  const std::int32_t full = VTS_SS_FULL;
  matrix r(source.rows() - given.size(), source.rows() - given.size());
  SSTask* task = nullptr;
  detail::check_status(function, __vtsdSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0));
  const std::unique_ptr<SSTask, delete_task> owned(task);
  __vtsdSSEditPartialCovCor(task, in_second.data(), source.row(0).data(), &full, nullptr, nullptr,
                            r.row(0).data(), &full, r.row(0).data(), &full);
  detail::select_first_tier();
  const std::int32_t status = _vtsdSSPartialCovariance(
      task, as_correlation ? VTS_SS_ESTIMATE_PARTIAL_COR : VTS_SS_ESTIMATE_PARTIAL_COV, 0, VTS_SS_METHOD_FAST,
      0, tmk_threading_serial());
  if (status == VTS_STATUS_SS_PARTIAL_FACTOR_FAILED)
    detail::refuse(function, "cov", "singular", "is not positive definite for the variables given");
  detail::check_status(function, status);
  return r;
}

}  // namespace

matrix partial_covariance(const matrix_view<const double>& cov, const std::vector<std::size_t>& given) {
  return partial("partial_covariance", cov, given, false);
}

matrix partial_correlation(const matrix_view<const double>& cov, const std::vector<std::size_t>& given) {
  matrix r = partial("partial_correlation", cov, given, true);
  for (std::size_t i = 0; i < r.rows(); ++i) {
    for (std::size_t j = 0; j < i; ++j)
      r(i, j) = r(j, i) = r(i, j) > 1 ? 1 : r(i, j) < -1 ? -1 : r(i, j);  // NaN stays
    r(i, i) = r(i, i) > 0 ? 1 : std::numeric_limits<double>::quiet_NaN();
  }
  return r;
}

matrix nearest_correlation(const matrix_view<const double>& m) {
  constexpr auto function = "nearest_correlation";
  matrix r = checked(function, "m", m);
  detail::check_status(function, tmk_ss_nearest_correlation(static_cast<std::int32_t>(r.rows()),
                                                            r.row(0).data(), r.row(0).data()));
  return r;
}

}  // namespace tmk
