// SPDX-License-Identifier: Apache-2.0
// What the files of the statistics interface share: checks, and tasks of the C interface that release
// themselves.
#pragma once

#include <tmk/abi/ss.h>

#include <functional>
#include <memory>
#include <string>
#include <tmk/stats.hpp>

#include "api/call/check.hpp"

namespace tmk::detail {

// Throws for a negative status of the C interface, with its sentence.
void check_status(const char* function, int32_t status);

// x with rows (where `empty` does not allow none) and columns, and not null.
void check_data(const char* function, const data_view& x, bool empty);
void check_weights(const char* function, const weight_view& weights, std::size_t rows, bool counts);
void check_orders(const char* function, std::span<const double> orders);
void check_threads(const char* function, int threads);
void check_policy(const char* function, const char* argument, nan_policy policy);
void check_same_policy(const char* function, const char* argument, nan_policy policy, nan_policy own);
// Under nan_policy::raise: the first NaN, by rows, of an observation that counts.
void refuse_nan(const char* function, const data_view& x, const weight_view& weights, nan_policy policy);

// A cross-product has half the square of them.
constexpr std::size_t most_matrix_cols = 32768;

std::size_t rows_of(const data_view& x);
std::size_t cols_of(const data_view& x);

struct delete_task {
  void operator()(SSTask* task) const { __vtsSSDeleteTask(&task); }
};
using task_handle = std::unique_ptr<SSTask, delete_task>;

// Values that stand variable by variable; counts are read through the pointers at each computation.
task_handle new_task(const char* function, const int32_t* p, const int32_t* n, const double* x,
                     const double* weights);

// Runs item(k) for k from 0 to count - 1 on up to `threads` threads. What the lowest item throws leaves the
// call.
void for_each_item(std::size_t count, int threads, const std::function<void(std::size_t)>& item);

}  // namespace tmk::detail
