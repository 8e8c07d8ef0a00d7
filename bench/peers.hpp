// SPDX-License-Identifier: Apache-2.0
// What a user would otherwise take: vector functions of other libraries, and the plain copy of an array.
#pragma once

#include <cstdint>

namespace tmk::bench {

// The arrays of one call; the element type is float, double or a complex number of them, as the function's
// name says. A function uses those that it has: a and r, b for a second argument, r2 for a second result. A
// scalar exponent is b[0]; masks and indices of gather and scatter are b.
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
#define TMK_DECLARE_PEERS(tier)     \
  peer_list real_peers_##tier();    \
  peer_list complex_peers_##tier(); \
  peer_list gather_peers_##tier();
TMK_DECLARE_PEERS(W7)
TMK_DECLARE_PEERS(V3)
TMK_DECLARE_PEERS(V4)

}  // namespace tmk::bench
