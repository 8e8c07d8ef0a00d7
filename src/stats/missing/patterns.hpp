// SPDX-License-Identifier: Apache-2.0
// Which variables an observation has: a pattern. Observations are sorted by it, since everything that depends
// on the model and the pattern alone is then computed once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tmk::stats::missing {

// A bit per variable, low bit first, in words of 64; set where the variable is observed.
constexpr ptrdiff_t pattern_words(ptrdiff_t variables) { return (variables + 63) / 64; }

struct pattern_list {
  ptrdiff_t words = 0;
  std::vector<uint64_t> bits;    // the words of pattern 0, of pattern 1, ...
  std::vector<ptrdiff_t> first;  // pattern k has order[first[k]] to order[first[k + 1] - 1]
  std::vector<ptrdiff_t> order;  // the observations, ascending within a pattern

  ptrdiff_t count() const { return static_cast<ptrdiff_t>(first.size()) - 1; }
  const uint64_t* operator[](ptrdiff_t k) const { return bits.data() + k * words; }
};

inline bool has_variable(const uint64_t* pattern, ptrdiff_t j) {
  return (pattern[j / 64] >> j % 64 & 1) != 0;
}

// The rows that the variables which the pattern lacks have in a model, 1 and up; returns how many.
ptrdiff_t list_missing(const uint64_t* pattern, ptrdiff_t variables, int32_t* missing);

// Patterns of n observations, given by their words. They are in the order of a Gray code, so that neighbours
// differ in few variables. Throws std::bad_alloc.
pattern_list group_by_pattern(ptrdiff_t n, ptrdiff_t words, const std::vector<uint64_t>& of_observations);

}  // namespace tmk::stats::missing
