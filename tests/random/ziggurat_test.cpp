// SPDX-License-Identifier: Apache-2.0
// Gaussian by the ziggurat. That it is the law on one generator, and one sequence, is tested with the other
// laws; here are what a wrong table, wedge or tail would spoil, and other sources of units.
#include <cmath>

#include "random/candidate_checks.hpp"
#include "random/distributions/ziggurat_data.hpp"
#include "random/laws.hpp"
#include "random/placed.hpp"

namespace {

constexpr int32_t ziggurat = 3;

// Generators with words of 32 bits, of fewer, and with uniforms alone.
TEST(ziggurat, units_come_from_every_generator) {
  for (const int32_t id : {VTS_BRNG_PHILOX4X32X10, VTS_BRNG_SFMT19937, VTS_BRNG_R250, VTS_BRNG_MCG31M1,
                           VTS_BRNG_MRG32K3A, VTS_BRNG_MCG59, VTS_BRNG_WH}) {
    SCOPED_TRACE(id);
    const owned_stream g(id, {77});
    std::vector<double> x(30000);
    std::vector<float> y(30000);
    ASSERT_EQ(_vdRngGaussianZiggurat(g, 30000, x.data(), 1, 2), 0);
    ASSERT_EQ(_vsRngGaussianZiggurat(g, 30000, y.data(), 1, 2), 0);
    expect_continuous(x, [](double v) { return normal((v - 1) / 2); });
    expect_continuous(y, [](double v) { return normal((v - 1) / 2); });
  }
}

// A layer whose heights are off by a hundredth of its wedge shifts these by more.
template <class Real>
void expect_moments_and_tails() {
  constexpr int32_t n = 1 << 21;
  const owned_stream g(VTS_BRNG_MT19937, {5});
  std::vector<Real> x(n), tail;
  ASSERT_EQ(kernel_of<Real>(*std::find_if(laws().begin(), laws().end(),
                                          [](const law& l) { return l.name == "gaussian ziggurat"; }))(
                g, n, x.data(), 0, 1, 0),
            0);
  double sum[9] = {};
  for (const Real v : x) {
    double power = 1;
    for (double& s : sum) {
      s += power;
      power *= static_cast<double>(v);
    }
    if (std::abs(v) > tmk::rng::ziggurat_layers[0].inner) tail.push_back(std::abs(v));
  }
  const double moment[] = {1, 0, 1, 0, 3, 0, 15, 0, 105};
  for (int k = 1; k <= 4; ++k)
    EXPECT_NEAR(sum[k] / n, moment[k], 4 * std::sqrt((moment[2 * k] - moment[k] * moment[k]) / n)) << k;
  const double p = tmk::rng::ziggurat_tail_probability;
  EXPECT_NEAR(p, std::erfc(tmk::rng::ziggurat_layers[0].inner / std::sqrt(2)), 1e-18);
  EXPECT_NEAR(static_cast<double>(tail.size()), n * p, 4 * std::sqrt(n * p));
  expect_continuous(tail, [=](double v) { return 1 - std::erfc(v / std::sqrt(2)) / p; });
}
TEST(ziggurat, moments_and_tails) {
  expect_moments_and_tails<double>();
  expect_moments_and_tails<float>();
}

// Cells as fine as half a layer find a layer that is drawn too often or a wedge on the wrong side.
TEST(ziggurat, every_layer_has_its_share) {
  constexpr int32_t n = 1 << 21;
  constexpr int cells = 1000;
  const owned_stream g(VTS_BRNG_PHILOX4X32X10, {6});
  std::vector<double> x(n);
  std::vector<int> cell(n);
  ASSERT_EQ(_vdRngGaussianZiggurat(g, n, x.data(), 0, 1), 0);
  std::transform(x.begin(), x.end(), cell.begin(),
                 [](double v) { return static_cast<int>(normal(v) * cells); });
  expect_discrete(cell, 0, cells, [](int) { return 1.0 / cells; });
}

TEST(ziggurat, cuts_do_not_matter) {
  expect_cuts_do_not_matter<double>(
      [](VtsStreamHandle s, int32_t n, double* r) { return _vdRngGaussianZiggurat(s, n, r, 3, 2); });
  expect_cuts_do_not_matter<float>(
      [](VtsStreamHandle s, int32_t n, float* r) { return _vsRngGaussianZiggurat(s, n, r, 3, 2); });
}

TEST(ziggurat, points_are_inverted) {
  const owned_stream g(VTS_BRNG_SOBOL, {3}), h(VTS_BRNG_SOBOL, {3});
  std::vector<double> x(300), y(300);
  ASSERT_EQ(_vdRngGaussianZiggurat(g, 300, x.data(), 3, 2), 0);
  ASSERT_EQ(tmk_vtsdRngGaussian(2, h, 300, y.data(), 3, 2), 0);
  EXPECT_EQ(x, y);
}

// Greatest units are in the highest layer at its edge, and their heights are above the density.
TEST(ziggurat, a_stuck_generator_and_a_failing_draw_end) {
  std::vector<double> x(8);
  const owned_stream g(placed::id(), {1});
  placed::at = 1;
  placed::failing = 0;
  EXPECT_EQ(_vdRngGaussianZiggurat(g, 8, x.data(), 0, 1), VTS_STATUS_BAD_ARGUMENT);
  placed::draws = 0;
  placed::failing = 2;
  EXPECT_EQ(_vdRngGaussianZiggurat(g, 1, x.data(), 0, 1), -77);  // the second unit of the first record
  placed::failing = 0;
}

}  // namespace
