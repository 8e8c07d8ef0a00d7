// SPDX-License-Identifier: Apache-2.0
// Data with holes as the computations read them: rows of a model's width, sorted by pattern, and the place of
// each hole among all of them, by observation and then by variable.
#pragma once

#include <limits>
#include <new>

#include "stats/missing/model.hpp"
#include "stats/missing/patterns.hpp"
#include "stats/missing/rows.hpp"

namespace tmk::stats::missing {

template <class Real>
struct data_rows {
  ptrdiff_t n, p, width;
  pattern_list patterns;
  std::vector<Real> rows;               // in the order of patterns.order
  std::vector<ptrdiff_t> holes_before;  // of observation i; n + 1 counts

  ptrdiff_t holes() const { return holes_before.back(); }
  const Real* row(ptrdiff_t place) const { return rows.data() + place * width; }
  // The observation in that place of the order.
  ptrdiff_t observation(ptrdiff_t place) const { return patterns.order[static_cast<size_t>(place)]; }
};

// value(i, j) is variable j of observation i, is_hole(i, j) says whether it is missing. Throws
// std::bad_alloc.
template <class Real, class IsHole, class Value>
data_rows<Real> sort_rows(ptrdiff_t n, ptrdiff_t p, const IsHole& is_hole, const Value& value) {
  const ptrdiff_t words = pattern_words(p), width = row_width<Real>(p);
  constexpr auto most = std::numeric_limits<ptrdiff_t>::max() / static_cast<ptrdiff_t>(sizeof(Real));
  if (n > most / width || width > most / width) throw std::bad_alloc();
  data_rows<Real> d{n, p, width, {}, {}, std::vector<ptrdiff_t>(static_cast<size_t>(n) + 1)};
  std::vector<uint64_t> bits(static_cast<size_t>(n * words));
  for (ptrdiff_t i = 0; i < n; ++i) {
    ptrdiff_t holes = d.holes_before[static_cast<size_t>(i)];
    for (ptrdiff_t j = 0; j < p; ++j)
      if (is_hole(i, j))
        ++holes;
      else
        bits[static_cast<size_t>(i * words + j / 64)] |= uint64_t{1} << j % 64;
    d.holes_before[static_cast<size_t>(i) + 1] = holes;
  }
  d.patterns = group_by_pattern(n, words, bits);
  d.rows.resize(static_cast<size_t>(n * d.width));
  for (ptrdiff_t place = 0; place < n; ++place) {
    const ptrdiff_t i = d.observation(place);
    Real* const row = d.rows.data() + place * d.width;
    row[0] = 1;
    for (ptrdiff_t j = 0; j < p; ++j)
      if (has_variable(bits.data() + i * words, j)) row[j + 1] = value(i, j);
  }
  return d;
}

}  // namespace tmk::stats::missing
