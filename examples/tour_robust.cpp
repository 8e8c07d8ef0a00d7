// SPDX-License-Identifier: Apache-2.0
// The tour's page of data that are partly wrong: 21 days of a plant for the oxidation of ammonia.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <tmk/robust.hpp>
#include <vector>

#include "csv.hpp"
#include "tour.hpp"

namespace {

// Bars of a length in proportion to the distance, with a mark at the limit.
void show_distance(std::size_t day, double classical, double robust, double limit) {
  constexpr double most = 12;
  const auto bar = [&](double d) {
    std::string r(30, ' ');
    for (int k = 0; k < 30; ++k)
      if ((k + 0.5) * most / 30 < d) r[static_cast<std::size_t>(k)] = '*';
    r[static_cast<std::size_t>(limit / most * 30)] = '|';
    return r;
  };
  std::printf("  day %2zu  %5.2f %s  %5.2f %s\n", day, classical, bar(classical).c_str(), robust,
              bar(robust).c_str());
}

}  // namespace

void robust_page() {
  constexpr std::size_t cols = 4, loss = 3;
  const char* const names[cols] = {"Air.Flow", "Water.Temp", "Acid.Conc.", "stack.loss"};
  std::vector<double> x;
  for (const char* name : names) {
    const std::vector<double> column = read_column(std::string(TMK_DATA_DIR) + "/stackloss.csv", name);
    x.insert(x.end(), column.begin(), column.end());
  }
  const std::size_t rows = x.size() / cols;
  const tmk::matrix_view<const double> days(x.data(), rows, cols, tmk::layout::column_major);
  std::printf(
      "Data that are partly wrong\n\nA plant that oxidises ammonia on %zu days: air, water, acid, loss.\n\n",
      rows);

  const tmk::summary s = tmk::describe(days);
  const tmk::robust_estimate r = tmk::robust_covariance(days);
  const std::vector<double> classical = tmk::mahalanobis(days, s.mean, s.cov);
  const std::vector<std::size_t> outliers = r.outliers(0.025);
  constexpr double limit = 3.3382;  // 97.5 % of normal data in four variables are within it
  std::puts("1. Days far from the others by a robust covariance (right), and by that of all days (left):");
  for (const std::size_t i : outliers) show_distance(i + 1, classical[i], r.distances[i], limit);
  const auto seen = std::count_if(classical.begin(), classical.end(), [](double d) { return d > limit; });
  std::printf("  The covariance of all days, in which these have a part, shows %td of the %zu.\n\n", seen,
              outliers.size());

  std::puts("2. Correlations with the loss, of all days and robust:");
  for (std::size_t j = 0; j < loss; ++j)
    std::printf("  %-30s %6.3f  %6.3f\n", names[j], s.cor(loss, j), r.correlation(loss, j));
  std::printf("  %-30s %6.3f  %6.3f\n", "Acid.Conc., given the other two",
              tmk::partial_correlation(s.cov, {0, 1})(0, 1),
              tmk::partial_correlation(r.covariance, {0, 1})(0, 1));
}
