// SPDX-License-Identifier: Apache-2.0
// Moments by every method against plain sums in long double, and the state between blocks.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "sanitized.hpp"
#include "stats/moments_reference.hpp"
#include "tmk/abi/vtm.h"

namespace tmk::moments_tests {
namespace {

constexpr uint32_t moments_of(int order) {  // mean, raw and central moments up to an order
  return ((1u << order) - 1) | ((1u << (order - 1)) - 1) << 4;
}
constexpr uint32_t matrices = VTS_SS_ESTIMATE_COV | VTS_SS_ESTIMATE_COR;

struct method_row {
  const char* name;
  uint32_t bits;
};
constexpr method_row methods[] = {
    {"fast", VTS_SS_METHOD_FAST}, {"one-pass", VTS_SS_METHOD_ONE_PASS}, {"two-pass", VTS_SS_METHOD_TWO_PASS}};

// On the widest tier that the processor and TMK_TIER allow.
template <class Real>
class Moments : public testing::Test {
  const int32_t before_ = tmk_current_tier();
  void SetUp() override { tmk_select_tier(TMK_TIER_WIDEST); }
  void TearDown() override { tmk_select_tier(before_); }
};
using precisions = testing::Types<double, float>;
TYPED_TEST_SUITE(Moments, precisions);

// Data is of the size of 1 about a mean of 1, so that every formula's rounding is of the order of eps; sums
// of n terms round no worse than eps times a small multiple of their length and absolute sum.
template <class Real>
void expect_estimates(const results<Real>& got, const reference& want, uint32_t asked, bool matrix) {
  const long double eps = std::numeric_limits<Real>::epsilon();
  const size_t p = want.p;
  for (int k = 0; k < 7; ++k) {
    const int bit = k;  // mean, raw 2 to 4, central 2 to 4
    if ((asked >> bit & 1) == 0) continue;
    for (size_t j = 0; j < p; ++j)
      EXPECT_NEAR(got.moment[k][j], want.moment[k][j], (60 + want.n / 4.0L) * eps * want.scale[k][j])
          << "array " << k << " variable " << j;
  }
  for (size_t i = 0; matrix && i < p; ++i)
    for (size_t j = 0; j < p; ++j) {
      const long double cov = want.cov[i * p + j], bound = (60 + want.n / 4.0L) * eps;
      EXPECT_NEAR(got.cov[i * p + j], cov, bound * want.cov_scale) << i << ' ' << j;
      const long double cor = i == j ? cov : cov / std::sqrt(want.cov[i * p + i] * want.cov[j * p + j]);
      if (want.n <= 16) continue;
      EXPECT_NEAR(got.cor[i * p + j], cor, bound * 40) << i << ' ' << j;
    }
}

TYPED_TEST(Moments, OfEveryKernelAreThoseOfPlainSums) {
  using Real = TypeParam;
  for (const ptrdiff_t p : {1, 2, 3, 5, 8, 17, 40})
    for (const ptrdiff_t n : {2, 3, 7, 64, 1000})
      for (const bool weighted : {false, true}) {
        const sample<Real> data(n, p, weighted, 7 * n + p);
        const reference want(data);
        for (const auto& method : methods)
          for (const int storage : {VTS_SS_ROWS, VTS_SS_COLUMNS})
            for (const int order : {1, 2, 3, 4})
              for (const bool matrix : {false, true}) {
                SCOPED_TRACE(std::string(method.name) + " p " + std::to_string(p) + " n " +
                             std::to_string(n) + " storage " + std::to_string(storage) + " order " +
                             std::to_string(order) + (weighted ? " weighted" : "") +
                             (matrix ? " matrix" : ""));
                results<Real> got(p);
                if (method.bits == VTS_SS_METHOD_TWO_PASS) got.give_means(want);
                const uint32_t asked = moments_of(order) | (matrix ? matrices : 0);
                ASSERT_EQ(compute(data, storage, asked, method.bits, got), 0);
                expect_estimates(got, want, asked, matrix);
              }
      }
}

// Each kernel alone: an order number of its own, which the sets of the test above do not reach.
TYPED_TEST(Moments, OfSingleEstimates) {
  using Real = TypeParam;
  const sample<Real> data(333, 6, true, 5);
  const reference want(data);
  for (const auto& method : methods)
    for (const int storage : {VTS_SS_ROWS, VTS_SS_COLUMNS})
      for (uint32_t bit = 1; bit <= VTS_SS_ESTIMATE_CENTRAL4; bit *= 2)
        for (const uint32_t matrix : {0u, matrices}) {
          SCOPED_TRACE(std::string(method.name) + " estimate " + std::to_string(bit));
          results<Real> got(6);
          got.give_means(want);
          ASSERT_EQ(compute(data, storage, bit | matrix, method.bits, got), 0);
          expect_estimates(got, want, bit, matrix != 0);
        }
}

TYPED_TEST(Moments, OfThreadsAndBlocksAreThoseOfTheWhole) {
  using Real = TypeParam;
  for (const ptrdiff_t p : {1, 3, 40, 200}) {
    const ptrdiff_t n = p == 200 ? 400 : 4001;
    for (const bool weighted : {false, true}) {
      const sample<Real> data(n, p, weighted, 99);
      const reference want(data);
      for (const auto& method : methods)
        for (const int storage : {VTS_SS_ROWS, VTS_SS_COLUMNS})
          for (const int threads : sanitized ? std::vector{1, 3} : std::vector{1, 2, 3, 5})
            for (const int blocks : {1, 3}) {
              const int form = (threads + blocks / 2) % 3;  // of the matrices
              SCOPED_TRACE(std::string(method.name) + " p " + std::to_string(p) + " storage " +
                           std::to_string(storage) + " threads " + std::to_string(threads) + " blocks " +
                           std::to_string(blocks) + " form " + std::to_string(form) +
                           (weighted ? " weighted" : ""));
              results<Real> got(p);
              got.matrix_storage = form;
              got.keep_weight = true;
              got.threads = threads;
              got.give_means(want);
              const uint32_t asked = moments_of(4) | matrices;
              for (int b = 0; b < blocks; ++b)
                ASSERT_EQ(compute(data.block(n * b / blocks, n * (b + 1) / blocks), storage, asked,
                                  method.bits, got),
                          0);
              got.unpack();
              expect_estimates(got, want, asked, true);
              EXPECT_NEAR(got.weight[0], want.weight, want.weight * n * std::numeric_limits<Real>::epsilon());
            }
    }
  }
}

// Sums, central sums and the cross-product, of blocks; then the moments that conversion makes of them.
TYPED_TEST(Moments, SumsConvertToMoments) {
  using Real = TypeParam;
  const ptrdiff_t p = 4, n = 300;
  const sample<Real> data(n, p, true, 3);
  const reference want(data);
  const long double eps = std::numeric_limits<Real>::epsilon();
  for (const auto& method : methods)
    for (const bool wide : {false, true}) {
      SCOPED_TRACE(method.name);
      results<Real> sums(p), moments(p);
      sums.keep_weight = true;
      sums.wide = wide;
      sums.give_means(want);
      for (const ptrdiff_t half : {0, 1}) {
        const auto part = data.block(half * 100, half * 200 + 100);
        ASSERT_EQ(compute(part, VTS_SS_COLUMNS, moments_of(4) | 0xFE000000u, method.bits, sums, 1), 0);
      }
      for (int k = 0; k < 7; ++k)
        for (ptrdiff_t j = 0; j < p; ++j)
          EXPECT_NEAR(sums.sum[k][j] / want.weight, want.plain_moment(k, j), 200 * eps * want.scale[k][j])
              << k;
      moments.sum = sums.sum;
      moments.cross = sums.cross;
      moments.weight = sums.weight;
      moments.keep_weight = true;
      const uint32_t asked = moments_of(4) | matrices;
      ASSERT_EQ(compute(data, VTS_SS_COLUMNS, asked, VTS_SS_METHOD_SUMS_TO_MOMENTS, moments), 0);
      expect_estimates(moments, want, asked, true);
    }
}

TYPED_TEST(Moments, DerivedEstimatesFollowTheirFormulas) {
  using Real = TypeParam;
  const sample<Real> data(500, 3, false, 21);
  const reference want(data);
  for (const auto& method : methods) {
    results<Real> got(3);
    got.give_means(want);
    ASSERT_EQ(compute(data, VTS_SS_ROWS,
                      VTS_SS_ESTIMATE_KURTOSIS | VTS_SS_ESTIMATE_SKEWNESS | VTS_SS_ESTIMATE_VARIATION,
                      method.bits, got),
              0);
    for (int j = 0; j < 3; ++j) {
      const long double c2 = want.moment[4][j], bound = 500 * std::numeric_limits<Real>::epsilon();
      EXPECT_NEAR(got.kurtosis[j], want.moment[6][j] / (c2 * c2) - 3, bound * 10);
      EXPECT_NEAR(got.skewness[j], want.moment[5][j] / std::pow(c2, 1.5L), bound * 10);
      EXPECT_NEAR(got.variation[j], std::sqrt(c2) / want.moment[0][j], bound);
    }
  }
}

// Variables that are not selected keep what they held, over blocks, in wide and narrow integers.
TYPED_TEST(Moments, MasksKeepTheOthersEstimates) {
  using Real = TypeParam;
  const ptrdiff_t p = 5, n = 100;
  const sample<Real> data(n, p, false, 8);
  const reference want(data);
  for (const auto& method : methods)
    for (const bool wide : {false, true})
      for (const int form : {VTS_SS_FULL, VTS_SS_LOWER, VTS_SS_UPPER}) {
        SCOPED_TRACE(method.name);
        results<Real> got(p);
        got.wide = wide;
        got.matrix_storage = form;
        got.keep_weight = true;
        got.mask = {1, 0, 1, 1, 0};
        got.give_means(want);
        results<Real> whole(p);
        whole.give_means(want);
        const uint32_t asked = moments_of(4) | matrices;
        for (const ptrdiff_t half : {0, 1})
          ASSERT_EQ(
              compute(data.block(half * 50, half * 50 + 50), VTS_SS_COLUMNS, asked, method.bits, got, 1), 0);
        ASSERT_EQ(compute(data, VTS_SS_COLUMNS, asked, method.bits, whole, 1), 0);
        got.unpack();
        for (ptrdiff_t i = 0; i < p; ++i) {
          const bool selected = got.mask[i] != 0;
          for (int k = 1; k < 7; ++k)
            EXPECT_NEAR(got.moment[k][i], selected ? whole.moment[k][i] : results<Real>::untouched,
                        selected ? 1e-4 * static_cast<double>(want.scale[k][i]) : 0);
          for (ptrdiff_t j = 0; j < p; ++j) {
            const bool both = selected && got.mask[j] != 0;
            EXPECT_NEAR(got.cov[i * p + j], both ? whole.cov[i * p + j] : results<Real>::untouched,
                        both ? 1e-4 : 0);
            EXPECT_NEAR(got.cross[i * p + j], both ? whole.cross[i * p + j] : results<Real>::untouched,
                        both ? 1e-2 : 0);
          }
        }
      }
}

// Only the highest order is requested: what its update depends on is restored from the raw moments.
TYPED_TEST(Moments, BlocksNeedNoLowerCentralMoments) {
  using Real = TypeParam;
  const sample<Real> data(200, 2, false, 12);
  const reference want(data);
  results<Real> got(2);
  got.keep_weight = true;
  got.leave_out = {4, 5};
  for (const ptrdiff_t half : {0, 1})
    ASSERT_EQ(compute(data.block(half * 100, half * 100 + 100), VTS_SS_ROWS, VTS_SS_ESTIMATE_CENTRAL4,
                      VTS_SS_METHOD_ONE_PASS, got),
              0);
  for (int j = 0; j < 2; ++j)
    EXPECT_NEAR(got.moment[6][j], want.moment[6][j],
                500 * std::numeric_limits<Real>::epsilon() * want.scale[6][j]);
}

// Fields for the requested sums and for the mean alone: what else the next block needs stays in the task.
TYPED_TEST(Moments, BlocksNeedNoLowerCentralSums) {
  using Real = TypeParam;
  const ptrdiff_t p = 3, n = 90;
  sample<Real> data(n, p, false, 13);
  for (ptrdiff_t i = 0; i < n; ++i) data.at(i, 1) += static_cast<Real>(i) / 30;  // blocks of unlike means
  const reference want(data);
  constexpr uint32_t order3 = VTS_SS_ESTIMATE_CENTRAL_SUM3, order4 = VTS_SS_ESTIMATE_CENTRAL_SUM4;
  for (const uint32_t asked : {order3, order4, order3 | order4, VTS_SS_ESTIMATE_CENTRAL_SUM2 | order4})
    for (const int threads : {1, 2})
      for (const bool masked : {false, true}) {
        SCOPED_TRACE(std::to_string(asked) + " threads " + std::to_string(threads));
        results<Real> got(p);
        got.keep_weight = true;
        got.threads = threads;
        if (masked) got.mask = {1, 1, 1};
        got.leave_out = {1, 2, 3, 4, 5, 6};
        for (int k = 0; k < 7; ++k)
          if (k < 4 || (asked >> (25 + k) & 1) == 0) got.leave_out_sums.insert(k);
        for (const ptrdiff_t third : {0, 1, 2})
          ASSERT_EQ(compute(data.block(third * 30, third * 30 + 30), VTS_SS_COLUMNS, asked,
                            VTS_SS_METHOD_ONE_PASS, got),
                    0);
        for (int k = 4; k < 7; ++k)
          for (ptrdiff_t j = 0; j < p && (asked >> (25 + k) & 1) != 0; ++j)
            EXPECT_NEAR(got.sum[k][j] / want.weight, want.plain_moment(k, j),
                        100 * std::numeric_limits<Real>::epsilon() * want.scale[k][j])
                << k;
      }
}

// As in the header: what a task points to may change from one computation to the next, p included.
TYPED_TEST(Moments, FollowACountThatChanges) {
  using Real = TypeParam;
  for (const ptrdiff_t next : {40, 1}) {
    const sample<Real> first(50, 4, false, 5), second(60, next, false, 6);
    const reference want(second);
    results<Real> got(40), fresh(next);
    got.give_means(reference(first));
    ASSERT_EQ(compute(first, VTS_SS_ROWS, matrices, VTS_SS_METHOD_TWO_PASS, got), 0);
    got.give_means(want);
    fresh.give_means(want);
    ASSERT_EQ(compute(second, VTS_SS_ROWS, matrices, VTS_SS_METHOD_TWO_PASS, got), 0);
    ASSERT_EQ(compute(second, VTS_SS_ROWS, matrices, VTS_SS_METHOD_TWO_PASS, fresh), 0);
    got.cov.resize(fresh.cov.size());
    EXPECT_EQ(got.cov, fresh.cov);
    EXPECT_EQ(got.task.savedMeanCount, next);
  }
}

// Whatever the levels' kernels come to be, correlations are scaled by those of the first slot.
TEST(MomentsKernels, CorrelationsTakeTheInverseRootOfTheFirstSlot) {
  auto& record = tmk_vtm_kernel_dInvSqrt_ttab;
  const auto before = record;
  auto* const two = +[](int32_t n, const double*, double* r) { std::fill_n(r, n, 2.0); };
  record.kernel[TMK_SLOT_LA] = reinterpret_cast<void (*)()>(two);
  const sample<double> data(50, 2, false, 5);
  results<double> got(2);
  const int32_t status = compute(data, VTS_SS_ROWS, matrices, VTS_SS_METHOD_FAST, got, 1);
  record = before;
  ASSERT_EQ(status, 0);
  EXPECT_EQ(got.cor[1], 4 * got.cross[1]);
}

TYPED_TEST(Moments, OfOddWeights) {
  using Real = TypeParam;
  const Real nan = std::numeric_limits<Real>::quiet_NaN();
  struct {
    const char* name;
    std::vector<Real> w;
    bool finite;
  } const rows[] = {
      {"zeros in front hide what they stand at", {0, 0, 1, 2, 3, 1, 1, 2}, true},
      {"negative", {2, 3, -1, 2, -1, 1, 4, 2}, true},
      {"cancelling", {2, 3, -1, -2, -1, 5, 2, -3}, true},
      {"zeros between", {1, 0, 0, 2, 0, 1, 0, 3}, true},
      {"all zero", {0, 0, 0, 0, 0, 0, 0, 0}, false},
      {"NaN", {nan, 1, 1, 1, 1, 1, 1, 1}, false},
  };
  for (const auto& row : rows)
    for (const auto& method : methods)
      for (const int storage : {VTS_SS_ROWS, VTS_SS_COLUMNS}) {
        SCOPED_TRACE(std::string(row.name) + ' ' + method.name);
        sample<Real> data(8, 3, true, 4);
        data.w = row.w;
        const reference want(data);
        if (row.w[0] == 0 && row.finite)
          for (int j = 0; j < 3; ++j) data.at(0, j) = nan;
        results<Real> got(3);
        got.keep_weight = true;
        got.give_means(want);
        const uint32_t asked = moments_of(4) | (row.w[0] == 0 ? 0 : matrices);
        ASSERT_EQ(compute(data, storage, asked, method.bits, got), 0);
        if (row.finite) {
          expect_estimates(got, want, moments_of(4), false);
          EXPECT_NEAR(got.weight[1], want.weight2, 1e-5);
        } else if (row.w[0] == 0) {
          EXPECT_EQ(got.weight[0], 0);
          EXPECT_TRUE(std::isnan(got.moment[4][0]));
        } else {
          EXPECT_TRUE(std::isnan(got.moment[4][1]));
        }
      }
}

TYPED_TEST(Moments, OfHardSeries) {
  using Real = TypeParam;
  const Real nan = std::numeric_limits<Real>::quiet_NaN();
  const ptrdiff_t n = 1001;
  sample<Real> data(n, 4, false, 4);
  for (ptrdiff_t i = 0; i < n; ++i) {
    data.at(i, 0) = 1.0 / 3;         // constant
    data.at(i, 1) = i % 2 ? -1 : 1;  // alternating
    data.at(i, 3) = i == 500 ? nan : 1;
  }
  const reference want(data);
  for (const auto& method : methods)
    for (const int storage : {VTS_SS_ROWS, VTS_SS_COLUMNS}) {
      SCOPED_TRACE(method.name);
      results<Real> got(4);
      got.give_means(want);
      got.moment[0][0] = data.at(0, 0);
      ASSERT_EQ(compute(data, storage, moments_of(4), method.bits, got), 0);
      const bool two_pass = method.bits == VTS_SS_METHOD_TWO_PASS;
      EXPECT_NEAR(got.moment[4][0], 0, two_pass ? 0 : 1000 * std::numeric_limits<Real>::epsilon());
      EXPECT_NEAR(got.moment[4][1], want.moment[4][1], 100 * std::numeric_limits<Real>::epsilon());
      EXPECT_NEAR(got.moment[4][2], want.moment[4][2], 1000 * std::numeric_limits<Real>::epsilon());
      EXPECT_TRUE(std::isnan(got.moment[4][3]));
    }
}

TYPED_TEST(Moments, OfOneObservation) {
  using Real = TypeParam;
  for (const auto& method : methods)
    for (const ptrdiff_t p : {1, 3}) {
      const sample<Real> data(1, p, false, 4);
      results<Real> got(p);
      for (ptrdiff_t j = 0; j < p; ++j) got.moment[0][j] = data.at(0, j);
      ASSERT_EQ(compute(data, VTS_SS_COLUMNS, moments_of(4), method.bits, got), 0);
      for (ptrdiff_t j = 0; j < p; ++j) {
        EXPECT_EQ(got.moment[0][j], data.at(0, j));
        EXPECT_TRUE(std::isnan(got.moment[4][j]));  // 0 / 0
        EXPECT_NEAR(got.moment[5][j], 0, 1e-5);
      }
    }
}

TEST(MomentsStatus, ComesInTheOrderOfTheChecks) {
  static const int32_t none = 0;
  const int32_t p = 2, n = 4, negative = -1, columns = VTS_SS_COLUMNS, bad = 0x40000;
  double data[8] = {1, 2, 3, 4, 5, 6, 7, 9}, r[2], weights[4] = {1, 1, 1, 1}, accum[2] = {};
  using field = stats::task<double>;
  const auto nothing = [](field&) {};
  struct row {
    const char* name;
    uint32_t low, high, by;
    void (*change)(field&);
    int32_t status;
  };
  static const int32_t* counts[] = {&none, &negative, &bad};
  static double* places[] = {r, weights, accum};
  const row rows[] = {
      {"two methods", 1, 0, 0x3, nothing, -4029},
      {"three methods", 1, 0, 0x103, nothing, -4029},
      {"no method", 1, 0, 0, nothing, -4029},
      {"method before estimates", 2, 0, 0x3, nothing, -4029},
      {"estimates before counts", 2, 0, 0x1, [](field& t) { t.observations = nullptr; }, -4007},
      {"the lowest of two", 0x48, 0, 0x1, nothing, -4007},
      {"central sum 2 asks raw 2 of the fast method", 0x20000000, 0, 0x1, nothing, -4007},
      {"but not of the others", 0x20000000, 0, 0x2, nothing, -4078},
      {"kurtosis", 0x80, 0, 0x100, nothing, -4007},
      {"cross", 0, 1, 0x2, nothing, -4081},
      {"covariance", 0x1000, 0, 0x2, nothing, -4018},
      {"correlation", 0x2000, 0, 0x2, nothing, -4019},
      {"no estimate at all is none missing", 0, 0, 0x1, nothing, 0},
      {"count missing", 1, 0, 0x1, [](field& t) { t.observations = nullptr; }, -4002},
      {"count 0", 1, 0, 0x1, [](field& t) { t.observations = counts[0]; }, -4002},
      {"count negative before data", 1, 0, 0x1,
       [](field& t) { t.observations = counts[1], t.data = nullptr; }, -4002},
      {"data before storage", 1, 0, 0x1, [](field& t) { t.data = nullptr, t.dataStorage = nullptr; }, -4032},
      {"storage missing", 1, 0, 0x1, [](field& t) { t.dataStorage = nullptr; }, -4044},
      {"storage wrong", 1, 0, 0x1, [](field& t) { t.dataStorage = counts[2]; }, -4003},
      {"conversion makes no sums", 0x2000000, 0, 0x400, nothing, -4029},
      {"nor cross-products", 0, 1, 0x200, [](field& t) { t.cross = places[0]; }, -4029},
      {"conversion of weighted data has no weight", 0, 0, 0x400, [](field& t) { t.weights = places[1]; },
       -4020},
      {"nor without a count", 0, 0, 0x400, [](field& t) { t.observations = nullptr; }, -4020},
      {"unless it was kept", 0, 0, 0x400,
       [](field& t) { t.observations = nullptr, t.accumWeight = places[2]; }, 0},
      {"a conversion with a pass is nothing", 1, 0, 0x401, nothing, 0},
      {"no variables, last of all", 1, 0, 0x1, [](field& t) { t.dimension = &none; }, -4001},
      {"nor one pass of them", 1, 0, 0x2, [](field& t) { t.dimension = &none; }, -4001},
      {"nor two", 1, 0, 0x100, [](field& t) { t.dimension = counts[1]; }, -4001},
      {"nor a conversion", 0, 0, 0x400, [](field& t) { t.dimension = &none; }, -4001},
  };
  for (const auto& row : rows) {
    field task{};
    task.isDouble = 1;
    task.dimension = &p;
    task.observations = &n;
    task.dataStorage = &columns;
    task.data = data;
    task.mean = r;
    row.change(task);
    EXPECT_EQ(_vtsdSSBasic(task.handle(), row.low, row.high, row.by, 0, tests::shuffled_threads(1)),
              row.status)
        << row.name;
  }
}

}  // namespace
}  // namespace tmk::moments_tests
