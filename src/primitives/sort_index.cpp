// SPDX-License-Identifier: Apache-2.0
// Radix sorts of positions: the digits' counts come from one reading of the keys, then each pass, from the
// lowest digit up, moves positions between the two index arrays so that the last one ends in the output. Each
// pass keeps the order of equal digits, which makes the whole stable.
#include <algorithm>
#include <cstring>
#include <utility>

#include "primitives/keys.hpp"
#include "tmk/abi/tpp.h"

namespace tmk::primitives {
namespace {

template <bool Descending, class T>
int32_t sort_index(const T* source, int32_t stride, int32_t* index, int32_t* scratch, int32_t length) {
  using order = order<T, Descending>;
  using digits = digits<order::bits>;
  if (source == nullptr || index == nullptr || scratch == nullptr) return TPP_STATUS_NULL_PTR;
  if (length < 1 || stride < static_cast<int32_t>(sizeof(T))) return TPP_STATUS_BAD_SIZE;

  const auto key = [=](int32_t i) {
    typename order::word x;  // a stride need not keep elements aligned
    std::memcpy(&x, reinterpret_cast<const char*>(source) + static_cast<ptrdiff_t>(i) * stride, sizeof x);
    return order::key(x);
  };
  int32_t places[digits::count][digits::size] = {};
  for (int32_t i = 0; i < length; ++i)
    for (int d = 0; d < digits::count; ++d) ++places[d][digits::digit(key(i), d)];
  for (auto& place : places) counts_to_places(place);

  int32_t *from = scratch, *to = index;
  if (digits::count % 2 == 0) std::swap(from, to);
  for (int32_t i = 0; i < length; ++i) to[places[0][digits::digit(key(i), 0)]++] = i;
  for (int d = 1; d < digits::count; ++d) {
    std::swap(from, to);
    for (int32_t i = 0; i < length; ++i) to[places[d][digits::digit(key(from[i]), d)]++] = from[i];
  }
  return TPP_STATUS_OK;
}

}  // namespace
}  // namespace tmk::primitives

#define TMK_SORT_INDEX(tag, type)                                                                        \
  int32_t tmk_dft_t4_tppsSortRadixIndexAscend_##tag(const type* source, int32_t stride, int32_t* index,  \
                                                    int32_t* scratch, int32_t length) {                  \
    return tmk::primitives::sort_index<false>(source, stride, index, scratch, length);                   \
  }                                                                                                      \
  int32_t tmk_dft_t4_tppsSortRadixIndexDescend_##tag(const type* source, int32_t stride, int32_t* index, \
                                                     int32_t* scratch, int32_t length) {                 \
    return tmk::primitives::sort_index<true>(source, stride, index, scratch, length);                    \
  }
TMK_SORT_INDEX(8u, uint8_t)
TMK_SORT_INDEX(16u, uint16_t)
TMK_SORT_INDEX(16s, int16_t)
TMK_SORT_INDEX(32u, uint32_t)
TMK_SORT_INDEX(32s, int32_t)
TMK_SORT_INDEX(32f, float)
#undef TMK_SORT_INDEX
