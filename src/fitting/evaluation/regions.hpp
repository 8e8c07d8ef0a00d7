// SPDX-License-Identifier: Apache-2.0
// The partition and what lies on both sides of it, each with a hook or none.
#pragma once

#include <cstdint>

namespace tmk::fitting {

enum region { left_of_partition, within_partition, right_of_partition };
constexpr int regions = 3;

inline region region_of(int64_t cell, int64_t nx) {
  return cell <= 0 ? left_of_partition : cell >= nx ? right_of_partition : within_partition;
}

template <class Function>
struct hook_of_region {
  Function function;
  void* parameter;
};

}  // namespace tmk::fitting
