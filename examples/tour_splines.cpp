// SPDX-License-Identifier: Apache-2.0
// The tour's page of splines: two curves through a monthly series, their slopes, an integral and a plot.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <tmk/spline.hpp>
#include <vector>

#include "csv.hpp"
#include "tour.hpp"

namespace {

// How far a curve leaves the range of the two points it joins, at most.
double overshoot(const tmk::spline& s, const std::vector<double>& year, const std::vector<double>& ppm) {
  constexpr std::size_t fine = 20;
  std::vector<double> sites, values;
  for (std::size_t i = 0; i + 1 < year.size(); ++i)
    for (std::size_t k = 0; k < fine; ++k)
      sites.push_back(year[i] + (year[i + 1] - year[i]) * static_cast<double>(k) / fine);
  values.resize(sites.size());
  s(sites, values);
  double most = 0;
  for (std::size_t j = 0; j < sites.size(); ++j) {
    const auto [low, high] = std::minmax(ppm[j / fine], ppm[j / fine + 1]);
    most = std::max({most, values[j] - high, low - values[j]});
  }
  return most;
}

// The mean slope at the middle of each month, over all years.
std::array<double, 12> seasonal_slope(const tmk::spline& s, double first_year, std::size_t years) {
  std::vector<double> middles(12 * years), slopes(middles.size());
  for (std::size_t k = 0; k < middles.size(); ++k)
    middles[k] = first_year + (static_cast<double>(k) + 0.5) / 12;
  s.evaluate(middles, {1}, slopes);
  std::array<double, 12> mean{};
  for (std::size_t k = 0; k < slopes.size(); ++k) mean[k % 12] += slopes[k] / static_cast<double>(years);
  return mean;
}

void plot(const tmk::spline& s, double from, double to, double low, double high) {
  constexpr std::size_t wide = 72, tall = 12;
  std::vector<double> curve(wide);
  s(tmk::uniform(from, to, wide), curve);
  std::vector<std::string> page(tall, std::string(wide, ' '));
  for (std::size_t j = 0; j < wide; ++j) {
    const auto row = static_cast<std::size_t>((high - curve[j]) / (high - low) * tall);
    page[std::min(row, tall - 1)][j] = '*';
  }
  for (std::size_t i = 0; i < tall; ++i)
    std::printf("  %5.0f |%s\n", high - (high - low) * static_cast<double>(i) / tall, page[i].c_str());
  std::printf("        +%s\n         %-24.0f%-24.0f%.0f\n", std::string(wide, '-').c_str(), from, from + 1,
              from + 2);
}

}  // namespace

void splines_page() {
  const std::string file = std::string(TMK_DATA_DIR) + "/co2.csv";
  const std::vector<double> year = read_column(file, "year"), ppm = read_column(file, "ppm");
  std::printf("Splines\n\nCarbon dioxide in the air of Mauna Loa, %zu months from 1959 on, in ppm.\n\n",
              year.size());

  const tmk::spline cubic = tmk::spline::not_a_knot(year, ppm), monotone = tmk::spline::hyman(year, ppm);
  std::puts("1. Two curves through all points: one with a smooth bend, one without bumps of its own.");
  std::printf("  beyond the points that it joins, the not-a-knot cubic goes by %.3f ppm, Hyman's by %.3f\n",
              overshoot(cubic, year, ppm), overshoot(monotone, year, ppm));
  std::printf("  on 10 May 1975 (%.3f): %.3f and %.3f ppm\n\n", 1975 + 129.0 / 365, cubic(1975 + 129.0 / 365),
              monotone(1975 + 129.0 / 365));

  std::puts("2. The slope by seasons, in ppm a year: the first derivative, averaged over 38 years.");
  const char* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto slope = seasonal_slope(cubic, 1959, 38), limited = seasonal_slope(monotone, 1959, 38);
  std::printf("            ");
  for (const char* month : months) std::printf("%6s", month);
  std::printf("\n  cubic     ");
  for (const double v : slope) std::printf("%6.1f", v);
  std::printf("\n  Hyman's   ");
  for (const double v : limited) std::printf("%6.1f", v);

  double months_mean = 0;
  for (std::size_t k = 0; k < 12; ++k) months_mean += ppm[(1975 - 1959) * 12 + k] / 12;
  std::printf(
      "\n\n3. The mean of 1975 is an integral: %.3f ppm by the cubic, %.3f by Hyman's; the months' mean is\n"
      "  %.3f.\n\n",
      cubic.integrate(1975, 1976), monotone.integrate(1975, 1976), months_mean);

  std::puts("4. Three years of the cubic:");
  plot(cubic, 1975, 1978, 326, 338);
}
