// Natural and default cubics: what makes a spline one, checked in extended precision.
#include "fitting/construction_case.hpp"
#include "linalg/tridiagonal.hpp"
#include "threading/shuffled_threads.hpp"

namespace tmk::tests {
namespace {

using wide = long double;

constexpr int64_t every_boundary[] = {DF_BC_NOT_A_KNOT, DF_BC_FREE_END, 12, 36, 24, 48, DF_BC_PERIODIC};

// A cell in extended precision; `scale` is the size of what its bends are differences of.
struct wide_cell {
  wide h, c0, c1, c2, c3, slope, scale;

  template <class Real>
  wide_cell(const construction_case<Real>& s, int64_t j, int64_t i) {
    const Real* c = s.cell(j, i);
    const auto& y = s.values[static_cast<size_t>(j)];
    const auto at = static_cast<size_t>(i);
    h = wide(s.points[at + 1]) - wide(s.points[at]);
    c0 = c[0], c1 = c[1], c2 = c[2], c3 = c[3];
    slope = (wide(y[at + 1]) - wide(y[at])) / h;
    scale = std::fabs(slope) + std::fabs(c1) + std::fabs(end_slope()) + (std::fabs(wide(y[at])) + 1) / h;
  }
  wide end_value() const { return c0 + h * (c1 + h * (c2 + h * c3)); }
  wide end_slope() const { return c1 + h * (2 * c2 + h * 3 * c3); }
  wide bend() const { return 2 * c2; }
  wide end_bend() const { return 2 * c2 + 6 * h * c3; }
};

// Values at the points, slopes and second derivatives that agree on both sides, and the boundary conditions:
// together they leave one spline. Errors are in units of rounding of what stands in a cell.
template <class Real>
void expect_spline(const construction_case<Real>& s, int64_t j, wide allowed) {
  const wide unit = allowed * std::numeric_limits<Real>::epsilon();
  const int64_t last = s.cells() - 1;
  const wide_cell first_cell(s, j, 0), last_cell(s, j, last);
  const auto near = [&](wide a, wide b, wide scale, const char* what, int64_t i) {
    ASSERT_LE(std::fabs(a - b), unit * scale)
        << what << " at " << i << " of function " << j << ": " << (double)a << " for " << (double)b;
  };
  for (int64_t i = 0; i <= last; ++i) {
    const wide_cell c(s, j, i);
    const auto& y = s.values[static_cast<size_t>(j)];
    ASSERT_EQ(s.cell(j, i)[0], y[static_cast<size_t>(i)]);
    near(c.end_value(), y[static_cast<size_t>(i + 1)], c.scale * c.h, "value", i);
    if (i == last) break;
    const wide_cell next(s, j, i + 1);
    near(c.end_slope(), next.c1, c.scale + next.scale, "slope", i);
    near(c.end_bend(), next.bend(), c.scale / c.h + next.scale / next.h, "bend", i);
  }
  const auto& bc = s.bc;
  const wide first_scale = first_cell.scale / first_cell.h, last_scale = last_cell.scale / last_cell.h;
  switch (s.bc_type) {
    case DF_BC_NOT_A_KNOT: {
      const wide_cell second(s, j, 1), before(s, j, last - 1);
      near(first_cell.c3, second.c3, first_scale / first_cell.h + second.scale / second.h / second.h, "left",
           0);
      near(last_cell.c3, before.c3, last_scale / last_cell.h + before.scale / before.h / before.h, "right",
           last);
      return;
    }
    case DF_BC_PERIODIC:
      near(first_cell.c1, last_cell.end_slope(), first_cell.scale + last_cell.scale, "period", 0);
      near(first_cell.bend(), last_cell.end_bend(), first_scale + last_scale, "period's bend", 0);
      return;
    case DF_BC_FREE_END:
      near(first_cell.bend(), 0, first_scale, "free left", 0);
      near(last_cell.end_bend(), 0, last_scale, "free right", last);
      return;
  }
  if ((s.bc_type & DF_BC_FIRST_LEFT) != 0)
    ASSERT_EQ(s.cell(j, 0)[1], bc[0]);
  else
    near(first_cell.bend(), bc[0], first_scale, "left bend", 0);
  if ((s.bc_type & DF_BC_FIRST_RIGHT) != 0)
    near(last_cell.end_slope(), bc[1], last_cell.scale, "right slope", last);
  else
    near(last_cell.end_bend(), bc[1], last_scale, "right bend", last);
}

template <class Real>
class natural : public testing::Test {};
using both = testing::Types<double, float>;
TYPED_TEST_SUITE(natural, both);

TYPED_TEST(natural, every_boundary_layout_grid_and_length) {
  using Real = TypeParam;
  // Lengths around the least one, registers, the rule of threads, and the cuts into panels.
  for (const int64_t nx : {2, 3, 4, 5, 9, 60, 300, 513, 514, 1500, 4097, 4099})
    for (const int64_t bc_type : every_boundary)
      for (const bool uniform : {false, true}) {
        if (bc_type == DF_BC_NOT_A_KNOT && nx < 4) continue;
        construction_case<Real> rows(nx, 3, uniform), columns(nx, 3, uniform, DF_COLUMNS);
        for (auto* s : {&rows, &columns}) {
          s->bc_type = bc_type;
          s->bc = {Real(0.75), Real(-1.5)};
          if (bc_type == DF_BC_PERIODIC) s->close();
          ASSERT_EQ(s->construct(constructors<Real>::natural), 0);
        }
        SCOPED_TRACE(testing::Message() << nx << " points, boundary " << bc_type << ", uniform " << uniform);
        ASSERT_EQ(rows.coefficients, columns.coefficients);
        for (int64_t j = 0; j < 3; ++j) expect_spline(rows, j, 40);
        if (testing::Test::HasFailure()) return;
      }
}

template <class Real>
void expect_spline_on_widths(const std::function<double(int64_t)>& width, bool mirrored, int64_t bc_type) {
  construction_case<Real> s(3000, 1, false);
  wide x = 0;
  for (int64_t i = 0; i < s.nx; x += width(i++)) s.points[static_cast<size_t>(i)] = static_cast<Real>(x);
  if (mirrored) {
    std::reverse(s.points.begin(), s.points.end());
    for (auto& p : s.points) p = -p;
  }
  if (std::adjacent_find(s.points.begin(), s.points.end(), std::greater_equal<Real>()) != s.points.end())
    return;  // widths that singles cannot tell from 0
  s.bc_type = bc_type;
  s.bc = {Real(0.75), Real(-1.5)};
  if (bc_type == DF_BC_PERIODIC) s.close();
  ASSERT_EQ(s.construct(constructors<Real>::natural), 0);
  expect_spline(s, 0, 40);
}

// Widths that differ by many orders.
TYPED_TEST(natural, graded_partitions) {
  const auto widths = std::to_array<std::function<double(int64_t)>>(
      {[](int64_t i) { return i % 2 == 0 ? 1e-3 : 1e3; }, [](int64_t i) { return std::exp2(double(i % 30)); },
       [](int64_t i) { return 1.0 + 40 * (i % 97 == 0); }});
  for (size_t k = 0; k < widths.size(); ++k)
    for (const bool mirrored : {false, true})
      for (const int64_t bc_type : every_boundary) {
        SCOPED_TRACE(testing::Message()
                     << "widths " << k << ", mirrored " << mirrored << ", boundary " << bc_type);
        expect_spline_on_widths<TypeParam>(widths[k], mirrored, bc_type);
        if (testing::Test::HasFailure()) return;
      }
}

// Widths that grow wherever a cut may be between panels: the ends of panels are then remembered longest.
TYPED_TEST(natural, partitions_with_a_memory) {
  constexpr bool wide_real = sizeof(TypeParam) == 8;
  const double growth = wide_real ? 3 : 1.5;  // singles of 2^-120 are the least coefficients
  const int64_t rows = wide_real ? 60 : 25;
  for (int64_t start = 500; start < 1000; start += 11)
    for (const bool mirrored : {false, true}) {
      SCOPED_TRACE(testing::Message() << "growth from " << start << ", mirrored " << mirrored);
      expect_spline_on_widths<TypeParam>(
          [&](int64_t i) { return std::exp2(growth * double(std::clamp<int64_t>(i - start, 0, rows))); },
          mirrored, DF_BC_FREE_END);
      if (testing::Test::HasFailure()) return;
    }
}

TYPED_TEST(natural, three_points_without_a_knot_take_the_middle_slope_as_zero) {
  using Real = TypeParam;
  for (const bool uniform : {false, true}) {
    construction_case<Real> s(3, 1, uniform);
    s.bc_type = DF_BC_NOT_A_KNOT;
    if (!uniform) s.points = {Real(0), Real(0.125), Real(0.25)};
    s.values[0] = {Real(1), Real(2), Real(5)};
    ASSERT_EQ(s.construct(constructors<Real>::natural), 0);
    EXPECT_EQ(s.cell(0, 1)[1], 0);
    EXPECT_NEAR(s.cell(0, 0)[1], 32, 1e-4);  // (5 * 8 + 24) / 2
    expect_spline(s, 0, 40);
  }
}

TYPED_TEST(natural, reproduces_polynomials) {
  using Real = TypeParam;
  const auto cubic = [](double t) { return ((0.25 * t - 1) * t + 2) * t - 0.5; };
  const auto line = [](double t) { return 3 - 2 * t; };
  struct row {
    int64_t bc_type;
    std::function<double(double)> f;
    double left, right;
  };
  for (const int64_t nx : {4, 5, 33, 1200}) {
    const double b = 8;  // the points are stretched to end here
    const double slope[] = {2, (0.75 * b - 2) * b + 2}, bend[] = {-2, 1.5 * b - 2};
    for (const auto& [bc_type, f, left, right] :
         {row{DF_BC_NOT_A_KNOT, cubic, 0, 0}, row{12, cubic, slope[0], slope[1]},
          row{36, cubic, slope[0], bend[1]}, row{24, cubic, bend[0], slope[1]},
          row{48, cubic, bend[0], bend[1]}, row{DF_BC_FREE_END, line, 0, 0}})
      for (const bool uniform : {false, true}) {
        construction_case<Real> s(nx, 1, uniform);
        const Real end = s.points.back();
        for (auto& p : s.points) p *= Real(b) / end;
        s.points.back() = Real(b);
        s.sample(f);
        s.bc_type = bc_type;
        s.bc = {static_cast<Real>(left), static_cast<Real>(right)};
        ASSERT_EQ(s.construct(constructors<Real>::natural), 0);
        const double scale = 80;  // of the cubic's values
        for (int64_t i = 0; i < s.cells(); ++i) {
          const Real* c = s.cell(0, i);
          const double x = s.points[static_cast<size_t>(i)],
                       h = (s.points[static_cast<size_t>(i + 1)] - x) / 2;
          ASSERT_NEAR(c[0] + h * (c[1] + h * (c[2] + h * c[3])), f(x + h),
                      scale * (sizeof(Real) == 8 ? 1e-12 : 1e-5))
              << nx << " points, boundary " << bc_type << ", cell " << i;
        }
      }
  }
}

// A dense solve with pivoting of the defining equations, on widths that are wildly different.
TEST(natural, agrees_with_a_dense_solve) {
  for (const int64_t bc_type : every_boundary)
    for (const int64_t nx : {4, 7, 40}) {
      construction_case<double> s(nx, 1, false);
      for (size_t i = 1; i < s.points.size(); ++i)
        s.points[i] = s.points[i - 1] + std::pow(10, double(s.real(-3, 1)));
      s.bc_type = bc_type;
      s.bc = {0.5, 2};
      if (bc_type == DF_BC_PERIODIC) s.close();
      ASSERT_EQ(s.construct(constructors<double>::natural), 0);
      // Unknowns are all coefficients, equations their definition, cell after cell.
      const auto n = static_cast<size_t>(4 * s.cells());
      std::vector<std::vector<wide>> a;
      const auto equation = [&](wide right) -> std::vector<wide>& {
        a.emplace_back(n + 1, 0.0L);
        a.back()[n] = right;
        return a.back();
      };
      const auto add = [&](std::vector<wide>& row, int64_t cell, wide t, int derivative, wide factor) {
        for (int k = derivative; k < 4; ++k) {
          wide v = factor;
          for (int m = 0; m < derivative; ++m) v *= k - m;
          row[static_cast<size_t>(4 * cell + k)] += v * std::pow(t, wide(k - derivative));
        }
      };
      const auto h = [&](int64_t i) {
        return wide(s.points[static_cast<size_t>(i + 1)]) - s.points[static_cast<size_t>(i)];
      };
      const int64_t last = s.cells() - 1;
      for (int64_t i = 0; i <= last; ++i) {
        add(equation(s.values[0][static_cast<size_t>(i)]), i, 0, 0, 1);
        add(equation(s.values[0][static_cast<size_t>(i + 1)]), i, h(i), 0, 1);
        for (int derivative = 1; i < last && derivative < 3; ++derivative) {
          auto& row = equation(0);
          add(row, i, h(i), derivative, 1);
          add(row, i + 1, 0, derivative, -1);
        }
      }
      for (int side = 0; side < 2; ++side) {
        const int64_t cell = side == 0 ? 0 : last;
        const int derivative = bc_type == DF_BC_NOT_A_KNOT ? 3
                               : bc_type == DF_BC_PERIODIC ? 1 + side
                               : (bc_type & (side == 0 ? DF_BC_FIRST_LEFT : DF_BC_FIRST_RIGHT)) != 0 ? 1
                                                                                                     : 2;
        const bool given = bc_type > DF_BC_FREE_END && bc_type != DF_BC_PERIODIC;
        auto& row = equation(given ? s.bc[static_cast<size_t>(side)] : 0);
        if (bc_type == DF_BC_PERIODIC) {
          add(row, 0, 0, derivative, 1);
          add(row, last, h(last), derivative, -1);
        } else {
          add(row, cell, side == 0 ? 0 : h(last), derivative, 1);
          if (derivative == 3) add(row, side == 0 ? 1 : last - 1, 0, 3, -1);
        }
      }
      ASSERT_EQ(a.size(), n);
      for (size_t k = 0; k < n; ++k) {
        const auto pivot =
            std::max_element(a.begin() + static_cast<ptrdiff_t>(k), a.end(),
                             [k](const auto& p, const auto& q) { return std::fabs(p[k]) < std::fabs(q[k]); });
        std::swap(a[k], *pivot);
        for (size_t i = 0; i < n; ++i) {
          if (i == k || a[i][k] == 0) continue;
          const wide m = a[i][k] / a[k][k];
          for (size_t c = k; c <= n; ++c) a[i][c] -= m * a[k][c];
        }
      }
      wide largest = 0;
      for (int64_t i = 0; i <= last; ++i) largest = std::max(largest, std::fabs(wide(s.cell(0, i)[1])));
      for (int64_t i = 0; i <= last; ++i) {
        const auto k = static_cast<size_t>(4 * i + 1);
        ASSERT_NEAR(s.cell(0, i)[1], double(a[k][n] / a[k][k]), 1e-12 * double(largest))
            << bc_type << ' ' << i;
      }
    }
}

TYPED_TEST(natural, threads_change_no_bit) {
  using Real = TypeParam;
  for (const int64_t nx : {300, 650, 5000})
    for (const int64_t bc_type : {int64_t{DF_BC_FREE_END}, int64_t{DF_BC_PERIODIC}})
      for (const int64_t layout : {DF_ROWS, DF_COLUMNS}) {
        construction_case<Real> alone(nx, 9, false, layout);
        alone.bc_type = bc_type;
        alone.bc = {Real(1), Real(1)};
        if (bc_type == DF_BC_PERIODIC) alone.close();
        auto shared = alone;
        ASSERT_EQ(alone.construct(constructors<Real>::natural), 0);
        for (const int32_t threads : {1, 2, 3, 5, 8}) {
          ASSERT_EQ(shared.construct(constructors<Real>::natural, shuffled_threads(threads, 7)), 0);
          ASSERT_EQ(alone.coefficients, shared.coefficients) << nx << " points, " << threads << " threads";
        }
      }
}

TYPED_TEST(natural, functions_that_do_not_close) {
  using Real = TypeParam;
  for (const Real end : {Real(0.5), std::numeric_limits<Real>::quiet_NaN()}) {
    construction_case<Real> s(700, 5, false);
    s.bc_type = DF_BC_PERIODIC;
    s.bc = {Real(0), Real(0)};
    s.close();
    s.values[3].back() = end;
    if (std::isnan(end)) s.values[3].front() = end;
    EXPECT_EQ(s.construct(constructors<Real>::natural), DF_STATUS_PERIODIC_MISMATCH);
    EXPECT_TRUE(s.all_untouched());
    // Workers go on with the functions that do.
    EXPECT_EQ(s.construct(constructors<Real>::natural, shuffled_threads(8)), DF_STATUS_PERIODIC_MISMATCH);
    for (const int64_t j : {0, 1, 2, 4}) expect_spline(s, j, 40);
    EXPECT_EQ(s.cell(3, 0)[0], s.untouched);
  }
}

TYPED_TEST(natural, checks_in_order) {
  using Real = TypeParam;
  struct row {
    int64_t method, nx, yhint, bc_type;
    bool values;
    int32_t status;
  };
  // Each row has its own fault and those of all later checks.
  for (const auto& [method, nx, yhint, bc_type, values, status] :
       {row{1, 2, DF_ROWS, 1, false, DF_STATUS_BAD_METHOD}, row{0, 2, DF_ROWS, 1, false, DF_STATUS_BAD_NX},
        row{0, 3, DF_ROWS, 0, false, DF_STATUS_BAD_BC_TYPE},
        row{0, 3, DF_ROWS, 4, true, DF_STATUS_BAD_BC_TYPE},
        row{0, 2, DF_ROWS, 128, true, DF_STATUS_BAD_BC_TYPE}, row{0, 2, DF_ROWS, 2, false, 0},
        row{0, 2, DF_SEPARATE, 2, false, 0}}) {
    construction_case<Real> s(nx, 1, false, yhint);
    s.bc_type = bc_type;
    if (values) s.bc = {Real(0), Real(0)};
    EXPECT_EQ(s.construct(constructors<Real>::natural, tmk_threading_serial(), method), status) << bc_type;
  }
  construction_case<Real> s(5, 1, false);
  s.close();
  s.bc_type = DF_BC_PERIODIC;
  EXPECT_EQ(s.construct(constructors<Real>::natural), 0);
  s.s_type = 0;
  EXPECT_EQ(s.construct(constructors<Real>::natural), DF_STATUS_NULL_BC);
  // Widths of zero have no pivots.
  construction_case<Real> flat(6, 1, false);
  flat.bc_type = DF_BC_NOT_A_KNOT;
  std::fill(flat.points.begin(), flat.points.end(), Real(2));
  EXPECT_EQ(flat.construct(constructors<Real>::natural), DF_STATUS_SOLVER_FAILED);
}

// The second derivatives of a cubic at the inner points give the cubic back, whatever the ends are told of
// it; but a free right end keeps half of the bend before it.
TYPED_TEST(natural, cubics_by_their_second_derivatives) {
  using Real = TypeParam;
  const auto f = [](double t) { return ((0.5 * t - 1) * t + 2) * t - 3; };
  const auto slope = [](double t) { return (1.5 * t - 2) * t + 2; };
  const auto bend = [](double t) { return 3 * t - 2; };
  for (const bool uniform : {false, true})
    for (const int64_t layout : {DF_ROWS, DF_COLUMNS})
      for (const int64_t bc_type : {1, 12, 36, 24, 48}) {
        construction_case<Real> s(12, 2, uniform, layout);
        s.sample(f);
        s.bc_type = bc_type;
        for (size_t i = 1; i + 1 < s.points.size(); ++i) s.ic.push_back(static_cast<Real>(bend(s.points[i])));
        const double a = s.points.front(), b = s.points.back();
        s.bc = {static_cast<Real>((bc_type & DF_BC_FIRST_LEFT) != 0 ? slope(a) : bend(a)),
                static_cast<Real>((bc_type & DF_BC_FIRST_RIGHT) != 0 ? slope(b) : bend(b))};
        ASSERT_EQ(s.construct(constructors<Real>::by_bends, tmk_threading_serial(), 5), 0);
        for (int64_t j = 0; j < 2; ++j)
          for (int64_t i = 0; i < s.cells(); ++i) {
            const double x = s.points[static_cast<size_t>(i)], allowed = sizeof(Real) == 8 ? 1e-11 : 2e-3;
            const double expected[] = {f(x), slope(x), bend(x) / 2, 0.5};
            for (int k = 0; k < 4; ++k)
              ASSERT_NEAR(s.cell(j, i)[k], expected[k], allowed)
                  << bc_type << " cell " << i << " power " << k;
          }
      }
  construction_case<Real> s(6, 1, false);
  s.ic = {Real(1), Real(2), Real(3), Real(4)};
  s.bc_type = DF_BC_FREE_END;
  ASSERT_EQ(s.construct(constructors<Real>::by_bends), 0);
  EXPECT_EQ(s.cell(0, 0)[2], 0);
  EXPECT_NEAR(double(wide_cell(s, 0, 4).end_bend()), 2, 1e-3);
  EXPECT_NEAR(double(wide_cell(s, 0, 4).end_value()), s.values[0][5], 1e-5);
  s.bc_type = DF_BC_PERIODIC;
  s.bc = {Real(-7), Real(100)};
  s.close();
  ASSERT_EQ(s.construct(constructors<Real>::by_bends), 0);
  EXPECT_NEAR(double(wide_cell(s, 0, 0).bend()), -7, 1e-3);
  EXPECT_NEAR(double(wide_cell(s, 0, 4).end_bend()), -7, 1e-3);
  s.values[0].back() += 1;
  EXPECT_EQ(s.construct(constructors<Real>::by_bends), DF_STATUS_PERIODIC_MISMATCH);
}

// Orders, counts of columns around those solved at once, and a leading dimension beyond the order.
TEST(tridiagonal, solves_what_it_factored) {
  std::mt19937 engine(3);
  std::uniform_real_distribution<double> part(-1, 1);
  for (const int n : {1, 2, 3, 50})
    for (const int nrhs : {1, 4, 6}) {
      const int ldb = n + 3;
      std::vector<double> dl, d, du, b(static_cast<size_t>(ldb * nrhs)), x(b.size());
      for (int i = 0; i < n; ++i) {
        dl.push_back(part(engine)), du.push_back(part(engine));
        d.push_back(std::copysign(2.01, part(engine)));
      }
      for (auto& v : x) v = part(engine);
      for (int k = 0; k < nrhs; ++k)
        for (int i = 0; i < n; ++i) {
          const auto at = static_cast<size_t>(k * ldb + i), row = static_cast<size_t>(i);
          b[at] =
              d[row] * x[at] + (i > 0 ? dl[row - 1] * x[at - 1] : 0) + (i + 1 < n ? du[row] * x[at + 1] : 0);
        }
      int info = -1;
      ddtsvb_4dfl(&n, &nrhs, dl.data(), d.data(), du.data(), b.data(), &ldb, &info);
      ASSERT_EQ(info, 0);
      for (int k = 0; k < nrhs; ++k)
        for (int i = 0; i < n; ++i)
          ASSERT_NEAR(b[static_cast<size_t>(k * ldb + i)], x[static_cast<size_t>(k * ldb + i)], 1e-14);
    }
  float dl[] = {1, 1}, d[] = {2, 0.5F, 1}, du[] = {1, 1};
  const int n = 3;
  int info = 0;
  sdttrfb_4dfl(&n, dl, d, du, &info);
  EXPECT_EQ(info, 2);  // 1/2 - 1 * 1 / 2
}

}  // namespace
}  // namespace tmk::tests
