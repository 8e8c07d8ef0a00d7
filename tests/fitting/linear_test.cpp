// SPDX-License-Identifier: Apache-2.0
// Linear splines: slopes in every layout, and the cut into tiles.
#include "fitting/construction_case.hpp"
#include "threading/shuffled_threads.hpp"

namespace tmk::tests {
namespace {

template <class Real>
class linear_spline : public testing::Test {};
using both = testing::Types<double, float>;
TYPED_TEST_SUITE(linear_spline, both);

TYPED_TEST(linear_spline, values_and_slopes) {
  using Real = TypeParam;
  // The plain loop, one tile, tiles in the calling thread, tiles in threads; odd last cells, odd last groups.
  for (const auto& [nx, ny] : std::vector<std::pair<int64_t, int64_t>>{
           {2, 1}, {3, 2}, {31, 4}, {32, 4}, {130, 1}, {131, 1}, {1025, 4}, {2049, 9}, {5200, 1}, {2, 70}})
    for (const bool uniform : {false, true})
      for (const auto layout : {DF_ROWS, DF_COLUMNS}) {
        construction_case<Real> s(nx, ny, uniform, layout);
        s.order = 2;
        ASSERT_EQ(s.construct(constructors<Real>::linear, shuffled_threads(3)), 0);
        for (int64_t j = 0; j < ny; ++j)
          for (int64_t i = 0; i < s.cells(); ++i) {
            const auto at = static_cast<size_t>(i);
            const auto& y = s.values[static_cast<size_t>(j)];
            const long double slope = (static_cast<long double>(y[at + 1]) - y[at]) /
                                      (static_cast<long double>(s.points[at + 1]) - s.points[at]);
            const long double rounding = std::numeric_limits<Real>::epsilon() * 10 * (1 + std::fabs(slope));
            ASSERT_EQ(s.cell(j, i)[0], y[at]);
            ASSERT_LE(std::fabs(s.cell(j, i)[1] - slope), rounding) << nx << ' ' << ny << " cell " << i;
          }
      }
}

int32_t jobs_asked = 0, threads_asked = 0;

TEST(linear_spline, uses_threads_from_five_tiles_on) {
  ThreadingService counting = *tmk_threading_serial();
  counting.MaxThreads = [] { return 4; };
  counting.ParallelFor = [](int32_t count, int32_t threads, void* context, TmkWorker worker) {
    jobs_asked = count;
    threads_asked = threads;
    tmk_threading_serial()->ParallelFor(count, 1, context, worker);
  };
  struct row {
    int64_t nx, ny;
    int32_t jobs, threads;
  };
  for (const auto& [nx, ny, jobs, threads] :
       {row{1025, 4, 0, 0}, row{2049, 8, 0, 0}, row{2049, 9, 6, 4}, row{5121, 1, 5, 4}, row{5122, 1, 6, 4}}) {
    jobs_asked = threads_asked = 0;
    construction_case<double> s(nx, ny, true);
    s.order = 2;
    ASSERT_EQ(s.construct(constructors<double>::linear, &counting), 0);
    EXPECT_EQ(jobs_asked, jobs) << nx << ' ' << ny;
    EXPECT_EQ(threads_asked, threads) << nx << ' ' << ny;
  }
}

TYPED_TEST(linear_spline, checks) {
  using Real = TypeParam;
  construction_case<Real> s(40, 3, false, DF_COLUMNS);
  s.order = 2;
  EXPECT_EQ(s.construct(constructors<Real>::linear, tmk_threading_serial(), 1), DF_STATUS_BAD_METHOD);
  s.bc_type = DF_BC_PERIODIC;
  s.close();
  EXPECT_EQ(s.construct(constructors<Real>::linear), 0);
  s.values[2].back() += 1;
  EXPECT_EQ(s.construct(constructors<Real>::linear), DF_STATUS_PERIODIC_MISMATCH);
  EXPECT_TRUE(s.all_untouched());
  s.values[2].front() = s.values[2].back() = std::numeric_limits<Real>::quiet_NaN();
  EXPECT_EQ(s.construct(constructors<Real>::linear), DF_STATUS_PERIODIC_MISMATCH);
}

}  // namespace
}  // namespace tmk::tests
