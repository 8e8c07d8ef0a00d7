// SPDX-License-Identifier: Apache-2.0
// The spectrum of a signal as magnitudes and phases: monthly concentrations of carbon dioxide at Mauna Loa,
// 1959 to 1997. The trend is taken off, the rest transformed,
//
//   X_k = sum_j x_j w^(j k),   w = e^(-2 pi i / n),
//
// and each X_k becomes an amplitude and the month at which its wave is highest. A file of your own:
//   spectrum file.csv column
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <exception>
#include <numbers>
#include <numeric>
#include <tmk/math.hpp>
#include <vector>

#include "csv.hpp"

namespace {

using complex = std::complex<double>;

// x less its least-squares line in the index, from both of which the mean is taken first.
std::vector<double> without_trend(std::vector<double> x) {
  const double n = static_cast<double>(x.size());
  const double mean = std::accumulate(x.begin(), x.end(), 0.0) / n, middle = (n - 1) / 2;
  double covariance = 0;
  for (std::size_t i = 0; i < x.size(); ++i) covariance += (static_cast<double>(i) - middle) * (x[i] - mean);
  const double slope = covariance / (n * (n * n - 1) / 12);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] -= mean + slope * (static_cast<double>(i) - middle);
  return x;
}

// X_0 to X_(n/2). All powers of w come of one call; j k is taken modulo n, where w^(j k) repeats.
std::vector<complex> transformed(const std::vector<double>& x) {
  const std::size_t n = x.size();
  std::vector<double> angles(n);
  for (std::size_t j = 0; j < n; ++j)
    angles[j] = -2 * std::numbers::pi * static_cast<double>(j) / static_cast<double>(n);
  std::vector<complex> powers(n), sums(n / 2 + 1);
  tmk::cis(angles, powers);
  for (std::size_t k = 0; k < sums.size(); ++k)
    for (std::size_t j = 0; j < n; ++j) sums[k] += x[j] * powers[j * k % n];
  return sums;
}

void print_spectrum(const std::vector<double>& x) {
  const std::vector<complex> sums = transformed(without_trend(x));
  std::vector<double> amplitudes(sums.size()), phases(sums.size());
  tmk::abs(sums, amplitudes);
  tmk::mul(amplitudes, 2 / static_cast<double>(x.size()), amplitudes);
  tmk::arg(sums, phases);

  std::vector<std::size_t> order(sums.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  const std::size_t shown = std::min<std::size_t>(5, order.size());
  std::ranges::partial_sort(order, order.begin() + static_cast<std::ptrdiff_t>(shown), std::ranges::greater(),
                            [&](std::size_t k) { return amplitudes[k]; });
  std::printf("The strongest waves of %zu values\n", x.size());
  std::puts("  period  amplitude   phase   highest at");
  for (std::size_t i = 0; i < shown; ++i) {
    const std::size_t k = order[i];
    const double period = static_cast<double>(x.size()) / static_cast<double>(k);
    // A cos(2 pi j / period + phase) is highest where its argument is 0.
    const double highest = -phases[k] / (2 * std::numbers::pi) * period;
    std::printf("%8.2f %10.3f %7.3f %12.2f\n", period, amplitudes[k], phases[k],
                highest < 0 ? highest + period : highest);
  }
}

}  // namespace

#ifdef TMK_IN_TOUR
#include "tour.hpp"

void spectrum_page() {
  std::puts("The spectrum of a signal\n");
  std::puts("Carbon dioxide in the air by months from January 1959 (0), its trend taken off: waves by cis,");
  std::puts(
      "their amplitudes in ppm by abs, their phases by arg. A wave is highest at a month counted from 0.\n");
  print_spectrum(read_column(TMK_DATA_DIR "/co2.csv", "ppm"));
}
#else
int main(int argc, char** argv) {
  try {
    print_spectrum(argc == 3 ? read_column(argv[1], argv[2]) : read_column(TMK_DATA_DIR "/co2.csv", "ppm"));
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 1;
  }
}
#endif
