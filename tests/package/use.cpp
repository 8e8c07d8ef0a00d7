// SPDX-License-Identifier: Apache-2.0
// A C++ program that links tmk: a result, and an error that crosses the library's border as an exception.
#include <cmath>
#include <cstdio>
#include <tmk/error.hpp>
#include <tmk/math.hpp>
#include <vector>

int main() {
  const std::vector<double> x{-1, 0, 0.5, 1, 20};
  std::vector<double> y(x.size());
  tmk::exp(x, y);
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (std::abs(y[i] - std::exp(x[i])) <= 1e-15 * std::exp(x[i])) continue;
    std::printf("exp(%.17g) = %.17g\n", x[i], y[i]);
    return 1;
  }
  std::vector<double> too_short(x.size() - 1);
  try {
    tmk::exp(x, too_short);
  } catch (const tmk::error&) {
    return 0;
  }
  std::puts("a result of the wrong size was taken");
  return 1;
}
