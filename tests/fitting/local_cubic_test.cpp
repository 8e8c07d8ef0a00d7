// SPDX-License-Identifier: Apache-2.0
// Local cubics against their rules written down plainly in extended precision, and what the families promise.
#include "fitting/construction_case.hpp"
#include "threading/shuffled_threads.hpp"
#include "tmk/abi/vtm.h"

namespace tmk::tests {
namespace {

using wide = long double;
enum family { hermite, bessel, akima, hyman };
constexpr family every_family[] = {hermite, bessel, akima, hyman};
constexpr int64_t least_points[] = {3, 4, 5, 4};
constexpr int64_t every_boundary[] = {DF_BC_NOT_A_KNOT, DF_BC_FREE_END, 12, 36, 24, 48,
                                      DF_BC_PERIODIC,   DF_BC_NONE};

template <class Real>
constexpr typename constructors<Real>::function constructor_of[] = {
    constructors<Real>::hermite, constructors<Real>::bessel, constructors<Real>::akima,
    constructors<Real>::hyman};

// The slopes that a case should have, and by how much rounding may move each.
struct slopes {
  std::vector<wide> s, tolerance;
};

template <class Real>
slopes expected_slopes(const construction_case<Real>& c, family f, size_t j) {
  const auto n = static_cast<ptrdiff_t>(c.nx);
  const auto at = [](const auto& v, ptrdiff_t i) { return static_cast<wide>(v[static_cast<size_t>(i)]); };
  std::vector<wide> h, d;
  for (ptrdiff_t i = 0; i + 1 < n; ++i) {
    h.push_back(at(c.points, i + 1) - at(c.points, i));
    d.push_back((at(c.values[j], i + 1) - at(c.values[j], i)) / h.back());
  }
  const wide steepest = std::fabs(
      *std::max_element(d.begin(), d.end(), [](wide a, wide b) { return std::fabs(a) < std::fabs(b); }));
  const wide unit = 20 * std::numeric_limits<Real>::epsilon() * (steepest + 1);
  slopes r{std::vector<wide>(static_cast<size_t>(n)), std::vector<wide>(static_cast<size_t>(n), unit)};

  const auto parabola = [](wide h0, wide d0, wide h1, wide d1) { return (h1 * d0 + h0 * d1) / (h0 + h1); };
  const auto limited = [](wide s, wide d0, wide d1) {
    const wide bound = 3 * std::min(std::fabs(d0), std::fabs(d1));
    return d0 * d1 <= 0 || s * d0 <= 0 ? 0 : std::copysign(std::min(bound, std::fabs(s)), s);
  };
  const auto weighted = [&](ptrdiff_t i, wide before, wide left, wide right, wide after) {
    const wide w1 = std::fabs(after - right), w2 = std::fabs(left - before);
    r.tolerance[static_cast<size_t>(i)] *= 1 + steepest / (w1 + w2);
    r.s[static_cast<size_t>(i)] = (w1 * left + w2 * right) / (w1 + w2);
  };
  const auto slope = [&](ptrdiff_t i) { return d[static_cast<size_t>(i)]; };
  for (ptrdiff_t i = 1; i + 1 < n; ++i) {
    wide& s = r.s[static_cast<size_t>(i)];
    const wide d0 = slope(i - 1), d1 = slope(i);
    const wide b = parabola(at(h, i - 1), d0, at(h, i), d1);
    if (f == hermite) s = at(c.ic, i - 1);
    if (f == bessel) s = b;
    if (f == hyman) s = limited(b, d0, d1);
    if (f == akima)
      weighted(i, i > 1 ? slope(i - 2) : 2 * d0 - d1, d0, d1, i + 2 < n ? slope(i + 1) : 2 * d1 - d0);
  }

  for (const int side : {0, 1}) {
    const ptrdiff_t own = side == 0 ? 0 : n - 2, next = side == 0 ? 1 : n - 3, knot = side == 0 ? 0 : n - 1;
    const wide h0 = at(h, own), h1 = at(h, next), d0 = slope(own), d1 = slope(next), w = h0 + h1;
    const wide inner = at(r.s, side == 0 ? 1 : n - 2);
    // Ends rest on the slope inside them, and carry its error on.
    const wide carried = at(r.tolerance, side == 0 ? 1 : n - 2) * (1 + w / h1) + unit * 8 * (1 + h0 / h1);
    const wide cubic = ((h0 * h0 * d1 + (h0 + 2 * w) * h1 * d0) / w - inner * w) / h1;
    wide& s = r.s[static_cast<size_t>(knot)];
    const bool first = (c.bc_type & (side == 0 ? DF_BC_FIRST_LEFT : DF_BC_FIRST_RIGHT)) != 0;
    if (c.bc_type == DF_BC_NOT_A_KNOT) {
      s = c.uniform ? (d0 + d1) / 2 - 2 * inner : cubic;
    } else if (c.bc_type == DF_BC_FREE_END) {
      s = 1.5L * d0 - inner / 2;
    } else if (c.bc_type == DF_BC_NONE) {
      s = f == akima ? (3 * d0 - d1) / 2 : f == hyman ? limited(cubic, d0, d0) : cubic;
    } else if (c.bc_type != DF_BC_PERIODIC) {
      const wide given = at(c.bc, side), bend = h0 * given / 4;
      s = first ? given : 1.5L * d0 - inner / 2 + (side == 0 ? -bend : bend);
    } else if (f == hermite) {
      s = at(c.bc, 0);
    } else if (f == akima) {
      weighted(knot, slope(n - 3), slope(n - 2), slope(0), slope(1));
    } else {
      s = parabola(at(h, n - 2), slope(n - 2), at(h, 0), slope(0));
    }
    r.tolerance[static_cast<size_t>(knot)] += carried;
  }
  return r;
}

template <class Real>
void expect_cells(const construction_case<Real>& c, const slopes& expected, size_t j) {
  const wide unit = 20 * std::numeric_limits<Real>::epsilon();
  for (int64_t i = 0; i < c.cells(); ++i) {
    const auto at = static_cast<size_t>(i);
    const Real* p = c.cell(static_cast<int64_t>(j), i);
    const wide h = wide(c.points[at + 1]) - c.points[at];
    const wide scale =
        unit * (std::fabs(p[0]) + h * (std::fabs(p[1]) + h * (std::fabs(p[2]) + h * std::fabs(p[3]))) + 1);
    ASSERT_EQ(p[0], c.values[j][at]);
    ASSERT_NEAR(p[1], expected.s[at], expected.tolerance[at]) << "slope of cell " << i;
    ASSERT_NEAR(p[0] + h * (p[1] + h * (p[2] + h * p[3])), c.values[j][at + 1], scale) << "cell " << i;
    ASSERT_NEAR(p[1] + h * (2 * p[2] + 3 * h * p[3]), expected.s[at + 1],
                expected.tolerance[at + 1] + 4 * scale / h)
        << "end slope of cell " << i;
  }
}

template <class Real>
void prepare(construction_case<Real>& c, int64_t bc_type) {
  c.bc_type = bc_type;
  c.s_type = 3;
  c.ic_type = DF_IC_FIRST;
  c.bc = {Real(0.75), Real(-1.5)};
  for (int64_t i = 2; i < c.nx; ++i) c.ic.push_back(c.real(-4, 4));
  if (bc_type == DF_BC_PERIODIC) c.close();
}

class in_widest_tier : public testing::Test {
  const int32_t before_ = tmk_current_tier();
  void SetUp() override { tmk_select_tier(TMK_TIER_WIDEST); }
  void TearDown() override { tmk_select_tier(before_); }
};

template <class Real>
class local_cubic : public in_widest_tier {};
using local_cubic_rules = in_widest_tier;
using both = testing::Types<double, float>;
TYPED_TEST_SUITE(local_cubic, both);

TYPED_TEST(local_cubic, slopes_by_rule_boundary_grid_and_length) {
  using Real = TypeParam;
  // Lengths around the least one, registers, steps of 64 cells, strips of 512 and blocks of 2048.
  for (const int64_t nx : {3,   4,   5,   6,   7,   8,   9,   17,   64,   65,   66,   67,   68,   70,
                           130, 512, 513, 514, 515, 516, 577, 2051, 2052, 2053, 2054, 2560, 4101, 4103})
    for (const int64_t bc_type : every_boundary)
      for (const bool uniform : {false, true})
        for (const family f : every_family) {
          if (nx < least_points[f]) continue;
          SCOPED_TRACE(testing::Message() << nx << " points, boundary " << bc_type << ", uniform " << uniform
                                          << ", family " << f);
          construction_case<Real> c(nx, 1, uniform);
          prepare(c, bc_type);
          ASSERT_EQ(c.construct(constructor_of<Real>[f]), 0);
          expect_cells(c, expected_slopes(c, f, 0), 0);
          if (testing::Test::HasFailure()) return;
        }
}

// Neither cuts nor layouts, threads or tiers change a bit.
TYPED_TEST(local_cubic, layouts_threads_and_tiers_agree) {
  using Real = TypeParam;
  const int32_t tier = tmk_current_tier();
  for (const int64_t ny : {1, 3, 4, 9})
    for (const int64_t nx : {11, 700, 4500})
      for (const bool uniform : {false, true})
        for (const family f : every_family) {
          construction_case<Real> rows(nx, ny, uniform), columns(nx, ny, uniform, DF_COLUMNS);
          prepare(rows, DF_BC_FREE_END);
          prepare(columns, DF_BC_FREE_END);
          ASSERT_EQ(columns.construct(constructor_of<Real>[f], shuffled_threads(3)), 0);
          tmk_select_tier(TMK_TIER_W7);
          const int32_t status = rows.construct(constructor_of<Real>[f]);
          tmk_select_tier(tier);
          ASSERT_EQ(status, 0);
          ASSERT_EQ(rows.coefficients, columns.coefficients)
              << nx << " points, " << ny << " functions, uniform " << uniform << ", family " << f;
        }
  // Coefficients that go past the caches.
  construction_case<Real> one(2500, 130, false), many(2500, 130, false);
  for (size_t j = 1; j < many.values.size(); ++j) many.values[j] = many.values[0];
  one.ny = 1;
  one.values.resize(1);
  ASSERT_EQ(many.construct(constructors<Real>::akima), 0);
  ASSERT_EQ(one.construct(constructors<Real>::akima), 0);
  const size_t row = one.coefficients.size();
  for (size_t j = 0; j < many.values.size(); ++j)
    ASSERT_TRUE(std::equal(one.coefficients.begin(), one.coefficients.end(),
                           many.coefficients.begin() + static_cast<ptrdiff_t>(j * row)));
}

TYPED_TEST(local_cubic, reproduces_polynomials) {
  using Real = TypeParam;
  struct polynomial {
    double c[4];
    double operator()(double t, int derivative = 0) const {
      const double table[] = {((c[3] * t + c[2]) * t + c[1]) * t + c[0], (3 * c[3] * t + 2 * c[2]) * t + c[1],
                              6 * c[3] * t + 2 * c[2]};
      return table[derivative];
    }
  };
  const polynomial line{{3, -2, 0, 0}}, parabola{{-0.5, 2, 1.25, 0}}, cubic{{-0.5, 2, -1, 0.25}};
  constexpr bool given = false, even = true;
  // Conditions are true derivatives of the orders given. A parabola's differences are in line on even widths.
  const struct {
    family f;
    polynomial p;
    int64_t bc_type;
    bool uniform;
    int left, right;
  } table[] = {{hermite, cubic, 12, given, 1, 1},
               {hermite, cubic, 12, even, 1, 1},
               {hermite, cubic, 48, given, 2, 2},
               {hermite, cubic, DF_BC_NONE, even, 0, 0},
               {hermite, cubic, DF_BC_NOT_A_KNOT, given, 0, 0},
               {hermite, cubic, DF_BC_NONE, given, 0, 0},
               {bessel, parabola, 36, given, 1, 2},
               {bessel, parabola, 24, even, 2, 1},
               {bessel, parabola, DF_BC_NONE, given, 0, 0},
               {bessel, parabola, DF_BC_NONE, even, 0, 0},
               {akima, parabola, DF_BC_NONE, even, 0, 0},
               {akima, parabola, 48, even, 2, 2},
               {akima, line, DF_BC_NONE, given, 0, 0},
               {akima, line, DF_BC_FREE_END, given, 0, 0},
               {hyman, line, DF_BC_NONE, given, 0, 0},
               {hyman, line, DF_BC_NONE, even, 0, 0}};
  for (const int64_t nx : {5, 6, 90})
    for (const auto& [f, p, bc_type, uniform, left, right] : table) {
      construction_case<Real> c(nx, 1, uniform);
      prepare(c, bc_type);
      c.sample([&p = p](double t) { return p(t); });
      const auto slope_at = [&p = p](Real t) { return static_cast<Real>(p(t, 1)); };
      std::transform(c.points.begin() + 1, c.points.end() - 1, c.ic.begin(), slope_at);
      c.bc = {static_cast<Real>(p(c.points.front(), left)), static_cast<Real>(p(c.points.back(), right))};
      ASSERT_EQ(c.construct(constructor_of<Real>[f]), 0);
      double scale = 1;
      for (const Real y : c.values[0]) scale = std::max(scale, std::fabs(static_cast<double>(y)));
      for (int64_t i = 0; i < c.cells(); ++i) {
        const Real* k = c.cell(0, i);
        const double x = c.points[static_cast<size_t>(i)], h = (c.points[static_cast<size_t>(i + 1)] - x) / 2;
        ASSERT_NEAR(k[0] + h * (k[1] + h * (k[2] + h * k[3])), p(x + h),
                    scale * (sizeof(Real) == 8 ? 1e-12 : 1e-5))
            << nx << " points, family " << f << ", boundary " << bc_type << ", uniform " << uniform
            << ", cell " << i;
      }
    }
}

// Rising data with flat stretches and jumps of many sizes: no cell may fall anywhere.
TYPED_TEST(local_cubic, hyman_is_monotone_where_the_data_are) {
  using Real = TypeParam;
  for (const int64_t bc_type : {DF_BC_NONE, DF_BC_FREE_END})
    for (uint32_t seed = 1; seed < 30; ++seed) {
      construction_case<Real> c(60, 1, seed % 2 == 0, DF_ROWS, seed);
      prepare(c, bc_type);
      Real y = 0;
      for (Real& v : c.values[0]) {
        v = y;
        if (c.real(0, 1) < 0.7) y += static_cast<Real>(std::exp2(c.real(-8, 4)));
      }
      ASSERT_EQ(c.construct(constructors<Real>::hyman), 0);
      for (int64_t i = 0; i < c.cells(); ++i) {
        const Real* k = c.cell(0, i);
        const wide h = wide(c.points[static_cast<size_t>(i + 1)]) - c.points[static_cast<size_t>(i)];
        const wide rise = wide(c.values[0][static_cast<size_t>(i + 1)]) - c.values[0][static_cast<size_t>(i)];
        for (int m = 0; m <= 64; ++m)
          ASSERT_GE(k[1] + h * m / 64 * (2 * k[2] + h * m / 64 * 3 * k[3]),
                    -60 * std::numeric_limits<Real>::epsilon() * rise / h)
              << "cell " << i << ", seed " << seed << ", boundary " << bc_type;
      }
    }
}

// Weights of Akima just above and below what counts as none, and slopes of either sign around an extremum.
TEST_F(local_cubic_rules, thresholds) {
  construction_case<double> c(7, 1, true);
  for (const double kink : {0x1p-36, 0x1p-31}) {  // times 8: differences change by 1.2e-10 and more, or less
    c.s_type = 3;
    for (size_t i = 0; i < 7; ++i)
      c.values[0][i] = 0.125 * double(i) + (i == 6 ? kink : 0) + (i > 3 ? 0.5 : 0);
    ASSERT_EQ(c.construct(constructors<double>::akima), 0);
    // The jump between points 3 and 4 weighs on point 3 from the right alone, on point 5 likewise.
    EXPECT_EQ(c.cell(0, 3)[1], 1);
    EXPECT_NEAR(c.cell(0, 5)[1], 1, 1e-8);
  }
  c.values[0] = {0, 0, 1, 3, 2, 2, 5};
  ASSERT_EQ(c.construct(constructors<double>::hyman), 0);
  const double zero_at[] = {1, 3, 4, 5};
  for (const double i : zero_at) EXPECT_EQ(c.cell(0, static_cast<int64_t>(i))[1], 0);
  EXPECT_EQ(c.cell(0, 2)[1], 12);
}

TYPED_TEST(local_cubic, checks_in_order) {
  using Real = TypeParam;
  for (const family f : every_family) {
    construction_case<Real> c(least_points[f] - 1, 2, false);
    const auto status = [&] { return c.construct(constructor_of<Real>[f]); };
    c.s_type = 3;
    c.bc = {Real(1)};
    c.bc_type = 7;
    EXPECT_EQ(status(), DF_STATUS_BAD_NX);
    c = construction_case<Real>(least_points[f], 2, false);
    c.s_type = 3;
    c.bc = {Real(1)};
    c.bc_type = DF_BC_QUADRATIC_VALUE;
    EXPECT_EQ(status(), DF_STATUS_BAD_BC_TYPE);
    c.bc_type = DF_BC_PERIODIC;
    c.bc.clear();
    EXPECT_EQ(status(), DF_STATUS_NULL_BC);
    c.bc = {Real(1)};
    c.ic.assign(static_cast<size_t>(c.nx), Real(0));
    EXPECT_EQ(status(), DF_STATUS_PERIODIC_MISMATCH);
    EXPECT_TRUE(c.all_untouched());
    c.close();
    c.values[1].back() = c.values[1].front() = std::numeric_limits<Real>::quiet_NaN();
    EXPECT_EQ(status(), DF_STATUS_PERIODIC_MISMATCH);
    c.ic.clear();
    c.bc_type = DF_BC_NONE;
    EXPECT_EQ(status(), f == hermite ? DF_STATUS_NULL_IC : 0);
  }
}

}  // namespace
}  // namespace tmk::tests
