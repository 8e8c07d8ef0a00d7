// SPDX-License-Identifier: Apache-2.0
// Whether a sample has a law: Kolmogorov-Smirnov and chi-square, at one in a thousand. Seeds are fixed, so a
// sample that passes once passes always.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

template <class Real>
void expect_continuous(std::vector<Real> x, const std::function<double(double)>& distribution_function) {
  std::sort(x.begin(), x.end());
  const double n = static_cast<double>(x.size());
  double distance = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double f = distribution_function(static_cast<double>(x[i])), rank = static_cast<double>(i);
    distance = std::max({distance, f - rank / n, (rank + 1) / n - f});
  }
  EXPECT_LT(std::sqrt(n) * distance, 1.95);
}

// probability(k) for k from `least` on; the last cell holds everything above.
inline void expect_discrete(const std::vector<int>& x, int least, int cells,
                            const std::function<double(int)>& probability) {
  std::vector<double> count(static_cast<std::size_t>(cells)), expected(count.size());
  for (const int k : x) {
    ASSERT_GE(k, least);
    ++count[static_cast<std::size_t>(std::min(k - least, cells - 1))];
  }
  double rest = static_cast<double>(x.size()), statistic = 0;
  for (int c = 0; c < cells; ++c) {
    const double e = c + 1 < cells ? static_cast<double>(x.size()) * probability(least + c) : rest;
    rest -= e;
    if (e == 0) {
      EXPECT_EQ(count[static_cast<std::size_t>(c)], 0);
      continue;
    }
    const double difference = count[static_cast<std::size_t>(c)] - e;
    statistic += difference * difference / e;
  }
  const double freedom = cells - 1;  // quantile by Wilson and Hilferty, z = 3.09
  EXPECT_LT(statistic,
            freedom * std::pow(1 - 2 / (9 * freedom) + 3.09 * std::sqrt(2 / (9 * freedom)), 3) + 1);
}
