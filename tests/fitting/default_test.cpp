// SPDX-License-Identifier: Apache-2.0
// Default cubics.
#include "fitting/spline_properties.hpp"

namespace tmk::tests {
namespace {

template <class Real>
class default_cubic : public testing::Test {};
using both = testing::Types<double, float>;
TYPED_TEST_SUITE(default_cubic, both);

// The second derivatives of a cubic at the inner points give the cubic back, whatever the ends are given
// it; but a free right end keeps half of the bend before it.
TYPED_TEST(default_cubic, cubics_by_their_second_derivatives) {
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

TYPED_TEST(default_cubic, checks) {
  using Real = TypeParam;
  const struct {
    int64_t nx, bc_type;
    bool ic;
    int32_t status;
  } rows[] = {{2, 0, false, DF_STATUS_BAD_NX},
              {3, 0, false, DF_STATUS_BAD_BC_TYPE},
              {3, DF_BC_PERIODIC, true, DF_STATUS_NULL_BC},
              {3, DF_BC_FREE_END, false, DF_STATUS_NULL_IC},
              {3, DF_BC_FREE_END, true, 0}};
  for (const auto& r : rows) {
    construction_case<Real> s(r.nx, 1, false);
    s.bc_type = r.bc_type;
    if (r.ic) s.ic = {Real(1)};
    EXPECT_EQ(s.construct(constructors<Real>::by_bends), r.status) << r.nx << ' ' << r.bc_type;
  }
}

}  // namespace
}  // namespace tmk::tests
