// SPDX-License-Identifier: Apache-2.0
// Cells by every method against the standard library's bisection.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <tuple>
#include <type_traits>
#include <vector>

#include "fitting/spline_case.hpp"
#include "threading/shuffled_threads.hpp"
#include "tmk/abi/df.h"
#include "tmk/abi/vtm.h"

namespace tmk::search_tests {
namespace {

using tests::df;
template <class Real>
using search_hook = std::conditional_t<df<Real>::wide, DFdSearchHook, DFsSearchHook>;
template <class Real>
constexpr auto search = df<Real>::template pick<tmk_df_kernel_dDFSearch1D, tmk_df_kernel_sDFSearch1D>;
template <class Real>
constexpr auto edit_pointer = df<Real>::template pick<tmk_df_kernel_dEditPtr, tmk_df_kernel_sEditPtr>;

template <class Real>
struct partition {
  std::vector<Real> x;
  DFTask* task = nullptr;

  partition(std::vector<Real> points, int64_t xhint, bool wide = false, int64_t nx = 0)
      : x(std::move(points)) {
    if (nx == 0) nx = static_cast<int64_t>(x.size());
    EXPECT_EQ(df<Real>::new_task(&task, nx, x.data(), xhint, 0, nullptr, 0, wide ? 1u : 0u), 0);
  }
  partition(const partition&) = delete;
  partition& operator=(const partition&) = delete;
  ~partition() { tmk_df_kernel_DeleteTask(&task); }
};

// How to search; the cells after those of n sites must stay as they are.
template <class Real>
struct call {
  int64_t site_hint = 0;
  std::vector<Real> search_hint{};
  search_hook<Real> hook = nullptr;
  void* parameter = nullptr;
  const ThreadingService* threads = tmk_threading_serial();
  int32_t status = 0;

  template <class Cell = int32_t>
  std::vector<Cell> cells(const partition<Real>& p, const std::vector<Real>& sites, size_t n = SIZE_MAX) {
    n = std::min(n, sites.size());
    const std::vector<Real> exact(sites.begin(), sites.begin() + static_cast<ptrdiff_t>(n));
    std::vector<Cell> result(n + 2, -77);
    status = search<Real>(p.task, 0, static_cast<int64_t>(n),
                          site_hint == DF_SITES_UNIFORM ? sites.data() : exact.data(), site_hint,
                          search_hint.empty() ? nullptr : search_hint.data(), result.data(), hook, parameter,
                          threads);
    EXPECT_EQ(result[n], -77);
    result.resize(n);
    return result;
  }
};

template <class Real>
std::vector<int32_t> cells_of(const std::vector<Real>& x, const std::vector<Real>& sites) {
  std::vector<int32_t> cells(sites.size());
  std::ranges::transform(sites, cells.begin(), [&](Real t) {
    return static_cast<int32_t>(t == x.back() ? std::ssize(x) - 1
                                              : std::ranges::upper_bound(x, t) - x.begin());
  });
  return cells;
}

template <class Real>
using limits = std::numeric_limits<Real>;

// Knots and their neighbours, points between and outside, infinities; in disorder.
template <class Real>
std::vector<Real> sites_about(const std::vector<Real>& x, std::mt19937& engine) {
  std::vector<Real> sites = {-limits<Real>::infinity(),
                             limits<Real>::infinity(),
                             limits<Real>::max(),
                             -limits<Real>::max(),
                             x.front() - 1,
                             x.back() + 1};
  for (size_t i = 0; i < x.size(); i += 1 + x.size() / 500)
    for (const Real t :
         {x[i], std::nextafter(x[i], -limits<Real>::max()), std::nextafter(x[i], limits<Real>::max())})
      sites.push_back(t);
  sites.push_back(x.back());
  std::uniform_real_distribution<Real> inside(x.front(), x.back());
  std::uniform_int_distribution<size_t> any_point(0, x.size() - 2);
  for (int k = 0; k < 300; ++k) {
    const size_t i = any_point(engine);
    sites.push_back(inside(engine));
    sites.push_back(x[i] / 2 + x[i + 1] / 2);
  }
  std::ranges::shuffle(sites, engine);
  return sites;
}

template <class Real>
struct grid_row {
  const char* name;
  Real (*point)(int i, int nx, Real random);
};
template <class Real>
constexpr grid_row<Real> grids[] = {
    {"random", [](int, int, Real u) { return u * 10 - 5; }},
    {"even", [](int i, int, Real) { return static_cast<Real>(i) / 8; }},
    {"nearly even", [](int i, int, Real u) { return static_cast<Real>(i) + u / 2; }},
    {"crowded at the left", [](int, int, Real u) { return static_cast<Real>(std::pow(u, 20)) - 1; }},
    {"two clusters", [](int i, int nx, Real u) { return (i < nx / 2 ? Real(0) : Real(1000)) + u / 1000; }},
    {"repeated", [](int i, int, Real) { return static_cast<Real>(i / 7) - 3; }},
    {"repeated at the ends", [](int i, int nx, Real) { return Real(std::clamp(i, 3, nx - 4)); }},
    {"neighbours", [](int i, int, Real) { return 1 + static_cast<Real>(i) * limits<Real>::epsilon(); }},
    {"subnormal", [](int i, int, Real) { return static_cast<Real>(i) * limits<Real>::denorm_min(); }},
    {"as wide as numbers go", [](int, int, Real u) { return (u - Real(0.5)) * limits<Real>::max(); }},
};

template <class Real>
std::vector<Real> make_grid(const grid_row<Real>& row, int nx, std::mt19937& engine) {
  std::uniform_real_distribution<Real> unit(0, 1);
  std::vector<Real> x(static_cast<size_t>(nx));
  for (int i = 0; Real & point : x) point = row.point(i++, nx, unit(engine));
  std::ranges::sort(x);
  return x;
}

// On the widest tier that the processor and TMK_TIER allow.
template <class Real>
class Search : public testing::Test {
 protected:
  std::mt19937 engine_{20};

 private:
  const int32_t before_ = tmk_current_tier();
  void SetUp() override { tmk_select_tier(TMK_TIER_WIDEST); }
  void TearDown() override { tmk_select_tier(before_); }
};
using precisions = testing::Types<double, float>;
TYPED_TEST_SUITE(Search, precisions);

TYPED_TEST(Search, every_method_finds_the_same_cells) {
  using Real = TypeParam;
  for (const auto& row : grids<Real>)
    for (const int nx : {2, 3, 5, 8, 9, 16, 31, 40, 1000, 20000}) {
      const auto x = make_grid(row, nx, this->engine_);
      auto sites = sites_about(x, this->engine_);
      const auto last = static_cast<Real>(nx);
      const std::tuple<const char*, int64_t, call<Real>> methods[] = {
          {"hybrid", 0, {}},
          {"hybrid by hint", 1, {.search_hint = {9, 0, 9, 9, 9}}},
          {"quasi-uniform", 2, {}},
          {"peak at 0", 0, {.search_hint = {9, 1, 9, 9, 0}}},
          {"peak inside", 0, {.search_hint = {9, 1, 9, 9, last / 2 + Real(0.4)}}},
          {"peak past the end", 0, {.search_hint = {9, 1, 9, 9, last}}},
          {"sorted", 0, {.site_hint = DF_SITES_SORTED}},
      };
      for (auto [name, xhint, by] : methods) {
        if (by.site_hint == DF_SITES_SORTED) std::ranges::sort(sites);
        const partition<Real> narrow(x, xhint), wide(x, xhint, true);
        for (const size_t n : {size_t{1}, size_t{7}, size_t{31}, size_t{45}, sites.size()}) {
          auto want = cells_of(x, sites);
          want.resize(std::min(n, want.size()));
          by.threads = tests::shuffled_threads(n % 2 == 0 ? 1 : 3);
          ASSERT_EQ(by.cells(narrow, sites, n), want) << row.name << " " << nx << " " << name << " " << n;
          ASSERT_EQ(by.template cells<int64_t>(wide, sites, n),
                    std::vector<int64_t>(want.begin(), want.end()));
          ASSERT_EQ(by.status, 0);
        }
      }
    }
}

// Long runs of sites between two points, a site for each point, and many points between two sites.
TYPED_TEST(Search, sorted_sites_of_every_density) {
  using Real = TypeParam;
  for (const auto& [nx, n] : {std::pair(3000, 50), std::pair(3000, 3000), std::pair(3000, 100'000),
                              std::pair(100'000, 200), std::pair(100'000, 20'000)}) {
    const auto x = make_grid(grids<Real>[0], nx, this->engine_);
    auto sites = make_grid(grids<Real>[0], n, this->engine_);
    sites.insert(sites.end(), {x.back(), x.back(), x.back() + 1});
    const auto want = cells_of(x, sites);
    sites.resize(want.size() + 70, limits<Real>::quiet_NaN());
    for (const int32_t threads : {1, 4}) {
      call<Real> by{.site_hint = DF_SITES_SORTED, .threads = tests::shuffled_threads(threads)};
      auto cells = by.cells(partition<Real>(x, 0), sites);
      cells.resize(want.size());
      ASSERT_EQ(cells, want) << nx << ' ' << n;
    }
  }
}

TYPED_TEST(Search, uniform_partitions_follow_their_formula) {
  using Real = TypeParam;
  for (const int64_t nx : {2, 3, 10, 1000, 1 << 20, 20000001}) {
    const std::vector<Real> ends = {Real(-1.7), Real(3.1)};
    const partition<Real> p(ends, DF_PARTITION_UNIFORM, false, nx);
    auto sites = sites_about(make_grid(grids<Real>[0], 100, this->engine_), this->engine_);
    for (const Real end : ends)
      for (const Real t : {end, std::nextafter(end, Real(4)), std::nextafter(end, Real(-4))})
        sites.push_back(t);
    const Real rate = static_cast<Real>(nx - 1) / (ends[1] - ends[0]);
    std::vector<int32_t> want;
    for (const Real t : sites) {
      const Real g = std::max((t - ends[0]) * rate, Real(0));
      const int64_t whole = g < static_cast<Real>(nx) ? static_cast<int64_t>(g) + 1 : nx;
      want.push_back(static_cast<int32_t>(t == ends[1] ? nx - 1 : t < ends[0] ? 0 : std::min(whole, nx)));
    }
    EXPECT_EQ((call<Real>{.threads = tests::shuffled_threads(3)}.cells(p, sites)), want) << nx;
  }
  const partition<Real> point({Real(2), Real(2)}, DF_PARTITION_UNIFORM, false, 5);
  const auto cells = call<Real>{}.cells(point, {Real(2), Real(1), Real(3)});
  EXPECT_EQ(cells[0], 4);
  EXPECT_EQ(cells[1], 0);
}

TYPED_TEST(Search, uniform_sites_are_spread_between_their_ends) {
  using Real = TypeParam;
  const auto x = make_grid(grids<Real>[0], 500, this->engine_);
  const partition<Real> p(x, 0);
  for (const size_t n : {1, 2, 30, 4096, 4097}) {
    std::vector<Real> ends = {Real(-5.5), Real(5.25)}, spread;
    const auto intervals = static_cast<Real>(std::max<size_t>(n, 2) - 1);
    for (size_t i = 0; i < n; ++i)
      spread.push_back(static_cast<Real>(i) * (ends[1] - ends[0]) / intervals + ends[0]);
    ends.resize(n + 2, limits<Real>::quiet_NaN());
    call<Real> by{.site_hint = DF_SITES_UNIFORM, .threads = tests::shuffled_threads(3)};
    EXPECT_EQ(by.cells(p, ends, n), cells_of(x, spread)) << n;
  }
}

// Nothing is found in these, but nothing is read outside either: a sanitizer would report it.
TYPED_TEST(Search, hostile_input_stays_in_range) {
  using Real = TypeParam;
  const Real nan = limits<Real>::quiet_NaN();
  for (const int nx : {2, 9, 700}) {
    auto x = make_grid(grids<Real>[0], nx, this->engine_);
    auto sites = sites_about(x, this->engine_);
    for (size_t i = 0; i < sites.size(); i += 3) sites[i] = nan;
    std::vector<std::vector<Real>> partitions = {x, std::vector<Real>(x.rbegin(), x.rend())};
    partitions.push_back(x);
    std::ranges::shuffle(partitions.back(), this->engine_);
    partitions.emplace_back(x.size(), nan);
    partitions.emplace_back(x.size(), Real(1));
    for (const auto& points : partitions)
      for (const int64_t xhint : {0, 2, 4})
        for (call<Real> by : {call<Real>{}, call<Real>{.site_hint = DF_SITES_SORTED},
                              call<Real>{.search_hint = {0, 1, 0, 0, 1}}})
          for (const int32_t cell : by.cells(partition<Real>(points, xhint), sites))
            ASSERT_TRUE(0 <= cell && cell <= nx);
    // An index made for more points, with buckets of more points than there are now; and none at all.
    const partition<Real> stale(make_grid(grids<Real>[3], nx, this->engine_), 0),
        without(x, DF_PARTITION_UNIFORM);
    const int left = 2 + nx / 8;
    const std::vector<Real> fewer(stale.x.end() - left, stale.x.end());
    tmk_df_kernel_iEditVal(stale.task, DF_NX, left);
    edit_pointer<Real>(stale.task, DF_X, fewer.data());
    for (const int32_t cell : call<Real>{}.cells(stale, sites)) ASSERT_TRUE(0 <= cell && cell <= left);
    tmk_df_kernel_iEditVal(without.task, DF_XHINT, 0);
    std::erase_if(sites, [](Real t) { return std::isnan(t); });
    EXPECT_EQ(call<Real>{}.cells(without, sites), cells_of(x, sites));
  }
}

TYPED_TEST(Search, malformed_hint_arrays) {
  using Real = TypeParam;
  const auto x = make_grid(grids<Real>[0], 12, this->engine_);
  const Real nan = limits<Real>::quiet_NaN();
  const struct {
    int64_t xhint, site_hint;
    std::vector<Real> search_hint{};
    int32_t status;
  } rows[] = {
      {0, 0, {0, Real(0.5), 0, 0, 0}, DF_STATUS_BAD_SEARCH_HINT},
      {0, 0, {0, nan, 0, 0, 0}, DF_STATUS_BAD_SEARCH_HINT},
      {1, 0, {0, 1, 0, 0, Real(-0.5)}, DF_STATUS_BAD_SEARCH_HINT},
      {1, 0, {0, 1, 0, 0, Real(12.5)}, DF_STATUS_BAD_SEARCH_HINT},
      {1, 0, {0, 1, 0, 0, nan}, DF_STATUS_BAD_SEARCH_HINT},
      {1, 0, {0, 1, 0, 0, 12}, 0},
      {1, 0, {0, 0, 0, 0, -1}, 0},
      // A method chosen before leaves the array alone.
      {0, DF_SITES_SORTED, {0, Real(0.5), 0, 0, 0}, 0},
      {DF_PARTITION_QUASI_UNIFORM, 0, {0, Real(0.5), 0, 0, 0}, 0},
      {DF_PARTITION_UNIFORM, 0, {0, Real(0.5), 0, 0, 0}, 0},
  };
  for (const auto& row : rows) {
    call<Real> by{.site_hint = row.site_hint, .search_hint = row.search_hint};
    const auto cells = by.cells(partition<Real>(x, row.xhint), {Real(0)});
    EXPECT_EQ(by.status, row.status) << row.search_hint[1] << " " << row.search_hint[4];
    EXPECT_EQ(cells[0] == -77, row.status != 0);
  }
}

// What a hook returns: a start and a flag for each site, a status for each block.
template <class Real>
struct hook_script {
  std::vector<int64_t> starts{};
  std::vector<int32_t> flags{};
  int32_t status = 0, last_status = 0;
  int64_t asked = 0, most = 0;

  static int32_t run(const int64_t* count, const Real*, int64_t* cells, int32_t* flags, void* self,
                     void* reserved) {
    auto& script = *static_cast<hook_script*>(self);
    EXPECT_EQ(reserved, nullptr);
    std::copy_n(script.starts.begin() + script.asked, *count, cells);
    std::copy_n(script.flags.begin() + script.asked, *count, flags);
    script.asked += *count;
    script.most = std::max(script.most, *count);
    return script.asked == static_cast<int64_t>(script.starts.size()) ? script.last_status : script.status;
  }
};

TYPED_TEST(Search, hooks_are_finished_where_they_ask) {
  using Real = TypeParam;
  for (const int nx : {2, 6, 400})
    for (const bool uniform : {false, true}) {
      const auto x = make_grid(grids<Real>[uniform ? 1 : 0], nx, this->engine_);
      const partition<Real> p(uniform ? std::vector<Real>{x.front(), x.back()} : x,
                              uniform ? DF_PARTITION_UNIFORM : 0, false, nx);
      auto sites = sites_about(x, this->engine_);
      while (sites.size() < 2500) sites.insert(sites.end(), sites.begin(), sites.begin() + 600);
      hook_script<Real> script{.last_status = 7};
      std::vector<int32_t> want = cells_of(x, sites);
      for (size_t i = 0; i < sites.size(); ++i) {
        constexpr int64_t far = int64_t{1} << 40;
        const int64_t cell = want[i];
        const int64_t starts[] = {-far, 0, cell - 1, cell, cell + 1, nx - 1, nx, far};
        script.starts.push_back(starts[this->engine_() % 8]);
        script.flags.push_back(static_cast<int32_t>(this->engine_() % 2) * 3);
        const int64_t g = std::clamp<int64_t>(script.starts[i], 0, nx);
        if (script.flags[i] != 0)
          want[i] = static_cast<int32_t>(script.starts[i]);
        else if (!uniform && g < nx && sites[i] == x[static_cast<size_t>(g)] &&
                 (g == 0 || x[static_cast<size_t>(g - 1)] <= sites[i]))
          want[i] = static_cast<int32_t>(g);
      }
      call<Real> by{
          .hook = hook_script<Real>::run, .parameter = &script, .threads = tests::shuffled_threads(4)};
      EXPECT_EQ(by.cells(p, sites), want) << nx << " " << uniform;
      EXPECT_EQ(by.status, 7);
      EXPECT_LE(script.most, 1024);
      // 1000 takes every cell as it is, whatever its flag.
      script.asked = 0;
      script.status = script.last_status = 1000;
      EXPECT_EQ(by.template cells<int32_t>(p, sites),
                std::vector<int32_t>(script.starts.begin(), script.starts.end()));
      // A negative status ends the search at its block.
      script.asked = 0;
      script.status = -9;
      const auto cells = by.cells(p, sites);
      EXPECT_EQ(by.status, -9);
      EXPECT_EQ(script.asked, script.most);
      EXPECT_EQ(cells.back(), -77);
      // No sites, no question.
      script.asked = 0;
      by.cells(p, sites, 0);
      EXPECT_EQ(by.status, 0);
      EXPECT_EQ(script.asked, 0);
    }
}

// The jobs that a search starts, 0 when it stays in its thread, and the sites of a job.
thread_local int32_t jobs_started, threads_asked, threads_there;
constexpr ThreadingService counting_threads = {
    [](int32_t count, int32_t threads, void* context, TmkWorker worker) {
      jobs_started = count;
      threads_asked = threads;
      for (int32_t item = 0; item < count; ++item) worker(item, item % threads, threads, context);
    },
    nullptr, nullptr, nullptr, [] { return threads_there; }};

TEST(SearchThreads, start_by_the_method_and_the_sizes) {
  constexpr int64_t sorted = DF_SITES_SORTED;
  const std::vector<double> near_a_cell = {0, 1, 0, 0, 3};
  const struct {
    int64_t xhint, site_hint;
    bool peak;
    int n, nx, threads, jobs;
  } rows[] = {
      {4, 0, false, 1000, 50, 2, 0},      {4, 0, false, 1001, 50, 2, 2},      {4, 0, false, 5000, 50, 1, 0},
      {0, sorted, false, 3000, 50, 8, 0}, {0, sorted, false, 3001, 50, 8, 8}, {0, 0, true, 1200, 1200, 2, 0},
      {0, 0, true, 1201, 50, 2, 2},       {0, 0, true, 32, 1201, 3, 3},       {0, 0, true, 31, 1201, 3, 0},
      {2, 0, false, 301, 20, 2, 2},       {2, 0, false, 300, 600, 2, 2},      {2, 0, false, 300, 599, 3, 0},
      {2, 0, false, 151, 40, 4, 4},       {2, 0, false, 151, 39, 9, 0},       {2, 0, false, 150, 900, 9, 0},
      {0, 0, false, 5000, 8, 4, 0},       {0, 0, false, 1201, 9, 2, 2},       {0, 0, false, 1201, 9, 20, 9},
      {0, 0, false, 1200, 9, 4, 4},       {0, 0, false, 1200, 9, 5, 0},       {0, 0, false, 600, 9, 2, 2},
      {0, 0, false, 600, 9, 3, 0},        {0, 0, false, 300, 9, 2, 0},
  };
  std::mt19937 engine(3);
  for (const auto& row : rows) {
    const auto x = make_grid(grids<double>[1], row.nx, engine);
    auto sites = make_grid(grids<double>[0], row.n, engine);
    const partition<double> p(row.xhint == 4 ? std::vector{x.front(), x.back()} : x, row.xhint, false,
                              row.nx);
    jobs_started = 0;
    threads_there = row.threads;
    call<double> by{.site_hint = row.site_hint, .threads = &counting_threads};
    if (row.peak) by.search_hint = near_a_cell;
    EXPECT_EQ(by.cells(p, sites), cells_of(x, sites));
    EXPECT_EQ(jobs_started, row.jobs)
        << row.xhint << " " << row.site_hint << " " << row.n << " " << row.nx << " " << row.threads;
    EXPECT_TRUE(row.jobs == 0 || threads_asked == row.threads);
  }
}

}  // namespace
}  // namespace tmk::search_tests
