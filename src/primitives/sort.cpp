// SPDX-License-Identifier: Apache-2.0
// Radix sorts in place.
//
// Keys are sorted by two or three digits of the highest bits in which they differ, from the lowest digit up.
// Where these digits do not hold the whole difference, keys with equal digits are adjacent afterwards. Such
// runs are short in data of many values: an insertion sort finishes them, or a further radix sort if they are
// long.
#include "primitives/sort.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "primitives/keys.hpp"
#include "tmk/abi/tpp.h"

namespace tmk::primitives {
namespace {

// Below this the digits' counters cost more than they save.
constexpr int32_t radix_pays = 160;
// From here on digits of 11 bits pay; below it counting them costs more than settling longer runs.
constexpr int32_t wide_digits_pay = 6000;

template <class Order, class Word>
void sort_by_comparison(Word* a, int32_t n) {
  for (int32_t i = 0; i < n; ++i) a[i] = Order::key(a[i]);
  std::sort(a, a + n);
  for (int32_t i = 0; i < n; ++i) a[i] = Order::element(a[i]);
}

// What a first reading finds out about the keys: the bits in which they differ, and whether they are in
// order.
template <class Word>
struct survey {
  Word differing;
  bool sorted;
};

template <class Order, class Word>
survey<Word> survey_of(const Word* a, int32_t n) {
  const Word first = Order::key(a[0]);
  Word differing = 0, last = first;
  uint32_t descents = 0;
  for (int32_t i = 1; i < n; ++i) {
    const Word key = Order::key(a[i]);
    differing |= static_cast<Word>(key ^ first);
    descents |= key < last ? 1u : 0u;
    last = key;
  }
  return {differing, descents == 0};
}

template <class T, bool Descending>
void sort(word_of<sizeof(T)>* a, word_of<sizeof(T)>* scratch, int32_t n);

// Moves keys, which are in order except for their lowest `skip` bits, into their places in `a` as elements.
template <class T, bool Descending, class Word>
void settle_runs(Word* a, Word* scratch, const Word* keys, int32_t n, int skip) {
  using order = order<T, Descending>;
  constexpr int32_t short_run = 24;
  for (int32_t i = 0; i < n;) {
    const Word prefix = keys[i] >> skip;
    int32_t end = i + 1;
    while (end < n && keys[end] >> skip == prefix) ++end;
    if (end - i <= short_run) {
      for (int32_t j = i; j < end; ++j) {
        const Word key = keys[j];
        int32_t place = j;
        for (; place > i && order::key(a[place - 1]) > key; --place) a[place] = a[place - 1];
        a[place] = order::element(key);
      }
    } else {
      for (int32_t j = i; j < end; ++j) a[j] = order::element(keys[j]);
      sort<T, Descending>(a + i, scratch + i, end - i);  // its keys differ below the digits alone
    }
    i = end;
  }
}

// By digits of the highest bits of `differing`, from the lowest up.
template <class T, bool Descending, int Width, class Word>
void sort_by_digits(Word* a, Word* scratch, int32_t n, Word differing) {
  using order = order<T, Descending>;
  constexpr int digits = sizeof(Word) == 2 ? 2 : 3, size = 1 << Width;
  const int skip = std::max(0, static_cast<int>(std::bit_width(differing)) - digits * Width);
  const auto digit = [skip](Word key, int d) {
    return static_cast<uint32_t>(key >> skip >> (d * Width)) & (size - 1);
  };

  int32_t places[digits][size] = {};
  for (int32_t i = 0; i < n; ++i)
    for (int d = 0; d < digits; ++d) ++places[d][digit(order::key(a[i]), d)];

  // The first pass makes keys of elements; a digit that all keys share needs no pass.
  Word *from = a, *to = scratch;
  bool are_keys = false;
  for (int d = 0; d < digits; ++d) {
    if (digit(differing, d) == 0) continue;
    auto& place = places[d];
    counts_to_places(place);
    if (are_keys)
      for (int32_t i = 0; i < n; ++i) to[place[digit(from[i], d)]++] = from[i];
    else
      for (int32_t i = 0; i < n; ++i) {
        const Word key = order::key(from[i]);
        to[place[digit(key, d)]++] = key;
      }
    are_keys = true;
    std::swap(from, to);
  }
  if ((differing & ((Word{1} << skip) - 1)) == 0)
    for (int32_t i = 0; i < n; ++i) a[i] = order::element(from[i]);
  else
    settle_runs<T, Descending>(a, scratch, from, n, skip);
}

template <class T, bool Descending>
void sort(word_of<sizeof(T)>* a, word_of<sizeof(T)>* scratch, int32_t n) {
  using order = order<T, Descending>;
  if (n < radix_pays) return sort_by_comparison<order>(a, n);
  const auto [differing, sorted] = survey_of<order>(a, n);
  if (sorted) return;
  if (sizeof(T) > 2 && n >= wide_digits_pay)
    sort_by_digits<T, Descending, 11>(a, scratch, n, differing);
  else
    sort_by_digits<T, Descending, 8>(a, scratch, n, differing);
}

// Keys of 8 bits are determined by their counts.
template <bool Descending, class T>
void sort_bytes(T* a, int32_t n) {
  using order = order<T, Descending>;
  int32_t counts[256] = {};
  for (int32_t i = 0; i < n; ++i) ++counts[order::key(a[i])];
  for (int key = 0; key < 256; ++key) {
    std::memset(a, order::element(static_cast<uint8_t>(key)), static_cast<size_t>(counts[key]));
    a += counts[key];
  }
}

template <bool Descending, class T>
void sort_any(T* array, T* scratch, int32_t length) {
  using word = word_of<sizeof(T)>;
  if constexpr (sizeof(T) == 1)
    sort_bytes<Descending>(array, length);
  else
    sort<T, Descending>(reinterpret_cast<word*>(array), reinterpret_cast<word*>(scratch), length);
}

template <bool Descending, class T>
int32_t checked_sort(T* array, T* scratch, int32_t length) {
  if (array == nullptr || scratch == nullptr) return TPP_STATUS_NULL_PTR;
  if (length < 1) return TPP_STATUS_BAD_SIZE;
  sort_any<Descending>(array, scratch, length);
  return TPP_STATUS_OK;
}

}  // namespace

template <class T>
void sort_elements(T* a, T* scratch, int32_t n, bool descending) {
  (descending ? sort_any<true, T> : sort_any<false, T>)(a, scratch, n);
}

template void sort_elements(double*, double*, int32_t, bool);
template void sort_elements(float*, float*, int32_t, bool);
template void sort_elements(int32_t*, int32_t*, int32_t, bool);
template void sort_elements(uint32_t*, uint32_t*, int32_t, bool);
template void sort_elements(int64_t*, int64_t*, int32_t, bool);
template void sort_elements(uint64_t*, uint64_t*, int32_t, bool);

}  // namespace tmk::primitives

#define TMK_SORT(tag, type)                                                                       \
  int32_t tmk_dft_t4_tppsSortRadixAscend_##tag##_I(type* array, type* scratch, int32_t length) {  \
    return tmk::primitives::checked_sort<false>(array, scratch, length);                          \
  }                                                                                               \
  int32_t tmk_dft_t4_tppsSortRadixDescend_##tag##_I(type* array, type* scratch, int32_t length) { \
    return tmk::primitives::checked_sort<true>(array, scratch, length);                           \
  }
TMK_SORT(8u, uint8_t)
TMK_SORT(16u, uint16_t)
TMK_SORT(16s, int16_t)
TMK_SORT(32u, uint32_t)
TMK_SORT(32s, int32_t)
TMK_SORT(32f, float)
TMK_SORT(64f, double)
#undef TMK_SORT
