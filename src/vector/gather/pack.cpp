// SPDX-License-Identifier: Apache-2.0
// Gather and scatter: elements move, as bit patterns, between a dense array and a strided, masked or indexed
// one. A walk names pairs of a place in the dense array and a place in the spread one; the direction moves an
// element between them. The flag `narrow` of 1 says that counts, strides and entries are 32 bits wide.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "tmk/abi/vtm.h"
#include "vector/registry/shapes.h"

namespace {

// Never through a floating-point register that could quieten a signalling NaN.
template <class Element>
void move_bits(const Element* from, Element* to) {
  unsigned char bits[sizeof(Element)];
  std::memcpy(bits, from, sizeof bits);
  std::memcpy(to, bits, sizeof bits);
}

template <class Element>
void move_all(const Element* from, Element* to, int64_t count) {
  if (count > 0) std::memmove(to, from, static_cast<size_t>(count) * sizeof(Element));
}

template <class Element>
struct gather {
  const Element* spread;
  Element* dense;
  void operator()(int64_t i, int64_t place) const { move_bits(spread + place, dense + i); }
  void all(int64_t count) const { move_all(spread, dense, count); }
};

template <class Element>
struct scatter {
  const Element* dense;
  Element* spread;
  void operator()(int64_t i, int64_t place) const { move_bits(dense + i, spread + place); }
  void all(int64_t count) const { move_all(dense, spread, count); }
};

template <class Integer, class Move>
void along_stride(int64_t n, int64_t inc, Move move) {
  const Integer count = static_cast<Integer>(n), stride = static_cast<Integer>(inc);
  if (stride == 1) return move.all(count);
#pragma GCC unroll 8
  for (Integer i = 0; i < count; ++i) move(i, int64_t{i} * stride);
}

// The places of a block first, without a branch that a random mask would mislead; then the moves, which touch
// no other element.
template <class Integer, class Move>
void where_set(int64_t n, const void* mask, Move move) {
  constexpr Integer block = 256;
  const Integer count = static_cast<Integer>(n);
  const Integer* set = static_cast<const Integer*>(mask);
  int64_t dense = 0;
  for (Integer i = 0; i < count; i += block) {
    const Integer end = std::min(block, count - i);
    uint16_t places[block];
    uint32_t found = 0;
#pragma GCC unroll 4
    for (Integer k = 0; k < end; ++k) {
      places[found] = static_cast<uint16_t>(k);
      found += set[i + k] != 0;
    }
#pragma GCC unroll 4
    for (uint32_t k = 0; k < found; ++k) move(dense + k, int64_t{i} + places[k]);
    dense += found;
  }
}

// Wide entries, too, are indices of 32 bits.
template <class Integer, class Move>
void at_indices(int64_t n, const void* index, Move move) {
  const Integer count = static_cast<Integer>(n);
  const Integer* places = static_cast<const Integer*>(index);
#pragma GCC unroll 8
  for (Integer i = 0; i < count; ++i) move(i, static_cast<int32_t>(places[i]));
}

}  // namespace

#define TMK_DEFINE_walk(letter, stem, shape, walk, how, direction)                                   \
  extern "C" void tmk_vtm_kernel_##letter##stem##_PXHAynn TMK_ROW_KERNEL_PARAMETERS(letter, shape) { \
    const direction<TMK_TYPE_##letter> move{a, y};                                                   \
    narrow == 1 ? walk<int32_t>(n, how, move) : walk<int64_t>(n, how, move);                         \
  }

#define TMK_DEFINE_pack_stride(letter, stem) \
  TMK_DEFINE_walk(letter, stem, pack_stride, along_stride, inc, gather)
#define TMK_DEFINE_pack_mask(letter, stem) TMK_DEFINE_walk(letter, stem, pack_mask, where_set, mask, gather)
#define TMK_DEFINE_pack_index(letter, stem) \
  TMK_DEFINE_walk(letter, stem, pack_index, at_indices, index, gather)
#define TMK_DEFINE_unpack_stride(letter, stem) \
  TMK_DEFINE_walk(letter, stem, unpack_stride, along_stride, inc, scatter)
#define TMK_DEFINE_unpack_mask(letter, stem) \
  TMK_DEFINE_walk(letter, stem, unpack_mask, where_set, mask, scatter)
#define TMK_DEFINE_unpack_index(letter, stem) \
  TMK_DEFINE_walk(letter, stem, unpack_index, at_indices, index, scatter)

#define TMK_DEFINE_unary(letter, stem)
#define TMK_DEFINE_binary TMK_DEFINE_unary
#define TMK_DEFINE_scalar_exponent TMK_DEFINE_unary
#define TMK_DEFINE_two_results TMK_DEFINE_unary
#define TMK_DEFINE_linear_fraction TMK_DEFINE_unary
#define TMK_DEFINE_real_result TMK_DEFINE_unary
#define TMK_DEFINE_real_argument TMK_DEFINE_unary

#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) TMK_DEFINE_##shape(letter, stem)
#include "vector/registry/functions.def"
