// SPDX-License-Identifier: Apache-2.0
// The C entry points of quantile sketches.
#include "stats/pooled/sketch.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "stats/pooled/handles.hpp"

namespace {

using namespace tmk::stats::pooled;
namespace stats = tmk::stats;

// The numbers of rows [first, last) of a column.
template <class Real>
void gather(std::vector<double>& numbers, const values_of<Real>& x, size_t j, size_t first, size_t last) {
  numbers.clear();
  for (size_t i = first; i < last; ++i)
    if (const double value = x(i, j); !std::isnan(value)) numbers.push_back(value);
}

template <class Real>
int64_t count_numbers(const values_of<Real>& x, size_t j, size_t rows) {
  int64_t count = 0;
  for (size_t i = 0; i < rows; ++i) count += !std::isnan(x(i, j));
  return count;
}

int32_t check_block(const TmkSSSketch& s, const TmkSSData* block) {
  if (const int32_t bad = check_shape(block, 0); bad != 0) return bad;
  if (columns_of(*block) != s.variables.size()) return TMK_SS_MISMATCH;
  if (block->weights != nullptr) return TMK_SS_BAD_WEIGHTS;
  return check_nans(*block, s.nan_policy);
}

// All memory is allocated before the first value is added.
template <class Real>
void add(TmkSSSketch& s, const values_of<Real>& x, size_t rows) {
  constexpr size_t length = 8192;
  std::vector<double> numbers;
  numbers.reserve(length);
  const size_t columns = s.variables.size();
  for (size_t j = 0; j < columns; ++j)
    tmk::require(stats::reserve(s.variables[j].values, count_numbers(x, j, rows), s.epsilon));
  for (size_t first = 0; first < rows; first += length)
    for (size_t j = 0; j < columns; ++j) {
      const size_t last = std::min(rows, first + length);
      gather(numbers, x, j, first, last);
      if (numbers.size() != last - first) s.variables[j].has_nan = true;
      tmk::require(stats::absorb(s.variables[j].values, numbers.data(), 1,
                                 static_cast<int64_t>(numbers.size()), s.epsilon));
    }
}

// answer(values) of a variable that exists, and NaN where one was added and propagates.
template <class Answer>
int32_t ask(TmkSSSketch* sketch, int64_t variable, TmkSSRank* result, const Answer& answer) {
  return with_handle(sketch, [&] {
    if (result == nullptr) return int32_t{VTS_STATUS_SS_DATA_NULL};
    if (variable < 0 || static_cast<uint64_t>(variable) >= sketch->variables.size())
      return int32_t{VTS_STATUS_SS_BAD_DIMENSION};
    variable_sketch& v = sketch->variables[static_cast<size_t>(variable)];
    if (v.has_nan && sketch->nan_policy == TMK_SS_NAN_PROPAGATE) {
      *result = {std::numeric_limits<double>::quiet_NaN(), 0, 0, v.values.count};
    } else {
      const stats::sketch_answer<double> a = answer(v.values);
      *result = {a.value, a.lowest, a.highest, v.values.count};
    }
    return 0;
  });
}

}  // namespace

int32_t tmk_ss_pooled_sketch_new(TmkSSSketch** sketch, int64_t columns, double epsilon, int32_t nanPolicy) {
  if (columns < 1 || columns > INT32_MAX) return VTS_STATUS_SS_BAD_DIMENSION;
  if (!is_epsilon(epsilon)) return VTS_STATUS_SS_BAD_EPSILON;
  if (!is_nan_policy(nanPolicy)) return TMK_SS_BAD_OPTIONS;
  return make_handle(sketch, [&] {
    return TmkSSSketch{epsilon, nanPolicy, std::vector<variable_sketch>(static_cast<size_t>(columns))};
  });
}

int32_t tmk_ss_pooled_sketch_copy(TmkSSSketch** copy, const TmkSSSketch* sketch) {
  return copy_handle(copy, sketch);
}

int32_t tmk_ss_pooled_sketch_delete(TmkSSSketch** sketch) { return delete_handle(sketch); }

int32_t tmk_ss_pooled_sketch_add(TmkSSSketch* sketch, const TmkSSData* block) {
  return with_handle(sketch, [&] {
    tmk::require(check_block(*sketch, block));
    visit(*block, [&](const auto& x) { add(*sketch, x, rows_of(*block)); });
    return 0;
  });
}

// Into a copy, which replaces the sketch when all is done.
int32_t tmk_ss_pooled_sketch_merge(TmkSSSketch* sketch, const TmkSSSketch* other) {
  return with_handle(sketch, [&] {
    if (other == nullptr) return int32_t{VTS_STATUS_SS_TASK_NULL};
    if (other->variables.size() != sketch->variables.size() || other->nan_policy != sketch->nan_policy)
      return int32_t{TMK_SS_MISMATCH};
    TmkSSSketch merged = *sketch;
    merged.epsilon = std::max(sketch->epsilon, other->epsilon);
    for (size_t j = 0; j < merged.variables.size(); ++j) {
      variable_sketch& v = merged.variables[j];
      tmk::require(stats::merge(v.values, other->variables[j].values, merged.epsilon));
      v.has_nan |= other->variables[j].has_nan;
    }
    *sketch = std::move(merged);
    return 0;
  });
}

int32_t tmk_ss_pooled_sketch_reset(TmkSSSketch* sketch) {
  return with_handle(sketch, [&] {
    sketch->variables = std::vector<variable_sketch>(sketch->variables.size());
    return 0;
  });
}

int32_t tmk_ss_pooled_sketch_query(const TmkSSSketch* sketch, int64_t* columns, double* epsilon,
                                   int32_t* nanPolicy) {
  return with_handle(sketch, [&] {
    if (columns != nullptr) *columns = static_cast<int64_t>(sketch->variables.size());
    if (epsilon != nullptr) *epsilon = sketch->epsilon;
    if (nanPolicy != nullptr) *nanPolicy = sketch->nan_policy;
    return 0;
  });
}

int32_t tmk_ss_pooled_sketch_quantile(TmkSSSketch* sketch, int64_t variable, double order,
                                      TmkSSRank* answer) {
  if (!(order >= 0 && order <= 1)) return VTS_STATUS_SS_BAD_STREAM_ORDERS;
  return ask(sketch, variable, answer,
             [&](stats::sketch<double>& values) { return stats::answer(values, order); });
}

int32_t tmk_ss_pooled_sketch_rank(TmkSSSketch* sketch, int64_t variable, double value, TmkSSRank* answer) {
  if (std::isnan(value)) return TMK_SS_NAN;
  return ask(sketch, variable, answer,
             [&](stats::sketch<double>& values) { return stats::rank(values, value); });
}
