// SPDX-License-Identifier: Apache-2.0
// Checks of the statistics interface, its tasks and its threads.
#include "api/stats/checks.hpp"

#include <tmk/abi/status.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>
#include <limits>
#include <new>
#include <numeric>

#include "api/call/check.hpp"
#include "api/math/settings.hpp"
#include "api/call/threads.hpp"

namespace tmk::detail {

void check_status(const char* function, int32_t status) {
  if (status == VTS_STATUS_SS_MEMORY) throw std::bad_alloc();
  if (status < 0)
    throw error(status, function, "x", std::to_string(status),
                std::string("failed: ") + tmk_status_text(status));
}

std::size_t rows_of(const data_view& x) {
  return std::visit([](const auto& view) { return view.rows(); }, x);
}

std::size_t cols_of(const data_view& x) {
  return std::visit([](const auto& view) { return view.cols(); }, x);
}

void check_data(const char* function, const data_view& x, bool empty) {
  const std::size_t rows = rows_of(x), cols = cols_of(x);
  const bool null = std::visit([](const auto& view) { return view.data() == nullptr; }, x);
  if (cols < 1 || cols > INT32_MAX)
    refuse(function, "x.cols", std::to_string(cols), "is " + std::to_string(cols) + ", want 1 to 2147483647");
  if (rows == 0 && !empty) refuse(function, "x.rows", "0", "is 0, want 1 or more");
  if (rows != 0 && null)
    refuse(function, "x", "null", "is null, want " + std::to_string(rows) + " by " + std::to_string(cols));
}

void check_weights(const char* function, const weight_view& weights, std::size_t rows, bool counts) {
  if (!weights) return;
  if (weights->size() != rows)
    refuse(function, "weights", std::to_string(weights->size()),
           "has size " + std::to_string(weights->size()) + ", want " + std::to_string(rows));
  if (weights->data() == nullptr && rows != 0)
    refuse(function, "weights", "null", "is null, want " + std::to_string(rows) + " elements");
  const auto bad = [counts](double w) {
    return !(w >= 0 && w <= std::numeric_limits<double>::max()) || (counts && w != std::trunc(w));
  };
  const auto found = std::find_if(weights->begin(), weights->end(), bad);
  if (found != weights->end())
    refuse(function, place("weights", static_cast<std::size_t>(found - weights->begin())), number(*found),
           "is " + number(*found) + ", want a " + (counts ? "whole" : "finite") + " number of 0 or more");
  const double sum = std::accumulate(weights->begin(), weights->end(), 0.0);
  const double most = counts ? 0x1p53 : std::numeric_limits<double>::max();
  if (sum > most)
    refuse(function, "weights", number(sum), "sum to " + number(sum) + ", want at most " + number(most));
}

void check_orders(const char* function, std::span<const double> orders) {
  const auto bad = [](double q) { return !(q >= 0 && q <= 1); };
  const auto found = std::find_if(orders.begin(), orders.end(), bad);
  if (found != orders.end())
    refuse(function, place("orders", static_cast<std::size_t>(found - orders.begin())), number(*found),
           "is " + number(*found) + ", want 0 to 1");
}

void check_threads(const char* function, int threads) {
  if (threads < 1)
    refuse(function, "threads", std::to_string(threads),
           "is " + std::to_string(threads) + ", want 1 or more");
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
    refuse(function, argument, std::to_string(value),
           "is " + std::to_string(value) + ", want propagate, omit or raise");
}

void check_same_policy(const char* function, const char* argument, nan_policy policy, nan_policy own) {
  if (policy != own)
    refuse(function, argument, name_of(policy),
           std::string("is ") + name_of(policy) + ", want " + name_of(own));
}

// In tiles of rows, each by columns: the search stays near the data in both layouts.
void refuse_nan(const char* function, const data_view& x, const weight_view& weights, nan_policy policy) {
  if (policy != nan_policy::raise) return;
  const auto search = [&](const auto& view) {
    constexpr std::size_t tile = 64;
    for (std::size_t first = 0; first < view.rows(); first += tile) {
      const std::size_t last = std::min(view.rows(), first + tile);
      std::size_t row = last, col = 0;
      for (std::size_t j = 0; j < view.cols(); ++j)
        for (std::size_t i = first; i < row; ++i)
          if (std::isnan(view(i, j)) && (!weights || (*weights)[i] > 0)) row = i, col = j;
      if (row != last)
        refuse(function, "x(" + std::to_string(row) + ", " + std::to_string(col) + ')', "nan",
               "is not a number");
    }
  };
  std::visit(search, x);
}

task_handle new_task(const char* function, const int32_t* p, const int32_t* n, const double* x,
                     const double* weights) {
  static constexpr int32_t storage = VTS_SS_ROWS;
  select_first_tier();
  SSTask* task = nullptr;
  check_status(function, __vtsdSSNewTask(&task, p, n, &storage, x, weights, nullptr, 0));
  return task_handle(task);
}

void for_each_item(std::size_t count, int threads, const std::function<void(std::size_t)>& item) {
  struct failure {
    std::size_t item;
    std::exception_ptr what;
  };
  const int parts = static_cast<int>(std::min(static_cast<std::size_t>(usable_threads(threads)), count));
  std::vector<failure> failures(static_cast<std::size_t>(parts), failure{count, nullptr});
  const auto run = [&](int part) {
    failure& own = failures[static_cast<std::size_t>(part)];
    try {
      for (own.item = static_cast<std::size_t>(part); own.item < count;
           own.item += static_cast<std::size_t>(parts))
        item(own.item);
    } catch (...) {
      own.what = std::current_exception();
    }
  };
  if (parts == 1)
    run(0);
  else
    run_parts(parts, run);
  const failure* first = nullptr;
  for (const failure& f : failures)
    if (f.what != nullptr && (first == nullptr || f.item < first->item)) first = &f;
  if (first != nullptr) std::rethrow_exception(first->what);
}

}  // namespace tmk::detail
