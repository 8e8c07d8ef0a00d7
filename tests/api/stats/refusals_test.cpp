// SPDX-License-Identifier: Apache-2.0
// What is refused, by argument and value, with the accumulator as it was.
#include <gtest/gtest.h>

#include <functional>
#include <type_traits>

#include "api/stats/samples.hpp"

namespace tmk {
namespace {

// A view of a temporary would outlive it.
static_assert(!std::is_constructible_v<weight_view, std::vector<double>>);
static_assert(!std::is_constructible_v<weight_view, std::vector<float>&>);
static_assert(std::is_convertible_v<std::vector<double>&, weight_view> &&
              std::is_convertible_v<const std::vector<double>&, weight_view> &&
              std::is_convertible_v<std::span<double>, weight_view>);

TEST(stats, refusals_name_argument_and_value_and_leave_the_accumulator) {
  const std::vector<double> x{1, 2, 3, 4, 5, 6};
  const std::vector<double> spoiled{1, 2, nan, 4, 5, 6}, negative{1, 1, -0.5}, undefined{1, nan, 1},
      infinite{1, 1, infinity}, few(2, 1), bad_orders{0.5, 1.5};
  const matrix_view<const double> view(x.data(), 3, 2), wide(x.data(), 2, 3), holes(spoiled.data(), 3, 2),
      null(nullptr, 3, 2), none(nullptr, 0, 2), no_columns(x.data(), 3, 0);
  moments acc(2, {.nan = nan_policy::raise});
  acc.add(view);
  const auto before = acc.to_bytes();
  const std::vector<double> most(3, 1e308), half{1e308, 1, 1}, halves{1, 1.5, 2}, many(3, 0x1p52);
  const auto no_policy = static_cast<nan_policy>(9);
  moments heavy(2), counts(2, {.weights_are_counts = true}), moved(2);
  heavy.add(view, half);
  moments(std::move(moved));
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
      {[&] { acc.add(view, std::span<const double>()); }, "weights", "0"},
      {[&] { acc.add(view, negative); }, "weights[2]", "-0.5"},
      {[&] { acc.add(view, undefined); }, "weights[1]", "nan"},
      {[&] { acc.add(view, infinite); }, "weights[2]", "inf"},
      {[&] { acc.add(view, {}, 0); }, "threads", "0"},
      {[&] { acc.merge(moments(3, {.nan = nan_policy::raise})); }, "other.cols", "3"},
      {[&] {
         acc.merge(moments(2, {false, nan_policy::raise}));
       },
       "other.options.cross_product", "false"},
      {[&] { acc.merge(moments(2)); }, "other.options.nan", "propagate"},
      {[&] {
         acc.merge(moments(2, {true, nan_policy::raise, true}));
       },
       "other.options.weights_are_counts", "true"},
      {[&] { acc.add(view, most); }, "weights", "inf"},
      {[&] { heavy.add(view, half); }, "weights", "inf"},
      {[&] { heavy.merge(moments(heavy)); }, "other", "inf"},
      {[&] { counts.add(view, negative); }, "weights[2]", "-0.5"},
      {[&] { counts.add(view, halves); }, "weights[1]", "1.5"},
      {[&] { counts.add(view, many); }, "weights", "13510798882111488"},
      {[&] { moments(2, {.nan = no_policy}); }, "options.nan", "9"},
      {[&] { (void)describe(view, {.nan = no_policy}); }, "nan", "9"},
      {[&] { (void)median(view, {.nan = no_policy}); }, "nan", "9"},
      {[&] { quantile_sketch(1, 0.5, no_policy); }, "nan", "9"},
      {[&] { (void)describe(matrix_view<const double>(x.data(), 1, 40'000, 0, 0)); }, "x.cols", "40000"},
      {[&] { (void)moved.to_bytes(); }, "cols", "0"},
      {[&] { q.merge(quantile_sketch(3)); }, "other.cols", "3"},
      {[&] { q.merge(quantile_sketch(2, 0.1, nan_policy::omit)); }, "other.nan", "omit"},
      {[&] { (void)q.rank(2, 0.5); }, "variable", "2"},
      {[&] { (void)q.rank(0, nan); }, "value", "nan"},
      {[&] { (void)acc.raw(5); }, "order", "5"},
      {[&] { (void)acc.central(0); }, "order", "0"},
      {[&] { moments(0); }, "cols", "0"},
      {[&] { moments(40'000); }, "cols", "40000"},
      {[&] { (void)moments(2, {.cross_product = false}).covariance(); }, "options.cross_product", "false"},
      {[&] { (void)describe(none); }, "x.rows", "0"},
      {[&] { (void)describe(no_columns); }, "x.cols", "0"},
      {[&] { (void)describe(view, {.orders = bad_orders}); }, "orders[1]", "1.5"},
      {[&] { (void)describe(view, {.orders = nans}); }, "orders[0]", "nan"},
      {[&] { (void)describe(view, {.threads = -1}); }, "threads", "-1"},
      {[&] { (void)quantiles(view, bad_orders); }, "orders[1]", "1.5"},
      {[&] { (void)median(null); }, "x", "null"},
      {[&] { quantile_sketch(0); }, "cols", "0"},
      {[&] { quantile_sketch(1, 0); }, "epsilon", "0"},
      {[&] { quantile_sketch(1, 1.25); }, "epsilon", "1.25"},
      {[&] { quantile_sketch(1, nan); }, "epsilon", "nan"},
      {[&] { q.add(wide); }, "x.cols", "3"},
      {[&] { (void)q.quantile(2, 0.5); }, "variable", "2"},
      {[&] { (void)q.quantile(0, -0.5); }, "order", "-0.5"},
      {[&] { (void)q.quantile(0, nan); }, "order", "nan"},
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
