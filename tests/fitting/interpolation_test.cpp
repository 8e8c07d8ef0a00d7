// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <limits>

#include "fitting/spline_case.hpp"
#include "threading/shuffled_threads.hpp"

namespace tmk::tests {
namespace {

constexpr int64_t layouts[] = {16, 0, 128, 32, 256, 512};
constexpr double untouched = -77;

template <class Real>
struct request {
  int64_t type = DF_INTERPOLATE_VALUES;
  int64_t site_hint = DF_SITES_UNKNOWN, rhint = DF_FUNCTION_SITE_DERIVATIVE;
  std::vector<int32_t> dorder = {1};
  bool wide = false;  // dorder holds the halves of 64-bit entries
  const Real* search_hint = nullptr;
  void* cell = nullptr;
  typename df<Real>::hook left = nullptr, right = nullptr, interior = nullptr;
  typename df<Real>::search_hook search = nullptr;
  void* parameter = nullptr;
  int32_t threads = 1;

  int32_t operator()(DFTask* task, int64_t n, const std::vector<Real>& sites,
                     std::vector<Real>& result) const {
    return df<Real>::interpolate(task, type, 0, n, sites.data(), site_hint,
                                 static_cast<int64_t>(dorder.size() >> wide), 0, dorder.data(), search_hint,
                                 result.data(), rhint, cell, left, parameter, right, parameter, interior,
                                 parameter, search, parameter, shuffled_threads(threads));
  }
};

size_t place(int64_t rhint, int64_t f, int64_t i, int64_t k, int64_t ny, int64_t n, int64_t nder) {
  switch (rhint) {
    case 32:
      return static_cast<size_t>((f * nder + k) * n + i);
    case 256:
      return static_cast<size_t>((i * ny + f) * nder + k);
    case 512:
      return static_cast<size_t>((i * nder + k) * ny + f);
    default:
      return static_cast<size_t>((f * n + i) * nder + k);
  }
}

// The results of a call against extended precision, and no other element changed. Entries of dorder above 1
// count for more columns than they fill.
template <class Real>
void expect_exact(const spline_case<Real>& c, const request<Real>& ask, const std::vector<Real>& sites) {
  const auto n = static_cast<int64_t>(sites.size());
  std::vector<int64_t> orders;
  int64_t nder = 0;
  for (size_t k = 0; k < ask.dorder.size(); ++k) {
    nder += ask.dorder[k];
    if (ask.dorder[k] != 0) orders.push_back(static_cast<int64_t>(k));
  }
  if (nder == 0) orders = {nder++};
  std::vector<Real> result(static_cast<size_t>(c.ny * n * nder), Real(untouched));
  ASSERT_EQ(0, ask(c.task, n, sites, result));
  const auto eps = static_cast<long double>(std::numeric_limits<Real>::epsilon());
  for (int64_t f = 0; f < c.ny; ++f)
    for (int64_t i = 0; i < n; ++i)
      for (int64_t k = 0; k < nder; ++k) {
        const Real got = result[place(ask.rhint, f, i, k, c.ny, n, nder)];
        if (k >= static_cast<int64_t>(orders.size())) {
          ASSERT_EQ(Real(untouched), got);
          continue;
        }
        const auto order = orders[static_cast<size_t>(k)];
        const long double want = c.exact(f, sites[static_cast<size_t>(i)], order);
        ASSERT_NEAR(static_cast<double>(want), static_cast<double>(got), static_cast<double>(100 * eps))
            << "rhint " << ask.rhint << " function " << f << " site " << sites[static_cast<size_t>(i)]
            << " derivative " << order;
      }
}

template <class Real>
class interpolation : public testing::Test {};
using reals = testing::Types<double, float>;
TYPED_TEST_SUITE(interpolation, reals);

TYPED_TEST(interpolation, kinds_layouts_and_derivatives) {
  using Real = TypeParam;
  const std::vector<int32_t> sets[] = {{1}, {0, 1}, {1, 0, 1}, {1, 1, 1}, {1, 1, 1, 1, 0, 1}, {0, 0}, {2, 1}};
  for (const auto form : {linear, quadratic, cubic, subbotin, step_left, step_right})
    for (const bool uniform : {false, true})
      for (const int64_t nx : {2, 37}) {
        spline_case<Real> c(form, uniform, nx, nx == 2 ? 1 : 19, uniform);
        for (const int64_t rhint : layouts)
          for (const auto& dorder : sets)
            for (const int64_t n : {1, 31, 301})
              expect_exact(c, {.rhint = rhint, .dorder = dorder, .threads = n > 31 ? 3 : 1}, c.sites(n));
      }
}

TYPED_TEST(interpolation, threads_and_sorted_sites) {
  using Real = TypeParam;
  for (const bool uniform : {false, true}) {
    spline_case<Real> c(cubic, uniform, 500, 2);
    auto sites = c.sites(2999);
    for (const int64_t hint : {DF_SITES_UNKNOWN, DF_SITES_SORTED}) {
      if (hint == DF_SITES_SORTED) std::sort(sites.begin(), sites.end());
      for (const int32_t threads : {1, 2, 5})
        expect_exact(c, {.site_hint = hint, .dorder = {1, 1}, .threads = threads}, sites);
    }
  }
}

TYPED_TEST(interpolation, uniform_sites) {
  using Real = TypeParam;
  spline_case<Real> c(cubic, false, 20, 1);
  const std::vector<Real> ends = {-3, 5};
  for (const int64_t n : {1, 2, 33, 2049}) {
    std::vector<Real> all, got(static_cast<size_t>(n)), want(got);
    for (int64_t i = 0; i < n; ++i)
      all.push_back(n == 1 ? ends[0] : Real(i) * (Real(8) / Real(n - 1)) + ends[0]);
    ASSERT_EQ(0, request<Real>{}(c.task, n, all, want));
    ASSERT_EQ(0, (request<Real>{.site_hint = DF_SITES_UNIFORM, .threads = 3}(c.task, n, ends, got)));
    EXPECT_EQ(want, got) << n;
  }
}

template <class Real, class Cell>
void expect_cells_go_out_and_in() {
  spline_case<Real> c(cubic, false, 20, 1, false, sizeof(Cell) == 8);
  const auto sites = c.sites(700);
  std::vector<Real> want(sites.size()), got(sites.size(), Real(untouched));
  std::vector<Cell> cells(sites.size());
  request<Real> ask{.dorder = {}, .threads = 2};
  ASSERT_EQ(0, ask(c.task, 700, sites, want));
  ask.cell = cells.data();
  ask.type = DF_INTERPOLATE_CELLS;
  ASSERT_EQ(0, ask(c.task, 700, sites, got));
  for (size_t i = 0; i < sites.size(); ++i) ASSERT_EQ(c.cell(sites[i]), cells[i]);
  EXPECT_EQ(Real(untouched), got[0]);
  ask.type = DF_INTERPOLATE_FROM_CELLS;
  ASSERT_EQ(0, ask(c.task, 700, sites, got));
  EXPECT_EQ(want, got);
  auto slopes = ask;
  slopes.wide = sizeof(Cell) == 8;
  slopes.dorder = slopes.wide ? std::vector{0, 0, 1, 0} : std::vector{0, 1};
  ASSERT_EQ(0, slopes(c.task, 700, sites, got));
  for (size_t i = 0; i < 700; ++i) ASSERT_NEAR(static_cast<double>(c.exact(0, sites[i], 1)), got[i], 1e-4);
  // The caller's cells rule, and wild ones reach no memory.
  std::fill(cells.begin(), cells.end(), Cell(3));
  cells[0] = std::numeric_limits<Cell>::min();
  cells[1] = std::numeric_limits<Cell>::max();
  ASSERT_EQ(0, ask(c.task, 700, sites, got));
  const auto expect = [&](size_t i, int64_t piece) {
    const Real d = sites[i] - c.points[piece], *k = &c.coefficients[4 * piece];
    EXPECT_NEAR(k[0] + d * (k[1] + d * (k[2] + d * k[3])), got[i], 1e-4 * (1 + std::abs(d * d * d)));
  };
  expect(0, 0);
  expect(1, 18);
  expect(2, 2);
}

TYPED_TEST(interpolation, cells_go_out_and_in) {
  expect_cells_go_out_and_in<TypeParam, int32_t>();
  expect_cells_go_out_and_in<TypeParam, int64_t>();
}

TYPED_TEST(interpolation, look_up) {
  using Real = TypeParam;
  for (const bool uniform : {false, true}) {
    spline_case<Real> c(look_up, uniform, 37, 3, uniform);
    std::vector<Real> sites(c.points), result(3 * 37);
    for (const int64_t rhint : layouts) expect_exact(c, {.rhint = rhint}, sites);
    const auto status = [&](Real t, std::vector<int32_t> dorder) {
      sites[36] = t;
      return request<Real>{.dorder = dorder}(c.task, 37, sites, result);
    };
    const Real end = c.points[36], inside = std::midpoint(c.points[3], c.points[4]);
    EXPECT_EQ(DF_STATUS_LOOKUP_OFF_GRID, status(inside, {1, 1}));
    EXPECT_EQ(DF_STATUS_LOOKUP_OFF_GRID, status(end + 1, {1}));
    EXPECT_EQ(DF_STATUS_LOOKUP_OFF_GRID, status(c.points[0] - 1, {1}));
    EXPECT_EQ(DF_STATUS_LOOKUP_BAD_DORDER, status(end, {1, 1}));
    EXPECT_EQ(DF_STATUS_LOOKUP_NO_VALUE, status(end, {0, 1}));
    EXPECT_EQ(0, status(end, {0, 0}));
    if (uniform && sizeof(Real) == 8) {
      EXPECT_EQ(0, status(c.points[5] + Real(0x1p-41), {1}));
      EXPECT_EQ(0, status(end + Real(0x1p-41), {1}));
      EXPECT_EQ(DF_STATUS_LOOKUP_OFF_GRID, status(c.points[5] + Real(0x1p-39), {1}));
    }
  }
}

// Writes the cell, the count of the call and the number of the result, and counts the sites.
template <class Real>
struct hook_log {
  int64_t functions, derivatives, sites = 0;
  int32_t status = 0;
  static int32_t hook(const int64_t* count, const int64_t* cells, const Real*, Real* results, void* p,
                      void*) {
    auto& log = *static_cast<hook_log*>(p);
    log.sites += *count;
    for (int64_t f = 0; f < log.functions; ++f)
      for (int64_t i = 0; i < *count; ++i)
        for (int64_t k = 0; k < log.derivatives; ++k) *results++ = Real(1000 * (cells[i] + 1) + 10 * f + k);
    return log.status;
  }
};

TYPED_TEST(interpolation, hooks_of_regions) {
  using Real = TypeParam;
  constexpr auto hook = hook_log<Real>::hook;
  for (const auto form : {cubic, step_left, by_caller})
    for (int given = form.order == by_caller.order ? 7 : 1; given < 8; ++given)
      for (const int64_t rhint : layouts) {
        spline_case<Real> c(form, false, 9, 5);
        hook_log<Real> log{5, 2};
        request<Real> ask{.rhint = rhint, .dorder = {1, 1}, .parameter = &log, .threads = 2};
        if ((given & 1) != 0) ask.left = hook;
        if ((given & 2) != 0) ask.interior = hook;
        if ((given & 4) != 0) ask.right = hook;
        const auto sites = c.sites(600);
        std::vector<Real> result(5 * 600 * 2);
        ASSERT_EQ(0, ask(c.task, 600, sites, result));
        int64_t hooked = 0;
        for (int64_t i = 0; i < 600; ++i) {
          const Real t = sites[static_cast<size_t>(i)];
          const int64_t cell = c.cell(t), region = cell == 0 ? 1 : cell == 9 ? 4 : 2;
          hooked += (given & region) != 0;
          for (int64_t f = 0; f < 5; ++f)
            for (int64_t k = 0; k < 2; ++k) {
              const Real got = result[place(rhint, f, i, k, 5, 600, 2)];
              if ((given & region) != 0)
                ASSERT_EQ(Real(1000 * (cell + 1) + 10 * f + k), got);
              else
                ASSERT_NEAR(static_cast<double>(c.exact(f, t, k)), got, 1e-4);
            }
        }
        EXPECT_EQ(hooked, log.sites);
        log.status = -5;
        EXPECT_EQ(hooked > 0 ? -5 : 0, ask(c.task, 600, sites, result));
      }
}

// Leaves every other site to the library, and gives the others cells of its own, some of them nowhere.
template <class Real>
int32_t wild_cells(const int64_t* count, const Real*, int64_t* cells, int32_t* flags, void* status, void*) {
  for (int64_t i = 0; i < *count; ++i) {
    flags[i] = i % 2;
    cells[i] = i % 2 == 0 ? 3 : i % 4 == 1 ? -100 : 1000;
  }
  return *static_cast<int32_t*>(status);
}

TYPED_TEST(interpolation, search_hook) {
  using Real = TypeParam;
  spline_case<Real> c(cubic, false, 20, 1);
  const auto sites = c.sites(64);
  std::vector<Real> got(64), want(64);
  int32_t status = 0;
  request<Real> ask;
  ASSERT_EQ(0, ask(c.task, 64, sites, want));
  ask.search = wild_cells<Real>;
  ask.parameter = &status;
  ASSERT_EQ(0, ask(c.task, 64, sites, got));
  for (size_t i = 0; i < 64; i += 2) {
    // A hook's start may keep a point in the cell to its left, where random pieces do not meet.
    const bool point = std::binary_search(c.points.begin(), c.points.end(), sites[i]);
    EXPECT_TRUE(point || want[i] == got[i]) << i;
  }
  status = -3;
  EXPECT_EQ(-3, ask(c.task, 64, sites, got));
}

TYPED_TEST(interpolation, statuses_in_order) {
  using Real = TypeParam;
  const Real bad_search[] = {0, Real(0.5), 0, 0, 0};
  const std::vector<Real> sites = {0};
  std::vector<Real> result(1);
  const struct {
    spline_form form;
    const Real* search;
    int64_t rhint;
    int32_t status;
  } rows[] = {
      {{1, 0}, bad_search, 7, DF_STATUS_BAD_TYPE},
      {{4, 1}, nullptr, 16, DF_STATUS_BAD_TYPE},
      {{3, 2}, nullptr, 16, DF_STATUS_BAD_TYPE},
      {{0, 5}, nullptr, 16, DF_STATUS_BAD_TYPE},
      {by_caller, nullptr, 16, DF_STATUS_BAD_TYPE},
      {cubic, bad_search, 7, DF_STATUS_BAD_SEARCH_HINT},
      {cubic, nullptr, 7, DF_STATUS_BAD_RESULT_HINT},
      {{2, 4}, nullptr, 128, 0},
      {{4, 9}, nullptr, 0, 0},
  };
  for (const auto& row : rows) {
    spline_case<Real> c(row.form, false, 4, 1);
    EXPECT_EQ(row.status,
              (request<Real>{.rhint = row.rhint, .search_hint = row.search}(c.task, 1, sites, result)))
        << row.form.order << " " << row.form.type << " " << row.rhint;
  }
}

}  // namespace
}  // namespace tmk::tests
