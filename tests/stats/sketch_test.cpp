// SPDX-License-Identifier: Apache-2.0
// Streaming quantiles against exact ranks: a value holds every rank from the number of values below it to the
// number of those not above it, and one of them must be within epsilon N of order N at every moment.
#include "stats/quantiles/sketch.hpp"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "sanitized.hpp"
#include "stats/task.hpp"
#include "threading/shuffled_threads.hpp"
#include "tmk/abi/ss.h"

namespace {

constexpr uint32_t absorb_only = VTS_SS_METHOD_STREAM_ABSORB, and_answer = VTS_SS_METHOD_STREAM_QUANTILES;

template <class Real>
struct interface {
  static constexpr auto* new_task = __vtsdSSNewTask;
  static constexpr auto* edit = __vtsdSSEditStreamQuantiles;
  static constexpr auto* edit_task = __vtsdSSEditTask;
  static constexpr auto* compute = _vtsdSSStreamQuantiles;
  static constexpr auto* quantile = tmk_ss_dstream_quantile;
};
template <>
struct interface<float> {
  static constexpr auto* new_task = __vtssSSNewTask;
  static constexpr auto* edit = __vtssSSEditStreamQuantiles;
  static constexpr auto* edit_task = __vtssSSEditTask;
  static constexpr auto* compute = _vtssSSStreamQuantiles;
  static constexpr auto* quantile = tmk_ss_sstream_quantile;
};

// A task with sketches of p variables and what it points to.
template <class Real>
struct stream {
  using call = interface<Real>;
  int32_t p, n = 0, storage = VTS_SS_ROWS, order_count = 0, param_count = 1;
  Real epsilon;
  std::vector<Real> orders, answers;
  SSTask* task = nullptr;

  stream(double accuracy, std::vector<Real> wanted = {0, Real(0.5), 1}, int32_t variables = 1)
      : p(variables), epsilon(static_cast<Real>(accuracy)), orders(std::move(wanted)) {
    order_count = static_cast<int32_t>(orders.size());
    answers.assign(orders.size() * static_cast<size_t>(p), Real(-77));
    EXPECT_EQ(call::new_task(&task, &p, &n, &storage, nullptr, nullptr, nullptr, 0), 0);
    call::edit(task, &order_count, orders.data(), answers.data(), &param_count, &epsilon);
  }
  ~stream() { __vtsSSDeleteTask(&task); }
  stream(const stream&) = delete;
  stream& operator=(const stream&) = delete;

  int32_t add(const Real* data, size_t count, uint32_t method = absorb_only, int32_t threads = 1) {
    n = static_cast<int32_t>(count);
    tmk::stats::task<Real>::of(task).data = const_cast<Real*>(data);
    return call::compute(task, 0, 0, method, 0, tmk::tests::shuffled_threads(threads));
  }
  struct bounds {
    Real value;
    int64_t lowest, highest, count;
  };
  bounds at(double order, int32_t variable = 0) {
    bounds r{};
    EXPECT_EQ(
        call::quantile(task, variable, static_cast<Real>(order), &r.value, &r.lowest, &r.highest, &r.count),
        0);
    return r;
  }
};

// What is wrong with the answers over these values, sorted, if anything is.
template <class Real>
std::string fault(stream<Real>& s, const std::vector<Real>& sorted, int steps, int32_t variable = 0) {
  const auto n = static_cast<double>(sorted.size());
  for (int k = 0; k <= steps; ++k) {
    const auto order = static_cast<double>(static_cast<Real>(static_cast<double>(k) / steps));
    const auto r = s.at(order, variable);
    const auto range = std::equal_range(sorted.begin(), sorted.end(), r.value);
    const auto below = range.first - sorted.begin(), not_above = range.second - sorted.begin();
    const double allowed = double{s.epsilon} * n * (1 + 1e-12), target = order * n;
    const auto say = [&](const char* what) {
      return std::string(what) + " at order " + std::to_string(order) + " of " + std::to_string(n) +
             ", epsilon " + std::to_string(s.epsilon);
    };
    if (r.count != static_cast<int64_t>(sorted.size())) return say("count");
    if (below == not_above) return say("value never seen");
    if (below > target + allowed || not_above < target - allowed) return say("rank");
    if (r.lowest > not_above || r.highest < not_above) return say("bounds");
    if (static_cast<double>(r.highest - r.lowest) > 2 * allowed) return say("width of bounds");
    if ((k == 0 && r.value != sorted.front()) || (k == steps && r.value != sorted.back()))
      return say("extreme");
  }
  return "";
}

struct arrival {
  const char* name;
  std::function<double(size_t i, size_t n, std::mt19937& engine)> value;
};

const arrival arrivals[] = {
    {"ascending", [](size_t i, size_t, std::mt19937&) { return double(i); }},
    {"descending", [](size_t i, size_t, std::mt19937&) { return -double(i); }},
    {"organ pipe", [](size_t i, size_t n, std::mt19937&) { return double(std::min(i, n - i)); }},
    {"outside in", [](size_t i, size_t, std::mt19937&) { return (i % 2 == 0 ? 1.0 : -1.0) / double(i + 1); }},
    {"constant", [](size_t, size_t, std::mt19937&) { return 42.0; }},
    {"random", [](size_t, size_t, std::mt19937& e) { return std::normal_distribution<>()(e); }},
    {"repeated", [](size_t, size_t, std::mt19937& e) { return double(e() % 7); }},
    {"saw", [](size_t i, size_t, std::mt19937&) { return double(i % 1021); }},
    {"mostly one value", [](size_t i, size_t, std::mt19937& e) { return e() % 50 == 0 ? double(i) : 3.0; }},
    {"infinities",
     [](size_t i, size_t, std::mt19937& e) {
       return i % 3 == 0 ? (e() % 2 ? HUGE_VAL : -HUGE_VAL) : double(e());
     }},
};

std::vector<double> arrived(const arrival& a, size_t n) {
  std::mt19937 engine(11);
  std::vector<double> values(n);
  for (size_t i = 0; i < n; ++i) values[i] = a.value(i, n, engine);
  return values;
}

template <class Real>
class sketch_test : public testing::Test {};
using reals = testing::Types<double, float>;
TYPED_TEST_SUITE(sketch_test, reals);

// Block lengths are small numbers here: every rounding of them counts, at every moment.
TYPED_TEST(sketch_test, every_moment_of_coarse_sketches) {
  using Real = TypeParam;
  for (const arrival& a : arrivals)
    for (const double epsilon : {1.0, 0.9, 0.51, 0.3, 0.29, 0.1, 0.07, 0.031}) {
      const std::vector<double> values = arrived(a, 1500);
      stream<Real> s(epsilon);
      std::vector<Real> sorted;
      for (const double v : values) {
        const auto x = static_cast<Real>(v);
        ASSERT_EQ(s.add(&x, 1), 0);
        sorted.insert(std::upper_bound(sorted.begin(), sorted.end(), x), x);
        if (sorted.size() > 300 && sorted.size() % 17 != 0) continue;
        ASSERT_EQ(fault(s, sorted, 12), "") << a.name;
      }
    }
}

TYPED_TEST(sketch_test, arrivals_in_blocks_of_any_size) {
  using Real = TypeParam;
  for (const arrival& a : arrivals) {
    const std::vector<double> doubles = arrived(a, sanitized ? 30000 : 150000);
    const std::vector<Real> values(doubles.begin(), doubles.end());
    for (const size_t block : {149u, 4099u, 60000u}) {
      stream<Real> s(block == 149 ? 0.01 : 0.001);
      std::vector<Real> sorted;
      size_t next_check = block;
      for (size_t i = 0; i < values.size(); i += block) {
        const size_t count = std::min(block, values.size() - i);
        ASSERT_EQ(s.add(values.data() + i, count), 0);
        if (i + count < next_check && i + count < values.size()) continue;
        next_check = 2 * next_check;
        sorted.assign(values.begin(), values.begin() + static_cast<ptrdiff_t>(i + count));
        std::sort(sorted.begin(), sorted.end());
        ASSERT_EQ(fault(s, sorted, 201), "") << a.name;
      }
    }
  }
}

// Each batch falls between the last answer and the nearest value known above it, where the sketch knows
// least.
TEST(sketch, values_that_zoom_in_on_the_answers) {
  for (const double order : {0.1, 0.5, 0.93}) {
    stream<double> s(0.01);
    std::vector<double> sorted;
    double low = 0, high = 1;
    for (int round = 0; round < 60; ++round) {
      std::vector<double> batch(701);
      for (size_t i = 0; i < batch.size(); ++i)
        batch[i] = low + (high - low) * double(i + 1) / double(batch.size() + 1);
      ASSERT_EQ(s.add(batch.data(), batch.size()), 0);
      sorted.insert(sorted.end(), batch.begin(), batch.end());
      std::sort(sorted.begin(), sorted.end());
      ASSERT_EQ(fault(s, sorted, 100), "") << "round " << round;
      low = s.at(order).value;
      const auto above = std::upper_bound(sorted.begin(), sorted.end(), low);
      high = above != sorted.end() ? *above : low + 1;
    }
  }
}

// Columns on several threads give what rows give on one, a masked variable stays out, and memory is bounded.
TEST(sketch, variables_layouts_and_threads) {
  constexpr int32_t p = 5, n = 3000, blocks = 7;
  std::mt19937 engine(3);
  std::vector<double> rows(p * n), columns(p * n);
  const std::vector<int32_t> mask = {1, 1, 0, 1, 1};
  for (const int32_t threads : {1, 2, 3, 8}) {
    stream<double> by_rows(0.005, {0, 0.25, 0.9}, p), by_columns(0.005, {0, 0.25, 0.9}, p);
    by_columns.storage = VTS_SS_COLUMNS;
    for (const auto* s : {&by_rows, &by_columns})
      __vtsiSSEditTask(s->task, VTS_SS_PARAM_INDICES, mask.data());
    for (int b = 0; b < blocks; ++b) {
      for (int32_t j = 0; j < p; ++j)
        for (int32_t i = 0; i < n; ++i)
          columns.at(i * p + j) = rows.at(j * n + i) = double(engine()) * (j + 1);
      const uint32_t method = b + 1 == blocks ? and_answer : absorb_only;
      ASSERT_EQ(by_rows.add(rows.data(), n, method), 0);
      ASSERT_EQ(by_columns.add(columns.data(), n, method, threads), 0);
    }
    EXPECT_EQ(by_rows.answers, by_columns.answers);
    for (int32_t j = 0; j < p; ++j) EXPECT_EQ(by_rows.answers.at(3 * j) == -77, j == 2);
    EXPECT_EQ(by_rows.at(0.25, 3).value, by_rows.answers[10]);
  }
}

TEST(sketch, memory_grows_with_the_logarithm) {
  constexpr double epsilon = 0.01;
  stream<double> s(epsilon);
  std::mt19937 engine(5);
  std::vector<double> values(1 << 16);
  int64_t held_before = 0;
  for (int k = 0; k < 64; ++k) {
    for (double& v : values) v = double(engine());
    ASSERT_EQ(s.add(values.data(), values.size()), 0);
  }
  const auto& sketch =
      *static_cast<tmk::stats::sketch<double>*>(tmk::stats::task<double>::of(s.task).streamState);
  for (int32_t h = 0; h < sketch.level_count; ++h) held_before += sketch.levels[h].capacity;
  const double log2 = std::log2(epsilon * double(sketch.count));
  EXPECT_LE(double(held_before), (log2 + 3) * (log2 + 2) / epsilon);
}

TEST(sketch, nan_stand_outside_the_numbers) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  stream<double> s(0.1, {0, 0.5, 1});
  std::vector<double> values = {3, nan, 1, 2, 5, 4, -nan, 6, 7, -0.0, 0.0};
  ASSERT_EQ(s.add(values.data(), values.size(), and_answer), 0);
  EXPECT_TRUE(std::isnan(s.answers[0]) && std::signbit(s.answers[0]));
  EXPECT_TRUE(std::isnan(s.answers[2]) && !std::signbit(s.answers[2]));
  EXPECT_GE(s.answers[1], 2);
  EXPECT_LE(s.answers[1], 5);
}

TEST(sketch, statuses_and_reading_without_data) {
  stream<double> s(0.1);
  std::vector<double> data = {1, 2, 3};
  double value;
  int64_t lowest, highest, count;
  const auto ask = [&](int32_t variable, double order) {
    return tmk_ss_dstream_quantile(s.task, variable, order, &value, &lowest, &highest, &count);
  };
  EXPECT_EQ(ask(0, 0.5), VTS_STATUS_SS_DATA_NULL);
  EXPECT_EQ(tmk_ss_dstream_quantile(nullptr, 0, 0.5, &value, &lowest, &highest, &count),
            VTS_STATUS_SS_TASK_NULL);
  ASSERT_EQ(s.add(nullptr, 0, and_answer), 0);
  EXPECT_TRUE(std::isnan(s.answers[1]));
  ASSERT_EQ(s.add(data.data(), 3, absorb_only), 0);
  EXPECT_TRUE(std::isnan(s.answers[1])) << "absorbing answers nothing";
  ASSERT_EQ(s.add(nullptr, 0, and_answer), 0);
  EXPECT_EQ(s.answers, (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(ask(1, 0.5), VTS_STATUS_SS_BAD_DIMENSION);
  EXPECT_EQ(ask(0, 1.5), VTS_STATUS_SS_BAD_STREAM_ORDERS);

  // Each row makes one more field wrong, in the order of the checks reversed: the fields of earlier rows stay
  // wrong.
  auto& t = tmk::stats::task<double>::of(s.task);
  double bad_orders[] = {0.5, 1.5, 0};
  int32_t two = 2, minus = -1;
  uint32_t method = 1;
  const auto now = [&] { return _vtsdSSStreamQuantiles(s.task, 0, 0, method, 0, tmk_threading_serial()); };
  s.n = 3;
  t.data = data.data();
  s.epsilon = 0;
  EXPECT_EQ(now(), VTS_STATUS_SS_BAD_METHOD);
  method = and_answer;
  EXPECT_EQ(now(), VTS_STATUS_SS_BAD_EPSILON);
  s.epsilon = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(now(), VTS_STATUS_SS_BAD_EPSILON);
  const struct {
    std::function<void()> spoil;
    int32_t status;
  } rows[] = {
      {[&] { t.streamParams = nullptr; }, VTS_STATUS_SS_STREAM_PARAMS_NULL},
      {[&] { t.streamOrders = bad_orders; }, VTS_STATUS_SS_BAD_STREAM_ORDERS},
      {[&] { t.streamParamCount = &two; }, VTS_STATUS_SS_BAD_STREAM_PARAM_COUNT},
      {[&] { t.streamParamCount = nullptr; }, VTS_STATUS_SS_STREAM_PARAM_COUNT_NULL},
      {[&] { t.streamOrderCount = &minus; }, VTS_STATUS_SS_BAD_STREAM_ORDERS},
      {[&] { t.streamOrders = nullptr; }, VTS_STATUS_SS_STREAM_ORDERS_NULL},
      {[&] { t.streamQuantiles = nullptr; }, VTS_STATUS_SS_STREAM_QUANTILES_NULL},
      {[&] { s.storage = 3; }, VTS_STATUS_SS_BAD_STORAGE},
      {[&] { t.dataStorage = nullptr; }, VTS_STATUS_SS_STORAGE_NULL},
      {[&] { t.data = nullptr; }, VTS_STATUS_SS_DATA_NULL},
      {[&] { s.n = -1; }, VTS_STATUS_SS_BAD_OBSERVATIONS},
      {[&] { t.observations = nullptr; }, VTS_STATUS_SS_BAD_OBSERVATIONS},
  };
  for (const auto& row : rows) {
    row.spoil();
    EXPECT_EQ(now(), row.status);
  }
}

TEST(sketch, masks_of_later_blocks) {
  const double data[] = {1, 2, 3, 4, 5, 6};
  int32_t mask[] = {1, 0, 1};
  stream<double> s(0.1, {0.5}, 3);
  __vtsiSSEditTask(s.task, VTS_SS_PARAM_INDICES, mask);
  ASSERT_EQ(s.add(data, 2), 0);
  const auto with = [&](int32_t a, int32_t b, int32_t c) {
    mask[0] = a, mask[1] = b, mask[2] = c;
    return s.add(data, 2);
  };
  EXPECT_EQ(with(1, 1, 1), VTS_STATUS_SS_INDICES_NULL);
  EXPECT_EQ(with(0, 0, 0), VTS_STATUS_SS_INDICES_NULL);
  EXPECT_EQ(with(0, 0, 1), 0);
  EXPECT_EQ(s.at(0.5, 0).count, 2);
  EXPECT_EQ(s.at(0.5, 2).count, 4);
}

TEST(sketch, later_blocks_have_the_variables_of_the_first) {
  const std::vector<double> data(60, 1);
  for (const int32_t layout : {VTS_SS_ROWS, VTS_SS_COLUMNS}) {
    stream<double> s(0.1, {0.5}, 3);
    s.storage = layout;
    ASSERT_EQ(s.add(data.data(), 10), 0);
    for (const int32_t p : {2, 6, 0, -1}) {
      s.p = p;
      EXPECT_EQ(s.add(data.data(), 10, and_answer), VTS_STATUS_SS_BAD_DIMENSION) << p;
      EXPECT_EQ(s.add(nullptr, 0, and_answer), VTS_STATUS_SS_BAD_DIMENSION) << p;
    }
    EXPECT_EQ(s.answers, std::vector<double>(3, -77));
    s.p = 3;
    EXPECT_EQ(s.at(0.5, 2).count, 10);
  }
  stream<double> none(0.1);
  none.p = 0;
  EXPECT_EQ(none.add(data.data(), 10), VTS_STATUS_SS_BAD_DIMENSION);
}

// A block that finds no memory is refused; what was there is answered for, and more can come. The block is
// larger than anything that earlier tests may have left in the heap, and is never read.
TEST(sketch, continues_after_a_failed_allocation) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer needs address space of its own";
#endif
  constexpr size_t count = size_t{1} << 26;
  void* large =
      mmap(nullptr, count * sizeof(double), PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(large, MAP_FAILED);
  std::vector<double> values(1000);
  std::iota(values.begin(), values.end(), 0.0);
  stream<double> s(1e-9);
  ASSERT_EQ(s.add(values.data(), values.size()), 0);
  rlimit saved{};
  getrlimit(RLIMIT_AS, &saved);
  rlimit tight = saved;
  tight.rlim_cur = 1 << 20;
  setrlimit(RLIMIT_AS, &tight);
  const int32_t status = s.add(static_cast<double*>(large), count);
  setrlimit(RLIMIT_AS, &saved);
  munmap(large, count * sizeof(double));
  ASSERT_EQ(status, VTS_STATUS_SS_MEMORY);
  EXPECT_EQ(s.at(1).count, 1000);
  EXPECT_EQ(s.at(1).value, 999);
  values.assign(values.size(), 5000);
  ASSERT_EQ(s.add(values.data(), values.size()), 0);
  EXPECT_EQ(s.at(1).count, 2000);
  EXPECT_EQ(s.at(1).value, 5000);
}

}  // namespace
