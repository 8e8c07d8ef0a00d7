// SPDX-License-Identifier: Apache-2.0
// The statistics task: pointers to the caller's arrays, counts and storage codes, and a few fields that the
// task owns.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tmk/abi/ss.h"

namespace tmk::stats {

using ss_cleanup = void(SSTask* task);

// Central sums of the one-pass method for which the caller has no field: what the next block updates them
// from. They hold for one state alone, that of the accumulator and the weights they were written with.
template <class Real>
struct kept_sums {
  Real* sums;  // those of order 2, then those of order 3
  int64_t variables;
  const Real* accumulator;
  double weight, weight2;
};

// What an SSTask* points to; both precisions have the same layout.
template <class Real>
struct task {
  int32_t wideIntegers;  // integers that pointers point to have 64 bits, not 32
  uint8_t recordKind;    // always 2
  uint8_t unused[3];
  int32_t isDouble;
#define TMK_SS_REAL(name, parameter, null_status) Real* name;
#define TMK_SS_INTEGER(name, parameter, null_status) const void* name;
#define TMK_SS_OWN(type, name) type name;
#include "stats/task_fields.def"
#undef TMK_SS_REAL
#undef TMK_SS_INTEGER
#undef TMK_SS_OWN

  static task& of(SSTask* handle) { return *reinterpret_cast<task*>(handle); }
  SSTask* handle() { return reinterpret_cast<SSTask*>(this); }

  // What an integer pointer of this task points to, in the width that the task gives.
  int64_t integer(const void* place, ptrdiff_t index = 0) const {
    return wideIntegers != 0 ? static_cast<const int64_t*>(place)[index]
                             : static_cast<const int32_t*>(place)[index];
  }
  int64_t p() const { return integer(dimension); }
  int64_t n() const { return integer(observations); }

  // Whether variable j is used. Only the low word of a mask's entry counts.
  bool selects(ptrdiff_t j) const {
    return indices == nullptr || static_cast<const int32_t*>(indices)[wideIntegers != 0 ? 2 * j : j] != 0;
  }
};

// The record's layout is fixed up to the saved means; the fields after them are the library's own.
static_assert(sizeof(void*) != 4 || offsetof(task<double>, savedMeans) == 372);
static_assert(sizeof(task<double>) == sizeof(task<float>));

}  // namespace tmk::stats
