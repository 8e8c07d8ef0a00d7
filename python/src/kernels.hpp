// SPDX-License-Identifier: Apache-2.0
// A vector function as the loops of NumPy see it: sizes of its operands, and calls over contiguous elements.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tmk/abi/vtm.h"

namespace tmk::python {

constexpr int most_operands = 8;

// One function at one level. `sizes` are bytes of an element of each operand, arguments first.
struct kernel {
  const VtmDispatchRecord* record;
  int slot;
  int arguments, results;
  int scalars;   // the last so many arguments are single values
  bool swapped;  // the two results are in the other order than NumPy's
  std::uint8_t sizes[most_operands];

  int operands() const { return arguments + results; }
  // n elements of each operand, one after the other; single values are read where their pointers point to.
  void call(std::ptrdiff_t n, char* const* operand) const;
};

// An element without a result of its own: its place in the call, and the status (1 domain, 2 singularity, 3
// overflow, 4 underflow).
struct bad_element {
  std::int64_t index;
  std::int32_t status;
};

// While it lives, calls of this thread list their bad elements here, and do not raise flags.
class collector {
 public:
  collector();
  ~collector();
  collector(const collector&) = delete;
  collector& operator=(const collector&) = delete;

  std::vector<bad_element> found;
};

// How many threads calls of this thread take; returns the number before.
int set_threads(int threads);
int threads();

}  // namespace tmk::python
