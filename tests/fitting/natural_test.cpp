// SPDX-License-Identifier: Apache-2.0
// Natural cubics: the properties that leave one spline, in every kernel.
#include "fitting/spline_properties.hpp"
#include "threading/shuffled_threads.hpp"

namespace tmk::tests {
namespace {

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
    return;  // widths that are 0 in singles
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

// Widths that grow wherever a cut may be between panels: the ends of panels then have the farthest influence.
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

TYPED_TEST(natural, threads_change_no_bit) {
  using Real = TypeParam;
  for (const int64_t nx : {300, 650, 5000})
    for (const int64_t bc_type : {int64_t{DF_BC_FREE_END}, int64_t{DF_BC_PERIODIC}})
      for (const int64_t layout : {DF_ROWS, DF_COLUMNS}) {
        construction_case<Real> alone(nx, 9, false, layout);
        alone.bc_type = bc_type;
        alone.bc = {Real(1), Real(1)};
        if (bc_type == DF_BC_PERIODIC) alone.close();
        // A width so small that panels do not decouple: all is one system.
        if (nx == 650) alone.points[300] = std::nextafter(alone.points[299], Real(1e6));
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
    // The other functions are still constructed.
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

}  // namespace
}  // namespace tmk::tests
