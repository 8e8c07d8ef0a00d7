// SPDX-License-Identifier: Apache-2.0
// Splines by the literature's definitions as a C program calls them.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "tmk/abi/df.h"

namespace {

struct release {
  void operator()(DFdSpline* s) const { tmk_df_textbook_ddelete(&s); }
  void operator()(DFsSpline* s) const { tmk_df_textbook_sdelete(&s); }
};
using spline = std::unique_ptr<DFdSpline, release>;

const std::vector<double> x{-1, -0.25, 0.5, 1, 2, 2.75, 4};

// A polynomial, its derivatives and its integral from 0.
struct polynomial {
  double c[4];
  double operator()(double t, int order) const {
    switch (order) {
      case -1:
        return t * (c[0] + t * (c[1] / 2 + t * (c[2] / 3 + t * c[3] / 4)));
      case 0:
        return c[0] + t * (c[1] + t * (c[2] + t * c[3]));
      case 1:
        return c[1] + t * (2 * c[2] + t * 3 * c[3]);
      default:
        return 2 * c[2] + 6 * t * c[3];
    }
  }
};

// Two functions, p and 1 - 2 p, the values at a point side by side.
std::vector<double> values_of(const polynomial& p, int order) {
  std::vector<double> y;
  for (const double t : x) y.insert(y.end(), {p(t, order), (order == 0) - 2 * p(t, order)});
  return y;
}

DFdPoints points_of(int32_t family, const std::vector<double>& y) {
  DFdPoints p{};
  p.family = family, p.xhint = DF_PARTITION_NON_UNIFORM;
  p.nx = static_cast<int64_t>(x.size()), p.x = x.data();
  p.ny = 2, p.y = y.data(), p.functionStride = 1, p.pointStride = 2;
  return p;
}

TEST(textbook, polynomials_come_back) {
  const polynomial line{{1, 2, 0, 0}}, parabola{{1, -1, 2, 0}}, cubic{{2, -3, 0.5, 1}};
  struct row {
    int32_t family, end;
    polynomial p;
    int derivatives = -1;
  };
  const row rows[] = {
      {TMK_DF_LINEAR, TMK_DF_END_USUAL, line},        {TMK_DF_QUADRATIC, TMK_DF_END_USUAL, parabola},
      {TMK_DF_SUBBOTIN, TMK_DF_END_USUAL, parabola},  {TMK_DF_SUBBOTIN, TMK_DF_END_FIRST, parabola},
      {TMK_DF_BESSEL, TMK_DF_END_USUAL, parabola},    {TMK_DF_AKIMA, TMK_DF_END_USUAL, line},
      {TMK_DF_HYMAN, TMK_DF_END_USUAL, line},         {TMK_DF_NATURAL, TMK_DF_END_USUAL, line},
      {TMK_DF_NATURAL, TMK_DF_END_FIRST, cubic},      {TMK_DF_NATURAL, TMK_DF_END_SECOND, cubic},
      {TMK_DF_NATURAL, TMK_DF_END_NOT_A_KNOT, cubic}, {TMK_DF_NOT_A_KNOT, TMK_DF_END_USUAL, cubic},
      {TMK_DF_HERMITE, TMK_DF_END_USUAL, cubic, 1},   {TMK_DF_SECOND_DERIVATIVES, TMK_DF_END_USUAL, cubic, 2},
  };
  const std::vector<double> sites{1.5, -2, 0.5, 4, 7, 3, -1};
  const int32_t orders[] = {0, 1};
  for (const row& r : rows) {
    const std::vector<double> y = values_of(r.p, 0);
    std::vector<double> derivatives;
    DFdPoints points = points_of(r.family, y);
    // One function where the conditions are those of the first.
    const bool conditions = r.end == TMK_DF_END_FIRST || r.end == TMK_DF_END_SECOND;
    const int64_t functions = points.ny = conditions ? 1 : 2;
    points.left = points.right = r.end;
    points.leftValue = r.p(x.front(), r.end), points.rightValue = r.p(x.back(), r.end);
    if (r.derivatives > 0) {
      derivatives = values_of(r.p, r.derivatives);
      points.derivatives = derivatives.data();
      points.derivativesFunctionStride = 1, points.derivativesPointStride = 2;
    }
    DFdSpline* made = nullptr;
    ASSERT_EQ(tmk_df_textbook_dnew(&made, &points, tmk_threading_serial()), 0) << r.family;
    const spline s(made);
    const auto n = static_cast<int64_t>(sites.size());
    std::vector<double> out(2 * 2 * sites.size());
    ASSERT_EQ(tmk_df_textbook_devaluate(made, nullptr, n, sites.data(), DF_SITES_UNKNOWN, 2, orders,
                                        out.data(), DF_SITE_FUNCTION_DERIVATIVE, tmk_threading_pool()),
              0);
    std::vector<double> integrals(2 * sites.size());
    ASSERT_EQ(tmk_df_textbook_dintegrate(made, nullptr, n - 1, sites.data(), sites.data() + 1,
                                         integrals.data(), tmk_threading_serial()),
              0);
    for (size_t i = 0; i < sites.size(); ++i)
      for (int64_t f = 0; f < functions; ++f) {
        const double scale = f == 0 ? 1 : -2, t = sites[i];
        for (int k = 0; k < 2; ++k)
          EXPECT_NEAR(out[(i * functions + f) * 2 + k], scale * r.p(t, k) + (f == 1 && k == 0), 2e-12)
              << r.family << ' ' << r.end << ' ' << t;
        if (i + 1 < sites.size()) {
          EXPECT_NEAR(integrals[f * (n - 1) + i],
                      scale * (r.p(sites[i + 1], -1) - r.p(t, -1)) + (f == 1 ? sites[i + 1] - t : 0), 1e-11)
              << r.family;
        }
      }
  }
}

// A sine over one period, from even points and in single precision: its two ends agree, and rules outside
// continue it, or do not.
TEST(textbook, periods_and_rules_outside) {
  const float pi = 3.14159265f, ends[2] = {0, 2 * pi};
  std::vector<float> y(41);
  for (size_t i = 0; i < y.size(); ++i) y[i] = std::sin(2 * pi * static_cast<float>(i % 40) / 40);
  for (const int32_t family : {TMK_DF_PERIODIC, TMK_DF_AKIMA}) {
    DFsPoints points{};
    points.family = family, points.xhint = DF_PARTITION_UNIFORM;
    points.nx = 41, points.x = ends, points.ny = 1, points.y = y.data(), points.pointStride = 1;
    points.left = points.right = TMK_DF_END_PERIODIC;
    DFsSpline* made = nullptr;
    ASSERT_EQ(tmk_df_textbook_snew(&made, &points, tmk_threading_serial()), 0);
    const std::unique_ptr<DFsSpline, release> s(made);
    DFsSplineProperties p;
    ASSERT_EQ(tmk_df_textbook_squery(made, &p), 0);
    EXPECT_EQ(p.nx, 41);
    EXPECT_EQ(p.row, 160);
    EXPECT_NEAR(p.coefficients[1], 1, 5e-3);  // the slope at the left end

    const float before = -1, past = 2 * pi + 1;
    const auto function = [](float t, int64_t, int32_t k, void* offset) {
      return k == 0 ? t + *static_cast<float*>(offset) : 0.0f;
    };
    float offset = 3;
    struct row {
      int32_t rule;
      float left, right, integral;  // at `before` and `past`, and from the last end to `past`
    };
    const float quarter = 1 - std::cos(1.0f), nan = std::numeric_limits<float>::quiet_NaN();
    const row rows[] = {
        {TMK_DF_OUTSIDE_CONSTANT, 0, 0, 0},
        {TMK_DF_OUTSIDE_LINEAR, -1, 1, 0.5f},
        {TMK_DF_OUTSIDE_PERIODIC, -std::sin(1.0f), std::sin(1.0f), quarter},
        {TMK_DF_OUTSIDE_NAN, nan, nan, nan},
        {TMK_DF_OUTSIDE_FUNCTION, 2, 2 * pi + 4, 0},
    };
    for (const row& r : rows) {
      float terms[2][2] = {}, found[2], integral;
      for (int right = 0; right < 2; ++right)
        ASSERT_EQ(tmk_df_textbook_sterms(made, right, r.rule, terms[right], tmk_threading_serial()), 0);
      const DFsRule outside[2] = {{r.rule, terms[0], function, &offset},
                                  {r.rule, terms[1], function, &offset}};
      const float sites[2] = {before, past};
      const int32_t value = 0;
      ASSERT_EQ(tmk_df_textbook_sevaluate(made, outside, 2, sites, DF_SITES_UNKNOWN, 1, &value, found,
                                          DF_FUNCTION_SITE_DERIVATIVE, tmk_threading_serial()),
                0);
      ASSERT_EQ(
          tmk_df_textbook_sintegrate(made, outside, 1, &ends[1], &past, &integral, tmk_threading_serial()),
          0);
      const auto same = [](float a, float b) {
        return std::isnan(b) ? std::isnan(a) : std::fabs(a - b) < 5e-3f;
      };
      EXPECT_TRUE(same(found[0], r.left) && same(found[1], r.right) && same(integral, r.integral))
          << r.rule << ' ' << found[0] << ' ' << found[1] << ' ' << integral;
    }
    int32_t cells[3];
    const float sites[3] = {before, pi / 30, past};
    ASSERT_EQ(tmk_df_textbook_scells(made, 3, sites, DF_SITES_UNKNOWN, cells, tmk_threading_serial()), 0);
    EXPECT_EQ(cells[0], 0);
    EXPECT_EQ(cells[1], 1);
    EXPECT_EQ(cells[2], 41);
  }
}

TEST(textbook, refusals) {
  const std::vector<double> y = values_of({{0, 1, 0, 0}}, 0);
  const DFdPoints good = points_of(TMK_DF_NATURAL, y);
  DFdSpline* made = nullptr;
  ASSERT_EQ(tmk_df_textbook_dnew(&made, &good, tmk_threading_serial()), 0);
  const spline s(made);
  struct row {
    int32_t status;
    void (*change)(DFdPoints& p);
  };
  const row rows[] = {
      {TMK_DF_BAD_FAMILY, [](DFdPoints& p) { p.family = 13; }},
      {DF_STATUS_BAD_NX, [](DFdPoints& p) { p.nx = 1; }},
      {DF_STATUS_BAD_NX, [](DFdPoints& p) { p.family = TMK_DF_AKIMA, p.nx = 4; }},
      {DF_STATUS_BAD_NX, [](DFdPoints& p) { p.left = p.right = TMK_DF_END_NOT_A_KNOT, p.nx = 2; }},
      {DF_STATUS_NULL_X, [](DFdPoints& p) { p.x = nullptr; }},
      {DF_STATUS_BAD_NY, [](DFdPoints& p) { p.ny = 0; }},
      {DF_STATUS_NULL_Y, [](DFdPoints& p) { p.y = nullptr; }},
      {DF_STATUS_NULL_IC, [](DFdPoints& p) { p.family = TMK_DF_HERMITE; }},
      {DF_STATUS_BAD_BC_TYPE, [](DFdPoints& p) { p.left = 5; }},
      {DF_STATUS_BAD_BC_TYPE, [](DFdPoints& p) { p.right = TMK_DF_END_NOT_A_KNOT; }},
      {DF_STATUS_BAD_BC_TYPE, [](DFdPoints& p) { p.family = TMK_DF_QUADRATIC, p.left = TMK_DF_END_SECOND; }},
      {DF_STATUS_PERIODIC_MISMATCH, [](DFdPoints& p) { p.family = TMK_DF_PERIODIC; }},
  };
  DFdSpline* other = nullptr;
  for (const row& r : rows) {
    DFdPoints p = good;
    r.change(p);
    EXPECT_EQ(tmk_df_textbook_dnew(&other, &p, tmk_threading_serial()), r.status);
    EXPECT_EQ(other, nullptr);
  }
  const int32_t falling[] = {1, 0}, value = 0;
  const DFdRule no_terms[2] = {{TMK_DF_OUTSIDE_LINEAR, nullptr, nullptr, nullptr}, {}};
  const DFdRule no_function[2] = {{}, {TMK_DF_OUTSIDE_FUNCTION, nullptr, nullptr, nullptr}};
  double out[4];
  const auto evaluate = [&](const DFdRule* outside, int64_t n, int64_t count, const int32_t* orders,
                            double* to) {
    return tmk_df_textbook_devaluate(made, outside, n, x.data(), DF_SITES_UNKNOWN, count, orders, to,
                                     DF_FUNCTION_SITE_DERIVATIVE, tmk_threading_serial());
  };
  EXPECT_EQ(evaluate(nullptr, 1, 2, falling, out), TMK_DF_BAD_ORDERS);
  EXPECT_EQ(evaluate(nullptr, 1, 0, &value, out), TMK_DF_BAD_ORDERS);
  EXPECT_EQ(evaluate(no_terms, 1, 1, &value, out), TMK_DF_BAD_RULE);
  EXPECT_EQ(evaluate(no_function, 1, 1, &value, out), TMK_DF_BAD_RULE);
  EXPECT_EQ(evaluate(nullptr, -1, 1, &value, out), TMK_DF_BAD_SITES);
  EXPECT_EQ(evaluate(nullptr, 1, 1, &value, nullptr), DF_STATUS_NULL_RESULT);
  EXPECT_EQ(evaluate(nullptr, 0, 1, &value, nullptr), 0);
  EXPECT_EQ(tmk_df_textbook_least_points(TMK_DF_AKIMA), 5);
  EXPECT_EQ(tmk_df_textbook_least_points(-1), TMK_DF_BAD_FAMILY);
}

}  // namespace
