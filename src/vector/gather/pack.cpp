// SPDX-License-Identifier: Apache-2.0
// Gather and scatter: elements move, as bit patterns, between a dense array and a strided, masked or indexed
// one. A walk names pairs of a place in the dense array and a place in the spread one; the direction moves an
// element between them. The flag `narrow` of 1 says that counts, strides and entries are 32 bits wide.
#include <cstdint>

#include "tmk/abi/vtm.h"
#include "vector/gather/moves.hpp"
#include "vector/registry/shapes.h"

TMK_TIER_OPEN
namespace {

// Wide entries, too, are indices of 32 bits.
template <class Integer, class Move>
void at_indices(int64_t n, const void* index, Move move) {
  const Integer count = static_cast<Integer>(n);
  const Integer* places = static_cast<const Integer*>(index);
#pragma GCC unroll 8
  for (Integer i = 0; i < count; ++i) move(i, static_cast<int32_t>(places[i]));
}

}  // namespace
TMK_TIER_CLOSE

#define TMK_DEFINE_walk(letter, stem, shape, walk, how, direction)                                   \
  extern "C" void tmk_vtm_kernel_##letter##stem##_PXHAynn TMK_ROW_KERNEL_PARAMETERS(letter, shape) { \
    const tmk::direction<TMK_TYPE_##letter> move{a, y};                                              \
    narrow == 1 ? tmk::walk<int32_t>(n, how, move) : tmk::walk<int64_t>(n, how, move);               \
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
