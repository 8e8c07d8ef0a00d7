// SPDX-License-Identifier: Apache-2.0
// Gather and scatter by a mask, a register of elements at a time.
#include <bit>
#include <cstdint>
#include <cstring>

#include "simd/compaction.hpp"
#include "tmk/abi/vtm.h"
#include "vector/gather/moves.hpp"
#include "vector/registry/shapes.h"

TMK_TIER_OPEN
namespace {

template <class Integer>
uint32_t nonzero_of(const Integer* mask, int64_t count) {
  uint32_t set = 0;
  for (int64_t k = 0; k < count; ++k) set |= (mask[k] != 0 ? 1u : 0u) << k;
  return set;
}

// Fewer elements to a register take longer than one by one.
template <class Element>
constexpr bool by_registers = compaction_bytes / sizeof(Element) >= 4;

// whole(set, i) for each register of elements, one(i) for each chosen element of the rest.
template <class Element, class Integer, class Whole, class One>
void for_each_set(int64_t n, const Integer* mask, Whole whole, One one) {
  constexpr int width = compaction_bytes / sizeof(Element);
  int64_t i = 0;
  for (; n - i >= width; i += width) {
    if constexpr (sizeof(Integer) == 4)
      whole(nonzero<width>(mask + i), i);
    else
      whole(nonzero_of(mask + i, width), i);
  }
  if (i >= n) return;
  for (uint32_t set = nonzero_of(mask + i, n - i); set != 0; set &= set - 1) one(i + std::countr_zero(set));
}

template <class Element, class Integer>
void pack_where_set(int64_t n, const Element* a, const void* mask, Element* y) {
  if constexpr (!by_registers<Element>)
    where_set<Integer>(n, mask, gather<Element>{a, y});
  else
    for_each_set<Element>(
        static_cast<Integer>(n), static_cast<const Integer*>(mask),
        [&](uint32_t set, int64_t i) {
          pack_set<sizeof(Element)>(a + i, set, y);
          y += std::popcount(set);
        },
        [&](int64_t i) { std::memcpy(y++, a + i, sizeof(Element)); });
}

template <class Element, class Integer>
void unpack_where_set(int64_t n, const Element* a, Element* y, const void* mask) {
  if constexpr (!by_registers<Element>)
    where_set<Integer>(n, mask, scatter<Element>{a, y});
  else
    for_each_set<Element>(
        static_cast<Integer>(n), static_cast<const Integer*>(mask),
        [&](uint32_t set, int64_t i) {
          unpack_set<sizeof(Element)>(a, set, y + i);
          a += std::popcount(set);
        },
        [&](int64_t i) { std::memcpy(y + i, a++, sizeof(Element)); });
}

}  // namespace
TMK_TIER_CLOSE

#define TMK_NAME_(letter, stem, tier) tmk_vtm_kernel_##letter##stem##_##tier##HAynn
#define TMK_NAME(letter, stem, tier) TMK_NAME_(letter, stem, tier)
#define TMK_DEFINE(letter, stem, shape, how, ...)                                             \
  extern "C" void TMK_NAME(letter, stem, TMK_TIER) TMK_ROW_KERNEL_PARAMETERS(letter, shape) { \
    narrow == 1 ? tmk::how<TMK_TYPE_##letter, int32_t>(n, __VA_ARGS__)                        \
                : tmk::how<TMK_TYPE_##letter, int64_t>(n, __VA_ARGS__);                       \
  }
#define TMK_DEFINE_BOTH(letter)                                    \
  TMK_DEFINE(letter, PackM, pack_mask, pack_where_set, a, mask, y) \
  TMK_DEFINE(letter, UnpackM, unpack_mask, unpack_where_set, a, y, mask)
TMK_DEFINE_BOTH(s)
TMK_DEFINE_BOTH(d)
TMK_DEFINE_BOTH(c)
TMK_DEFINE_BOTH(z)
