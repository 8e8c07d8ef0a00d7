// SPDX-License-Identifier: Apache-2.0
// How values move through a sketch: when blocks are full, what is thinned and what is kept. The same walk
// runs over the counts alone, which gives the memory that it will need, and over the values.
#pragma once

#include <algorithm>
#include <cmath>

#include "stats/quantiles/sketch.hpp"

namespace tmk::stats {

// No level and no block grows beyond it, whatever the error.
constexpr int64_t longest_block = 1 << 30;

// Stage s holds 2^(s + 1) / epsilon values, in blocks of (s + 1) / epsilon.
template <class Real>
int64_t block_length(sketch<Real>& s, double epsilon) {
  const double inverse = 1 / epsilon;
  const auto end_of_stage = [&] {
    return std::trunc((std::exp2(s.stage + 2) - 1) * inverse) - std::trunc(inverse);
  };
  while (s.stage < 0 || static_cast<double>(s.count) >= end_of_stage()) ++s.stage;
  return static_cast<int64_t>(std::min<double>(std::ceil((s.stage + 1) * inverse), longest_block));
}

// Whether thinning values of this weight keeps the error within epsilon times the count. Of a stream that was
// never merged it always does.
template <class Real>
bool affords(const sketch<Real>& s, int64_t weight, double epsilon) {
  return static_cast<double>(s.counted_over + s.counted_under + weight) <=
         2 * epsilon * static_cast<double>(s.count);
}

// Whether a level of so many values is to be thinned. After a merge only long levels are: each thinning costs
// its weight, however many values it takes.
template <class Real>
bool thins(sketch<Real>& s, const sketch_level<Real>& level, int64_t count, double epsilon) {
  if (s.merged == 0 || count >= longest_block) return true;
  return count >= 2 * block_length(s, epsilon) && affords(s, level.weight, epsilon);
}

// Which of two values the next thinning of this level keeps; adds its error to the bounds.
template <class Real>
bool thinning_keeps_first(sketch<Real>& s, sketch_level<Real>& level) {
  const bool first = level.keep_first != 0;
  (first ? s.counted_over : s.counted_under) += level.weight;
  level.keep_first = first ? 0 : 1;
  ++level.thinnings;
  return first;
}

constexpr int64_t thinned(int64_t count, bool keeps_first) { return (count + (keeps_first ? 1 : 0)) / 2; }

// A summary of `count` values goes up from level h: it joins the values of a level, or is merged with them
// and thinned.
template <class Real, class Moves>
void carry(sketch<Real>& s, int32_t h, int64_t count, double epsilon, Moves& moves) {
  for (;; ++h) {
    sketch_level<Real>& level = s.levels[h];
    const int64_t total = level.count + count;
    if (level.count == 0 || !thins(s, level, total, epsilon)) {
      moves.join(level, h, count);
      level.count = static_cast<int32_t>(total);
      return;
    }
    const bool keeps_first = thinning_keeps_first(s, level);
    moves.thin(level, count, keeps_first);
    level.count = 0;
    count = thinned(total, keeps_first);
  }
}

template <class Real, class Moves>
void walk(sketch<Real>& s, int64_t n, double epsilon, Moves& moves) {
  while (n > 0) {
    sketch_level<Real>& block = s.levels[0];
    if (block.count == 0) s.block = block_length(s, epsilon);
    const int64_t taken = std::min(n, s.block - block.count);
    moves.append(block, taken);
    block.count += static_cast<int32_t>(taken);
    s.count += taken;
    s.sorted = 0;
    n -= taken;
    if (block.count < s.block) return;
    if (s.merged != 0 && s.block < longest_block && !affords(s, 1, epsilon)) {
      s.block = std::min(2 * s.block, longest_block);
      continue;
    }
    moves.sort();
    const bool keeps_first = thinning_keeps_first(s, block);
    moves.thin_block(block, keeps_first);
    const int64_t count = thinned(block.count, keeps_first);
    block.count = 0;
    carry(s, 1, count, epsilon, moves);
  }
}

}  // namespace tmk::stats
