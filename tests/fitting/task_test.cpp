// SPDX-License-Identifier: Apache-2.0
// The fitting task: statuses, what a failing edit leaves, row pointers, and the bucket index.
#include "fitting/task.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace tmk::tests {
namespace {

using record = fitting::task<double>;

struct made {
  DFTask* task = nullptr;
  ~made() {
    if (task != nullptr) tmk_df_kernel_DeleteTask(&task);
  }
  record& operator*() const { return record::of(task); }
  operator DFTask*() const { return task; }
};

int64_t value_of(DFTask* task, int64_t attribute) {
  int64_t value = -1;
  EXPECT_EQ(tmk_df_kernel_iQueryVal(task, attribute, &value), 0);
  return value;
}

TEST(fitting_task, creation_checks_in_order) {
  const double x[] = {0, 1, 2}, y[] = {3, 4, 5};
  const struct {
    int64_t nx;
    const double* x;
    int64_t xhint, ny;
    const double* y;
    int64_t yhint;
    int32_t status;
  } rows[] = {
      {1, nullptr, 3, 1, nullptr, 1, DF_STATUS_BAD_NX},
      {2, nullptr, 3, 1, nullptr, 1, DF_STATUS_NULL_X},
      {2, x, 3, 1, nullptr, 1, DF_STATUS_BAD_XHINT},
      {2, x, 4, 1, nullptr, 1, DF_STATUS_NULL_Y},
      {2, x, 4, 0, y, 1, DF_STATUS_BAD_NY},
      {2, x, 4, 1, y, 64, DF_STATUS_BAD_YHINT},
      {2, x, 0, int64_t{1} << 62, y, 0, DF_STATUS_NO_MEMORY},
      {3, x, 2, 1, y, 128, 0},
      {3, x, 0, 0, nullptr, 0, 0},
  };
  for (const auto& r : rows) {
    made t;
    EXPECT_EQ(tmk_df_kernel_dNewTask1D(&t.task, r.nx, r.x, r.xhint, r.ny, r.y, r.yhint, 0), r.status);
    // What there is of a task whose memory ran out can be deleted.
    EXPECT_EQ(t.task != nullptr, r.status == 0 || r.status == DF_STATUS_NO_MEMORY);
  }
  made none;
  EXPECT_EQ(tmk_df_kernel_DeleteTask(&none.task), DF_STATUS_NULL_TASK);
}

TEST(fitting_task, spline_edits_keep_what_precedes_a_failure) {
  const double x[] = {0, 1, 2}, y[] = {3, 4, 5}, bc[] = {1, 2}, ic[] = {1};
  double c[64];
  made t;
  ASSERT_EQ(tmk_df_kernel_dNewTask1D(&t.task, 3, x, 1, 0, nullptr, 0, 1), 0);
  const auto edit = [&](int64_t order, int64_t type, int64_t bc_type, const double* b, int64_t ic_type,
                        const double* i) {
    return tmk_df_kernel_dEditPPSpline1D(t, order, type, bc_type, b, ic_type, i, c, 16);
  };
  EXPECT_EQ(tmk_df_kernel_dEditPPSpline1D(nullptr, 2, 0, 0, nullptr, 0, nullptr, c, 0), DF_STATUS_NULL_TASK);
  EXPECT_EQ(edit(-1, -1, 12, nullptr, 1, nullptr), DF_STATUS_BAD_ORDER);
  EXPECT_EQ(edit(4, -1, 12, nullptr, 1, nullptr), DF_STATUS_BAD_TYPE);
  EXPECT_EQ(value_of(t, DF_ORDER), 0);
  EXPECT_EQ(edit(4, 7, 12, nullptr, 1, nullptr), DF_STATUS_NULL_BC);
  EXPECT_EQ(value_of(t, DF_TYPE), 7);
  EXPECT_EQ(value_of(t, DF_BC_TYPE), 0);
  EXPECT_EQ(edit(3, 1, 12, bc, 1, nullptr), DF_STATUS_NULL_IC);
  EXPECT_EQ(value_of(t, DF_BC_TYPE), 12);
  EXPECT_EQ(edit(3, 1, 64, nullptr, 0, ic), DF_STATUS_BAD_IC_TYPE);
  EXPECT_EQ(edit(3, 1, 64, nullptr, 8, ic), DF_STATUS_BAD_NY);
  EXPECT_EQ(value_of(t, DF_IC_TYPE), 8);
  EXPECT_EQ(value_of(t, DF_COEFF_HINT), 0);
  // A Subbotin spline has a cell for each point.
  ASSERT_EQ(tmk_df_kernel_iEditVal(t, DF_NY, 2), 0);
  ASSERT_EQ(edit(3, 1, 0, nullptr, 0, nullptr), 0);
  EXPECT_EQ((*t).coeff_rows[1], c + 9);
  ASSERT_EQ(edit(3, 0, 0, nullptr, 0, nullptr), 0);
  EXPECT_EQ((*t).coeff_rows[1], c + 6);
  EXPECT_EQ(tmk_df_kernel_dEditPtr(t, DF_Y, y), 0);
  EXPECT_EQ((*t).y_rows[1], y + 3);
}

TEST(fitting_task, pointers_by_attribute_and_index) {
  const float x[] = {0, 1}, y[] = {3, 4, 5, 6, 7, 8}, other[] = {9, 9};
  float* p = nullptr;
  made t, columns;
  ASSERT_EQ(tmk_df_kernel_sNewTask1D(&t.task, 2, x, 0, 3, y, 128, 0), 0);
  ASSERT_EQ(tmk_df_kernel_sNewTask1D(&columns.task, 2, x, 4, 3, y, 32, 0), 0);
  const int32_t null_status[] = {DF_STATUS_NULL_X, DF_STATUS_NULL_Y, DF_STATUS_NULL_IC, DF_STATUS_NULL_BC,
                                 DF_STATUS_NULL_COEFF};
  for (int64_t a = DF_X; a <= DF_COEFF; ++a) {
    EXPECT_EQ(tmk_df_kernel_sEditPtr(t, a, nullptr), null_status[a - 1]);
    ASSERT_EQ(tmk_df_kernel_sEditPtr(t, a, other), 0);
    ASSERT_EQ(tmk_df_kernel_sQueryPtr(t, a, &p), 0);
    EXPECT_EQ(p, other);
  }
  for (const int64_t a : {0, 6, 14}) {
    EXPECT_EQ(tmk_df_kernel_sEditPtr(t, a, nullptr), DF_STATUS_BAD_ATTRIBUTE);
    EXPECT_EQ(tmk_df_kernel_sQueryPtr(t, a, &p), DF_STATUS_BAD_ATTRIBUTE);
  }
  const struct {
    DFTask* task;
    int64_t attribute, index;
    const float* pointer;
    int32_t edit, query;
  } rows[] = {{nullptr, 1, 9, nullptr, DF_STATUS_NULL_TASK, DF_STATUS_NULL_TASK},
              {columns, DF_Y, 3, nullptr, DF_STATUS_BAD_YHINT, DF_STATUS_BAD_YHINT},
              {columns, DF_Y, 4, nullptr, DF_STATUS_BAD_YHINT, DF_STATUS_BAD_INDEX},
              {t, DF_Y, -1, nullptr, DF_STATUS_BAD_INDEX, DF_STATUS_BAD_INDEX},
              {t, DF_Y, 3, nullptr, DF_STATUS_BAD_INDEX, 0},
              {t, DF_COEFF, 3, nullptr, DF_STATUS_BAD_INDEX, 0},
              {t, DF_COEFF, 4, nullptr, DF_STATUS_BAD_INDEX, DF_STATUS_BAD_INDEX},
              {t, DF_Y, 2, nullptr, DF_STATUS_NULL_Y, 0},
              {columns, DF_COEFF, 1, nullptr, DF_STATUS_NULL_COEFF, 0},
              {t, DF_BC, 1, nullptr, DF_STATUS_BAD_ATTRIBUTE, DF_STATUS_BAD_ATTRIBUTE},
              {t, DF_BC, 4, nullptr, DF_STATUS_BAD_ATTRIBUTE, DF_STATUS_BAD_INDEX},
              {t, DF_Y, 2, y + 4, 0, 0},
              {columns, DF_COEFF, 2, y + 4, 0, 0}};
  for (const auto& r : rows) {
    EXPECT_EQ(tmk_df_kernel_sEditIdxPtr(r.task, r.attribute, r.index, r.pointer), r.edit);
    p = const_cast<float*>(other);
    EXPECT_EQ(tmk_df_kernel_sQueryIdxPtr(r.task, r.attribute, r.index, &p), r.query);
    EXPECT_EQ(p, r.query == 0 ? r.pointer : other) << r.attribute << ' ' << r.index;
  }
  EXPECT_EQ(tmk_df_kernel_sQueryIdxPtr(t, DF_BC, 9, nullptr), DF_STATUS_NULL_RESULT);
  // Fewer functions and more again: rows that were given stay, new ones are null, none lies outside.
  ASSERT_EQ(tmk_df_kernel_iEditVal(t, DF_NY, 1), 0);
  ASSERT_EQ(tmk_df_kernel_iEditVal(t, DF_NY, 40), 0);
  ASSERT_EQ(tmk_df_kernel_sQueryIdxPtr(t, DF_Y, 2, &p), 0);
  EXPECT_EQ(p, y + 4);
  ASSERT_EQ(tmk_df_kernel_sEditIdxPtr(t, DF_Y, 39, y), 0);
  ASSERT_EQ(tmk_df_kernel_sQueryIdxPtr(t, DF_Y, 40, &p), 0);
  EXPECT_EQ(p, nullptr);
}

TEST(fitting_task, values_by_attribute) {
  const double x[] = {0, 1};
  made t, narrow;
  ASSERT_EQ(tmk_df_kernel_dNewTask1D(&t.task, 2, x, 4, 0, nullptr, 0, 1), 0);
  ASSERT_EQ(tmk_df_kernel_dNewTask1D(&narrow.task, 2, x, 4, 0, nullptr, 0, 0), 0);
  const struct {
    int64_t attribute;
    std::vector<int64_t> good, bad;
    int32_t status;
  } rows[] = {{DF_NX, {2, int64_t{1} << 40}, {1, -5}, DF_STATUS_BAD_NX},
              {DF_XHINT, {0, 2, 4}, {3, 8, -1}, DF_STATUS_BAD_XHINT},
              {DF_NY, {1, 100}, {0, -1}, DF_STATUS_BAD_NY},
              {DF_YHINT, {0, 16, 32, 128}, {1, 48, 256}, DF_STATUS_BAD_YHINT},
              {DF_ORDER, {0, 9}, {-1}, DF_STATUS_BAD_ORDER},
              {DF_TYPE, {0, 5, 9}, {6, 7, 8, 10, -1}, DF_STATUS_BAD_TYPE},
              {DF_IC_TYPE, {0, 1, 2, 8, 12, 15, -1}, {3, 4, 16}, DF_STATUS_BAD_IC_TYPE},
              {DF_BC_TYPE, {0, 1000}, {-1}, DF_STATUS_BAD_BC_TYPE},
              {DF_COEFF_HINT, {0, 16, 32, 128}, {64}, DF_STATUS_BAD_S_HINT},
              {DF_AUX_FLAG, {0, 1}, {2, -1}, DF_STATUS_BAD_AUX_FLAG},
              {13, {}, {0, 1}, DF_STATUS_BAD_ATTRIBUTE},
              {24, {}, {0, 1}, DF_STATUS_BAD_ATTRIBUTE}};
  for (const auto& r : rows) {
    for (const int64_t v : r.good) {
      EXPECT_EQ(tmk_df_kernel_iEditVal(t, r.attribute, v), 0) << r.attribute << ' ' << v;
      EXPECT_EQ(value_of(t, r.attribute), v);
    }
    for (const int64_t v : r.bad) EXPECT_EQ(tmk_df_kernel_iEditVal(t, r.attribute, v), r.status) << v;
    if (!r.good.empty()) {
      EXPECT_EQ(value_of(t, r.attribute), r.good.back());
    }
  }
  int32_t pair[] = {-1, -1};
  EXPECT_EQ(tmk_df_kernel_iQueryVal(narrow, DF_XHINT, pair), 0);
  EXPECT_EQ(pair[0], 4);
  EXPECT_EQ(pair[1], -1);
  EXPECT_EQ(tmk_df_kernel_iQueryVal(t, 99, nullptr), DF_STATUS_NULL_RESULT);
  EXPECT_EQ(tmk_df_kernel_iQueryVal(nullptr, 99, nullptr), DF_STATUS_NULL_TASK);
}

// Any point of a bucket has its cell within the bucket's bounds, and the bounds are those of points in the
// nearest buckets that have some.
template <class Real>
void expect_index(const fitting::task<Real>& t, int64_t buckets) {
  ASSERT_EQ(t.nbuckets, buckets);
  const auto bucket_of = [&t](Real at) { return static_cast<int64_t>((at - t.x[0]) * t.bucket_scale); };
  std::vector<int64_t> of_point;
  for (int64_t i = 0; i < t.nx; ++i) of_point.push_back(bucket_of(t.x[i]));
  for (int64_t b = 0; b < buckets; ++b) {
    // The last point of the buckets below, the first of those above. Points of bucket 0 begin none.
    int64_t lo = std::lower_bound(of_point.begin(), of_point.end(), b) - of_point.begin() - 1;
    if (lo >= 0 && of_point[static_cast<size_t>(lo)] == 0) lo = 0;
    const int64_t hi = std::upper_bound(of_point.begin(), of_point.end(), b) - of_point.begin();
    ASSERT_EQ(t.buckets[b].lo, std::max<int64_t>(lo, 0)) << b;
    ASSERT_EQ(t.buckets[b].hi, std::min(hi, t.nx - 1)) << b;
  }
  EXPECT_EQ(t.buckets[buckets].lo, t.buckets[buckets - 1].lo);
  EXPECT_EQ(t.buckets[buckets].hi, t.buckets[buckets - 1].hi);
}

TEST(fitting_task, bucket_index) {
  std::mt19937 engine(5);
  const struct {
    int64_t nx, buckets;
    int power;  // clusters the points at the left end
  } rows[] = {{2, 16, 1},     {3, 16, 1},       {255, 16, 1},    {272, 17, 3},
              {5000, 312, 1}, {16384, 1024, 8}, {40000, 1024, 1}};
  for (const auto& r : rows) {
    std::vector<double> x;
    for (int64_t i = 0; i < r.nx; ++i)
      x.push_back(-3 + 10 * std::pow(std::uniform_real_distribution<double>()(engine), r.power));
    std::sort(x.begin(), x.end());
    if (r.nx > 10) x[5] = x[6] = x[7];
    const std::vector<float> xs(x.begin(), x.end());
    made t, single, later;
    ASSERT_EQ(tmk_df_kernel_dNewTask1D(&t.task, r.nx, x.data(), 0, 0, nullptr, 0, 1), 0);
    ASSERT_EQ(tmk_df_kernel_sNewTask1D(&single.task, r.nx, xs.data(), 2, 0, nullptr, 0, 1), 0);
    expect_index(*t, r.buckets);
    expect_index(fitting::task<float>::of(single), r.buckets);
    // Made uniform, a task has none; the hint 1 alone builds it.
    ASSERT_EQ(tmk_df_kernel_sNewTask1D(&later.task, r.nx, xs.data(), 4, 0, nullptr, 0, 1), 0);
    for (const int64_t hint : {0, 2, 4}) ASSERT_EQ(tmk_df_kernel_iEditVal(later, DF_XHINT, hint), 0);
    EXPECT_EQ((*later).nbuckets, 0);
    ASSERT_EQ(tmk_df_kernel_iEditVal(later, DF_XHINT, 1), 0);
    expect_index(fitting::task<float>::of(later), r.buckets);
    ASSERT_EQ(tmk_df_kernel_iEditVal(t, DF_XHINT, 4), 0);
    EXPECT_EQ((*t).nbuckets, r.buckets);
  }
  // Nothing guarantees that x ascends, or has a width: the index stays within its memory.
  for (const std::vector<double>& x :
       {std::vector<double>{0, 1e300, -1e300, 5, 1}, {2, 2, 2}, {1, NAN, 2}, {3, 2, 1}}) {
    made t;
    ASSERT_EQ(
        tmk_df_kernel_dNewTask1D(&t.task, static_cast<int64_t>(x.size()), x.data(), 0, 0, nullptr, 0, 1), 0);
    for (int b = 0; b <= 16; ++b) EXPECT_LT((*t).buckets[b].hi, x.size());
  }
}

}  // namespace
}  // namespace tmk::tests
