// SPDX-License-Identifier: Apache-2.0
// What a user would otherwise take: vector functions of other libraries, and the plain copy of an array.
#pragma once

#include <cstdint>

namespace tmk::bench {

// The arrays of one call; the element type is float or double, as the function's name says. A function uses
// those that it has: a and r, b for a second argument, r2 for a second result. A scalar exponent is b[0].
struct call {
  std::int32_t n;
  const void *a, *b;
  void *r, *r2;
};
using array_function = void (*)(const call&);

struct peer {
  const char* function;  // "sExp"
  const char* name;      // of the library, with its claimed error where it has several forms
  array_function run;
};

struct peer_list {
  const peer* rows;
  int count;
};

// The copy is no peer of a function: it is the least time of those that wait for memory.
inline constexpr const char* copy_name = "copy";

// Peers in the instruction set of a tier, to be run only where the processor has it.
peer_list peers_W7();
peer_list peers_V3();
peer_list peers_V4();

}  // namespace tmk::bench
