// SPDX-License-Identifier: Apache-2.0
// Samples of the tests of statistics, and comparisons in which NaNs equal themselves.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <tmk/stats.hpp>
#include <vector>

namespace tmk {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

inline std::vector<double> gaussian_values(std::size_t n, unsigned seed, double offset = 0) {
  std::mt19937_64 g(seed);
  std::normal_distribution<double> law(offset, 1);
  std::vector<double> x(n);
  for (double& v : x) v = law(g);
  return x;
}

// Not a number equals itself here; everything else to the bit.
inline void expect_same(const std::vector<double>& a, const std::vector<double>& b) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size(); ++i)
    EXPECT_TRUE(a[i] == b[i] || (std::isnan(a[i]) && std::isnan(b[i]))) << i << ' ' << a[i] << ' ' << b[i];
}

// But for the weights themselves.
inline void expect_same_estimates(const summary& a, const summary& b) {
  EXPECT_EQ(a.n, b.n);
  EXPECT_EQ(a.nans, b.nans);
  EXPECT_EQ(a.complete, b.complete);
  for (const auto member :
       {&summary::mean, &summary::variance, &summary::sd, &summary::skewness, &summary::kurtosis,
        &summary::min, &summary::max, &summary::median, &summary::mad})
    expect_same(a.*member, b.*member);
  for (const auto member : {&summary::quantiles, &summary::cov, &summary::cor})
    expect_same((a.*member).values(), (b.*member).values());
}

inline void expect_same(const summary& a, const summary& b) {
  expect_same_estimates(a, b);
  expect_same(a.weight, b.weight);
}

// The hash at the end of an image that was changed.
inline void mend_hash(std::vector<std::byte>& image) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (std::size_t k = 0; k + 8 < image.size(); ++k)
    hash = (hash ^ std::to_integer<std::uint64_t>(image[k])) * 0x100000001b3;
  for (unsigned k = 0; k < 8; ++k) image[image.size() - 8 + k] = static_cast<std::byte>(hash >> 8 * k);
}

inline void put_word(std::vector<std::byte>& image, std::size_t place, std::uint64_t word) {
  for (unsigned k = 0; k < 8; ++k) image[place + k] = static_cast<std::byte>(word >> 8 * k);
}

}  // namespace tmk
