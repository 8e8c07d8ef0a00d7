// SPDX-License-Identifier: Apache-2.0
// The beta law.
#include <cmath>

#include "random/candidate_checks.hpp"
#include "random/distributions/laws_by_candidates_continuous.hpp"
#include "random/incomplete.hpp"

namespace {

int32_t draw(VtsStreamHandle s, int32_t n, double* r, double p, double q, double a, double beta) {
  return _vtsdRngBeta(0, s, n, r, p, q, a, beta);
}
int32_t draw(VtsStreamHandle s, int32_t n, float* r, double p, double q, double a, double beta) {
  return _vtssRngBeta(0, s, n, r, static_cast<float>(p), static_cast<float>(q), static_cast<float>(a),
                      static_cast<float>(beta));
}

// Near 1 variates are on the grid of their format, which shows where much of the law is there.
template <class Real>
void expect_beta(double p, double q, double a, double beta) {
  SCOPED_TRACE(std::to_string(p) + " " + std::to_string(q));
  const int32_t n = p + q > 1000 ? 2000 : 10000;
  const owned_stream g(VTS_BRNG_MT19937, {2027});
  std::vector<Real> x(static_cast<size_t>(n));
  ASSERT_EQ(draw(g, n, x.data(), p, q, a, beta), 0);
  const double low = sizeof(Real) == 8 ? 0x1p-970 : 0x1p-120,
               high = sizeof(Real) == 8 ? 1 - 0x1p-38 : 1 - 0x1p-9;
  for (const Real v : x) ASSERT_TRUE(v >= a && v <= a + beta);
  expect_continuous_within(x, a + beta * low, a + beta * high, [=](double v) {
    return beta_below(static_cast<Real>(p), static_cast<Real>(q), (v - a) / beta);
  });
}
TEST(beta, has_its_law_for_every_pair_of_shapes) {
  const double shapes[] = {0x1p-20, 0.01, 0.5, 0.7, 1, 2, 30, 1e5};
  for (const double p : shapes)
    for (const double q : shapes) {
      if (p + q > 1e5) continue;
      expect_beta<double>(p, q, 0, 1);
      expect_beta<float>(p, q, 0, 1);
    }
  expect_beta<double>(1e5, 3e5, 0, 1);
  expect_beta<double>(2.5, 0.75, -1, 4);
  expect_beta<float>(2.5, 0.75, -1, 4);
}

TEST(beta, cuts_do_not_matter) {
  for (const auto& [p, q] : {std::pair(0.3, 0.7), {0.5, 0.5}, {0.25, 3.0}, {2.0, 1.0}, {2.5, 8.0}}) {
    expect_cuts_do_not_matter<double>([=](auto s, auto n, auto r) { return draw(s, n, r, p, q, 1, 2); });
    expect_cuts_do_not_matter<float>([=](auto s, auto n, auto r) { return draw(s, n, r, p, q, 1, 2); });
  }
}

TEST(beta, statuses) {
  const struct {
    int32_t method;
    double p, q, a, beta;
    int32_t status;
  } rows[] = {{1, -1, 1, 0, 1, VTS_STATUS_BAD_METHOD},
              {0, 0, 1, 0, 1, VTS_STATUS_BAD_ARGUMENT},
              {0, 1, NAN, 0, 1, VTS_STATUS_BAD_ARGUMENT},
              {0, INFINITY, 1, 0, 1, VTS_STATUS_BAD_ARGUMENT},
              {0, 1, 1, NAN, 1, VTS_STATUS_BAD_ARGUMENT},
              {0, 1, 1, 0, 0, VTS_STATUS_BAD_ARGUMENT},
              {0, 1, 1, 0, 1, 0}};
  const owned_stream g(VTS_BRNG_MCG59, {1});
  double r = -5;
  for (const auto& row : rows)
    EXPECT_EQ(_vtsdRngBeta(row.method, g, 0, &r, row.p, row.q, row.a, row.beta), row.status);
  EXPECT_EQ(r, -5);
}

}  // namespace
