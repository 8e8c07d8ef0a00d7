// SPDX-License-Identifier: Apache-2.0
// What is true of every law by candidates: its sequence does not depend on how it is cut, and what falls
// outside an interval is as much as the law has there.
#pragma once

#include "random/goodness.hpp"
#include "random/plain_generators.hpp"

// draw(stream, n, r)
template <class Real, class Draw>
void expect_cuts_do_not_matter(Draw draw) {
  on_every_tier([&] {
    for (const int32_t id : {VTS_BRNG_MT19937, VTS_BRNG_PHILOX4X32X10, VTS_BRNG_MCG59}) {
      for (const std::vector<int32_t>& cuts : {std::vector<int32_t>{7, 9}, {1, 1023, 2000}}) {
        const owned_stream whole(id, {11}), parts(id, {11});
        std::vector<Real> wanted, got;
        for (const int32_t n : cuts) {
          std::vector<Real> piece(static_cast<size_t>(n));
          EXPECT_EQ(draw(parts.handle, n, piece.data()), 0);
          got.insert(got.end(), piece.begin(), piece.end());
        }
        wanted.resize(got.size());
        EXPECT_EQ(draw(whole.handle, static_cast<int32_t>(wanted.size()), wanted.data()), 0);
        EXPECT_EQ(got, wanted) << std::hex << id;
        EXPECT_EQ(draw_bytes(whole, 3), draw_bytes(parts, 3)) << std::hex << id;
      }
    }
  });
}

// The law within (low, high], and the numbers on both sides of it, at four standard deviations.
template <class Real>
void expect_continuous_within(const std::vector<Real>& x, double low, double high,
                              const std::function<double(double)>& f) {
  const double at_low = f(low), at_high = f(high), n = static_cast<double>(x.size());
  std::vector<Real> inside;
  double below = 0;
  for (const Real v : x) {
    ASSERT_FALSE(std::isnan(v));
    if (v > low && v <= high) inside.push_back(v);
    below += v <= low ? 1 : 0;
  }
  const auto expect_share = [n](double count, double p) {
    EXPECT_NEAR(count, n * p, 4 * std::sqrt(n * p * (1 - p)) + 1);
  };
  expect_share(below, at_low);
  expect_share(static_cast<double>(inside.size()), at_high - at_low);
  if (inside.size() > 100)
    expect_continuous(inside, [&](double v) { return (f(v) - at_low) / (at_high - at_low); });
}
