// SPDX-License-Identifier: Apache-2.0
// Checks that the files of the statistics API share, and its data as the C interface takes them.
#pragma once

#include <tmk/abi/ss.h>

#include <string>
#include <tmk/scopes.hpp>
#include <tmk/stats.hpp>

#include "api/call/refuse.hpp"
#include "api/call/status.hpp"
#include "api/call/threads.hpp"

namespace tmk::detail {

// A cross-product has half the square of them.
constexpr std::size_t most_matrix_cols = 32768;

std::size_t rows_of(const data_view& x);
std::size_t cols_of(const data_view& x);

// x with rows (where `empty` does not allow none) and columns, and not null.
void check_data(const char* function, const data_view& x, bool empty);
// x as above, where it may be empty, with the columns of an accumulator.
void check_block(const char* function, const data_view& x, std::size_t cols);
// The size alone; the C interface checks the values.
void check_weights(const char* function, const weight_view& weights, std::size_t rows);
void check_orders(const char* function, std::span<const double> orders);
void check_policy(const char* function, const char* argument, nan_policy policy);
void check_same_policy(const char* function, const char* argument, nan_policy policy, nan_policy own);

// Data, weights and threads for one call of the C interface, in the tier that is selected first.
class data_call {
 public:
  data_call(const data_view& x, const weight_view& weights, int threads);

  const TmkSSData* data() const { return &data_; }
  const ThreadingService* threading() const { return call_threads(); }
  // Throws for a negative status of the call, and names the weight or the NaN that was refused.
  void check(const char* function, int32_t status, bool weights_are_counts) const;

 private:
  TmkSSData data_;
  parallel_scope threads_;
};

// Throws for what the C interface refuses to load; `content` is what the bytes should hold.
void check_image(const char* function, const char* content, std::span<const std::byte> bytes, int32_t status);

}  // namespace tmk::detail
