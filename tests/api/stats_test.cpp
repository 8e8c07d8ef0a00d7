// The checked door to summary statistics: digits that survive large offsets, results that depend on the data
// alone, NaNs and weights as stated, images, and what is refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <tmk/stats.hpp>

namespace tmk {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

std::vector<double> gaussian_values(std::size_t n, unsigned seed, double offset = 0) {
  std::mt19937_64 g(seed);
  std::normal_distribution<double> law(offset, 1);
  std::vector<double> x(n);
  for (double& v : x) v = law(g);
  return x;
}

// Not a number equals itself here; everything else to the bit.
void expect_same(const std::vector<double>& a, const std::vector<double>& b) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size(); ++i)
    EXPECT_TRUE(a[i] == b[i] || (std::isnan(a[i]) && std::isnan(b[i]))) << i << ' ' << a[i] << ' ' << b[i];
}

void expect_same(const summary& a, const summary& b) {
  EXPECT_EQ(a.n, b.n);
  for (const auto member : {&summary::weight, &summary::mean, &summary::sd, &summary::skewness,
                            &summary::kurtosis, &summary::min, &summary::max})
    expect_same(a.*member, b.*member);
  for (const auto member : {&summary::quantiles, &summary::cov, &summary::cor})
    expect_same((a.*member).values(), (b.*member).values());
}

// The textbook's formulas in extended precision over one variable: mean and central moments 2 to 4 over W.
struct reference {
  long double W = 0, W2 = 0, mean = 0, m[5] = {};
  reference(const std::vector<double>& x, const std::vector<double>& w) {
    for (const double v : w) W += v, W2 += static_cast<long double>(v) * v;
    // About the first value, the differences to which are exact.
    std::vector<long double> y(x.size());
    for (std::size_t i = 0; i < x.size(); ++i)
      mean += w[i] * (y[i] = static_cast<long double>(x[i]) - x[0]) / W;
    for (std::size_t i = 0; i < x.size(); ++i)
      for (int k = 2; k <= 4; ++k) m[k] += w[i] * powl(y[i] - mean, k) / W;
    mean += x[0];
  }
  double variance() const { return static_cast<double>(m[2] * W / (W - W2 / W)); }
  double skewness() const { return static_cast<double>(m[3] / powl(m[2], 1.5L)); }
  double kurtosis() const { return static_cast<double>(m[4] / (m[2] * m[2]) - 3); }
};

void expect_close(double value, double want, double digits, const char* what) {
  EXPECT_NEAR(value, want, std::pow(10.0, -digits) * std::max(1.0, std::fabs(want))) << what;
}

TEST(stats, agrees_with_the_textbook_in_extended_precision) {
  for (const double offset : {0.0, 1e3, -1e9})
    for (const bool weighted : {false, true})
      for (const std::size_t n : {2u, 3u, 100u, 70'000u}) {
        const std::vector<double> x = gaussian_values(n, 1, offset);
        std::vector<double> w(n, 1);
        if (weighted)
          for (std::size_t i = 0; i < n; ++i) w[i] = static_cast<double>(i % 5) / 4 + (n < 100 ? 1 : 0);
        const reference r(x, w);
        const summary s = describe(x, {.weights = w});
        const summary t = weighted ? s : describe(x);
        for (const summary* each : {&s, &t}) {
          expect_close(each->mean[0], static_cast<double>(r.mean), 15, "mean");
          expect_close(each->sd[0] * each->sd[0], r.variance(), 13, "variance");
          expect_close(each->skewness[0], r.skewness(), 12.5, "skewness");
          expect_close(each->kurtosis[0], r.kurtosis(), 12.5, "kurtosis");
        }
      }
}

// Series whose variance is known: alternating by h about an offset, as NIST's hard cases are built; whole and
// in blocks, cut anywhere.
TEST(stats, large_offsets_keep_13_digits) {
  struct row {
    double low, high;
  };
  const row rows[] = {
      {1e9 - 1, 1e9 + 1}, {1e15, 1e15 + 1}, {10'000'000.125, 10'000'000.375}, {-2e9, -2e9 + 0.5}};
  for (const row& r : rows) {
    const std::size_t n = 100'000;
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) x[i] = i % 2 == 0 ? r.low : r.high;
    const double h = (r.high - r.low) / 2, want = h * h * n / (n - 1);
    moments cut(1);
    const matrix_view<const double> view(x);
    for (std::size_t first = 0, length = 1; first < n; first += length, length = length * 3 + 1)
      cut.add(view.block(first, std::min(length, n - first)));
    moments whole(1);
    whole.add(x);
    for (const moments* m : {&whole, &cut}) {
      EXPECT_NEAR(m->variance()[0] / want, 1, 5e-14) << r.low;
      EXPECT_NEAR(m->covariance()(0, 0) / want, 1, 5e-14) << r.low;
      EXPECT_EQ(m->mean()[0], r.low + h);
      EXPECT_NEAR(m->kurtosis()[0], -2, 1e-12);
    }
  }
}

TEST(stats, merge_equals_whole_for_random_cuts) {
  const std::size_t n = 20'000, p = 3;
  std::vector<double> x = gaussian_values(n * p, 2);
  for (std::size_t i = 0; i < n; ++i) x[i * p + 1] += x[i * p] + 1e6;
  std::vector<double> w(n);
  std::mt19937 g(3);
  for (double& v : w) v = g() % 4;
  const matrix_view<const double> view(x.data(), n, p);
  const std::span<const double> weights(w);
  moments whole(p);
  whole.add(view, weights);
  for (int run = 0; run < 5; ++run) {
    std::vector<std::size_t> cuts{0, n};
    for (int k = 0; k < 6; ++k) cuts.push_back(g() % n);
    std::sort(cuts.begin(), cuts.end());
    moments left(p), right(p);
    for (std::size_t k = 0; k + 1 < cuts.size(); ++k)
      (k < 3 ? left : right)
          .add(view.block(cuts[k], cuts[k + 1] - cuts[k]), weights.subspan(cuts[k], cuts[k + 1] - cuts[k]));
    left.merge(right);
    EXPECT_EQ(left.count(), whole.count());
    EXPECT_EQ(left.weight(), whole.weight());
    EXPECT_EQ(left.min(), whole.min());
    EXPECT_EQ(left.max(), whole.max());
    for (std::size_t j = 0; j < p; ++j) {
      EXPECT_NEAR(left.mean()[j], whole.mean()[j], 1e-15 * (1 + std::fabs(whole.mean()[j])));
      EXPECT_NEAR(left.variance()[j] / whole.variance()[j], 1, 1e-14);
      EXPECT_NEAR(left.skewness()[j], whole.skewness()[j], 3e-14);
      EXPECT_NEAR(left.kurtosis()[j], whole.kurtosis()[j], 1e-13);
      for (std::size_t i = 0; i < p; ++i)
        EXPECT_NEAR(left.correlation()(i, j), whole.correlation()(i, j), 1e-14);
    }
  }
  const auto bytes = whole.to_bytes();
  whole.merge(moments(p));
  EXPECT_EQ(whole.to_bytes(), bytes);
  moments empty(p);
  empty.merge(whole);
  EXPECT_EQ(empty.to_bytes(), bytes);
}

TEST(stats, layouts_strides_and_threads_change_no_bit) {
  const std::size_t n = 5'000, p = 40;
  const std::vector<double> x = gaussian_values(n * p, 4, 100);
  std::vector<double> columns(n * p), wide(n * p * 3), w(n);
  std::vector<float> single(x.begin(), x.end());
  const std::vector<double> widened(single.begin(), single.end());
  for (std::size_t i = 0; i < n; ++i) {
    w[i] = static_cast<double>(i % 7);
    for (std::size_t j = 0; j < p; ++j) columns[j * n + i] = wide[((n - 1 - i) * p + j) * 3] = x[i * p + j];
  }
  const data_view same[] = {
      matrix_view<const double>(x.data(), n, p),
      matrix_view<const double>(columns.data(), n, p, layout::column_major),
      matrix_view<const double>(wide.data() + (n - 1) * p * 3, n, p, -static_cast<std::ptrdiff_t>(3 * p), 3),
  };
  for (const weight_view& weights : {weight_view(), weight_view(w)}) {
    const summary one = describe(same[0], {.weights = weights});
    for (const data_view& view : same)
      for (const int threads : {1, 2, 3, 8})
        expect_same(describe(view, {.weights = weights, .threads = threads}), one);
    expect_same(describe(matrix_view<const float>(single.data(), n, p), {.weights = weights}),
                describe(matrix_view<const double>(widened.data(), n, p), {.weights = weights}));
  }
}

TEST(stats, covariance_and_correlation) {
  const std::vector<double> x{1, 2, 3, 4, 5, 2, 4, 6, 8, 10, 5, 3, 4, 1, 2, 7, 7, 7, 7, 7};
  const summary s = describe(matrix_view<const double>(x.data(), 5, 4, layout::column_major));
  const double cov[3][3] = {{2.5, 5, -2}, {5, 10, -4}, {-2, -4, 2.5}};
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j) {
      EXPECT_NEAR(s.cov(i, j), cov[i][j], 1e-14);
      EXPECT_NEAR(s.cor(i, j), cov[i][j] / std::sqrt(cov[i][i] * cov[j][j]), 1e-15);
    }
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(s.cor(i, i), 1);
  EXPECT_TRUE(std::isnan(s.cor(0, 3)));
  EXPECT_EQ(s.cov(0, 3), 0);
}

TEST(stats, degenerate_samples) {
  const std::vector<double> constant(50'000, 0.1), w0(3, 0), x{5, 1, 2}, first_zero{0, 1, 1};
  const summary c = describe(constant);
  EXPECT_EQ(c.mean[0], 0.1);
  EXPECT_EQ(c.sd[0], 0);
  EXPECT_TRUE(std::isnan(c.skewness[0]) && std::isnan(c.kurtosis[0]));
  expect_same(c.quantiles.values(), {0.1, 0.1, 0.1});

  const summary one = describe(std::vector<double>{3});
  EXPECT_EQ(one.n[0], 1);
  EXPECT_EQ(one.mean[0], 3);
  EXPECT_TRUE(std::isnan(one.sd[0]) && std::isnan(one.cov(0, 0)) && std::isnan(one.cor(0, 0)));

  const summary none = describe(x, {.weights = w0});
  EXPECT_EQ(none.n[0], 0);
  EXPECT_EQ(none.weight[0], 0);
  for (const double v :
       {none.mean[0], none.sd[0], none.min[0], none.max[0], none.quantiles(0, 1), none.cov(0, 0)})
    EXPECT_TRUE(std::isnan(v));

  const summary rest = describe(x, {.weights = first_zero}),
                pair = describe(std::vector<double>{1, 2}, {.weights = std::vector<double>(2, 1)});
  expect_same(rest, pair);
  expect_same(describe(std::vector<double>{nan, 1, 2}, {.weights = first_zero}), pair);

  const summary high = describe(std::vector<double>{infinity, 1, 2, -1});
  EXPECT_EQ(high.mean[0], infinity);
  EXPECT_EQ(high.max[0], infinity);
  expect_same(high.quantiles.row(0).size() == 3 ? high.quantiles.values() : std::vector<double>{},
              {0.5, 1.5, infinity});
  EXPECT_TRUE(std::isnan(high.sd[0]));
  EXPECT_EQ(median(std::vector<double>{1, infinity, 2})[0], 2);
  EXPECT_EQ(describe(std::vector<double>(3, 1.7e308)).mean[0], 1.7e308);
}

TEST(stats, what_a_nan_does_is_the_callers_choice) {
  const std::size_t n = 3'000, p = 3;
  std::vector<double> x = gaussian_values(n * p, 5);
  std::mt19937 g(6);
  for (int k = 0; k < 200; ++k) x[g() % n * p + 1 + g() % 2] = nan;
  std::vector<double> column[p], complete;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < p; ++j)
      if (!std::isnan(x[i * p + j])) column[j].push_back(x[i * p + j]);
    if (!std::isnan(x[i * p + 1] + x[i * p + 2]))
      complete.insert(complete.end(), x.begin() + i * p, x.begin() + (i + 1) * p);
  }
  const matrix_view<const double> view(x.data(), n, p);

  const summary omitted = describe(view, {.nan = nan_policy::omit});
  for (std::size_t j = 0; j < p; ++j) {
    const summary own = describe(column[j]);
    EXPECT_EQ(omitted.n[j], own.n[0]);
    EXPECT_EQ(omitted.min[j], own.min[0]);
    EXPECT_NEAR(omitted.mean[j], own.mean[0], 1e-15);
    EXPECT_NEAR(omitted.sd[j], own.sd[0], 1e-14);
    expect_same(std::vector(omitted.quantiles.row(j).begin(), omitted.quantiles.row(j).end()),
                own.quantiles.values());
  }
  const summary rows = describe(matrix_view<const double>(complete.data(), complete.size() / p, p));
  EXPECT_EQ(omitted.complete, rows.n[0]);
  for (std::size_t k = 0; k < p * p; ++k) EXPECT_NEAR(omitted.cov.values()[k], rows.cov.values()[k], 1e-14);

  const summary propagated = describe(view);
  EXPECT_EQ(propagated.mean[0], describe(column[0]).mean[0]);
  for (const std::size_t j : {1u, 2u})
    for (const double v : {propagated.mean[j], propagated.sd[j], propagated.min[j], propagated.max[j],
                           propagated.quantiles(j, 1), propagated.cov(0, j), propagated.cor(j, j)})
      EXPECT_TRUE(std::isnan(v));

  std::vector<double> two = gaussian_values(n * p, 7);
  two[2'000 * p + 1] = two[2'000 * p + 2] = two[2'500 * p] = nan;
  for (const int threads : {1, 2}) try {
      describe(matrix_view<const double>(two.data(), n, p), {.threads = threads, .nan = nan_policy::raise});
      ADD_FAILURE();
    } catch (const error& e) {
      EXPECT_EQ(e.argument(), "x(2000, 1)");
    }
}

TEST(stats, weighted_quantiles_invert_the_distribution_function) {
  const std::vector<double> x{4, 1, 3, 2, 6, 5};
  for (const double weight : {1.0, 0.1, 3e-300})
    EXPECT_EQ(median(x, {.weights = std::vector<double>(6, weight)})[0], 3.5) << weight;
  const std::vector<double> w{1, 2, 0, 3, 0, 4}, orders{0, 0.2, 0.5, 0.55, 0.6, 1};
  expect_same(quantiles(x, orders, {.weights = w}).values(), {1, 1.5, 3, 4, 4.5, 5});
}

TEST(stats, quantiles_are_the_ranks) {
  std::vector<double> x = gaussian_values(1'001, 8);
  std::vector<double> orders;
  for (int k = 0; k <= 1'000; ++k) orders.push_back(k / 1000.0);
  const matrix q = quantiles(x, orders, {.threads = 2});
  sort(x);
  for (std::size_t k = 0; k <= 1'000; ++k) EXPECT_NEAR(q(0, k), x[k], 1e-12);
  EXPECT_EQ(median(x)[0], x[500]);
}

TEST(stats, sketch_answers_within_its_bounds) {
  const std::size_t n = 60'000;
  std::vector<double> x = gaussian_values(2 * n, 9);
  std::vector<double> sorted;
  for (std::size_t i = 0; i < n; ++i) sorted.push_back(x[2 * i]);
  for (std::size_t i = 0; i < n; i += 100) x[2 * i + 1] = nan;
  std::sort(sorted.begin(), sorted.end());
  quantile_sketch q(2, 0.01, nan_policy::omit), strict(2, 0.01);
  const matrix_view<const double> view(x.data(), n, 2);
  EXPECT_TRUE(std::isnan(q.quantile(0, 0.5)));
  for (std::size_t first = 0; first < n; first += 7'001)
    q.add(view.block(first, std::min(n - first, std::size_t{7'001})));
  strict.add(view);
  const quantile_sketch moved(std::move(q));
  for (const double order : {0.0, 0.01, 0.25, 0.5, 0.99, 1.0}) {
    const auto b = moved.bounds(0, order);
    const auto rank = std::lower_bound(sorted.begin(), sorted.end(), b.value) - sorted.begin() + 1;
    EXPECT_LE(b.lowest_rank, rank);
    EXPECT_GE(b.highest_rank, rank);
    EXPECT_NEAR(static_cast<double>(rank), order * n, 0.01 * n + 1);
    EXPECT_EQ(b.count, n);
    EXPECT_EQ(b.value, moved.quantile(0, order));
    EXPECT_EQ(b.value, strict.quantile(0, order));
  }
  EXPECT_EQ(moved.count(1), n - n / 100);
  EXPECT_FALSE(std::isnan(moved.quantile(1, 0.5)));
  EXPECT_TRUE(std::isnan(strict.quantile(1, 0.5)));
}

TEST(stats, sorts_and_their_indices) {
  std::vector<float> x{3, -1, 2, -1}, y = x;
  EXPECT_EQ(sort_index(std::span<const float>(x)), (std::vector<std::int32_t>{1, 3, 2, 0}));
  EXPECT_EQ(sort_index(std::span<const float>(x), true), (std::vector<std::int32_t>{0, 2, 1, 3}));
  sort(y, true);
  EXPECT_EQ(y, (std::vector<float>{3, 2, -1, -1}));
  std::vector<std::int32_t> k{3, -1, 2};
  sort(k);
  EXPECT_EQ(k, (std::vector<std::int32_t>{-1, 2, 3}));
  sort(std::span<double>());
}

TEST(stats, images_come_back_and_damaged_ones_are_refused) {
  const std::vector<double> x = gaussian_values(600, 10);
  for (const bool cross_product : {false, true})
    for (const nan_policy policy : {nan_policy::propagate, nan_policy::omit, nan_policy::raise}) {
      moments m(3, {cross_product, policy});
      EXPECT_EQ(moments::from_bytes(m.to_bytes()).to_bytes(), m.to_bytes());
      m.add(matrix_view<const double>(x.data(), 200, 3));
      moments same = moments::from_bytes(m.to_bytes());
      EXPECT_EQ(same.to_bytes(), m.to_bytes());
      same.merge(m);
      EXPECT_EQ(same.count()[0], 400);
    }
  moments m(3);
  m.add(matrix_view<const double>(x.data(), 200, 3));
  const auto image = m.to_bytes();
  EXPECT_EQ(std::to_integer<int>(image[8]), 1);  // version
  for (std::size_t k = 0; k < image.size(); ++k) {
    auto bad = image;
    bad[k] ^= std::byte{static_cast<unsigned char>(1u << k % 8)};
    EXPECT_THROW(moments::from_bytes(bad), error) << k;
    EXPECT_THROW(moments::from_bytes(std::span(image).first(k)), error) << k;
  }
  auto longer = image;
  longer.push_back(std::byte{0});
  EXPECT_THROW(moments::from_bytes(longer), error);
}

// With the hash made good again, the content itself is looked at.
TEST(stats, impossible_images_are_refused) {
  moments m(2);
  m.add(matrix_view<const double>(gaussian_values(40, 11).data(), 20, 2));
  struct row {
    std::size_t place;
    std::uint64_t word;
  };
  constexpr std::uint64_t minus_one = 0xbff0000000000000, not_a_number = 0x7ff8000000000000;
  const row rows[] = {
      {16, 0},                       // no columns
      {16, std::uint64_t{1} << 62},  // more columns than memory
      {24, ~std::uint64_t{0}},       // a count of -1
      {32, not_a_number},            // a weight
      {32, minus_one},
      {40, 0x7fe0000000000000},  // squares of weights above the square of their sum
      {64, minus_one},           // a sum of squares
      {88, 0x7fe0000000000000},  // a minimum above the maximum
      {184, 21},                 // more complete rows than values
      {240, minus_one},          // a diagonal
  };
  for (const row& r : rows) {
    auto image = m.to_bytes();
    const auto put = [&](std::size_t place, std::uint64_t word) {
      for (unsigned k = 0; k < 8; ++k) image[place + k] = static_cast<std::byte>(word >> 8 * k);
    };
    put(r.place, r.word);
    std::uint64_t hash = 0xcbf29ce484222325;
    for (std::size_t k = 0; k + 8 < image.size(); ++k)
      hash = (hash ^ std::to_integer<std::uint64_t>(image[k])) * 0x100000001b3;
    put(image.size() - 8, hash);
    EXPECT_THROW(moments::from_bytes(image), error) << r.place;
  }
}

TEST(stats, refusals_name_argument_and_value_and_leave_the_accumulator) {
  const std::vector<double> x{1, 2, 3, 4, 5, 6};
  const std::vector<double> spoiled{1, 2, nan, 4, 5, 6}, negative{1, 1, -0.5}, undefined{1, nan, 1},
      infinite{1, 1, infinity}, few(2, 1), bad_orders{0.5, 1.5};
  const matrix_view<const double> view(x.data(), 3, 2), wide(x.data(), 2, 3), holes(spoiled.data(), 3, 2),
      null(nullptr, 3, 2), none(nullptr, 0, 2), no_columns(x.data(), 3, 0);
  moments acc(2, {.nan = nan_policy::raise});
  acc.add(view);
  const auto before = acc.to_bytes();
  quantile_sketch q(2);
  q.add(view);
  const auto nans = std::vector<double>{nan};
  struct refusal {
    std::function<void()> call;
    const char *argument, *value;
  };
  const refusal rows[] = {
      {[&] { acc.add(wide); }, "x.cols", "3"},
      {[&] { acc.add(null); }, "x", "null"},
      {[&] { acc.add(holes); }, "x(1, 0)", "nan"},
      {[&] { acc.add(view, few); }, "weights", "2"},
      {[&] { acc.add(view, std::vector<double>()); }, "weights", "0"},
      {[&] { acc.add(view, negative); }, "weights[2]", "-0.5"},
      {[&] { acc.add(view, undefined); }, "weights[1]", "nan"},
      {[&] { acc.add(view, infinite); }, "weights[2]", "inf"},
      {[&] { acc.add(view, {}, 0); }, "threads", "0"},
      {[&] { acc.merge(moments(3, {.nan = nan_policy::raise})); }, "other.cols", "3"},
      {[&] {
         acc.merge(moments(2, {false, nan_policy::raise}));
       },
       "other.options.cross_product", "false"},
      {[&] { acc.merge(moments(2)); }, "other.options.nan", "0"},
      {[&] { acc.raw(5); }, "order", "5"},
      {[&] { acc.central(0); }, "order", "0"},
      {[&] { moments(0); }, "cols", "0"},
      {[&] { moments(40'000); }, "cols", "40000"},
      {[&] { moments(2, {.cross_product = false}).covariance(); }, "options.cross_product", "false"},
      {[&] { describe(none); }, "x.rows", "0"},
      {[&] { describe(no_columns); }, "x.cols", "0"},
      {[&] { describe(view, {.orders = bad_orders}); }, "orders[1]", "1.5"},
      {[&] { describe(view, {.orders = nans}); }, "orders[0]", "nan"},
      {[&] { describe(view, {.threads = -1}); }, "threads", "-1"},
      {[&] { quantiles(view, bad_orders); }, "orders[1]", "1.5"},
      {[&] { median(null); }, "x", "null"},
      {[&] { quantile_sketch(0); }, "cols", "0"},
      {[&] { quantile_sketch(1, 0); }, "epsilon", "0"},
      {[&] { quantile_sketch(1, 1.25); }, "epsilon", "1.25"},
      {[&] { quantile_sketch(1, nan); }, "epsilon", "nan"},
      {[&] { q.add(wide); }, "x.cols", "3"},
      {[&] { q.quantile(2, 0.5); }, "variable", "2"},
      {[&] { q.quantile(0, -0.5); }, "order", "-0.5"},
      {[&] { q.quantile(0, nan); }, "order", "nan"},
  };
  for (const refusal& row : rows) {
    try {
      row.call();
      ADD_FAILURE() << row.argument << ' ' << row.value;
    } catch (const error& e) {
      EXPECT_EQ(e.argument(), row.argument) << e.what();
      EXPECT_EQ(e.value(), row.value) << e.what();
    }
    EXPECT_EQ(acc.to_bytes(), before) << row.argument;
    EXPECT_EQ(q.count(0), 3);
  }
  acc.add(none);
  EXPECT_EQ(acc.to_bytes(), before);
}

}  // namespace
}  // namespace tmk
