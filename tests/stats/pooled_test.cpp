// SPDX-License-Identifier: Apache-2.0
// Mergeable moments, sketches and weighted quantiles as a C program calls them.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "tmk/abi/ss.h"

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct release {
  void operator()(TmkSSMoments* m) const { tmk_ss_pooled_moments_delete(&m); }
  void operator()(TmkSSSketch* s) const { tmk_ss_pooled_sketch_delete(&s); }
};
using moments = std::unique_ptr<TmkSSMoments, release>;
using sketch = std::unique_ptr<TmkSSSketch, release>;

moments new_moments(int64_t columns, const TmkSSOptions& options) {
  TmkSSMoments* m = nullptr;
  EXPECT_EQ(tmk_ss_pooled_moments_new(&m, columns, &options), 0);
  return moments(m);
}

sketch new_sketch(int64_t columns, double epsilon, int32_t policy) {
  TmkSSSketch* s = nullptr;
  EXPECT_EQ(tmk_ss_pooled_sketch_new(&s, columns, epsilon, policy), 0);
  return sketch(s);
}

std::vector<char> image_of(const TmkSSMoments* m) {
  std::vector<char> image(static_cast<size_t>(tmk_ss_pooled_moments_image_size(m)));
  EXPECT_EQ(tmk_ss_pooled_moments_save(m, image.data(), static_cast<int64_t>(image.size())), 0);
  return image;
}

TmkSSData by_rows(const double* values, int64_t rows, int64_t columns, const double* weights = nullptr) {
  return {values, 0, rows, columns, columns, 1, weights};
}

// Two variables: 1 to 4, and their squares.
constexpr double table[8] = {1, 1, 2, 4, 3, 9, 4, 16};
constexpr double equal_weights[4] = {2, 2, 2, 2};

TEST(pooled, estimates_by_their_definitions) {
  struct row {
    int32_t estimate;
    std::vector<double> want;
  };
  const row rows[] = {
      {TMK_SS_POOLED_WEIGHT, {4, 4}},
      {TMK_SS_POOLED_MEAN, {2.5, 7.5}},
      {TMK_SS_POOLED_VARIANCE, {5.0 / 3, 43}},
      {TMK_SS_POOLED_SD, {std::sqrt(5.0 / 3), std::sqrt(43.0)}},
      {TMK_SS_POOLED_SKEWNESS, {0, 75 / std::pow(32.25, 1.5)}},
      {TMK_SS_POOLED_KURTOSIS, {2.5625 / 1.5625 - 3, 1790.0625 / (32.25 * 32.25) - 3}},
      {TMK_SS_POOLED_MINIMUM, {1, 1}},
      {TMK_SS_POOLED_MAXIMUM, {4, 16}},
      {TMK_SS_POOLED_RAW1, {2.5, 7.5}},
      {TMK_SS_POOLED_RAW2, {7.5, 88.5}},
      {TMK_SS_POOLED_RAW3, {25, 1222.5}},
      {TMK_SS_POOLED_RAW4, {88.5, 18088.5}},
      {TMK_SS_POOLED_CENTRAL1, {0, 0}},
      {TMK_SS_POOLED_CENTRAL2, {1.25, 32.25}},
      {TMK_SS_POOLED_CENTRAL3, {0, 75}},
      {TMK_SS_POOLED_CENTRAL4, {2.5625, 1790.0625}},
      {TMK_SS_POOLED_CROSS_PRODUCT, {5, 25, 25, 129}},
      {TMK_SS_POOLED_COVARIANCE, {5.0 / 3, 25.0 / 3, 25.0 / 3, 43}},
      {TMK_SS_POOLED_CORRELATION, {1, 25 / std::sqrt(645.0), 25 / std::sqrt(645.0), 1}},
  };
  const moments m = new_moments(2, {1, TMK_SS_NAN_PROPAGATE, 0});
  const TmkSSData data = by_rows(table, 4, 2);
  ASSERT_EQ(tmk_ss_pooled_moments_add(m.get(), &data, tmk_threading_serial()), 0);
  for (const row& r : rows) {
    std::vector<double> found(r.want.size());
    ASSERT_EQ(tmk_ss_pooled_moments_estimate(m.get(), r.estimate, found.data()), 0);
    for (size_t k = 0; k < found.size(); ++k)
      EXPECT_NEAR(found[k], r.want[k], 1e-14 * (1 + std::fabs(r.want[k]))) << r.estimate;
  }
}

TEST(pooled, layouts_threads_and_weights_that_change_nothing) {
  const size_t n = 5000, p = 3;
  std::vector<float> columns(n * p);
  std::vector<double> rows(n * p), w(n, 1);
  for (size_t i = 0; i < n; ++i)
    for (size_t j = 0; j < p; ++j)
      rows[i * p + j] = columns[j * n + i] = static_cast<float>((i * 7919 + j * 104729) % 1000) / 8;
  const TmkSSData same[] = {
      by_rows(rows.data(), n, p),
      by_rows(rows.data(), n, p, w.data()),
      {columns.data(), 1, n, p, 1, n, nullptr},
  };
  const TmkSSOptions options{1, TMK_SS_NAN_REFUSE, 1};
  std::vector<std::vector<char>> images;
  for (const TmkSSData& data : same)
    for (const ThreadingService* threads : {tmk_threading_serial(), tmk_threading_pool()}) {
      const moments m = new_moments(p, options);
      ASSERT_EQ(tmk_ss_pooled_moments_add(m.get(), &data, threads), 0);
      images.push_back(image_of(m.get()));
      EXPECT_EQ(images.back(), images.front());
    }
  TmkSSMoments* loaded = nullptr;
  ASSERT_EQ(tmk_ss_pooled_moments_load(&loaded, images[0].data(), static_cast<int64_t>(images[0].size())), 0);
  const moments back(loaded);
  int64_t cols = 0, complete = 0, counts[3];
  TmkSSOptions kept{};
  EXPECT_EQ(tmk_ss_pooled_moments_merge(loaded, loaded), 0);
  EXPECT_EQ(tmk_ss_pooled_moments_query(loaded, &cols, &kept, &complete), 0);
  EXPECT_EQ(tmk_ss_pooled_moments_counts(loaded, counts), 0);
  EXPECT_EQ(cols, 3);
  EXPECT_EQ(complete, 10'000);
  EXPECT_EQ(counts[2], 10'000);
  EXPECT_EQ(kept.nanPolicy, TMK_SS_NAN_REFUSE);
  EXPECT_EQ(tmk_ss_pooled_moments_reset(loaded), 0);
  EXPECT_EQ(image_of(loaded), image_of(new_moments(p, options).get()));
}

TEST(pooled, sketches_merge_and_come_back) {
  std::vector<double> x(2000);
  for (size_t i = 0; i < x.size(); ++i) x[i] = static_cast<double>(i * 7919 % 2000);
  const sketch first = new_sketch(1, 0.01, TMK_SS_NAN_PROPAGATE), second = new_sketch(1, 0.02, 0);
  const TmkSSData low = by_rows(x.data(), 1500, 1), high = by_rows(x.data() + 1500, 500, 1);
  ASSERT_EQ(tmk_ss_pooled_sketch_add(first.get(), &low), 0);
  ASSERT_EQ(tmk_ss_pooled_sketch_add(second.get(), &high), 0);
  ASSERT_EQ(tmk_ss_pooled_sketch_merge(first.get(), second.get()), 0);
  std::vector<char> image(static_cast<size_t>(tmk_ss_pooled_sketch_image_size(first.get())));
  ASSERT_EQ(tmk_ss_pooled_sketch_save(first.get(), image.data(), static_cast<int64_t>(image.size())), 0);
  TmkSSSketch* loaded = nullptr;
  ASSERT_EQ(tmk_ss_pooled_sketch_load(&loaded, image.data(), static_cast<int64_t>(image.size())), 0);
  const sketch back(loaded);
  double epsilon = 0;
  EXPECT_EQ(tmk_ss_pooled_sketch_query(loaded, nullptr, &epsilon, nullptr), 0);
  EXPECT_EQ(epsilon, 0.02);
  for (const double order : {0.0, 0.25, 0.5, 1.0}) {
    TmkSSRank a{}, b{}, r{};
    ASSERT_EQ(tmk_ss_pooled_sketch_quantile(first.get(), 0, order, &a), 0);
    ASSERT_EQ(tmk_ss_pooled_sketch_quantile(loaded, 0, order, &b), 0);
    ASSERT_EQ(tmk_ss_pooled_sketch_rank(loaded, 0, a.value, &r), 0);
    EXPECT_EQ(a.value, b.value);
    EXPECT_EQ(a.count, 2000);
    EXPECT_NEAR(a.value, order * 1999, 0.02 * 2000 + 1);
    const auto rank = static_cast<int64_t>(a.value) + 1;  // values are 0 to 1999, each once
    for (const TmkSSRank& bounds : {a, r})
      EXPECT_TRUE(bounds.lowest <= rank && rank <= bounds.highest) << order;
  }
  const TmkSSData undefined = by_rows(&nan, 1, 1);
  TmkSSRank after{};
  EXPECT_EQ(tmk_ss_pooled_sketch_add(loaded, &undefined), 0);
  EXPECT_EQ(tmk_ss_pooled_sketch_quantile(loaded, 0, 0.5, &after), 0);
  EXPECT_TRUE(std::isnan(after.value));
}

TEST(pooled, quantiles_of_weighted_data) {
  const double x[] = {1, 2, nan, 4, 8, 16, nan, 3}, orders[] = {0, 0.25, 0.5, 1};
  const double counts[] = {1, 1, 2, 1, 0, 1, 0, 2}, equal[] = {5, 5, 5, 5, 5, 5, 5, 5};
  struct row {
    const double* weights;
    TmkSSOptions options;
    std::vector<double> quantiles;
    double deviation;
    int64_t nans;
  };
  const row rows[] = {
      {nullptr, {0, TMK_SS_NAN_OMIT, 0}, {1, 2.25, 3.5, 16}, 2, 2},
      {equal, {0, TMK_SS_NAN_OMIT, 0}, {1, 2.25, 3.5, 16}, 2, 2},
      {counts, {0, TMK_SS_NAN_OMIT, 1}, {1, 2.25, 3, 16}, 1, 1},  // of 1 2 3 3 4 16
      {nullptr, {0, TMK_SS_NAN_PROPAGATE, 0}, {nan, nan, nan, nan}, nan, 2},
  };
  for (const row& r : rows) {
    const TmkSSData data = by_rows(x, 8, 1, r.weights);
    double found[4], deviation;
    int64_t nans;
    ASSERT_EQ(
        tmk_ss_pooled_quantiles(&data, &r.options, 4, orders, found, &deviation, &nans, tmk_threading_pool()),
        0);
    for (int k = 0; k < 4; ++k)
      EXPECT_TRUE(found[k] == r.quantiles[k] || std::isnan(r.quantiles[k])) << k << ' ' << found[k];
    EXPECT_TRUE(deviation == r.deviation || std::isnan(r.deviation)) << deviation;
    EXPECT_EQ(nans, r.nans);
    // Without the median among the orders.
    double alone;
    ASSERT_EQ(tmk_ss_pooled_quantiles(&data, &r.options, 0, nullptr, nullptr, &alone, nullptr,
                                      tmk_threading_serial()),
              0);
    EXPECT_TRUE(alone == deviation || std::isnan(deviation));
  }
}

TEST(pooled, refusals_change_nothing) {
  const moments m = new_moments(2, {0, TMK_SS_NAN_REFUSE, 1});
  const moments other = new_moments(2, {1, TMK_SS_NAN_REFUSE, 1});
  const sketch s = new_sketch(2, 0.1, TMK_SS_NAN_OMIT);
  const TmkSSData good = by_rows(table, 4, 2), wide = by_rows(table, 2, 3), missing = by_rows(nullptr, 1, 2),
                  backwards = by_rows(table, -1, 2), weighted = by_rows(table, 4, 2, equal_weights);
  const double bad_weights[][4] = {{1, -1, 1, 1}, {1, nan, 1, 1}, {1, 1, 1.5, 1}, {0x1p53, 2, 0, 0}};
  double spoiled[8] = {1, 1, 2, nan, 3, 9, 4, 16};
  const TmkSSData holes = by_rows(spoiled, 4, 2);
  ASSERT_EQ(tmk_ss_pooled_moments_add(m.get(), &good, tmk_threading_serial()), 0);
  const std::vector<char> before = image_of(m.get());
  std::vector<char> damaged = before, other_version = before, other_kind = before;
  damaged[30] ^= 1, other_version[8] = 9, other_kind[0] = 'x';
  TmkSSMoments* loaded = nullptr;
  TmkSSRank rank;
  double r[4];
  int64_t row = -1, column = -1;
  const auto add = [&](const TmkSSData& data) {
    return tmk_ss_pooled_moments_add(m.get(), &data, tmk_threading_serial());
  };
  const auto load = [&](const std::vector<char>& image, size_t size) {
    return tmk_ss_pooled_moments_load(&loaded, image.data(), static_cast<int64_t>(size));
  };
  const size_t size = before.size();
  const TmkSSOptions none{0, 3, 0}, matrices{1, 0, 0};
  const std::pair<int32_t, int32_t> rows[] = {
      {add(wide), TMK_SS_MISMATCH},
      {add(missing), VTS_STATUS_SS_DATA_NULL},
      {add(backwards), VTS_STATUS_SS_BAD_OBSERVATIONS},
      {add(holes), TMK_SS_NAN},
      {add(by_rows(table, 4, 2, bad_weights[0])), TMK_SS_BAD_WEIGHTS},
      {add(by_rows(table, 4, 2, bad_weights[1])), TMK_SS_BAD_WEIGHTS},
      {add(by_rows(table, 4, 2, bad_weights[2])), TMK_SS_BAD_WEIGHTS},
      {add(by_rows(table, 4, 2, bad_weights[3])), TMK_SS_BAD_WEIGHTS},
      {tmk_ss_pooled_find_nan(&holes, &row, &column), 1},
      {tmk_ss_pooled_find_nan(&good, &row, &column), 0},
      {tmk_ss_pooled_moments_new(&loaded, 0, &matrices), VTS_STATUS_SS_BAD_DIMENSION},
      {tmk_ss_pooled_moments_new(&loaded, 40'000, &matrices), VTS_STATUS_SS_BAD_DIMENSION},
      {tmk_ss_pooled_moments_new(&loaded, 2, &none), TMK_SS_BAD_OPTIONS},
      {tmk_ss_pooled_moments_merge(m.get(), other.get()), TMK_SS_MISMATCH},
      {tmk_ss_pooled_moments_merge(m.get(), nullptr), VTS_STATUS_SS_TASK_NULL},
      {tmk_ss_pooled_moments_estimate(m.get(), TMK_SS_POOLED_COVARIANCE, r), TMK_SS_NO_CROSS_PRODUCT},
      {tmk_ss_pooled_moments_estimate(m.get(), 10, r), TMK_SS_BAD_OPTIONS},
      {tmk_ss_pooled_moments_save(m.get(), damaged.data(), 7), TMK_SS_BAD_IMAGE_SIZE},
      {load(before, size - 1), TMK_SS_DAMAGED_IMAGE},
      {load(before, 19), TMK_SS_BAD_IMAGE_SIZE},
      {load(damaged, size), TMK_SS_DAMAGED_IMAGE},
      {load(other_version, size), TMK_SS_BAD_IMAGE_VERSION},
      {load(other_kind, size), TMK_SS_BAD_IMAGE},
      {tmk_ss_pooled_sketch_add(s.get(), &weighted), TMK_SS_BAD_WEIGHTS},
      {tmk_ss_pooled_sketch_quantile(s.get(), 2, 0.5, &rank), VTS_STATUS_SS_BAD_DIMENSION},
      {tmk_ss_pooled_sketch_quantile(s.get(), 0, 1.5, &rank), VTS_STATUS_SS_BAD_STREAM_ORDERS},
      {tmk_ss_pooled_sketch_rank(s.get(), 0, nan, &rank), TMK_SS_NAN},
      {tmk_ss_pooled_quantiles(&good, &none, 0, nullptr, nullptr, nullptr, nullptr, tmk_threading_serial()),
       TMK_SS_BAD_OPTIONS},
  };
  for (size_t k = 0; k < std::size(rows); ++k) EXPECT_EQ(rows[k].first, rows[k].second) << k;
  EXPECT_EQ(row, 1);
  EXPECT_EQ(column, 1);
  EXPECT_EQ(loaded, nullptr);
  EXPECT_EQ(image_of(m.get()), before);
}

}  // namespace
