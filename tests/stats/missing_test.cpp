// SPDX-License-Identifier: Apache-2.0
// Imputation by the statistics task.
#include <gtest/gtest.h>

#include <bit>
#include <functional>

#include "stats/missing/task_imputation.hpp"
#include "stats/missing_reference.hpp"
#include "tmk/abi/ss.h"

namespace tmk::tests {
namespace {

template <class Real>
struct calls {
  static constexpr auto make = __vtsdSSNewTask;
  static constexpr auto edit = __vtsdSSEditMissingVals;
  static constexpr auto compute = _vtsdSSMissingValues;
  static constexpr auto normals = _vtsdRngGaussian;
  static constexpr double mark = std::bit_cast<double>(0xfff8000000000001);
};
template <>
struct calls<float> {
  static constexpr auto make = __vtssSSNewTask;
  static constexpr auto edit = __vtssSSEditMissingVals;
  static constexpr auto compute = _vtssSSMissingValues;
  static constexpr auto normals = _vtssRngGaussian;
  static constexpr float mark = std::bit_cast<float>(0xffc00001);
};

// A call with everything that it reads and writes; NaNs of `given` become marks.
template <class Real>
struct imputation {
  int64_t p, n, storage, count = 5, starts = 0, prior_count = 0, drawn = 0, chain_length = 0;
  std::vector<Real> data, parameters, start, prior, simulations, estimates;
  bool wide_integers = false;

  imputation(const numbers& given, int64_t variables, bool rows, numbers five)
      : p(variables),
        n(static_cast<int64_t>(given.size()) / variables),
        storage(rows ? VTS_SS_ROWS : VTS_SS_COLUMNS),
        data(given.size()),
        parameters(five.begin(), five.end()) {
    for (int64_t i = 0; i < n; ++i)
      for (int64_t j = 0; j < p; ++j) {
        const double v = given[static_cast<size_t>(i * p + j)];
        at(i, j) = std::isnan(v) ? calls<Real>::mark : static_cast<Real>(v);
      }
    parameters.push_back(
        static_cast<Real>(std::count_if(given.begin(), given.end(), [](double v) { return std::isnan(v); })));
    size_outputs();
  }
  void size_outputs() {
    drawn = static_cast<int64_t>(parameters[3] * parameters[4]);
    chain_length = static_cast<int64_t>(parameters[3] * parameters[1]) * p * (p + 3) / 2;
    simulations.assign(static_cast<size_t>(drawn), 0);
    estimates.assign(static_cast<size_t>(chain_length), 0);
  }
  Real& at(int64_t i, int64_t j) {
    return data[static_cast<size_t>(storage == VTS_SS_ROWS ? j * n + i : i * p + j)];
  }

  // `change` edits the pointers that the task gets.
  struct pointers {
    const void *p, *n, *storage, *count, *starts, *prior_count, *drawn, *chain_length;
    Real *parameters, *start, *prior, *simulations, *estimates;
    uint32_t method = VTS_SS_METHOD_MULTIPLE_IMPUTATION;
  };
  int32_t run(const std::function<void(pointers&)>& change = {}) {
    const int64_t wide[] = {p, n, storage, count, starts, prior_count, drawn, chain_length};
    int32_t narrow[8];
    std::copy(wide, wide + 8, narrow);
    const auto place = [&](int k) -> const void* {
      return wide_integers ? static_cast<const void*>(wide + k) : narrow + k;
    };
    pointers a{place(0),     place(1),           place(2),        place(3),          place(4),
               place(5),     place(6),           place(7),        parameters.data(), start.data(),
               prior.data(), simulations.data(), estimates.data()};
    if (change) change(a);
    const int64_t one = 1;  // a task is not made without variables
    SSTask* task = nullptr;
    EXPECT_EQ(calls<Real>::make(&task, &one, nullptr, nullptr, nullptr, nullptr, nullptr, wide_integers), 0);
    __vtsiSSEditTask(task, VTS_SS_PARAM_DIMENSION, a.p);
    __vtsiSSEditTask(task, VTS_SS_PARAM_OBSERVATIONS, a.n);
    __vtsiSSEditTask(task, VTS_SS_PARAM_DATA_STORAGE, a.storage);
    if constexpr (sizeof(Real) == 8)
      __vtsdSSEditTask(task, VTS_SS_PARAM_DATA, data.data());
    else
      __vtssSSEditTask(task, VTS_SS_PARAM_DATA, data.data());
    calls<Real>::edit(task, a.count, a.parameters, a.starts, a.start, a.prior_count, a.prior, a.drawn,
                      a.simulations, a.chain_length, a.estimates);
    const int32_t status = calls<Real>::compute(task, 0, 0, a.method, 0, nullptr);
    __vtsSSDeleteTask(&task);
    return status;
  }
};

// One pattern of holes alone, so that the order of the draws is plain: EM, then the chain, by the textbook's
// regressions, with the trust in the prior that grows.
template <class Real>
struct plain_chain {
  static constexpr size_t p = 3, k = 2;  // variables 1 and 2 are missing where one is
  VtsStreamHandle stream = nullptr;
  wide mean = wide(p), cov = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  std::vector<wide> chain, drawn;

  long double normal() {
    Real z;
    calls<Real>::normals(2, stream, 1, &z, 0, 1);
    return z;
  }

  // Completes the rows; `draw` adds noise. Returns means and sums of products with what EM adds.
  void complete(const numbers& x, wide& sums, wide& products, bool draw) {
    const size_t n = x.size() / p;
    const wide l = cholesky({cov[4] - cov[3] * cov[3] / cov[0], cov[5] - cov[3] * cov[6] / cov[0],
                             cov[7] - cov[6] * cov[3] / cov[0], cov[8] - cov[6] * cov[6] / cov[0]},
                            k);
    sums.assign(p, 0), products.assign(p * p, 0);
    for (size_t i = 0; i < n; ++i) {
      wide row(x.begin() + static_cast<ptrdiff_t>(i * p), x.begin() + static_cast<ptrdiff_t>(i * p + p));
      if (std::isnan(x[i * p + 1])) {
        const long double z0 = draw ? normal() : 0, z1 = draw ? normal() : 0;
        row[1] = mean[1] + cov[3] / cov[0] * (row[0] - mean[0]) + l[0] * z0;
        row[2] = mean[2] + cov[6] / cov[0] * (row[0] - mean[0]) + l[2] * z0 + l[3] * z1;
        if (draw) drawn.back().insert(drawn.back().end(), {row[1], row[2]});
        if (!draw)
          for (size_t a = 0; a < k; ++a)
            for (size_t b = 0; b < k; ++b)
              products[(a + 1) * p + b + 1] += l[a * k] * l[b * k] + l[a * k + 1] * l[b * k + 1];
      }
      for (size_t a = 0; a < p; ++a) {
        sums[a] += row[a];
        for (size_t b = 0; b < p; ++b) products[a * p + b] += row[a] * row[b];
      }
    }
  }

  void run(const numbers& x, const wide& mean0, const wide& scale0, long double tau, int64_t degrees, int em,
           int rounds, int imputations) {
    const auto n = static_cast<long double>(x.size() / p);
    wide sums, products;
    for (int r = 0; r < em; ++r) {
      complete(x, sums, products, false);
      for (size_t a = 0; a < p; ++a) mean[a] = sums[a] / n;
      for (size_t a = 0; a < p * p; ++a) cov[a] = products[a] / n - mean[a / p] * mean[a % p];
    }
    for (int r = 0; r < rounds * imputations; ++r) {
      drawn.emplace_back();
      complete(x, sums, products, true);
      wide m(p * p), at(p), b(p * p), c(p * p);
      for (size_t a = 0; a < p; ++a) at[a] = (sums[a] + tau * mean0[a]) / (tau + n);
      for (size_t a = 0; a < p * p; ++a)
        m[a] = products[a] - sums[a / p] * sums[a % p] / n + scale0[a] +
               tau * n / (tau + n) * (sums[a / p] / n - mean0[a / p]) * (sums[a % p] / n - mean0[a % p]);
      tau += n, degrees += static_cast<int64_t>(x.size() / p);
      // The upper factor B by rows of its transpose, whose inverse is that of B, transposed.
      for (size_t i = 0; i < p; ++i) {
        for (int64_t d = 0; d < degrees - static_cast<int64_t>(i); ++d) {
          const long double z = normal();
          b[i * p + i] += z * z;
        }
        b[i * p + i] = sqrtl(b[i * p + i]);
      }
      for (size_t j = 1; j < p; ++j)
        for (size_t i = 0; i < j; ++i) b[i * p + j] = normal();
      // C = L B^-1, from C B = L, column by column.
      const wide l = cholesky(m, p);
      for (size_t i = 0; i < p; ++i)
        for (size_t j = 0; j < p; ++j) {
          c[i * p + j] = l[i * p + j];
          for (size_t a = 0; a < j; ++a) c[i * p + j] -= c[i * p + a] * b[a * p + j];
          c[i * p + j] /= b[j * p + j];
        }
      const wide z = {normal(), normal(), normal()};
      wide record(p);
      for (size_t i = 0; i < p; ++i) {
        mean[i] = at[i];
        for (size_t j = 0; j < p; ++j) {
          mean[i] += c[i * p + j] * z[j] / sqrtl(tau);
          cov[i * p + j] = 0;
          for (size_t a = 0; a < p; ++a) cov[i * p + j] += c[i * p + a] * c[j * p + a];
        }
        record[i] = mean[i];
      }
      for (size_t i = 0; i < p; ++i)
        for (size_t j = 0; j <= i; ++j) record.push_back(cov[i * p + j]);
      chain.push_back(record);
    }
  }
};

numbers one_pattern() {
  numbers x = iris();
  numbers three;
  for (size_t i = 0; i < 40; ++i)
    for (size_t j = 0; j < 3; ++j) three.push_back(i % 4 == 1 && j > 0 ? NAN : x[4 * (3 * i) + j]);
  return three;
}

template <class Real>
void compare_with_plain_chain(bool rows, bool wide_integers, double tolerance) {
  constexpr int em = 60, rounds = 4, imputations = 3;
  const numbers x = one_pattern();
  imputation<Real> run(x, 3, rows, {em, rounds, 1e-30, imputations});
  run.wide_integers = wide_integers;
  run.prior = {1, 2, 3, 4, 0.5, 5, 0.25, 0.125, 6, 2.5, 7};  // mean, lower triangle, tau, degrees
  run.prior_count = 11;
  ASSERT_EQ(run.run(), 0);
  plain_chain<Real> plain;
  const uint32_t seeds[] = {0, 0x40000};
  ASSERT_EQ(__vtsNewStreamEx(&plain.stream, VTS_BRNG_MCG59, 2, seeds), 0);
  plain.run(x, {1, 2, 3}, {4, 0.5, 0.25, 0.5, 5, 0.125, 0.25, 0.125, 6}, 2.5L, 7, em, rounds, imputations);
  __vtsDeleteStream(&plain.stream);
  for (size_t r = 0; r < plain.chain.size(); ++r)
    for (size_t a = 0; a < 9; ++a)
      EXPECT_NEAR(run.estimates[9 * r + a], static_cast<double>(plain.chain[r][a]), tolerance)
          << r << ' ' << a;
  for (size_t c = 0; c < imputations; ++c)
    for (size_t a = 0; a < 20; ++a)
      EXPECT_NEAR(run.simulations[20 * c + a], static_cast<double>(plain.drawn[rounds * c + rounds - 1][a]),
                  tolerance);
  // The data are left as the last imputation completes them.
  for (int64_t i = 0, next = 40; i < run.n; ++i)
    for (int64_t j = 0; j < 3; ++j) {
      const double v = x[static_cast<size_t>(3 * i + j)];
      EXPECT_EQ(run.at(i, j),
                std::isnan(v) ? run.simulations[static_cast<size_t>(next++)] : static_cast<Real>(v));
    }
}

TEST(missing_values, follows_the_plain_chain) {
  for (const bool rows : {false, true})
    for (const bool wide_integers : {false, true}) {
      compare_with_plain_chain<double>(rows, wide_integers, 1e-10);
      compare_with_plain_chain<float>(rows, wide_integers, 2e-3);
    }
}

TEST(missing_values, statuses_in_their_order) {
  using run = imputation<double>;
  using pointers = run::pointers;
  const numbers x = with_holes(iris(), 0.2, 1);
  const int64_t zero = 0, four = 4, odd = 0x30000;
  const struct {
    int32_t status;
    std::function<void(pointers&)> change;
  } rows[] = {
      {VTS_STATUS_SS_BAD_DIMENSION, [&](pointers& a) { a.p = &zero; }},
      {VTS_STATUS_SS_BAD_STORAGE, [&](pointers& a) { a.storage = &odd; }},
      {VTS_STATUS_SS_MISSING_PARAMS_NULL, [](pointers& a) { a.parameters = nullptr; }},
      {VTS_STATUS_SS_MISSING_PARAM_COUNT_NULL, [](pointers& a) { a.count = nullptr; }},
      {VTS_STATUS_SS_BAD_MISSING_PARAM_COUNT, [&](pointers& a) { a.count = &four; }},
      {VTS_STATUS_SS_SIMULATIONS_NULL, [](pointers& a) { a.simulations = nullptr; }},
      {VTS_STATUS_SS_NO_OUTPUT,
       [](pointers& a) { a.simulations = nullptr, a.drawn = a.chain_length = nullptr; }},
      {VTS_STATUS_SS_SIMULATION_COUNT_NULL, [](pointers& a) { a.drawn = nullptr; }},
      {VTS_STATUS_SS_NO_OUTPUT, [&](pointers& a) { a.drawn = &zero, a.estimates = nullptr; }},
      {VTS_STATUS_SS_BAD_METHOD, [](pointers& a) { a.method = 0x20; }},
  };
  // Each also with the faults of all later rows that leave it apart from null outputs.
  for (const auto& row : rows) {
    run r(x, 4, false, {5, 2, 0, 2});
    r.wide_integers = true;
    EXPECT_EQ(r.run(row.change), row.status);
    EXPECT_EQ(r.run([&](pointers& a) { row.change(a), a.method = 0; }), row.status);
    EXPECT_EQ(std::count(r.estimates.begin(), r.estimates.end(), 0), r.chain_length);
  }
  const struct {
    int32_t status;
    std::function<void(run&)> change;
  } values[] = {
      {VTS_STATUS_SS_BAD_MISSING_COUNT, [](run& r) { r.parameters[4] += 1, r.parameters[3] = 0; }},
      {VTS_STATUS_SS_BAD_MISSING_COUNT, [](run& r) { r.parameters[4] = NAN; }},
      {VTS_STATUS_SS_BAD_IMPUTATION_COUNTS, [](run& r) { r.parameters[3] = 0.75, ++r.drawn; }},
      {VTS_STATUS_SS_BAD_SIMULATION_COUNT, [](run& r) { --r.drawn, ++r.chain_length; }},
      {VTS_STATUS_SS_BAD_SIMULATION_COUNT, [](run& r) { r.parameters[3] = 1e300; }},
      {VTS_STATUS_SS_BAD_ESTIMATE_COUNT, [](run& r) { ++r.chain_length; }},
      {VTS_STATUS_SS_BAD_ESTIMATE_COUNT, [](run& r) { r.parameters[1] = 1e300; }},
      {VTS_STATUS_SS_PSTEP_DRAW_FAILED,
       [](run& r) {
         r.prior.assign(16, 1);
         r.prior_count = 16, r.prior.back() = INFINITY;
       }},
      {VTS_STATUS_SS_ISTEP_FACTOR_FAILED,
       [](run& r) {
         // Holes of a variable that is 0: their variance halves until nothing is left of it.
         for (int64_t i = 0; i < r.n; ++i)
           if (!std::isnan(r.at(i, 0))) r.at(i, 0) = 0;
         r.parameters[0] = 1e4, r.parameters[2] = 1e-320;
       }},
      {0, [](run& r) { r.start.assign(13, NAN), r.starts = 13; }},  // of another size: not used
      {0, [](run& r) { r.simulations.clear(), r.drawn = 0; }},      // estimates alone
  };
  for (const auto& row : values) {
    run r(x, 4, false, {5, 2, 1e-3, 2});
    row.change(r);
    EXPECT_EQ(r.run(), row.status) << &row - values;
  }
  run complete(iris(), 4, false, {5, 2, 0, 2});
  EXPECT_EQ(complete.run([&](pointers& a) { a.simulations = nullptr, a.drawn = nullptr; }),
            VTS_STATUS_SS_BAD_IMPUTATION_COUNTS);
}

// EM over many patterns, swept there and back, ends where the accelerated one does, which the gradient
// proves.
TEST(missing_values, em_reaches_the_maximum_over_many_patterns) {
  using namespace stats::missing;
  numbers x = with_holes(iris(), 0.4, 3);
  std::fill_n(x.begin() + 8, 4, NAN);  // an observation of holes alone
  const auto at = [&](ptrdiff_t i, ptrdiff_t j) { return x[static_cast<size_t>(4 * i + j)]; };
  const data_rows<double> data = sort_rows<double>(
      150, 4, [&](ptrdiff_t i, ptrdiff_t j) { return std::isnan(at(i, j)); }, at);
  square<double> observed(4), theta = standard_model<double>(4);
  for (ptrdiff_t i = 0; i < 150; ++i)
    for (ptrdiff_t a = 0; a < 5; ++a)
      for (ptrdiff_t b = 0; b < 5; ++b) observed[a][b] += data.row(i)[a] * data.row(i)[b];
  imputation_request<double> request{20000,   1,       1,       1e-14,
                                     nullptr, nullptr, nullptr, prior_parameters<double>(4, 4)};
  run_em(request, data, observed, theta);
  numbers mean(4), covariance(16);
  for (ptrdiff_t j = 0; j < 16; ++j) {
    mean[static_cast<size_t>(j / 4)] = theta[0][j / 4 + 1];
    covariance[static_cast<size_t>(j)] = theta[j / 4 + 1][j % 4 + 1];
  }
  EXPECT_LT(likelihood_at(x, 4, mean, covariance).steepest, 1e-9L);
}

TEST(missing_values, patterns_hold_their_rows_and_neighbours_differ_little) {
  using namespace stats::missing;
  constexpr ptrdiff_t n = 500, p = 70;
  std::mt19937_64 engine(2);
  std::vector<uint64_t> bits(2 * n);
  for (size_t i = 0; i < n; ++i) bits[2 * i] = engine() % 16 << 60, bits[2 * i + 1] = engine() % 4;
  const pattern_list list = group_by_pattern(n, pattern_words(p), bits);
  ASSERT_EQ(list.count(), 64);
  std::vector<ptrdiff_t> seen = list.order;
  std::sort(seen.begin(), seen.end());
  for (ptrdiff_t k = 0; k < list.count(); ++k) {
    for (ptrdiff_t r = list.first[static_cast<size_t>(k)]; r < list.first[static_cast<size_t>(k) + 1]; ++r) {
      const ptrdiff_t i = list.order[static_cast<size_t>(r)];
      EXPECT_TRUE(std::equal(list[k], list[k] + 2, bits.begin() + 2 * i));
      EXPECT_EQ(seen[static_cast<size_t>(r)], r);
    }
    const auto changes = [&](int word) { return std::popcount(list[k][word] ^ list[k - 1][word]); };
    if (k > 0) {
      EXPECT_EQ(changes(0) + changes(1), 1);
    }
  }
}

// What the growing trust in an empty prior does, equal calls, and NaNs without the mark.
TEST(missing_values, chain_drifts_calls_repeat_and_other_nans_are_data) {
  const numbers x = with_holes(iris(), 0.2, 1);
  imputation<double> a(x, 4, true, {50, 30, 1e-6, 2}), b = a;
  ASSERT_EQ(a.run(), 0);
  ASSERT_EQ(b.run(), 0);
  EXPECT_EQ(a.simulations, b.simulations);
  EXPECT_EQ(a.estimates, b.estimates);
  EXPECT_GT(a.estimates[0], 5.5);
  EXPECT_LT(a.estimates[59 * 14], 0.3);

  imputation<double> c(x, 4, true, {5, 2, 1e-6, 2});
  const double positive = std::bit_cast<double>(0x7ff8000000000000);
  c.at(1, 0) = positive;
  c.parameters[4] -= std::isnan(x[4]);
  c.size_outputs();
  c.run();
  EXPECT_EQ(std::bit_cast<uint64_t>(c.at(1, 0)), std::bit_cast<uint64_t>(positive));
}

}  // namespace
}  // namespace tmk::tests
