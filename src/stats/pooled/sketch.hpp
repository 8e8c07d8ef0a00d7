// SPDX-License-Identifier: Apache-2.0
// A quantile sketch of several variables: one for each, since omitted NaNs leave variables with different
// counts.
#pragma once

#include <new>
#include <utility>
#include <vector>

#include "stats/pooled/data.hpp"
#include "stats/quantiles/sketch.hpp"

namespace tmk::stats::pooled {

// Blocks of fewer raw values use up more than half of the error that epsilon allows after the first few of
// them, and leave little for merging.
constexpr int32_t first_stage = 3;

struct variable_sketch {
  sketch<double> values{.stage = first_stage};
  bool has_nan = false;

  variable_sketch() = default;
  variable_sketch(const variable_sketch& other) : has_nan(other.has_nan) {
    if (copy(other.values, values) != 0) throw std::bad_alloc();
  }
  variable_sketch(variable_sketch&& other) noexcept
      : values(std::exchange(other.values, {.stage = first_stage})), has_nan(other.has_nan) {}
  variable_sketch& operator=(variable_sketch other) noexcept {
    std::swap(values, other.values);
    has_nan = other.has_nan;
    return *this;
  }
  ~variable_sketch() { release(values); }
};

constexpr bool is_epsilon(double epsilon) { return epsilon > 0 && epsilon <= 1; }

}  // namespace tmk::stats::pooled

struct TmkSSSketch {
  double epsilon;
  int32_t nan_policy;
  std::vector<tmk::stats::pooled::variable_sketch> variables;
};
