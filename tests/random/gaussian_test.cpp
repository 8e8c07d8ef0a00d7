// SPDX-License-Identifier: Apache-2.0
// The partner that a stream keeps between draws of pairs, and the one that is dropped.
#include <cmath>

#include "random/plain_generators.hpp"

namespace {

TEST(gaussian, dropped_partners_take_a_pair) {
  const owned_stream g(VTS_BRNG_MCG59, {1}), h(VTS_BRNG_MCG59, {1});
  double x[16], y[16];
  _vtsdRngGaussian(0, g, 16, x, 0, 1);
  _vtsdRngGaussian(0, h, 7, y, 0, 1);
  _vtsdRngGaussian(0, h, 8, y + 8, 0, 1);
  for (const int i : {0, 6, 8, 15}) EXPECT_EQ(x[i], y[i]) << i;
  EXPECT_EQ(__vtsGetNumChunks(g), 0);
}

// A standard variate is kept: the next draw places it. Each precision keeps its own.
TEST(gaussian, kept_partners_are_placed_by_the_next_draw) {
  const owned_stream g(VTS_BRNG_MCG59, {1}), h(VTS_BRNG_MCG59, {1});
  double x[4], first, other, last;
  float single[3];
  _vtsdRngGaussian(1, g, 4, x, 0, 1);
  _vtsdRngGaussian(1, h, 1, &first, 0, 1);
  _vtssRngGaussian(1, h, 3, single, 0, 1);
  _vtsdRngGaussian(1, h, 1, &other, 100, 3);
  EXPECT_EQ(first, x[0]);
  EXPECT_EQ(other, x[1] * 3 + 100);
  EXPECT_EQ(__vtsGetNumChunks(h), 2);
  _vtsdRngGaussian(1, h, 1, &last, 0, 1);
  EXPECT_NE(last, x[2]);  // singles came between
}

TEST(gaussian, copies_and_images_carry_the_partner) {
  const owned_stream g(VTS_BRNG_MT19937, {1});
  double x[3], wanted[4], got[4];
  _vtsdRngGaussian(1, g, 3, x, 0, 1);
  owned_stream copy, loaded;
  ASSERT_EQ(__vtsCopyStream(&copy.handle, g), 0);
  std::vector<unsigned char> image(static_cast<size_t>(__vtsGetStreamSize(g)));
  ASSERT_EQ(__vtsSaveStreamM(g, image.data()), 0);
  ASSERT_EQ(tmk_vts_load_stream_bounded(&loaded.handle, image.data(), image.size()), 0);
  _vtsdRngGaussian(1, g, 4, wanted, 0, 1);
  for (VtsStreamHandle s : {copy.handle, loaded.handle}) {
    _vtsdRngGaussian(1, s, 4, got, 0, 1);
    EXPECT_TRUE(std::equal(got, got + 4, wanted));
  }
}

// Box and Muller's formula, on the uniforms that the stream gives.
TEST(gaussian, pairs_are_the_formula) {
  on_every_tier([] {
    const owned_stream g(VTS_BRNG_MCG59, {9}), h(VTS_BRNG_MCG59, {9});
    double u[2050], x[2050];
    _vtsdRngUniform(0, g, 2050, u, 0, 1);
    _vtsdRngGaussian(1, h, 2050, x, 0, 1);
    for (int i = 0; i < 2050; i += 2) {
      const double rho = std::sqrt(-2 * std::log(u[i])), angle = 2 * M_PI * u[i + 1];
      ASSERT_NEAR(x[i], rho * std::cos(angle), 1e-6);
      ASSERT_NEAR(x[i + 1], rho * std::sin(angle), 1e-6);
    }
  });
}

}  // namespace
