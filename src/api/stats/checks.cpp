// SPDX-License-Identifier: Apache-2.0
#include "api/stats/checks.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

#include "api/call/settings.hpp"

namespace tmk::detail {

std::size_t rows_of(const data_view& x) {
  return std::visit([](const auto& view) { return view.rows(); }, x);
}

std::size_t cols_of(const data_view& x) {
  return std::visit([](const auto& view) { return view.cols(); }, x);
}

void check_data(const char* function, const data_view& x, bool empty) {
  const std::size_t rows = rows_of(x), cols = cols_of(x);
  const bool null = std::visit([](const auto& view) { return view.data() == nullptr; }, x);
  refuse_unless_in(function, "x.cols", cols, 1, INT32_MAX);
  if (!empty) refuse_below(function, "x.rows", rows, 1);
  if (rows != 0 && null)
    refuse(function, "x", "null", "is null, want " + number(rows) + " by " + number(cols));
}

void check_block(const char* function, const data_view& x, std::size_t cols) {
  check_data(function, x, true);
  if (cols_of(x) != cols) refuse_value(function, "x.cols", number(cols_of(x)), number(cols));
}

void check_weights(const char* function, const weight_view& weights, std::size_t rows) {
  if (!weights) return;
  const operand o{"weights", {weights->data(), weights->size()}, sizeof(double)};
  check_size(function, o, rows);
  check_data(function, o);
}

void check_orders(const char* function, std::span<const double> orders) {
  for (std::size_t i = 0; i < orders.size(); ++i)
    if (!(orders[i] >= 0 && orders[i] <= 1))
      refuse_unless_in(function, place("orders", i).c_str(), orders[i], 0, 1);
}

namespace {

const char* name_of(nan_policy policy) {
  constexpr const char* names[] = {"propagate", "omit", "raise"};
  return names[static_cast<int>(policy)];
}

}  // namespace

void check_policy(const char* function, const char* argument, nan_policy policy) {
  const int value = static_cast<int>(policy);
  if (value < 0 || value > static_cast<int>(nan_policy::raise))
    refuse_value(function, argument, number(value), "propagate, omit or raise");
}

void check_same_policy(const char* function, const char* argument, nan_policy policy, nan_policy own) {
  if (policy != own) refuse_value(function, argument, name_of(policy), name_of(own));
}

namespace {

TmkSSData c_data(const data_view& x, const weight_view& weights) {
  return std::visit(
      [&](const auto& view) {
        return TmkSSData{view.data(),
                         std::is_same_v<decltype(view.data()), const float*> ? 1 : 0,
                         static_cast<std::int64_t>(view.rows()),
                         static_cast<std::int64_t>(view.cols()),
                         view.row_stride(),
                         view.col_stride(),
                         weights ? weights->data() : nullptr};
      },
      x);
}

// The first of the weights that cannot be one, or else their sum.
[[noreturn]] void refuse_weights(const char* function, std::span<const double> weights, bool counts) {
  const auto bad = [counts](double w) {
    return !(w >= 0 && w <= std::numeric_limits<double>::max()) || (counts && w != std::trunc(w));
  };
  const auto found = std::find_if(weights.begin(), weights.end(), bad);
  if (found != weights.end())
    refuse_value(function, place("weights", static_cast<std::size_t>(found - weights.begin())),
                 number(*found), std::string("a ") + (counts ? "whole" : "finite") + " number of 0 or more");
  const double sum = std::accumulate(weights.begin(), weights.end(), 0.0);
  const double most = counts ? 0x1p53 : std::numeric_limits<double>::max();
  if (sum > most)
    refuse(function, "weights", number(sum), "sum to " + number(sum) + ", want at most " + number(most));
  refuse(function, "weights", "inf", "make the sum of all weights infinite, want a finite number");
}

}  // namespace

data_call::data_call(const data_view& x, const weight_view& weights, int threads)
    : data_(c_data(x, weights)), threads_(threads) {
  select_first_tier();
}

void data_call::check(const char* function, int32_t status, bool weights_are_counts) const {
  if (status >= 0) return;
  std::int64_t row, col;
  if (status == TMK_SS_BAD_WEIGHTS)
    refuse_weights(function, {data_.weights, static_cast<std::size_t>(data_.rows)}, weights_are_counts);
  if (status == TMK_SS_NAN && tmk_ss_pooled_find_nan(&data_, &row, &col) == 1)
    refuse(function, "x(" + number(row) + ", " + number(col) + ')', "nan", "is not a number");
  check_status(function, status);
}

void check_image(const char* function, const char* content, std::span<const std::byte> bytes,
                 int32_t status) {
  const std::pair<int32_t, std::string> complaints[] = {
      {TMK_SS_BAD_IMAGE_SIZE, "is truncated or too long"},
      {TMK_SS_BAD_IMAGE, std::string("does not hold ") + content},
      {TMK_SS_BAD_IMAGE_VERSION, "was written by another version of the library"},
      {TMK_SS_DAMAGED_IMAGE, "is damaged"},
      {TMK_SS_IMPOSSIBLE_IMAGE, "has a content that no data can give"},
  };
  for (const auto& [refused, complaint] : complaints)
    if (status == refused) refuse(function, "bytes", number(bytes.size()) + " bytes", complaint);
  check_status(function, status);
}

}  // namespace tmk::detail
