// SPDX-License-Identifier: Apache-2.0
// Equal patterns are found by a hash table with open addressing, sorted, and their observations counted out.
#include "stats/missing/patterns.hpp"

#include <algorithm>
#include <bit>
#include <numeric>

namespace tmk::stats::missing {
namespace {

// The finaliser of splitmix64 (S. Vigna), chained over the words.
uint64_t hash(const uint64_t* pattern, ptrdiff_t words) {
  uint64_t h = 0;
  for (ptrdiff_t w = 0; w < words; ++w) {
    h = (h + 0x9e3779b97f4a7c15) ^ pattern[w];
    h = (h ^ h >> 30) * 0xbf58476d1ce4e5b9;
    h = (h ^ h >> 27) * 0x94d049bb133111eb;
    h ^= h >> 31;
  }
  return h;
}

// Numbers distinct patterns in the order of their first observation, which `leaders` receives.
std::vector<ptrdiff_t> number_patterns(ptrdiff_t n, ptrdiff_t words, const uint64_t* bits,
                                       std::vector<ptrdiff_t>& leaders) {
  constexpr ptrdiff_t vacant = -1;
  std::vector<ptrdiff_t> number(static_cast<size_t>(n));
  std::vector<ptrdiff_t> table(std::bit_ceil(2 * static_cast<size_t>(n) + 1), vacant);
  const size_t mask = table.size() - 1;
  for (ptrdiff_t i = 0; i < n; ++i) {
    const uint64_t* const pattern = bits + i * words;
    size_t slot = static_cast<size_t>(hash(pattern, words)) & mask;
    const auto differs = [&](ptrdiff_t k) {
      return !std::equal(pattern, pattern + words, bits + leaders[static_cast<size_t>(k)] * words);
    };
    while (table[slot] != vacant && differs(table[slot])) slot = (slot + 1) & mask;
    if (table[slot] == vacant) {
      table[slot] = static_cast<ptrdiff_t>(leaders.size());
      leaders.push_back(i);
    }
    number[static_cast<size_t>(i)] = table[slot];
  }
  return number;
}

// The place of a pattern in the binary reflected Gray code: each bit is the parity of itself and all bits
// above it. The highest word comes first, so that places compare lexicographically.
void gray_place(const uint64_t* pattern, ptrdiff_t words, uint64_t* place) {
  uint64_t above = 0;  // all ones where the bits above have odd parity
  for (ptrdiff_t w = words - 1; w >= 0; --w) {
    uint64_t x = pattern[w];
    for (const int shift : {1, 2, 4, 8, 16, 32}) x ^= x >> shift;
    x ^= above;
    above = (x & 1) != 0 ? ~uint64_t{0} : 0;
    *place++ = x;
  }
}

}  // namespace

ptrdiff_t list_missing(const uint64_t* pattern, ptrdiff_t variables, int32_t* missing) {
  ptrdiff_t count = 0;
  for (ptrdiff_t first = 0; first < variables; first += 64) {
    const ptrdiff_t here = std::min<ptrdiff_t>(variables - first, 64);
    uint64_t holes = ~pattern[first / 64] & (~uint64_t{0} >> (64 - here));
    for (; holes != 0; holes &= holes - 1)
      missing[count++] = static_cast<int32_t>(first + std::countr_zero(holes) + 1);
  }
  return count;
}

pattern_list group_by_pattern(ptrdiff_t n, ptrdiff_t words, const std::vector<uint64_t>& of_observations) {
  const uint64_t* const bits = of_observations.data();
  std::vector<ptrdiff_t> leaders;
  const std::vector<ptrdiff_t> number = number_patterns(n, words, bits, leaders);
  const size_t count = leaders.size();

  std::vector<uint64_t> places(count * static_cast<size_t>(words));
  const auto place = [&](ptrdiff_t k) { return places.data() + k * words; };
  for (size_t k = 0; k < count; ++k)
    gray_place(bits + leaders[k] * words, words, place(static_cast<ptrdiff_t>(k)));
  std::vector<ptrdiff_t> sorted(count);
  std::iota(sorted.begin(), sorted.end(), 0);
  std::sort(sorted.begin(), sorted.end(), [&](ptrdiff_t a, ptrdiff_t b) {
    return std::lexicographical_compare(place(a), place(a) + words, place(b), place(b) + words);
  });

  pattern_list list;
  list.words = words;
  list.bits.reserve(places.size());
  list.first.resize(count + 1);
  list.order.resize(static_cast<size_t>(n));
  std::vector<ptrdiff_t> rank(count);
  for (size_t k = 0; k < count; ++k) {
    const uint64_t* const pattern = bits + leaders[static_cast<size_t>(sorted[k])] * words;
    list.bits.insert(list.bits.end(), pattern, pattern + words);
    rank[static_cast<size_t>(sorted[k])] = static_cast<ptrdiff_t>(k);
  }
  const auto rank_of = [&](size_t i) { return static_cast<size_t>(rank[static_cast<size_t>(number[i])]); };
  for (size_t i = 0; i < number.size(); ++i) ++list.first[rank_of(i) + 1];
  std::partial_sum(list.first.begin(), list.first.end(), list.first.begin());
  std::vector<ptrdiff_t> next(list.first.begin(), list.first.end() - 1);
  for (size_t i = 0; i < number.size(); ++i)
    list.order[static_cast<size_t>(next[rank_of(i)]++)] = static_cast<ptrdiff_t>(i);
  return list;
}

}  // namespace tmk::stats::missing
