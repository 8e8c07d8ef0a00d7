// SPDX-License-Identifier: Apache-2.0
// The state of every generator as it is in the memory of a stream and in a saved image. Sizes are part of the
// interface; those with pointers depend on the size of a pointer.
#pragma once

#include <cstdint>

namespace tmk::rng {

struct mcg31m1_state {
  uint32_t x, a;  // next element, multiplier
};
struct r250_state {
  uint32_t word[250];
  uint32_t index, lagged;  // positions of x[i - 250] and x[i - 103]
};
struct mrg32k3a_state {
  uint32_t x[3], y[3];  // oldest first
};
struct mcg59_state {
  uint64_t x, a;
};
struct wh_state {
  uint32_t x[4], a[4];
};
// Points of a digital sequence: the present one, of which `component` coordinates are handed out.
template <int Dimensions>
struct digital_sequence {
  uint32_t dimensions, index, component;
  uint32_t selected;  // the one dimension of a leapfrogged stream; UINT32_MAX for all
  uint32_t x[Dimensions];
  uint32_t direction[32][Dimensions];  // by bit of the index, from the lowest
};
struct sobol_state : digital_sequence<40> {
  uint32_t unused[1600];
};
struct niederr_state : digital_sequence<318> {
  uint32_t unused[10570];
};
struct mt19937_state {
  uint32_t mt[624];
  uint32_t index;
};
struct mt2203_state {
  uint32_t mt[69];
  uint32_t index;
  uint32_t matrix_a, temper_b, temper_c;
};
struct abstract_state {
  int32_t count;  // elements in the caller's buffer, which is circular
  int32_t index;  // next element to hand out
  void* buffer;
  void (*callback)();
  int32_t available;  // filled elements from index on
};
struct iabstract_state : abstract_state {};
struct dabstract_state : abstract_state {
  double a, b;  // interval of the buffer's values
};
struct sabstract_state : abstract_state {
  float a, b;
};
struct sfmt19937_state {
  uint32_t sfmt[624];
  uint32_t index;
  uint32_t tail[3];
  int32_t tail_position, tail_end;
};
struct trng_state {
  uint32_t unused[2];
};
struct ars5_state {
  uint32_t counter[4], key[4];
  uint32_t buffer[4];
  uint32_t index;  // next word of buffer; 4 when it is used up
};
struct philox_state {
  uint32_t counter[4], key[2];
  uint32_t buffer[4];
  uint32_t index;
};

}  // namespace tmk::rng
