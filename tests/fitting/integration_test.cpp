// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <limits>

#include "fitting/spline_case.hpp"
#include "threading/shuffled_threads.hpp"

namespace tmk::tests {
namespace {

template <class Real>
struct integral_request {
  int64_t rhint = DF_ROWS, left_hint = DF_SITES_UNKNOWN, right_hint = DF_SITES_UNKNOWN;
  const Real *left_search = nullptr, *right_search = nullptr;
  typename df<Real>::integration_hook left = nullptr, right = nullptr, interior = nullptr;
  void* parameter = nullptr;
  int32_t threads = 1;

  int32_t operator()(DFTask* task, int64_t n, const std::vector<Real>& l, const std::vector<Real>& r,
                     std::vector<Real>& result) const {
    return df<Real>::integrate(task, 0, n, l.data(), left_hint, r.data(), right_hint, left_search,
                               right_search, result.data(), rhint, left, parameter, right, parameter,
                               interior, parameter, nullptr, nullptr, shuffled_threads(threads));
  }
};

bool rows(int64_t rhint) { return rhint == 16 || rhint == 128; }
constexpr int64_t layouts[] = {0, 32, 16, 128};

template <class Real>
class integration : public testing::Test {};
using reals = testing::Types<double, float>;
TYPED_TEST_SUITE(integration, reals);

// Few pairs are added up cell by cell, many by running sums; both meet the exact integral, change their sign
// with their limits to the last bit, and are 0 between equal limits.
TYPED_TEST(integration, kinds_and_layouts) {
  using Real = TypeParam;
  const double bound = 400 * static_cast<double>(std::numeric_limits<Real>::epsilon());
  for (const auto form : {linear, quadratic, cubic, subbotin, step_left, step_right})
    for (const bool uniform : {false, true})
      for (const int64_t nx : {2, 37})
        for (const int64_t n : {1, 31, 400}) {
          const int64_t ny = nx == 2 ? 1 : 5;
          spline_case<Real> c(form, uniform, nx, ny, uniform);
          auto l = c.sites(n), r = c.sites(n);
          r[0] = l[0];
          for (const int64_t rhint : layouts) {
            const integral_request<Real> ask{.rhint = rhint, .threads = n > 31 ? 3 : 1};
            std::vector<Real> got(static_cast<size_t>(ny * n)), back(got);
            ASSERT_EQ(0, ask(c.task, n, l, r, got));
            ASSERT_EQ(0, ask(c.task, n, r, l, back));
            for (int64_t f = 0; f < ny; ++f)
              for (int64_t i = 0; i < n; ++i) {
                const auto at = static_cast<size_t>(rows(rhint) ? f * n + i : i * ny + f);
                const auto k = static_cast<size_t>(i);
                ASSERT_NEAR(static_cast<double>(c.exact_integral(f, l[k], r[k])), got[at], bound)
                    << "order " << form.order << " type " << form.type << " from " << l[k] << " to " << r[k];
                ASSERT_EQ(got[at], -back[at]);
              }
            ASSERT_EQ(Real(0), got[0]);
          }
        }
}

// Short spans far after large sums: each integral is as good as its own cells added up.
TYPED_TEST(integration, running_sums_keep_the_digits) {
  using Real = TypeParam;
  constexpr int64_t nx = 6000, n = 3000;
  for (const bool uniform : {false, true}) {
    spline_case<Real> c(cubic, uniform, nx, 2);
    for (size_t k = 0; k < c.coefficients.size() / 2; k += 4) c.coefficients[k] += k < 4 * nx / 2 ? 10000 : 1;
    std::vector<Real> l, r, got(2 * n);
    for (int64_t i = 0; i < n; ++i) {
      l.push_back(c.points[static_cast<size_t>(3000 + i / 2)]);
      r.push_back(c.points[static_cast<size_t>(3010 + i / 2)]);
    }
    ASSERT_EQ(0, (integral_request<Real>{.left_hint = DF_SITES_SORTED, .right_hint = DF_SITES_SORTED}(
                     c.task, n, l, r, got)));
    const double eps = static_cast<double>(std::numeric_limits<Real>::epsilon());
    for (size_t i = 0; i < n; ++i)
      ASSERT_NEAR(static_cast<double>(c.exact_integral(0, l[i], r[i])), got[i], 20 * eps) << i;
  }
}

TYPED_TEST(integration, uniform_limits) {
  using Real = TypeParam;
  spline_case<Real> c(cubic, false, 20, 1);
  constexpr int64_t n = 65;
  std::vector<Real> l, r, got(n), want(n);
  for (int64_t i = 0; i < n; ++i) {
    l.push_back(Real(-3) + Real(i) / 8);
    r.push_back(Real(4) - Real(i) / 16);
  }
  ASSERT_EQ(0, integral_request<Real>{}(c.task, n, l, r, want));
  ASSERT_EQ(0, (integral_request<Real>{.left_hint = 4, .right_hint = 4}(c.task, n, {l[0], l[64]},
                                                                        {r[0], r[64]}, got)));
  EXPECT_EQ(want, got);
}

// Adds 1000 (function + 1) for each unit of length, and checks that limits and cells keep to one region.
template <class Real>
struct region_hook {
  const spline_case<Real>& c;
  int32_t status = 0;
  static int32_t hook(const int64_t* count, const int64_t* left_cells, const Real* l,
                      const int64_t* right_cells, const Real* r, Real* results, void* p, void*) {
    const auto& self = *static_cast<region_hook*>(p);
    const int64_t nx = self.c.nx;
    const Real first = self.c.points[0], last = self.c.points[static_cast<size_t>(nx - 1)];
    for (int64_t f = 0; f < self.c.ny; ++f)
      for (int64_t i = 0; i < *count; ++i) *results++ += Real(1000 * (f + 1)) * (r[i] - l[i]);
    for (int64_t i = 0; i < *count; ++i)
      for (const auto& [cell, t] : {std::pair(left_cells[i], l[i]), std::pair(right_cells[i], r[i])})
        EXPECT_TRUE(cell == 0 ? t <= first : cell == nx ? t >= last : cell > 0 && t >= first && t <= last);
    return self.status;
  }
};

TYPED_TEST(integration, hooks_of_regions) {
  using Real = TypeParam;
  constexpr auto hook = region_hook<Real>::hook;
  for (const auto form : {cubic, step_left, by_caller})
    for (int given = form.order == by_caller.order ? 7 : 1; given < 8; ++given)
      for (const int64_t rhint : layouts) {
        spline_case<Real> c(form, false, 9, 5);
        region_hook<Real> parameter{c};
        integral_request<Real> ask{.rhint = rhint, .parameter = &parameter, .threads = 2};
        if ((given & 1) != 0) ask.left = hook;
        if ((given & 2) != 0) ask.interior = hook;
        if ((given & 4) != 0) ask.right = hook;
        const auto l = c.sites(500), r = c.sites(500);
        std::vector<Real> got(5 * 500);
        ASSERT_EQ(0, ask(c.task, 500, l, r, got));
        const long double bounds[] = {-1e6L, c.points[0], c.points[8], 1e6L};
        for (size_t i = 0; i < 500; ++i)
          for (size_t f = 0; f < 5; ++f) {
            long double want = 0;
            for (int region = 0; region < 3; ++region) {
              const auto clip = [&](long double t) {
                return std::clamp(t, bounds[region], bounds[region + 1]);
              };
              const auto a = clip(l[i]), b = clip(r[i]);
              want += (given >> region & 1) != 0 ? 1000 * static_cast<long double>(f + 1) * (b - a)
                                                 : c.exact_integral(static_cast<int64_t>(f), a, b);
            }
            ASSERT_NEAR(static_cast<double>(want), got[rows(rhint) ? f * 500 + i : i * 5 + f],
                        1e5 * static_cast<double>(std::numeric_limits<Real>::epsilon()));
          }
        parameter.status = -7;
        EXPECT_EQ(-7, ask(c.task, 500, l, r, got));
      }
}

TYPED_TEST(integration, statuses_in_order) {
  using Real = TypeParam;
  const Real bad[] = {0, Real(0.5), 0, 0, 0};
  const std::vector<Real> limits = {0};
  std::vector<Real> result(1);
  const struct {
    spline_form form;
    const Real *left, *right;
    int64_t rhint;
    bool y;
    int32_t status;
  } table[] = {
      {look_up, bad, bad, 7, false, DF_STATUS_BAD_TYPE},
      {{1, 0}, bad, bad, 7, true, DF_STATUS_BAD_TYPE},
      {by_caller, nullptr, nullptr, 16, true, DF_STATUS_BAD_TYPE},
      {cubic, bad, nullptr, 7, true, DF_STATUS_BAD_SEARCH_HINT},
      {cubic, nullptr, bad, 7, true, DF_STATUS_BAD_SEARCH_HINT},
      {step_left, nullptr, nullptr, 7, false, DF_STATUS_BAD_INTEGRAL_HINT},
      {step_right, nullptr, nullptr, 16, false, DF_STATUS_NULL_Y},
      {cubic, nullptr, nullptr, 0, true, 0},
  };
  for (const auto& row : table) {
    spline_case<Real> c(row.form, false, 4, row.y ? 1 : 0);
    const integral_request<Real> ask{.rhint = row.rhint, .left_search = row.left, .right_search = row.right};
    EXPECT_EQ(row.status, ask(c.task, 1, limits, limits, result)) << row.form.order << " " << row.form.type;
  }
}

}  // namespace
}  // namespace tmk::tests
