// SPDX-License-Identifier: Apache-2.0
// How the tour measures errors and times.
#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <span>

// The largest error in units in the last place of y[i] against exact(i) in the processor's 64-bit extended
// precision.
template <class Exact>
double worst_ulp(std::span<const double> y, Exact exact) {
  double worst = 0;
  for (std::size_t i = 0; i < y.size(); ++i) {
    const long double right = exact(i);
    int exponent;
    std::frexp(right, &exponent);
    worst = std::max(worst, static_cast<double>(std::fabs(std::ldexp(y[i] - right, 53 - exponent))));
  }
  return worst;
}

// The best of many runs over an array that stays in the cache.
template <class Function>
double nanoseconds_per_element(std::size_t n, Function function) {
  double best = 1e9;
  for (int run = 0; run < 300; ++run) {
    const auto start = std::chrono::steady_clock::now();
    function();
    const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
    best = std::min(best, time.count());
  }
  return best / static_cast<double>(n);
}
