// SPDX-License-Identifier: Apache-2.0
// The state of a quantile_sketch: a sketch of its own for each variable, since omitted NaNs leave variables
// with counts of their own.
#pragma once

#include <new>
#include <utility>

#include "api/stats/checks.hpp"
#include "stats/quantiles/sketch.hpp"

namespace tmk {

namespace detail {

// Blocks of fewer raw values have spent more than half of what epsilon allows after the first few of them,
// and leave little to merge with.
constexpr int32_t first_stage = 3;

struct variable_sketch {
  stats::sketch<double> values{.stage = first_stage};
  bool has_nan = false;

  variable_sketch() = default;
  variable_sketch(const variable_sketch& other) : has_nan(other.has_nan) {
    if (stats::copy(other.values, values) != 0) throw std::bad_alloc();
  }
  variable_sketch(variable_sketch&& other) noexcept
      : values(std::exchange(other.values, {.stage = first_stage})), has_nan(other.has_nan) {}
  variable_sketch& operator=(variable_sketch other) noexcept {
    std::swap(values, other.values);
    has_nan = other.has_nan;
    return *this;
  }
  ~variable_sketch() { stats::release(values); }
};

}  // namespace detail

struct quantile_sketch::state {
  double epsilon;
  nan_policy nan;
  std::vector<detail::variable_sketch> variables;
};

}  // namespace tmk
