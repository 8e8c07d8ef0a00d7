// SPDX-License-Identifier: Apache-2.0
// The tour's page of data with holes: ozone in New York, imputed a hundred times.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <tmk/impute.hpp>
#include <vector>

#include "csv.hpp"
#include "tour.hpp"

namespace {

struct estimate {
  double value, variance;
};

// The slope of y by x over all rows, by least squares.
estimate slope(const tmk::matrix& m, std::size_t x, std::size_t y) {
  const tmk::summary s = tmk::describe(tmk::matrix_view<const double>(m.row(0).data(), m.rows(), m.cols()));
  const double b = s.cov(x, y) / s.variance[x];
  const double residual = s.variance[y] - b * s.cov(x, y);
  return {b, residual / (static_cast<double>(m.rows() - 2) * s.variance[x])};
}

estimate mean(const tmk::matrix& m, std::size_t j) {
  const tmk::summary s = tmk::describe(tmk::matrix_view<const double>(m.row(0).data(), m.rows(), m.cols()));
  return {s.mean[j], s.variance[j] / static_cast<double>(m.rows())};
}

template <class Analysis>
void report(const char* what, const tmk::imputations& m, double complete_df, const tmk::matrix& complete_rows,
            const Analysis& analysis) {
  std::vector<double> values, variances;
  for (std::size_t k = 0; k < m.count(); ++k) {
    const estimate e = analysis(m.completed(k));
    values.push_back(e.value), variances.push_back(e.variance);
  }
  const tmk::pooled_estimate p = m.pool(values, variances, complete_df);
  const estimate alone = analysis(complete_rows);
  std::printf("  %-34s %8.4f +- %.4f   %8.4f +- %.4f   %5.0f   %4.0f %%\n", what, alone.value,
              std::sqrt(alone.variance), p.estimate, p.se, p.df, 100 * p.missing_information);
}

constexpr int intervals = 10, width = 15;

// How many draws of one hole fall in each interval; the last has what lies above, too.
void show_draws(const tmk::imputations& m, std::size_t hole) {
  int counts[intervals] = {};
  for (std::size_t k = 0; k < m.count(); ++k)
    ++counts[static_cast<int>(std::min(std::exp(m.values(k)[hole]) / width, intervals - 1.0))];
  std::printf("  day %3zu", m.holes()[hole].row + 1);
  for (const int count : counts) std::printf(" %5d", count);
  std::puts("");
}

}  // namespace

void imputation_page() {
  const std::string path = std::string(TMK_DATA_DIR) + "/airquality.csv";
  std::vector<std::vector<double>> columns;
  for (const char* name : {"Ozone", "Solar.R", "Wind", "Temp"}) columns.push_back(read_column(path, name));
  for (double& ozone : columns[0])
    ozone = std::log(ozone);  // of skewed values the logarithms are nearly normal
  const std::size_t days = columns[0].size(), p = columns.size();
  std::vector<double> x;
  std::vector<std::size_t> complete;
  for (std::size_t i = 0; i < days; ++i) {
    for (const auto& column : columns) x.push_back(column[i]);
    if (std::none_of(x.end() - static_cast<std::ptrdiff_t>(p), x.end(),
                     [](double v) { return std::isnan(v); }))
      complete.push_back(i);
  }
  tmk::matrix complete_rows(complete.size(), p);
  for (std::size_t i = 0; i < complete.size(); ++i)
    std::copy_n(x.begin() + static_cast<std::ptrdiff_t>(complete[i] * p), p, complete_rows.row(i).begin());

  const tmk::matrix_view<const double> view(x.data(), days, p);
  const tmk::imputations m = tmk::impute(view, {.count = 100, .rounds = 100, .seed = 1973, .threads = 2});
  std::printf(
      "Data with holes\n\n"
      "Air in New York, %zu days with %zu holes, ozone by its logarithm; EM converged in %lld rounds.\n\n"
      "1. From the %zu complete days, and pooled over %zu imputations of all days:\n"
      "  %-34s %18s   %18s   %5s   %s\n",
      days, m.holes().size(), static_cast<long long>(m.start().rounds), complete.size(), m.count(), "",
      "complete days", "pooled", "df", "missing");
  const auto df = static_cast<double>(days - 2);
  report("mean log ozone", m, df, complete_rows, [](const tmk::matrix& d) { return mean(d, 0); });
  report("mean wind, miles per hour", m, df, complete_rows, [](const tmk::matrix& d) { return mean(d, 2); });
  report("log ozone for a degree Fahrenheit", m, df, complete_rows,
         [](const tmk::matrix& d) { return slope(d, 3, 0); });

  std::printf(
      "\n2. What was imputed for ozone on three days, how often from 0, %d, ... parts in 10^9 on:\n         ",
      width);
  for (int k = 0; k < intervals; ++k) std::printf(" %5d", k * width);
  std::puts("");
  std::size_t shown = 0;
  for (std::size_t h = 0; h < m.holes().size() && shown < 3; h += 9)
    if (m.holes()[h].col == 0) show_draws(m, h), ++shown;
}
