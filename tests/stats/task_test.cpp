// SPDX-License-Identifier: Apache-2.0
#include "stats/task.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "tmk/abi/ss.h"

namespace {

using tmk::stats::task;

struct made {
  SSTask* task = nullptr;
  ~made() {
    if (task != nullptr) __vtsSSDeleteTask(&task);
  }
};

TEST(task, creation_checks_in_order) {
  const int32_t one = 1, zero = 0, rows = VTS_SS_ROWS, both = VTS_SS_ROWS | VTS_SS_COLUMNS;
  const int64_t wide_p = int64_t{1} << 32, wide_rows = VTS_SS_ROWS, wide_bad = wide_rows | int64_t{1} << 40;
  const double data = 0;
  const struct {
    const void *p, *n, *storage;
    const double* data;
    int32_t wide, status;
  } rows_of_test[] = {
      {nullptr, nullptr, nullptr, &data, 0, VTS_STATUS_SS_BAD_DIMENSION},
      {&zero, nullptr, nullptr, &data, 0, VTS_STATUS_SS_BAD_DIMENSION},
      {&wide_p, nullptr, nullptr, nullptr, 0, VTS_STATUS_SS_BAD_DIMENSION},
      {&wide_p, nullptr, nullptr, nullptr, 1, 0},
      {&one, nullptr, nullptr, nullptr, 0, 0},
      {&one, &zero, nullptr, &data, 0, VTS_STATUS_SS_STORAGE_NULL},
      {&one, &zero, &both, &data, 0, VTS_STATUS_SS_BAD_STORAGE},
      {&wide_p, &wide_p, &wide_bad, &data, 1, VTS_STATUS_SS_BAD_STORAGE},
      {&one, nullptr, &rows, &data, 0, VTS_STATUS_SS_BAD_OBSERVATIONS},
      {&one, &zero, &rows, &data, 0, VTS_STATUS_SS_BAD_OBSERVATIONS},
      {&wide_p, &wide_p, &wide_rows, &data, 1, 0},
      {&one, &one, &rows, &data, 0, 0},
  };
  for (const auto& r : rows_of_test) {
    made m;
    EXPECT_EQ(__vtsdSSNewTask(&m.task, r.p, r.n, r.storage, r.data, nullptr, nullptr, r.wide), r.status)
        << &r - rows_of_test;
    EXPECT_EQ(m.task != nullptr, r.status == 0);
  }
}

TEST(task, holds_what_creation_gave_and_nothing_else) {
  const int32_t p = 2, n = 3, storage = VTS_SS_COLUMNS, mask[2] = {};
  const float data[6] = {}, weights[3] = {};
  made m;
  ASSERT_EQ(__vtssSSNewTask(&m.task, &p, &n, &storage, data, weights, mask, 0), 0);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(m.task) % 128, 0u);
  task<float>& t = task<float>::of(m.task);
  EXPECT_EQ(t.isDouble, 0);
  EXPECT_EQ(t.recordKind, 2);
  EXPECT_TRUE(t.dimension == &p && t.observations == &n && t.indices == mask && t.data == data &&
              t.weights == weights && t.dataStorage == &storage);
  t.dimension = t.observations = t.indices = t.dataStorage = nullptr;
  t.data = t.weights = nullptr;
  t.recordKind = 0;
  constexpr std::array<unsigned char, sizeof(task<float>)> zeros{};
  EXPECT_EQ(std::memcmp(m.task, zeros.data(), sizeof(task<float>)), 0);
}

TEST(task, deletion_runs_the_cleanup_and_nulls_the_pointer) {
  static int cleanups = 0;
  const int32_t p = 1;
  SSTask* handle = nullptr;
  ASSERT_EQ(__vtsdSSNewTask(&handle, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0);
  task<double>& t = task<double>::of(handle);
  EXPECT_EQ(t.isDouble, 1);
  t.cleanup = [](SSTask*) { ++cleanups; };
  t.cleanupCount = 1;
  EXPECT_EQ(__vtsSSDeleteTask(&handle), 0);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(cleanups, 1);
  EXPECT_EQ(__vtsSSDeleteTask(nullptr), VTS_STATUS_SS_TASK_NULL);
}

// Bytes of the record that an edit changed, as offset of the first; -1 for none.
template <class Edit>
ptrdiff_t changed(SSTask* task_handle, Edit edit) {
  std::array<unsigned char, sizeof(task<double>)> before;
  std::memcpy(before.data(), task_handle, before.size());
  edit();
  const auto* now = reinterpret_cast<const unsigned char*>(task_handle);
  for (size_t i = 0; i < before.size(); ++i)
    if (before[i] != now[i]) return static_cast<ptrdiff_t>(i / sizeof(void*) * sizeof(void*));
  return -1;
}

// The numbers that each generic function takes, written out; every one sets a field of its own.
TEST(task, generic_edits_take_their_numbers_and_no_others) {
  const std::vector<int64_t> reals = {3,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 21, 23,
                                      25, 26, 27, 30, 31, 33, 35, 38, 39, 40, 42, 43, 46, 48, 51, 53, 55,
                                      57, 59, 60, 63, 65, 66, 67, 68, 69, 70, 71, 72, 73, 74, 76, 77, 78};
  const std::vector<int64_t> integers = {1,  2,  4,  5,  20, 22, 24, 28, 29, 32, 34, 36, 37, 41,
                                         44, 45, 47, 49, 50, 52, 54, 56, 58, 61, 62, 64, 75, 79};
  const int32_t p = 1;
  made m;
  ASSERT_EQ(__vtsdSSNewTask(&m.task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0);
  double real = 0;
  int32_t integer = 0;
  std::vector<ptrdiff_t> offsets;
  const auto sweep = [&](auto edit, const std::vector<int64_t>& numbers, auto* value) {
    EXPECT_EQ(edit(nullptr, numbers[0], value), VTS_STATUS_SS_TASK_NULL);
    for (int64_t k = -3; k < 100; ++k) {
      const bool known = std::find(numbers.begin(), numbers.end(), k) != numbers.end();
      int32_t status = 1;
      EXPECT_EQ(changed(m.task, [&] { status = edit(m.task, k, nullptr); }), -1);
      EXPECT_EQ(status == VTS_STATUS_SS_BAD_PARAMETER, !known) << k;
      EXPECT_LT(status, 0);
      const ptrdiff_t at = changed(m.task, [&] { status = edit(m.task, k, value); });
      EXPECT_EQ(status, known ? 0 : VTS_STATUS_SS_BAD_PARAMETER) << k;
      EXPECT_EQ(at != -1, known) << k;
      if (known) offsets.push_back(at);
    }
    EXPECT_EQ(edit(m.task, int64_t{1} << 32 | numbers[0], value), VTS_STATUS_SS_BAD_PARAMETER);
  };
  sweep(__vtsdSSEditTask, reals, &real);
  sweep(__vtsiSSEditTask, integers, &integer);
  std::sort(offsets.begin(), offsets.end());
  EXPECT_EQ(std::adjacent_find(offsets.begin(), offsets.end()), offsets.end());

  EXPECT_EQ(__vtsdSSEditTask(m.task, VTS_SS_PARAM_SUM, nullptr), -4006);
  EXPECT_EQ(__vtsdSSEditTask(m.task, VTS_SS_PARAM_RAW_SUM2, nullptr), -4075);
  EXPECT_EQ(__vtsiSSEditTask(m.task, VTS_SS_PARAM_SORTED_STORAGE, nullptr), -4044);
  EXPECT_EQ(__vtsiSSEditTask(m.task, VTS_SS_PARAM_GROUP_ENABLE, nullptr), -4038);
}

// A family edit sets what the generic edit of each number sets, in the order of the numbers.
template <class Real, class... Arguments>
void expect_family(int32_t (*edit)(SSTask*, Arguments...),
                   const std::array<int64_t, sizeof...(Arguments)>& numbers,
                   int32_t (*edit_real)(SSTask*, int64_t, Real*)) {
  const int32_t p = 1;
  made family, generic;
  for (made* m : {&family, &generic})
    ASSERT_EQ(__vtsdSSNewTask(&m->task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0);
  Real values[sizeof...(Arguments)];
  const auto each = [&](SSTask* t, auto give) {
    return [&]<size_t... I>(std::index_sequence<I...>) { return edit(t, static_cast<Arguments>(give(I))...); }
    (std::index_sequence_for<Arguments...>{});
  };
  EXPECT_EQ(each(nullptr, [&](size_t i) { return &values[i]; }), VTS_STATUS_SS_TASK_NULL);
  const auto nothing = [](size_t) -> Real* { return nullptr; };
  EXPECT_EQ(changed(family.task, [&] { EXPECT_EQ(each(family.task, nothing), 0); }), -1);
  for (size_t i = 0; i < numbers.size(); ++i) {
    EXPECT_EQ(each(family.task, [&](size_t k) { return k == i ? &values[i] : nullptr; }), 0);
    const int32_t status = edit_real(generic.task, numbers[i], &values[i]);
    EXPECT_EQ(status == 0 ? 0 : __vtsiSSEditTask(generic.task, numbers[i], &values[i]), 0);
    EXPECT_EQ(std::memcmp(&task<Real>::of(family.task).dimension, &task<Real>::of(generic.task).dimension,
                          sizeof(task<Real>) - offsetof(task<Real>, dimension)),
              0)
        << "number " << numbers[i];
  }
}

#define EXPECT_FAMILY(name, ...)                                              \
  expect_family<double>(__vtsdSSEdit##name, {__VA_ARGS__}, __vtsdSSEditTask); \
  expect_family<float>(__vtssSSEdit##name, {__VA_ARGS__}, __vtssSSEditTask)

TEST(task, family_edits_set_the_fields_of_their_numbers) {
  EXPECT_FAMILY(Moments, 7, 8, 9, 10, 11, 12, 13);
  EXPECT_FAMILY(Sums, 67, 68, 69, 70, 71, 72, 73);
  EXPECT_FAMILY(CovCor, 7, 19, 20, 21, 22);
  EXPECT_FAMILY(CP, 7, 67, 74, 75);
  EXPECT_FAMILY(PartialCovCor, 45, 19, 20, 21, 22, 46, 47, 48, 49);
  EXPECT_FAMILY(PooledCovariance, 28, 30, 31, 32, 33, 35);
  EXPECT_FAMILY(Quantiles, 24, 25, 26, 27, 44);
  EXPECT_FAMILY(StreamQuantiles, 64, 65, 66, 62, 63);
  EXPECT_FAMILY(RCov, 36, 37, 38, 39, 40);
  EXPECT_FAMILY(OutDetect, 41, 42, 43);
  EXPECT_FAMILY(MissingVals, 50, 51, 52, 53, 58, 59, 54, 55, 56, 57);
  EXPECT_FAMILY(MtxParametrz, 21, 22, 60, 61);
}

}  // namespace
