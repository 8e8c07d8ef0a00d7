// SPDX-License-Identifier: Apache-2.0
// The gamma law and Student's, which has its uniforms and steps.
#include <cmath>

#include "random/candidate_checks.hpp"
#include "random/core/chunk_kinds.hpp"
#include "random/distributions/laws_by_candidates_continuous.hpp"
#include "random/incomplete.hpp"
#include "random/placed.hpp"

namespace {

int32_t draw(VtsStreamHandle s, int32_t n, double* r, double shape, double a, double beta) {
  return _vtsdRngGamma(0, s, n, r, shape, a, beta);
}
int32_t draw(VtsStreamHandle s, int32_t n, float* r, double shape, double a, double beta) {
  return _vtssRngGamma(0, s, n, r, static_cast<float>(shape), static_cast<float>(a),
                       static_cast<float>(beta));
}

constexpr double least = 0x1p-970;  // above it doubles have all their bits

template <class Real>
void expect_gamma(double shape, double a, double beta) {
  SCOPED_TRACE(shape);
  const int32_t n = shape > 1000 ? 3000 : 20000;
  const owned_stream g(VTS_BRNG_MT19937, {2026});
  std::vector<Real> x(static_cast<size_t>(n));
  ASSERT_EQ(draw(g, n, x.data(), shape, a, beta), 0);
  const double low = sizeof(Real) == 8 ? least : 0x1p-120, top = 1e300;
  expect_continuous_within(x, a + beta * low, top, [=](double v) {
    return gamma_below(static_cast<Real>(shape), (v - a) / static_cast<double>(static_cast<Real>(beta)));
  });
}
TEST(gamma, has_its_law_for_every_shape) {
  for (const double shape : {0x1p-20, 0.003, 0.3, 0.5, 0.75, 0.9999, 1.0, 1.0001, 1.5, 2.0, 7.0, 50.0, 1e5}) {
    expect_gamma<double>(shape, 0, 1);
    expect_gamma<float>(shape, 0, 1);
  }
  expect_gamma<double>(1e6, 0, 0.25);
  expect_gamma<double>(3.25, -2, 0.125);
  expect_gamma<double>(0.003, 0, 1e300);
  expect_gamma<float>(3.25, -2, 0.125);
}

// What is 0 with scale 1 is not with a greater one: the power is not rounded before it is scaled.
TEST(gamma, small_variates_are_scaled_before_they_are_rounded) {
  const owned_stream g(VTS_BRNG_MT19937, {9}), h(VTS_BRNG_MT19937, {9});
  std::vector<double> x(5000), y(5000);
  ASSERT_EQ(_vtsdRngGamma(0, g, 5000, x.data(), 0.004, 0, 1), 0);
  ASSERT_EQ(_vtsdRngGamma(0, h, 5000, y.data(), 0.004, 0, 0x1p1000), 0);
  int regained = 0;
  for (size_t i = 0; i < x.size(); ++i) {
    if (x[i] > 0x1p-1022) {
      EXPECT_NEAR(y[i] * 0x1p-1000, x[i], x[i] * 1e-14);
    } else if (x[i] == 0) {
      EXPECT_LE(y[i], 0x1p-75);  // half the least subnormal
    }
    regained += x[i] == 0 && y[i] > 0 ? 1 : 0;
  }
  EXPECT_GT(regained, 50);
}

TEST(gamma, cuts_do_not_matter) {
  for (const double shape : {0.25, 0.5, 1.0, 2.5}) {
    expect_cuts_do_not_matter<double>([=](auto s, auto n, auto r) { return draw(s, n, r, shape, 1, 2); });
    expect_cuts_do_not_matter<float>([=](auto s, auto n, auto r) { return draw(s, n, r, shape, 1, 2); });
  }
}

// A candidate takes the elements of that many uniforms, accepted or not.
TEST(gamma, candidates_take_a_fixed_number_of_uniforms) {
  for (const double shape : {0.25, 0.5, 1.0, 1.25}) {
    const owned_stream g(VTS_BRNG_MT19937, {4}), h(VTS_BRNG_MT19937, {4});
    std::vector<double> x(3000), u(9000);
    const int32_t kept = tmk::rng::gamma_candidates(g, 3000, x.data(), shape, 0, 1);
    EXPECT_TRUE(kept > 2700 && kept <= 3000) << kept;
    tmk_vtsdRngUniform(h, 3000 * tmk::rng::gamma_uniforms(shape), u.data(), 0, 1);
    EXPECT_EQ(draw_bytes(g, 3), draw_bytes(h, 3)) << shape;
  }
}

TEST(gamma, statuses) {
  const struct {
    int32_t method;
    double shape, a, beta;
    int32_t status;
  } rows[] = {{1, -1, 0, 1, VTS_STATUS_BAD_METHOD},
              {0, 0, 0, 1, VTS_STATUS_BAD_ARGUMENT},
              {0, NAN, 0, 1, VTS_STATUS_BAD_ARGUMENT},
              {0, INFINITY, 0, 1, VTS_STATUS_BAD_ARGUMENT},
              {0, 2, INFINITY, 1, VTS_STATUS_BAD_ARGUMENT},
              {0, 2, 0, -1, VTS_STATUS_BAD_ARGUMENT},
              {0, 2, 0, 1, 0}};
  const owned_stream g(VTS_BRNG_MCG59, {1});
  double r = -5;
  float s = -5;
  for (const auto& row : rows) {
    EXPECT_EQ(_vtsdRngGamma(row.method, g, 0, &r, row.shape, row.a, row.beta), row.status);
    EXPECT_EQ(_vtssRngGamma(row.method, g, -3, &s, static_cast<float>(row.shape), static_cast<float>(row.a),
                            static_cast<float>(row.beta)),
              row.status);
  }
  EXPECT_EQ(r, -5);
  EXPECT_EQ(s, -5);
  const owned_stream broken(placed::id(), {1});
  placed::draws = 0;
  placed::failing = 1;
  placed::at = 0.5;
  EXPECT_EQ(_vtsdRngGamma(0, broken, 1, &r, 2, 0, 1), -77);
  placed::failing = 0;
}

TEST(gamma, copies_and_images_continue) {
  const owned_stream g(VTS_BRNG_MT19937, {1});
  double x[3], wanted[4], got[4];
  _vtsdRngGamma(0, g, 3, x, 2.5, 0, 1);
  owned_stream copy, loaded;
  ASSERT_EQ(__vtsCopyStream(&copy.handle, g), 0);
  std::vector<unsigned char> image(static_cast<size_t>(__vtsGetStreamSize(g)));
  ASSERT_EQ(__vtsSaveStreamM(g, image.data()), 0);
  ASSERT_EQ(tmk_vts_load_stream_bounded(&loaded.handle, image.data(), image.size()), 0);
  EXPECT_EQ(__vtsGetNumChunks(loaded), 1);
  _vtsdRngGamma(0, g, 4, wanted, 2.5, 0, 1);
  for (VtsStreamHandle s : {copy.handle, loaded.handle}) {
    _vtsdRngGamma(0, s, 4, got, 2.5, 0, 1);
    EXPECT_TRUE(std::equal(got, got + 4, wanted));
  }
}

TEST(gamma, foreign_set_ups_are_refused_or_made_anew) {
  double set_up[2] = {2.5, 1e9};
  EXPECT_TRUE(tmk::rng::chunk_is_sound(7, set_up, sizeof set_up));
  EXPECT_NEAR(set_up[1], 1 / std::sqrt(9 * (2.5 - 1.0 / 3)), 1e-15);
  float single[2] = {2.5F, 1e9F};
  EXPECT_TRUE(tmk::rng::chunk_is_sound(8, single, sizeof single));
  EXPECT_LT(single[1], 1);
  for (const double shape : {-2.5, 0.0, double{NAN}, double{INFINITY}}) {
    set_up[0] = shape;
    single[0] = static_cast<float>(shape);
    EXPECT_FALSE(tmk::rng::chunk_is_sound(7, set_up, sizeof set_up));
    EXPECT_FALSE(tmk::rng::chunk_is_sound(8, single, sizeof single));
  }
  set_up[0] = 2.5;
  EXPECT_FALSE(tmk::rng::chunk_is_sound(7, set_up, 8));
}

TEST(student_t, has_its_law) {
  for (const double nu : {0.02, 0.5, 1.0, 3.0, 30.0, 1e8}) {
    SCOPED_TRACE(nu);
    const owned_stream g(VTS_BRNG_PHILOX4X32X10, {8});
    std::vector<double> x(20000);
    std::vector<float> y(20000);
    ASSERT_EQ(tmk::rng::student_t_candidates(g, 20000, x.data(), nu, 1, 2), 20000);
    ASSERT_EQ(tmk::rng::student_t_candidates(g, 20000, y.data(), static_cast<float>(nu), 1, 2), 20000);
    const auto f = [=](double v) {
      const long double t = (v - 1) / 2.0L, tail = beta_below(nu / 2, 0.5L, nu / (nu + t * t)) / 2;
      return static_cast<double>(t < 0 ? tail : 1 - tail);
    };
    expect_continuous_within(x, -1e300, 1e300, f);
    expect_continuous_within(y, -1e30, 1e30, f);
  }
}

}  // namespace
