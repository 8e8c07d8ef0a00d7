// SPDX-License-Identifier: Apache-2.0
// The tour's page of summary statistics: two data sets described, whole and from blocks, and a sketch.
#include <cmath>
#include <cstdio>
#include <limits>
#include <span>
#include <string>
#include <tmk/stats.hpp>
#include <vector>

#include "csv.hpp"
#include "tour.hpp"

namespace {

struct table {
  std::vector<std::string> names;
  std::size_t rows = 0;
  std::vector<double> values;  // by columns

  table(const std::string& path, std::vector<std::string> headings) : names(std::move(headings)) {
    for (const std::string& name : names) {
      const std::vector<double> column = read_column(path, name);
      rows = column.size();
      values.insert(values.end(), column.begin(), column.end());
    }
  }
  tmk::matrix_view<const double> view() const {
    return {values.data(), rows, names.size(), tmk::layout::column_major};
  }
};

void show(const table& t, const tmk::summary& s) {
  std::printf("  %-9s %5s %7s %9s %8s %6s %6s %8s %8s %8s %8s %8s\n", "", "n", "missing", "mean", "sd",
              "skew", "kurt", "min", "25 %", "50 %", "75 %", "max");
  for (std::size_t j = 0; j < t.names.size(); ++j)
    std::printf("  %-9s %5lld %7lld %9.3f %8.3f %6.2f %6.2f %8.2f %8.2f %8.2f %8.2f %8.2f\n",
                t.names[j].c_str(), static_cast<long long>(s.n[j]), static_cast<long long>(s.nans[j]),
                s.mean[j], s.sd[j], s.skewness[j], s.kurtosis[j], s.min[j], s.quantiles(j, 0),
                s.quantiles(j, 1), s.quantiles(j, 2), s.max[j]);
}

void show_correlations(const table& t, const tmk::summary& s) {
  std::printf("  over the %lld complete rows:\n", static_cast<long long>(s.complete));
  for (std::size_t i = 0; i < t.names.size(); ++i) {
    std::printf("  %-9s", t.names[i].c_str());
    for (std::size_t j = 0; j <= i; ++j) std::printf(" %7.3f", s.cor(i, j));
    std::puts("");
  }
}

// How many significant digits two numbers share, up to all that a double holds for sure.
int shared_digits(double a, double b) {
  int digits = 0;
  char left[40], right[40];
  while (digits < 15) {
    std::snprintf(left, sizeof left, "%.*e", digits, a);
    std::snprintf(right, sizeof right, "%.*e", digits, b);
    if (std::string(left) != right) break;
    ++digits;
  }
  return digits;
}

// The table in three blocks, each with an accumulator of its own, one of them sent as bytes.
void compare_blocks(const table& t, const tmk::summary& whole) {
  const tmk::moments_options options{.nan = tmk::nan_policy::omit};
  const std::size_t third = t.rows / 3;
  tmk::moments acc(t.names.size(), options), second(t.names.size(), options), last(t.names.size(), options);
  acc.add(t.view().block(0, third));
  second.add(t.view().block(third, third));
  last.add(t.view().block(2 * third, t.rows - 2 * third));
  acc.merge(tmk::moments::from_bytes(second.to_bytes()));
  acc.merge(last);

  int figures = 0, fewest = 15;
  const auto compare = [&](const std::vector<double>& a, const std::vector<double>& b) {
    for (std::size_t j = 0; j < a.size(); ++j)
      ++figures, fewest = std::min(fewest, shared_digits(a[j], b[j]));
  };
  compare(whole.mean, acc.mean());
  compare(whole.sd, acc.sd());
  compare(whole.skewness, acc.skewness());
  compare(whole.kurtosis, acc.kurtosis());
  compare(whole.min, acc.min());
  compare(whole.max, acc.max());
  compare(whole.cor.values(), acc.correlation().values());
  std::printf("  From three merged blocks: all %d figures agree to %d digits or more.\n\n", figures, fewest);
}

void describe(const table& t) {
  const tmk::summary s = tmk::describe(t.view(), {.nan = tmk::nan_policy::omit});
  show(t, s);
  show_correlations(t, s);
  compare_blocks(t, s);
}

}  // namespace

void statistics_page() {
  const std::string data = TMK_DATA_DIR;
  std::puts("Summary statistics\n");
  const table quakes(data + "/quakes.csv", {"lat", "long", "depth", "mag", "stations"});
  std::printf("1. Earthquakes near Fiji, %zu of them:\n", quakes.rows);
  describe(quakes);
  const table air(data + "/airquality.csv", {"Ozone", "Solar.R", "Wind", "Temp"});
  std::printf("2. Air in New York, %zu days; missing cells are left out and counted:\n", air.rows);
  describe(air);

  std::puts("3. A spread of 1 on an offset of 10^9 keeps its digits; the textbook's one pass does not:");
  std::vector<double> x(100'000);
  double sum = 0, squares = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    x[i] = 1e9 + (i % 2 == 0 ? -1 : 1);
    sum += x[i], squares += x[i] * x[i];
  }
  const double n = static_cast<double>(x.size());
  std::printf("  variance %.12f by describe, %.1f by sums of squares, and %.12f is right\n\n",
              std::pow(tmk::describe(x).sd[0], 2), (squares - sum * sum / n) / (n - 1), n / (n - 1));

  tmk::quantile_sketch sketch(quakes.names.size(), 0.01);
  sketch.add(quakes.view());
  const auto e = sketch.bounds(2, 0.9);
  std::printf(
      "4. A sketch that keeps no data, true to 1 %% of the ranks: nine quakes in ten are less than\n"
      "  %.0f km deep; the answer's rank among %lld lies between %lld and %lld.\n",
      e.value, static_cast<long long>(e.count), static_cast<long long>(e.lowest_rank),
      static_cast<long long>(e.highest_rank));
}
