// SPDX-License-Identifier: Apache-2.0
// The tour's page of vector math: on real measurements, its accuracy levels measured, and a bad element
// repaired.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <tmk/math.hpp>
#include <vector>

#include "csv.hpp"
#include "measured.hpp"
#include "tour.hpp"

namespace {

const std::string data = TMK_DATA_DIR;

template <class Function>
void show_levels(const char* name, Function function, long double (*exact)(long double),
                 const std::vector<double>& x) {
  struct row {
    tmk::accuracy level;
    const char* text;
  };
  constexpr row rows[] = {
      {tmk::accuracy::high, "high"}, {tmk::accuracy::low, "low"}, {tmk::accuracy::fast, "fast"}};
  std::vector<double> y(x.size());
  for (const row& r : rows) {
    const double time = nanoseconds_per_element(x.size(), [&] { function(x, y, r.level); });
    const double ulp = worst_ulp(y, [&](std::size_t i) { return exact(x[i]); });
    std::printf("  %-5s %-5s %12.2f %9.1f %10.2f\n", name, r.text, ulp,
                53 - std::log2(std::max(ulp, 0.5)) - 1, time);
  }
}

}  // namespace

void vector_math_page() {
  std::printf("tmk chose the kernels for this processor: tier %s.\n\n",
              std::string(tmk::name(tmk::current_tier())).c_str());

  const std::vector<double> ppm = read_column(data + "/co2.csv", "ppm");
  std::printf("1. Carbon dioxide on Mauna Loa, %zu monthly means. Yearly growth from logarithms:\n",
              ppm.size());
  std::vector<double> logs(ppm.size());
  tmk::ln(ppm, logs);
  const double years = static_cast<double>(ppm.size() - 12) / 12;
  std::vector<double> growth{(logs[ppm.size() - 12] - logs[0]) / years};
  tmk::expm1(growth, growth);
  std::printf("  from %.1f to %.1f ppm in %.0f years: %.3f %% a year\n\n", ppm[0], ppm[ppm.size() - 12],
              years, 100 * growth[0]);

  std::puts("2. Three accuracy levels, measured here on the same data:");
  std::printf("  %-5s %-5s %12s %9s %10s\n", "", "level", "largest ulp", "bits", "ns/element");
  std::vector<double> small(ppm.size());
  std::transform(ppm.begin(), ppm.end(), small.begin(), [](double p) { return p / 100; });
  show_levels(
      "ln", [](auto&... a) { tmk::ln(a...); }, logl, ppm);
  show_levels(
      "exp", [](auto&... a) { tmk::exp(a...); }, expl, small);
  show_levels(
      "sqrt", [](auto&... a) { tmk::sqrt(a...); }, sqrtl, ppm);
  std::puts("  An ulp is one unit in the last of 53 bits; 0.5 is the nearest number there is.\n");

  std::vector<double> ozone = read_column(data + "/airquality.csv", "Ozone");
  const auto missing = std::count_if(ozone.begin(), ozone.end(), [](double v) { return std::isnan(v); });
  std::printf("3. Ozone in New York, %zu days, %td of them missing. As if written down as 0, their\n",
              ozone.size(), missing);
  std::puts("  logarithms have no value; a scope says what shall stand there, and counts:");
  for (double& value : ozone)
    if (std::isnan(value)) value = 0;
  int repaired = 0;
  {
    tmk::error_scope scope([&](tmk::math_error& e) {
      ++repaired;
      e.result = 0;
    });
    tmk::ln(ozone, ozone);
  }
  double sum = 0;
  for (const double value : ozone) sum += value;
  std::vector<double> mean{sum / static_cast<double>(ozone.size() - static_cast<std::size_t>(repaired))};
  tmk::exp(mean, mean);
  std::printf("  %d logarithms repaired; geometric mean of the others %.1f ppb\n\n", repaired, mean[0]);

  std::puts("4. Arguments are checked before anything is written:");
  try {
    std::vector<double> too_short(3);
    tmk::exp(ppm, too_short);
  } catch (const tmk::error& e) {
    std::printf("  %s\n", e.what());
  }
}
