// SPDX-License-Identifier: Apache-2.0
// Quadratic splines of both families: what fixes them, checked in extended precision.
#include "fitting/construction_case.hpp"
#include "fitting/spline_case.hpp"
#include "fitting/subbotin_knots.hpp"
#include "threading/shuffled_threads.hpp"

namespace tmk::tests {
namespace {

using wide = long double;

// Piece k of a case in extended precision, at t.
template <class Real>
wide piece_at(const construction_case<Real>& c, int64_t j, int64_t k, wide t, int derivative = 0) {
  const Real* p = c.cell(j, k);
  const wide at = t - c.points[static_cast<size_t>(k)];
  const wide table[] = {p[0] + at * (p[1] + at * p[2]), p[1] + 2 * at * p[2], 2 * p[2]};
  return table[derivative];
}

template <class Real>
construction_case<Real> quadratic_case(int64_t nx, int64_t ny, bool uniform, int64_t layout = DF_ROWS) {
  construction_case<Real> c(nx, ny, uniform, layout);
  c.order = 3;
  c.s_type = DF_TYPE_STANDARD;
  c.bc_type = DF_BC_QUADRATIC_VALUE;
  c.bc = {Real(0.75), Real(-1.5)};
  return c;
}

enum class knots { anywhere, midpoints, uniform };

// The same with knots between the points, and the knots.
template <class Real>
std::vector<Real> use_knots(construction_case<Real>& c, knots kind, int64_t bc_type) {
  c.s_type = DF_TYPE_SUBBOTIN;
  c.bc_type = bc_type;
  c.ic_type = DF_IC_KNOTS | (kind == knots::uniform ? DF_IC_KNOTS_UNIFORM : 0);
  const Real first = c.points.front(), last = c.points.back(), step = (last - first) / Real(c.nx - 1);
  std::vector<Real> all{first - (kind == knots::anywhere ? Real(0) : step / 2)};
  for (int64_t i = 1; i < c.nx; ++i) {
    const Real left = c.points[static_cast<size_t>(i - 1)], width = c.points[static_cast<size_t>(i)] - left;
    all.push_back(left + width * (kind == knots::anywhere ? c.real(0.05, 0.95) : Real(0.5)));
  }
  all.push_back(last + (kind == knots::anywhere ? Real(0) : step / 2));
  c.ic = kind == knots::uniform ? std::vector{all.front(), all.back()} : all;
  return all;
}

template <class Real>
class quadratic_spline : public testing::Test {};
using both = testing::Types<double, float>;
TYPED_TEST_SUITE(quadratic_spline, both);

TYPED_TEST(quadratic_spline, standard) {
  using Real = TypeParam;
  for (const int64_t nx : {2, 3, 4, 50, 2000})
    for (const bool uniform : {false, true})
      for (const int64_t layout : {DF_ROWS, DF_COLUMNS}) {
        auto c = quadratic_case<Real>(nx, 6, uniform, layout);
        ASSERT_EQ(c.construct(constructors<Real>::quadratic, shuffled_threads(3)), 0);
        for (int64_t j = 0; j < c.ny; ++j) {
          ASSERT_EQ(c.cell(j, 0)[1], c.bc[0]);
          for (int64_t i = 0; i < c.cells(); ++i) {
            const auto& y = c.values[static_cast<size_t>(j)];
            const Real end = c.points[static_cast<size_t>(i + 1)];
            const wide slope = piece_at(c, j, i, end, 1);
            const wide unit = 20 * std::numeric_limits<Real>::epsilon() *
                              (std::fabs(c.cell(j, i)[1]) + std::fabs(slope) + 40);
            ASSERT_EQ(c.cell(j, i)[0], y[static_cast<size_t>(i)]);
            ASSERT_NEAR(piece_at(c, j, i, end), y[static_cast<size_t>(i + 1)], unit) << nx << ", cell " << i;
            if (i + 1 == c.cells()) break;
            ASSERT_NEAR(slope, c.cell(j, i + 1)[1], unit) << nx << ", cell " << i;
          }
        }
      }
}

TYPED_TEST(quadratic_spline, knots_between_points) {
  using Real = TypeParam;
  for (const int64_t nx : {2, 3, 4, 50, 2000})
    for (const int64_t bc_type : {12, 36, 24, 48})
      for (const bool uniform : {false, true})
        for (const knots kind : {knots::anywhere, knots::midpoints, knots::uniform}) {
          if (kind == knots::uniform && !uniform && nx > 2) continue;  // they need not part the points
          SCOPED_TRACE(testing::Message() << nx << " points, boundary " << bc_type << ", uniform " << uniform
                                          << ", knots " << static_cast<int>(kind));
          auto rows = quadratic_case<Real>(nx, 6, uniform),
               columns = quadratic_case<Real>(nx, 6, uniform, DF_COLUMNS);
          const std::vector<Real> at = use_knots(rows, kind, bc_type);
          use_knots(columns, kind, bc_type);
          ASSERT_EQ(rows.construct(constructors<Real>::quadratic), 0);
          ASSERT_EQ(columns.construct(constructors<Real>::quadratic, shuffled_threads(3)), 0);
          ASSERT_EQ(rows.coefficients, columns.coefficients);
          for (int64_t j = 0; j < rows.ny; ++j) {
            const wide unit = 400 * std::numeric_limits<Real>::epsilon();
            for (int64_t k = 0; k < nx; ++k) {
              const wide scale = unit * (std::fabs(rows.cell(j, k)[1]) + std::fabs(rows.cell(j, k)[2]) + 1);
              ASSERT_EQ(rows.cell(j, k)[0], rows.values[static_cast<size_t>(j)][static_cast<size_t>(k)]);
              if (k == 0) continue;
              const wide knot = at[static_cast<size_t>(k)];
              ASSERT_NEAR(piece_at(rows, j, k - 1, knot), piece_at(rows, j, k, knot), scale) << "knot " << k;
              ASSERT_NEAR(piece_at(rows, j, k - 1, knot, 1), piece_at(rows, j, k, knot, 1), 8 * scale)
                  << "knot " << k;
            }
            const wide ends[] = {rows.points.front(), rows.points.back()};
            const int64_t pieces[] = {0, nx - 1};
            for (const int side : {0, 1}) {
              const bool first = (bc_type & (side == 0 ? DF_BC_FIRST_LEFT : DF_BC_FIRST_RIGHT)) != 0;
              ASSERT_NEAR(piece_at(rows, j, pieces[side], ends[side], first ? 1 : 2),
                          rows.bc[static_cast<size_t>(side)], first ? unit * 40 : unit * 2000);
            }
          }
          if (testing::Test::HasFailure()) return;
        }
}

TYPED_TEST(quadratic_spline, reproduces_parabolas) {
  using Real = TypeParam;
  const auto f = [](double t) { return (1.25 * t - 2) * t + 0.5; };
  const auto slope = [](Real t) { return static_cast<Real>(2.5 * t - 2); };
  for (const int64_t nx : {2, 3, 40})
    for (const bool uniform : {false, true})
      for (const int64_t bc_type : {128, 12, 36, 24, 48}) {
        auto c = quadratic_case<Real>(nx, 1, uniform);
        if (bc_type != DF_BC_QUADRATIC_VALUE) use_knots(c, knots::anywhere, bc_type);
        c.sample(f);
        c.bc = {bc_type == 24 || bc_type == 48 ? Real(2.5) : slope(c.points.front()),
                bc_type == 36 || bc_type == 48 ? Real(2.5) : slope(c.points.back())};
        ASSERT_EQ(c.construct(constructors<Real>::quadratic), 0);
        for (int64_t k = 0; k < c.cells(); ++k)
          for (const wide away : {-0.1L, 0.1L}) {
            const wide t = c.points[static_cast<size_t>(k)] + away;
            ASSERT_NEAR(piece_at(c, 0, k, t), f(static_cast<double>(t)),
                        40 * (sizeof(Real) == 8 ? 1e-12 : 1e-5))
                << nx << " points, boundary " << bc_type << ", piece " << k;
          }
      }
}

// Construction, search and evaluation mean the same pieces: a parabola on either side of every knot.
TEST(quadratic_spline_pieces, evaluate_to_the_values_that_made_them) {
  auto c = quadratic_case<double>(40, 1, false);
  const std::vector<double> at = use_knots(c, knots::anywhere, 12);
  ASSERT_EQ(c.construct(constructors<double>::quadratic), 0);
  DFTask* task = nullptr;
  df<double>::new_task(&task, c.nx, c.points.data(), DF_PARTITION_UNKNOWN, 1, c.values[0].data(), DF_ROWS, 0);
  df<double>::edit_spline(task, 3, DF_TYPE_SUBBOTIN, 12, c.bc.data(), DF_IC_KNOTS, c.ic.data(),
                          c.coefficients.data(), 0);
  std::vector<double> sites, expected;
  for (int64_t k = 0; k < c.nx; ++k) {
    const auto i = static_cast<size_t>(k);
    sites.insert(sites.end(), {at[i], c.points[i], std::nexttoward(at[i + 1], -1)});
    for (size_t m = sites.size() - 3; m < sites.size(); ++m)
      expected.push_back(static_cast<double>(piece_at(c, 0, k, sites[m])));
  }
  sites.insert(sites.end(), {c.points.front() - 1, c.points.back() + 1});
  expected.push_back(static_cast<double>(piece_at(c, 0, 0, sites[sites.size() - 2])));
  expected.push_back(static_cast<double>(piece_at(c, 0, c.nx - 1, sites.back())));
  std::vector<double> results(sites.size());
  const int32_t value = 1;
  ASSERT_EQ(df<double>::interpolate(task, DF_INTERPOLATE_VALUES, 0, static_cast<int64_t>(sites.size()),
                                    sites.data(), DF_SITES_UNKNOWN, 1, 0, &value, nullptr, results.data(),
                                    DF_FUNCTION_SITE_DERIVATIVE, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr, nullptr, tmk_threading_serial()),
            0);
  tmk_df_kernel_DeleteTask(&task);
  for (size_t i = 0; i < sites.size(); ++i) EXPECT_NEAR(results[i], expected[i], 1e-12) << "site " << i;
}

TYPED_TEST(quadratic_spline, checks_in_order) {
  using Real = TypeParam;
  struct row {
    int64_t s_type, bc_type, ic_type;
    bool with_bc;
    int32_t status;
  };
  constexpr int64_t given = DF_IC_KNOTS;
  for (const auto& [s_type, bc_type, ic_type, with_bc, status] :
       {row{2, 0, given, false, DF_STATUS_BAD_METHOD},
        row{DF_TYPE_STANDARD, DF_BC_NOT_A_KNOT, given, false, DF_STATUS_BAD_BC_TYPE},
        row{DF_TYPE_STANDARD, DF_BC_NONE, given, false, DF_STATUS_BAD_BC_TYPE},
        row{DF_TYPE_SUBBOTIN, DF_BC_NONE, DF_IC_FIRST, false, DF_STATUS_BAD_IC_TYPE},
        row{DF_TYPE_SUBBOTIN, DF_BC_NONE, given, false, DF_STATUS_BAD_BC_TYPE},
        row{DF_TYPE_SUBBOTIN, DF_BC_QUADRATIC_VALUE, given, true, DF_STATUS_BAD_BC_TYPE},
        row{DF_TYPE_SUBBOTIN, DF_BC_FREE_END, given, true, DF_STATUS_BAD_BC_TYPE},
        row{DF_TYPE_SUBBOTIN, DF_BC_PERIODIC, given, true, DF_STATUS_BAD_BC_TYPE},
        row{DF_TYPE_SUBBOTIN, 12, given, true, 0}}) {
    auto c = quadratic_case<Real>(5, 2, true);
    use_knots(c, knots::anywhere, bc_type);
    c.s_type = s_type;
    c.ic_type = ic_type;
    if (!with_bc) c.bc.clear();
    EXPECT_EQ(c.construct(constructors<Real>::quadratic), status) << s_type << ", boundary " << bc_type;
    EXPECT_EQ(c.all_untouched(), status != 0);
  }
}

}  // namespace
}  // namespace tmk::tests
