// SPDX-License-Identifier: Apache-2.0
// Absolute deviations, covariances of groups, partial covariances and repaired correlation matrices, against
// sums in long double straight from their definitions, in both precisions, layouts and widths of integers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "threading/shuffled_threads.hpp"
#include "tmk/abi/ss.h"

namespace {

using compute = int32_t(SSTask*, uint32_t, uint32_t, uint32_t, uint32_t, const ThreadingService*);
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

template <class Real>
struct names;
#define TMK_NAMES(letter, Real)                                                                             \
  template <>                                                                                               \
  struct names<Real> {                                                                                      \
    static constexpr auto make = __vts##letter##SSNewTask;                                                  \
    static constexpr auto edit = __vts##letter##SSEditTask;                                                 \
    static constexpr auto edit_parametrization = __vts##letter##SSEditMtxParametrz;                         \
    static constexpr compute *deviations = _vts##letter##SSMAD, *pooled = _vts##letter##SSPooledCovariance, \
                             *partial = _vts##letter##SSPartialCovariance,                                  \
                             *parametrize = _vts##letter##SSCorParametrization,                             \
                             *basic = _vts##letter##SSBasic;                                                \
  };
TMK_NAMES(d, double)
TMK_NAMES(s, float)

// A task over random data; Integer is the width of its integers.
template <class Real, class Integer>
struct job {
  using name = names<Real>;
  Integer p, n, storage;
  std::vector<Integer> mask;
  std::vector<Real> data, weights;
  SSTask* task = nullptr;

  job(int p_, int n_, bool rows, bool weighted, bool masked)
      : p(p_), n(n_), storage(rows ? VTS_SS_ROWS : VTS_SS_COLUMNS), data(size_t(p_) * n_), weights(n_) {
    std::mt19937 engine(p_ * 1000 + n_);
    std::normal_distribution<Real> normal;
    for (Real& x : data) x = normal(engine) + Real(5);
    for (Real& w : weights) w = Real(engine() % 4) / 2;
    for (int j = 0; j < p_; ++j) mask.push_back(j % 3 != 1);
    EXPECT_EQ(name::make(&task, &p, &n, &storage, data.data(), weighted ? weights.data() : nullptr,
                         masked ? mask.data() : nullptr, sizeof(Integer) == 8),
              0);
    if (!weighted) weights.assign(weights.size(), 1);
    if (!masked) mask.assign(mask.size(), 1);
  }
  job(const job&) = delete;
  ~job() { __vtsSSDeleteTask(&task); }
  void set(int64_t parameter, std::vector<Real>& values) { name::edit(task, parameter, values.data()); }
  template <class Values>
  void set_integers(int64_t parameter, const Values* values) {
    __vtsiSSEditTask(task, parameter, values);
  }
  long double at(int i, int j) const { return storage == VTS_SS_ROWS ? data[j * n + i] : data[i * p + j]; }
};

// Each combination of precision and width, of layout, weights and mask.
template <class Test>
void for_all_jobs(int p, int n, Test test) {
  for (int options = 0; options < 8; ++options) {
    const bool rows = (options & 1) != 0, weighted = (options & 2) != 0, masked = (options & 4) != 0;
    SCOPED_TRACE("rows " + std::to_string(rows) + " weights " + std::to_string(weighted) + " mask " +
                 std::to_string(masked));
    test(job<double, int32_t>(p, n, rows, weighted, masked), 1e-12);
    test(job<double, int64_t>(p, n, rows, weighted, masked), 1e-12);
    test(job<float, int32_t>(p, n, rows, weighted, masked), 1e-4);
  }
}

// Where a storage has element (i, j).
int place(int storage, int p, int i, int j) {
  const int low = std::min(i, j), high = std::max(i, j);
  if (storage == VTS_SS_FULL) return i * p + j;
  return storage == VTS_SS_LOWER ? high * (high + 1) / 2 + low : low * p - low * (low - 1) / 2 + high - low;
}

template <class Real>
Real element(const Real* m, int storage, int p, int i, int j) {
  return m[place(storage, p, i, j)];
}

long double median(std::vector<long double> x) {
  std::sort(x.begin(), x.end());
  return (x[(x.size() - 1) / 2] + x[x.size() / 2]) / 2;
}

TEST(covariance, absolute_deviations) {
  for (const auto& [p, n] : {std::pair{1, 1}, {1, 8}, {4, 25}, {3, 1000}})
    for_all_jobs(p, n, [&](auto&& j, double bound) {
      using Real = typename std::decay_t<decltype(j.data)>::value_type;
      std::vector<Real> of_median(j.p, -1), of_mean(j.p, -1), about_given(j.p, -1), given(j.p, Real(5.5));
      const auto* const threads = tmk::tests::shuffled_threads(3, p * n);
      const std::vector<Real> before = j.data;
      j.set(VTS_SS_PARAM_MEDIAN_ABS_DEV, of_median), j.set(VTS_SS_PARAM_MEAN_ABS_DEV, of_mean);
      ASSERT_EQ(names<Real>::deviations(j.task, 0, 0x6, VTS_SS_METHOD_FAST, 0, threads), 0);
      j.set(VTS_SS_PARAM_MEAN_ABS_DEV, about_given), j.set(VTS_SS_PARAM_MEAN, given);
      ASSERT_EQ(names<Real>::deviations(j.task, 0, 0x4, VTS_SS_METHOD_TWO_PASS, 0, threads), 0);
      EXPECT_EQ(j.data, before);
      for (int v = 0; v < j.p; ++v) {
        std::vector<long double> x;
        long double weight = 0, mean = 0, around = 0, around_given = 0;
        for (int i = 0; i < j.n; ++i)
          x.push_back(j.at(i, v)), weight += j.weights[i], mean += j.weights[i] * x[i];
        mean /= weight;
        for (int i = 0; i < j.n; ++i) {
          around += j.weights[i] * std::abs(x[i] - mean);
          around_given += j.weights[i] * std::abs(x[i] - 5.5L);
        }
        const long double middle = median(x);
        for (auto& value : x) value = std::abs(value - middle);
        const bool selected = j.mask[v] != 0;
        EXPECT_NEAR(of_median[v], selected ? double(median(x)) : -1, bound);
        if (weight == 0) continue;
        EXPECT_NEAR(of_mean[v], selected ? double(around / weight) : -1, bound);
        EXPECT_NEAR(about_given[v], selected ? double(around_given / weight) : -1, bound);
      }
    });
}

// Groups of very different sizes, one of them longer than a block, one empty, one of a single observation;
// under shuffled threads, whose results are those of one thread to the bit.
TEST(covariance, groups) {
  for (const auto& [p, n] : {std::pair{2, 60}, {12, 7000}})
    for_all_jobs(p, n, [&](auto&& j, double bound) {
      using Real = typename std::decay_t<decltype(j.data)>::value_type;
      using Integer = std::decay_t<decltype(j.p)>;
      constexpr int groups = 5;
      std::vector<Integer> group(n), enable = {1, 0, 1, 1, 1};
      for (int i = 0; i < n; ++i) group[i] = i == 7 ? 4 : i % 10 == 0 ? 1 : i % 10 == 1 ? 0 : 3;
      const int size = p * p;
      std::vector<Real> means(groups * p, -1), covariances(groups * size, -1), mean(p, -1), pooled(size, -1);
      for (const Integer storage : {VTS_SS_FULL, VTS_SS_LOWER, VTS_SS_UPPER}) {
        std::vector<Real> first[2];
        for (const bool shuffled : {false, true}) {
          j.set_integers(VTS_SS_PARAM_GROUP_OF_OBSERVATION, group.data());
          j.set_integers(VTS_SS_PARAM_GROUP_ENABLE, enable.data());
          j.set_integers(VTS_SS_PARAM_GROUP_COV_STORAGE, &storage);
          j.set_integers(VTS_SS_PARAM_POOLED_COV_STORAGE, &storage);
          j.set(VTS_SS_PARAM_GROUP_MEAN, means), j.set(VTS_SS_PARAM_GROUP_COV, covariances);
          j.set(VTS_SS_PARAM_POOLED_MEAN, mean), j.set(VTS_SS_PARAM_POOLED_COV, pooled);
          ASSERT_EQ(
              names<Real>::pooled(j.task, 0xc000, 0x18, VTS_SS_METHOD_ONE_PASS, 0,
                                  shuffled ? tmk::tests::shuffled_threads(4, n) : tmk_threading_serial()),
              0);
          first[shuffled] = pooled;
          first[shuffled].insert(first[shuffled].end(), mean.begin(), mean.end());
        }
        EXPECT_EQ(first[0], first[1]);
        std::vector<long double> total(size), sums(p);
        long double total_weight = 0, degrees = 0;
        const int stored = storage == VTS_SS_FULL ? size : p * (p + 1) / 2;
        const auto selected = [&](int a, int b) { return j.mask[a] != 0 && j.mask[b] != 0; };
        for (int g = 0; g < groups; ++g) {
          long double w = 0, w2 = 0;
          std::vector<long double> m(p), cross(size);
          for (int i = 0; i < n; ++i)
            if (group[i] == g) w += j.weights[i], w2 += (long double)j.weights[i] * j.weights[i];
          if (w == 0) continue;
          for (int i = 0; i < n; ++i)
            for (int a = 0; a < p && group[i] == g; ++a) m[a] += j.weights[i] * j.at(i, a) / w;
          for (int i = 0; i < n; ++i)
            for (int a = 0; a < p && group[i] == g; ++a)
              for (int b = 0; b < p; ++b)
                cross[a * p + b] += j.weights[i] * (j.at(i, a) - m[a]) * (j.at(i, b) - m[b]);
          for (int a = 0; a < p; ++a) {
            sums[a] += w * m[a];
            EXPECT_NEAR(means[g * p + a], enable[g] != 0 && j.mask[a] != 0 ? double(m[a]) : -1, bound * 5);
            for (int b = 0; b < p; ++b) {
              total[a * p + b] += cross[a * p + b];
              if (enable[g] == 0 || !selected(a, b) || g == 4) continue;  // one observation has no covariance
              EXPECT_NEAR(element(covariances.data() + g * stored, static_cast<int>(storage), p, a, b),
                          double(cross[a * p + b] / (w - w2 / w)), bound * 50);
            }
          }
          total_weight += w, degrees += w - w2 / w;
        }
        for (int a = 0; a < p; ++a) {
          EXPECT_NEAR(mean[a], j.mask[a] != 0 ? double(sums[a] / total_weight) : -1, bound * 5);
          for (int b = 0; b < p; ++b) {
            if (!selected(a, b)) continue;
            EXPECT_NEAR(element(pooled.data(), static_cast<int>(storage), p, a, b),
                        double(total[a * p + b] / degrees), bound * 5);
          }
        }
      }
    });
}

// In long double, from the inverse: the partial covariance is the inverse of the first set's part of inv(S).
std::vector<long double> inverse(std::vector<long double> a, int n) {
  std::vector<long double> r(size_t(n) * n);
  for (int i = 0; i < n; ++i) r[i * n + i] = 1;
  for (int k = 0; k < n; ++k) {
    const long double pivot = a[k * n + k];
    for (int j = 0; j < n; ++j) a[k * n + j] /= pivot, r[k * n + j] /= pivot;
    for (int i = 0; i < n; ++i) {
      const long double factor = i == k ? 0 : a[i * n + k];
      for (int j = 0; j < n; ++j)
        a[i * n + j] -= factor * a[k * n + j], r[i * n + j] -= factor * r[k * n + j];
    }
  }
  return r;
}

template <class Real>
void check_partial(double bound) {
  constexpr int p = 6;
  const int32_t p_ = p, rows = VTS_SS_ROWS, n = 1;
  for (const std::vector<int32_t>& indices :
       {std::vector<int32_t>{0, 1, 0, 1, 1, 0}, {-1, -1, 1, -1, -1, -1}, {1, 1, 1, 1, 0, 1}}) {
    std::mt19937 engine(3);
    std::normal_distribution<double> normal;
    std::vector<long double> s(p * p), k;
    std::vector<double> x(p * 20);
    for (double& v : x) v = normal(engine);
    for (int a = 0; a < p; ++a)
      for (int b = 0; b < p; ++b)
        for (int i = 0; i < 20; ++i) s[a * p + b] += x[a * 20 + i] * x[b * 20 + i] * (1 + a) * (1 + b) / 20;
    k = inverse(s, p);
    std::vector<int> first;
    for (int j = 0; j < p; ++j)
      if (indices[j] <= 0) first.push_back(j);
    const int n1 = static_cast<int>(first.size());
    std::vector<long double> part(n1 * n1);
    for (int a = 0; a < n1; ++a)
      for (int b = 0; b < n1; ++b) part[a * n1 + b] = k[first[a] * p + first[b]];
    part = inverse(part, n1);

    for (const int32_t storage : {VTS_SS_FULL, VTS_SS_LOWER, VTS_SS_UPPER})
      for (const bool from_cor : {false, true}) {
        std::vector<Real> source(p * p, Real(nan)), cov(n1 * n1), cor(n1 * n1), data(p);
        for (int a = 0; a < p; ++a)
          for (int b = 0; b <= a; ++b) {
            const long double scale = from_cor && a != b ? std::sqrt(s[a * p + a] * s[b * p + b]) : 1;
            source[place(storage, p, a, b)] = static_cast<Real>(s[a * p + b] / scale);
          }
        SSTask* task = nullptr;
        ASSERT_EQ(names<Real>::make(&task, &p_, &n, &rows, data.data(), nullptr, nullptr, 0), 0);
        names<Real>::edit(task, from_cor ? VTS_SS_PARAM_COR : VTS_SS_PARAM_COV, source.data());
        __vtsiSSEditTask(task, from_cor ? VTS_SS_PARAM_COR_STORAGE : VTS_SS_PARAM_COV_STORAGE, &storage);
        __vtsiSSEditTask(task, VTS_SS_PARAM_PARTIAL_INDICES, indices.data());
        names<Real>::edit(task, VTS_SS_PARAM_PARTIAL_COV, cov.data());
        names<Real>::edit(task, VTS_SS_PARAM_PARTIAL_COR, cor.data());
        __vtsiSSEditTask(task, VTS_SS_PARAM_PARTIAL_COV_STORAGE, &storage);
        __vtsiSSEditTask(task, VTS_SS_PARAM_PARTIAL_COR_STORAGE, &storage);
        EXPECT_EQ(names<Real>::partial(task, 0x300000, 0, VTS_SS_METHOD_FAST, 0, tmk_threading_serial()), 0);
        __vtsSSDeleteTask(&task);
        for (int a = 0; a < n1; ++a)
          for (int b = 0; b < n1; ++b) {
            const long double want = part[a * n1 + b], scale = std::sqrt(part[a * n1 + a] * part[b * n1 + b]);
            EXPECT_NEAR(element(cov.data(), storage, n1, a, b), double(want), bound * double(scale));
            EXPECT_NEAR(element(cor.data(), storage, n1, a, b), double(a == b ? want : want / scale),
                        bound * double(a == b ? want : 1));
          }
      }
  }
}

TEST(covariance, partial) {
  check_partial<double>(1e-13);
  check_partial<float>(1e-4);
}

// The published matrix and result of Rebonato and Jaeckel (1999), three digits; one that is valid, which
// stays; one of two variables, whose repair is exact.
template <class Real>
void check_parametrization(double bound) {
  struct row {
    int32_t p;
    std::vector<double> lower, want;
    double bound;
  };
  const row table[] = {{3, {0, 0.9, 0, 0.7, 0.3, 0}, {1, 0.894024, 1, 0.696319, 0.300969, 1}, 5e-6},
                       {3, {0, 0.5, 0, -0.25, 0.125, 0}, {1, 0.5, 1, -0.25, 0.125, 1}, 0},
                       {2, {0, -1.5, 0}, {1, -1, 1}, bound},
                       {1, {7}, {1}, 0}};
  for (const row& r : table)
    for (const int32_t storage : {VTS_SS_LOWER, VTS_SS_UPPER, VTS_SS_FULL})
      for (const int32_t out_storage : {VTS_SS_LOWER, VTS_SS_UPPER, VTS_SS_FULL}) {
        const int p = r.p;
        std::vector<Real> source(p * p, Real(nan)), result(p * p);
        for (int a = 0, k = 0; a < p; ++a)
          for (int b = 0; b <= a; ++b, ++k) source[place(storage, p, a, b)] = static_cast<Real>(r.lower[k]);
        SSTask* task = nullptr;
        ASSERT_EQ(names<Real>::make(&task, &r.p, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0);
        names<Real>::edit_parametrization(task, source.data(), &storage, result.data(), &out_storage);
        EXPECT_EQ(names<Real>::parametrize(task, 0, 0, VTS_SS_METHOD_SPECTRAL, 0, tmk_threading_serial()), 0);
        __vtsSSDeleteTask(&task);
        for (int a = 0, k = 0; a < p; ++a)
          for (int b = 0; b <= a; ++b, ++k) {
            const Real got = element(result.data(), out_storage, p, a, b);
            EXPECT_NEAR(got, static_cast<Real>(r.want[k]), a == b ? 0 : r.bound);
            EXPECT_EQ(got, element(result.data(), out_storage, p, b, a));
          }
      }
}

TEST(covariance, parametrization) {
  check_parametrization<double>(1e-15);
  check_parametrization<float>(1e-6);
}

// Each row breaks one more thing than the row after it: the first status that holds is returned, in this
// order.
struct broken {
  int32_t status;
  void (*mend)(job<double, int32_t>&);
};

std::vector<double> room(64);

void expect_in_order(std::initializer_list<broken> rows, compute* f, uint32_t low, uint32_t high,
                     uint32_t method, int p = 3) {
  job<double, int32_t> j(p, 8, true, false, false);
  for (const broken& r : rows) {
    EXPECT_EQ(f(j.task, low, high, method, 0, tmk_threading_serial()), r.status);
    r.mend(j);
  }
  EXPECT_EQ(f(j.task, low, high, method, 0, tmk_threading_serial()), 0);
}

#define SET(parameter) [](job<double, int32_t>& j) { j.set(VTS_SS_PARAM_##parameter, room); }
#define SET_INTEGERS(parameter, ...)                  \
  [](job<double, int32_t>& j) {                       \
    static const int32_t values[] = {__VA_ARGS__};    \
    j.set_integers(VTS_SS_PARAM_##parameter, values); \
  }

TEST(covariance, statuses_in_their_order) {
  expect_in_order({{-4082, SET(MEDIAN_ABS_DEV)}, {-4083, SET(MEAN_ABS_DEV)}, {-4006, SET(MEAN)}}, _vtsdSSMAD,
                  0, 0x6, VTS_SS_METHOD_FAST | VTS_SS_METHOD_TWO_PASS);
  expect_in_order({{-4030, SET_INTEGERS(GROUP_OF_OBSERVATION, 0, 1, 0, -1, 0, 1, 0, 1)},
                   {-4035, SET(POOLED_MEAN)},
                   {-4044, SET_INTEGERS(POOLED_COV_STORAGE, 0)},
                   {-4034, SET(POOLED_COV)},
                   {-4030, SET_INTEGERS(GROUP_ENABLE, 1, 2)},
                   {-4037, SET(GROUP_MEAN)},
                   {-4044, SET_INTEGERS(GROUP_COV_STORAGE, 0)},
                   {-4036, SET(GROUP_COV)},
                   {-4038, SET_INTEGERS(GROUP_OF_OBSERVATION, 0, 1, 0, 1, 0, 1, 0, 1)},
                   {-4038, SET_INTEGERS(GROUP_ENABLE, 1, 0)}},
                  _vtsdSSPooledCovariance, 0xc000, 0x18, VTS_SS_METHOD_ONE_PASS);
  std::fill(room.begin(), room.end(), 0.0);
  expect_in_order({{-4018, SET(COR)},
                   {-4044, SET_INTEGERS(COR_STORAGE, 0)},
                   {-4045, SET_INTEGERS(PARTIAL_INDICES, 1, 1, 1)},
                   {-4046, SET(PARTIAL_COV)},
                   {-4044, SET_INTEGERS(PARTIAL_COV_STORAGE, 0)},
                   {-4047, SET(PARTIAL_COR)},
                   {-4044, SET_INTEGERS(PARTIAL_COR_STORAGE, 0)},
                   {-4073, SET_INTEGERS(PARTIAL_INDICES, 0, 0, 0)},
                   {-4073, SET_INTEGERS(PARTIAL_INDICES, 0, 0, 1)},
                   {-5010,
                    [](job<double, int32_t>& j) {
                      static std::vector<double> identity = {1, 0, 0, 0, 1, 0, 0, 0, 1};
                      j.set(VTS_SS_PARAM_COR, identity);
                    }}},
                  _vtsdSSPartialCovariance, 0x300000, 0, VTS_SS_METHOD_FAST);
  expect_in_order({{-4019, SET(COR)},
                   {-4044, SET_INTEGERS(COR_STORAGE, 3)},
                   {-4003, SET_INTEGERS(COR_STORAGE, 1)},
                   {-4071, SET(COR_PARAM_OUT)},
                   {-4044, SET_INTEGERS(COR_PARAM_STORAGE, 0)},
                   {-4003, SET_INTEGERS(COR_PARAM_STORAGE, 5)},
                   {-4003, SET_INTEGERS(COR_PARAM_STORAGE, 1)}},
                  _vtsdSSCorParametrization, 0, 0, VTS_SS_METHOD_SPECTRAL);
  job<double, int32_t> j(3, 8, true, false, false);
  j.set(VTS_SS_PARAM_MEDIAN_ABS_DEV, room);
  j.storage = VTS_SS_ROWS | VTS_SS_COLUMNS;
  EXPECT_EQ(_vtsdSSMAD(j.task, 0, 2, VTS_SS_METHOD_FAST, 0, tmk_threading_serial()), -4003);
  j.storage = VTS_SS_ROWS;
  EXPECT_EQ(_vtsdSSMAD(j.task, 0, 2, VTS_SS_METHOD_ONE_PASS, 0, tmk_threading_serial()), -4029);
  j.n = 0;
  EXPECT_EQ(_vtsdSSMAD(j.task, 0, 2, VTS_SS_METHOD_FAST, 0, tmk_threading_serial()), -4002);
  j.p = 0;
  EXPECT_EQ(_vtsdSSMAD(j.task, 0, 2, VTS_SS_METHOD_FAST, 0, tmk_threading_serial()), -4001);
}

// A matrix that cannot be repaired is refused, not looped over.
TEST(covariance, parametrization_of_what_is_not_a_number) {
  const int32_t p = 3, storage = VTS_SS_FULL;
  std::vector<double> m(9, nan), r(9, -1);
  SSTask* task = nullptr;
  ASSERT_EQ(__vtsdSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0);
  __vtsdSSEditMtxParametrz(task, m.data(), &storage, r.data(), &storage);
  const int32_t status =
      _vtsdSSCorParametrization(task, 0, 0, VTS_SS_METHOD_SPECTRAL, 0, tmk_threading_serial());
  EXPECT_TRUE(status == VTS_STATUS_SS_COR_PARAM_FAILED || status == VTS_STATUS_SS_COR_EIGEN_FAILED) << status;
  __vtsSSDeleteTask(&task);
  EXPECT_EQ(r, std::vector<double>(9, -1));
}

}  // namespace
