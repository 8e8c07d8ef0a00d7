// SPDX-License-Identifier: Apache-2.0
// Order statistics against sorts and scans of the C++ library, in both precisions and layouts, under shuffled
// threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

#include "threading/shuffled_threads.hpp"
#include "tmk/abi/ss.h"

namespace {

using tmk::tests::shuffled_threads;
using compute = int32_t(SSTask*, uint32_t, uint32_t, uint32_t, uint32_t, const ThreadingService*);

template <class Real>
struct names;
#define TMK_NAMES(letter, Real)                                                              \
  template <>                                                                                \
  struct names<Real> {                                                                       \
    static constexpr auto make = __vts##letter##SSNewTask;                                   \
    static constexpr auto edit = __vts##letter##SSEditTask;                                  \
    static constexpr compute *minmax = _vts##letter##SSMinmax, *sort = _vts##letter##SSSort, \
                             *quantiles = _vts##letter##SSQuantiles;                         \
    static constexpr auto median = _vts##letter##SSWMedian;                                  \
    static constexpr auto quick_sort = __vts##letter##QSort;                                 \
    static constexpr auto quick_sort_step = __vts##letter##QSortStep;                        \
    static constexpr auto select = __vts##letter##QSortSelect;                               \
  };
TMK_NAMES(d, double)
TMK_NAMES(s, float)

// A task and what its pointers point to.
template <class Real>
struct job {
  using name = names<Real>;
  int32_t p, n, storage, out_storage = VTS_SS_ROWS, count = 0;
  std::vector<int32_t> mask;
  std::vector<Real> data, out, low, high, orders, quantiles, weights;
  SSTask* task = nullptr;

  job(int32_t p_, int32_t n_, int32_t storage_) : p(p_), n(n_), storage(storage_) {
    data.resize(static_cast<size_t>(p) * n);
    out = data;
    std::mt19937 engine(p * 1000 + n);
    std::normal_distribution<Real> normal;
    for (Real& x : data) x = std::round(normal(engine) * 64);  // with ties
    for (int32_t j = 0; j < p; ++j) mask.push_back(j % 3 != 1);
    EXPECT_EQ(name::make(&task, &p, &n, &storage, data.data(), nullptr, mask.data(), 0), 0);
  }
  job(const job&) = delete;
  ~job() { __vtsSSDeleteTask(&task); }
  void set(int64_t parameter, std::vector<Real>& values) { name::edit(task, parameter, values.data()); }
  void set(int64_t parameter, int32_t& value) { __vtsiSSEditTask(task, parameter, &value); }
  void all_variables() { std::fill(mask.begin(), mask.end(), 1); }

  size_t place(int32_t layout, int32_t j, int32_t i) const {
    return layout == VTS_SS_ROWS ? static_cast<size_t>(j) * n + i : static_cast<size_t>(i) * p + j;
  }
  std::vector<Real> sorted_variable(int32_t j) const {
    std::vector<Real> x;
    for (int32_t i = 0; i < n; ++i) x.push_back(data[place(storage, j, i)]);
    std::sort(x.begin(), x.end());
    return x;
  }
};

constexpr int32_t layouts[] = {VTS_SS_ROWS, VTS_SS_COLUMNS};

template <class Real>
class order : public testing::Test {};
using reals = testing::Types<float, double>;
TYPED_TEST_SUITE(order, reals);

TYPED_TEST(order, minmax_continues_from_the_running_values) {
  using Real = TypeParam;
  for (const int32_t layout : layouts)
    for (const int32_t p : {1, 3, 10, 100, 300})
      for (const int32_t n : {1, 5, 300}) {
        job<Real> j(p, n, layout);
        j.data[j.place(layout, 0, n / 2)] = std::numeric_limits<Real>::quiet_NaN();
        const Real seed = 30;
        j.low.assign(p, seed);
        j.high.assign(p, -seed);
        if (p > 2) j.low[2] = std::numeric_limits<Real>::quiet_NaN();
        j.set(VTS_SS_PARAM_MINIMUM, j.low);
        j.set(VTS_SS_PARAM_MAXIMUM, j.high);
        EXPECT_EQ(
            names<Real>::minmax(j.task, VTS_SS_ESTIMATE_MINIMUM | VTS_SS_ESTIMATE_MAXIMUM, 0, 3, 0, nullptr),
            0);
        for (int32_t v = 0; v < p; ++v) {
          Real low = seed, high = -seed;
          for (int32_t i = 0; i < n && j.mask[v] != 0; ++i) {
            low = std::fmin(low, j.data[j.place(layout, v, i)]);
            high = std::fmax(high, j.data[j.place(layout, v, i)]);
          }
          if (v == 2)
            EXPECT_TRUE(std::isnan(j.low[v]));
          else
            EXPECT_EQ(j.low[v], low) << p << " " << n << " " << v;
          EXPECT_EQ(j.high[v], high) << p << " " << n << " " << v;
        }
      }
}

TYPED_TEST(order, sort_moves_every_layout_to_every_other) {
  using Real = TypeParam;
  for (const int32_t from : layouts)
    for (const int32_t to : layouts)
      for (const bool in_place : {false, true})
        for (const int32_t threads : {1, 3, 50}) {
          if (in_place && from != to) continue;
          job<Real> j(7, 400, from);
          j.all_variables();
          if (!in_place) j.mask[1] = j.mask[4] = 0;
          std::vector<std::vector<Real>> want;
          for (int32_t v = 0; v < j.p; ++v)
            want.push_back(j.mask[v] != 0 ? j.sorted_variable(v) : std::vector<Real>(j.n, 0));
          SSTask* task = j.task;
          if (in_place) names<Real>::make(&task, &j.p, &j.n, &j.storage, j.data.data(), nullptr, nullptr, 0);
          std::vector<Real>& out = in_place ? j.data : j.out;
          j.out_storage = to;
          names<Real>::edit(task, VTS_SS_PARAM_SORTED, out.data());
          __vtsiSSEditTask(task, VTS_SS_PARAM_SORTED_STORAGE, &j.out_storage);
          EXPECT_EQ(names<Real>::sort(task, 0, 0, VTS_SS_METHOD_RADIX_SORT, 0, shuffled_threads(threads)), 0);
          int wrong = 0;
          for (int32_t v = 0; v < j.p; ++v)
            for (int32_t i = 0; i < j.n; ++i) wrong += out[j.place(to, v, i)] != want[v][i];
          EXPECT_EQ(wrong, 0) << from << to << in_place << threads;
          if (in_place) __vtsSSDeleteTask(&task);
        }
}

TYPED_TEST(order, quantiles_are_packed_over_the_selected_variables) {
  using Real = TypeParam;
  const std::vector<std::vector<Real>> order_lists = {
      {},
      {1},
      {Real(-0.0), Real(0.25), Real(0.5), Real(0.75), 1},
      {Real(0.9), Real(0.1), Real(0.1), 1, 0},
      {0, 0, Real(0.001), Real(0.002), Real(0.003), Real(0.5), Real(0.5), Real(0.501), Real(0.999), 1, 1}};
  for (const auto& orders : order_lists)
    for (const int32_t layout : layouts)
      for (const int32_t to : {0, +VTS_SS_ROWS, +VTS_SS_COLUMNS})
        for (const int32_t n : {1, 2, 7, 300, 5000}) {
          job<Real> j(5, n, layout);
          j.orders = orders;
          j.orders.reserve(1);
          j.count = static_cast<int32_t>(orders.size());
          j.quantiles.assign(j.p * orders.size() + 1, -99);
          j.out_storage = to;
          j.set(VTS_SS_PARAM_QUANTILE_ORDERS, j.orders);
          j.set(VTS_SS_PARAM_QUANTILE_ORDER_COUNT, j.count);
          j.set(VTS_SS_PARAM_QUANTILES, j.quantiles);
          j.set(VTS_SS_PARAM_ORDER_STATS, j.out);
          j.set(VTS_SS_PARAM_ORDER_STATS_STORAGE, j.out_storage);
          const uint32_t estimates = VTS_SS_ESTIMATE_QUANTILES | (to != 0 ? VTS_SS_ESTIMATE_ORDER_STATS : 0);
          EXPECT_EQ(names<Real>::quantiles(j.task, estimates, 0, VTS_SS_METHOD_FAST, 0, shuffled_threads(2)),
                    0);
          size_t row = 0;
          int wrong = 0;
          for (int32_t v = 0; v < j.p; ++v) {
            if (j.mask[v] == 0) continue;
            const auto s = j.sorted_variable(v);
            for (const Real q : orders) {
              const Real x = q * static_cast<Real>(n - 1), f = x - std::floor(x);
              const auto k = static_cast<size_t>(x), next = std::min<size_t>(k + 1, n - 1);
              wrong += j.quantiles[row++] != (1 - f) * s[k] + f * s[next];
            }
            for (int32_t i = 0; i < n && to != 0; ++i) wrong += j.out[j.place(to, v, i)] != s[i];
          }
          EXPECT_EQ(wrong, 0) << orders.size() << " " << layout << " " << to << " " << n;
          EXPECT_EQ(j.quantiles[row], -99);
        }
}

TYPED_TEST(order, statuses_come_in_their_order) {
  using Real = TypeParam;
  using name = names<Real>;
  job<Real> j(2, 10, 0x10000);
  const auto* const threads = shuffled_threads(1);
  const auto sort = [&](uint32_t method) { return name::sort(j.task, 0, 0, method, 0, threads); };
  const auto quantiles = [&](uint32_t estimates, uint32_t method) {
    return name::quantiles(j.task, estimates, 0, method, 0, threads);
  };
  const auto minmax = [&](uint32_t method) { return name::minmax(j.task, 0xC00, 0, method, 0, threads); };
  j.low.resize(2);
  j.orders = {Real(0.5), Real(1.5)};
  j.quantiles.resize(4);

  EXPECT_EQ(sort(0), -4084);
  j.set(VTS_SS_PARAM_SORTED, j.data);
  EXPECT_EQ(sort(0), -4044);
  j.out_storage = VTS_SS_COLUMNS;
  j.set(VTS_SS_PARAM_SORTED_STORAGE, j.out_storage);
  EXPECT_EQ(sort(0), -4044);
  j.out_storage = VTS_SS_ROWS;
  EXPECT_EQ(sort(0), -4085);
  j.set(VTS_SS_PARAM_SORTED, j.out);
  j.out_storage = 7;
  EXPECT_EQ(sort(0), -4003);
  j.out_storage = VTS_SS_ROWS;
  EXPECT_EQ(sort(1), -4029);

  EXPECT_EQ(quantiles(0, 1), 0);
  EXPECT_EQ(quantiles(0x30000, 0), -4023);
  j.set(VTS_SS_PARAM_QUANTILES, j.quantiles);
  EXPECT_EQ(quantiles(0x30000, 0), -4021);
  j.set(VTS_SS_PARAM_QUANTILE_ORDERS, j.orders);
  EXPECT_EQ(quantiles(0x30000, 0), -4022);
  j.set(VTS_SS_PARAM_QUANTILE_ORDER_COUNT, j.count);
  for (const int32_t count : {-1, 2}) {
    j.count = count;
    EXPECT_EQ(quantiles(0x30000, 0), -4022);
  }
  j.count = 1;
  EXPECT_EQ(quantiles(0x30000, 0), -4024);
  j.set(VTS_SS_PARAM_ORDER_STATS, j.out);
  EXPECT_EQ(quantiles(0x30000, 0), -4044);
  j.set(VTS_SS_PARAM_ORDER_STATS_STORAGE, j.out_storage);
  j.out_storage = 1;
  EXPECT_EQ(quantiles(0x30000, 0), -4003);
  j.out_storage = VTS_SS_ROWS;
  EXPECT_EQ(quantiles(0x30000, 2), -4029);

  j.orders[0] = std::numeric_limits<Real>::quiet_NaN();
  EXPECT_EQ(quantiles(0x10000, 1), -4022);
  j.orders[0] = Real(0.5);
  const auto with_counts = [&](int32_t p, int32_t n) {
    j.p = p, j.n = n;
    const int32_t status = quantiles(0x10000, 1);
    EXPECT_EQ(sort(VTS_SS_METHOD_RADIX_SORT), status);
    EXPECT_EQ(name::minmax(j.task, 0, 0, 1, 0, threads), status);
    return status;
  };
  EXPECT_EQ(with_counts(0, 10), -4001);
  EXPECT_EQ(with_counts(-1, 10), -4001);
  EXPECT_EQ(with_counts(2, -1), -4002);
  EXPECT_EQ(with_counts(1, 0), 0);
  EXPECT_TRUE(std::isnan(j.quantiles[0])) << "the quantile of an empty block";
  j.p = 2, j.n = 10;

  EXPECT_EQ(minmax(0), -4015);
  j.set(VTS_SS_PARAM_MINIMUM, j.low);
  EXPECT_EQ(minmax(0), -4016);
  j.set(VTS_SS_PARAM_MAXIMUM, j.low);
  EXPECT_EQ(minmax(0), -4029);
  j.storage = 5;
  EXPECT_EQ(minmax(0), -4003);
  EXPECT_EQ(quantiles(0x30000, 0), -4003);
}

TYPED_TEST(order, weighted_median) {
  using Real = TypeParam;
  const struct {
    std::vector<Real> values, weights;
    Real order, want;
  } rows[] = {
      {{3}, {1}, Real(0.5), 3},
      {{3, 1, 2}, {1, 1, 1}, Real(0.5), 2},
      {{4, 3, 1, 2}, {1, 1, 1, 1}, Real(0.5), Real(2.5)},
      {{4, 3, 1, 2}, {1, 0, 1, 0}, Real(0.5), Real(2.5)},  // zero weights are passed by
      {{1, 2, 3, 4},
       {1, 2, 3, 4},
       Real(0.5),
       Real(8) / 3},  // between 2, where the sum is 3, and 3, where it is 6
      {{2, 1, 4, 3}, {2, 1, 4, 3}, 0, 1},
      {{2, 1, 4, 3}, {2, 1, 4, 3}, 1, 4},
      {{1, 2, 3}, {4, 1, 1}, Real(0.5), 1},
      // Summed in the order of the values, the weights stay below their total: the walk runs to the end.
      {{2, 3, 1}, {1, 1, 2 / std::numeric_limits<Real>::epsilon()}, 1, 3},
  };
  for (const auto& row : rows)
    for (const int32_t layout : layouts) {
      job<Real> j(2, static_cast<int32_t>(row.values.size()), layout);
      for (int32_t i = 0; i < j.n; ++i)
        for (int32_t v = 0; v < j.p; ++v) j.data[j.place(layout, v, i)] = row.values[i] * (v + 1);
      j.weights = row.weights;
      j.orders = {row.order};
      j.quantiles.resize(2);
      j.set(VTS_SS_PARAM_WEIGHTS, j.weights);
      j.set(VTS_SS_PARAM_QUANTILE_ORDERS, j.orders);
      j.set(VTS_SS_PARAM_QUANTILES, j.quantiles);
      EXPECT_EQ(names<Real>::median(j.task), 0);
      for (int v = 0; v < 2; ++v)
        EXPECT_NEAR(j.quantiles[v], row.want * (v + 1), 1e-6) << row.want << " " << layout;
    }
}

// Weights of one size are none: whether rounded multiples of it meet their half may not show.
TYPED_TEST(order, weighted_median_of_equal_weights) {
  using Real = TypeParam;
  for (const double weight : {0.1, 1 / 3.0, 0.7, 1e-30})
    for (int32_t n = 1; n <= 1500; n += n < 40 ? 1 : 97) {
      job<Real> j(1, n, VTS_SS_ROWS);
      for (int32_t i = 0; i < n; ++i) j.data[i] = static_cast<Real>(7 * i % n);
      if (n % 7 == 0) std::iota(j.data.begin(), j.data.end(), Real(0));
      j.weights.assign(n, static_cast<Real>(weight));
      j.orders = {Real(0.5)};
      j.quantiles.resize(1);
      j.set(VTS_SS_PARAM_WEIGHTS, j.weights);
      j.set(VTS_SS_PARAM_QUANTILE_ORDERS, j.orders);
      j.set(VTS_SS_PARAM_QUANTILES, j.quantiles);
      EXPECT_EQ(names<Real>::median(j.task), 0);
      EXPECT_EQ(j.quantiles[0], static_cast<Real>(n - 1) / 2) << n << " weights of " << weight;
    }
}

// Every second element NaN, and plainer ones.
template <class Real>
std::vector<Real> quick_sort_input(int kind, int n) {
  std::mt19937 engine(static_cast<unsigned>(n));
  std::vector<Real> a(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    const Real kinds[] = {
        static_cast<Real>(engine()),
        static_cast<Real>(i),
        static_cast<Real>(-i),
        7,
        static_cast<Real>(std::min(i, n - i)),
        static_cast<Real>(engine() % 3),
        i % 2 == 0 ? std::numeric_limits<Real>::quiet_NaN() : static_cast<Real>(engine() % 100)};
    a[i] = kinds[kind];
  }
  return a;
}
constexpr int nan_kind = 6;

template <class Real>
bool less_with_nan_last(Real a, Real b) {
  return std::isnan(b) ? !std::isnan(a) : a < b;
}
template <class Real>
bool same(Real a, Real b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

TYPED_TEST(order, quick_sorts_keep_the_values_and_order_the_numbers) {
  using Real = TypeParam;
  using name = names<Real>;
  for (int kind = 0; kind <= nan_kind; ++kind)
    for (const int32_t n : {1, 2, 7, 8, 9, 500, 20000}) {
      const std::vector<Real> a = quick_sort_input<Real>(kind, n);
      std::vector<Real> want = a, sorted = a, spread(static_cast<size_t>(n) * 3, -5);
      std::sort(want.begin(), want.end(), less_with_nan_last<Real>);
      name::quick_sort(n, sorted.data());
      for (int32_t i = 0; i < n; ++i) spread[3 * i] = a[i];
      name::quick_sort_step(n, spread.data(), 3);
      for (int32_t i = 0; i < 3 * n; ++i) EXPECT_TRUE(i % 3 == 0 || spread[i] == -5);
      std::vector<Real> stepped;
      for (int32_t i = 0; i < n; ++i) stepped.push_back(spread[3 * i]);
      for (std::vector<Real>* got : {&sorted, &stepped}) {
        if (kind == nan_kind) std::sort(got->begin(), got->end(), less_with_nan_last<Real>);
        EXPECT_TRUE(std::equal(want.begin(), want.end(), got->begin(), same<Real>)) << kind << " " << n;
      }
      for (const int32_t k : {0, n / 3, n / 2, n - 1}) {
        std::vector<Real> b = a;
        const Real got = name::select(n, b.data(), k);
        EXPECT_TRUE(same(got, b[k]));
        if (kind != nan_kind) {
          EXPECT_EQ(got, want[k]) << kind << " " << n << " " << k;
          EXPECT_LE(*std::max_element(b.begin(), b.begin() + k + 1), got);
          EXPECT_GE(*std::min_element(b.begin() + k, b.end()), got);
        }
        std::sort(b.begin(), b.end(), less_with_nan_last<Real>);
        EXPECT_TRUE(std::equal(want.begin(), want.end(), b.begin(), same<Real>)) << kind << " " << n;
      }
    }
}

}  // namespace
