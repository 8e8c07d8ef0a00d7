// SPDX-License-Identifier: Apache-2.0
// Values taken into a sketch, and sketches into one another.

#include "stats/quantiles/sketch.hpp"

#include <algorithm>
#include <utility>

#include "stats/quantiles/sketch_keys.hpp"
#include "stats/quantiles/sketch_walk.hpp"
#include "tmk/abi/ss.h"

namespace tmk::stats {

namespace {

// Every second value of the merged sequence. Every step stores a value and moves the end of the result by 0
// or 1, so that nothing branches on the data. A last value that is not kept is stored too: the result needs
// room for one more.
template <class Real>
void merge_every_second(const Real* a, int64_t a_count, const Real* b, int64_t b_count, bool keep, Real* r) {
  const Real *const a_end = a + a_count, *const b_end = b + b_count;
  const auto put = [&](Real x) {
    *r = x;
    r += keep;
    keep = !keep;
  };
  while (a != a_end && b != b_end) {
    const key<Real> x = key_of(*a), y = key_of(*b);
    const bool from_b = y < x;
    put(value_of<Real>(std::min(x, y)));
    a += !from_b;
    b += from_b;
  }
  while (a != a_end) put(*a++);
  while (b != b_end) put(*b++);
}

// b into a, which has room for both, from their ends.
template <class Real>
void merge_in_place(Real* a, int64_t a_count, const Real* b, int64_t b_count) {
  for (Real* r = a + a_count + b_count; b_count > 0;) {
    const bool from_a = a_count > 0 && key_of(a[a_count - 1]) > key_of(b[b_count - 1]);
    *--r = from_a ? a[--a_count] : b[--b_count];
  }
}

template <class Real>
void include_extremes(sketch<Real>& s, bool first, Real low, Real high) {
  if (first || key_of(low) < key_of(s.minimum)) s.minimum = low;
  if (first || key_of(high) > key_of(s.maximum)) s.maximum = high;
}

// Moves the values on their walk, in memory that has been reserved.
template <class Real>
struct mover {
  sketch<Real>& s;
  const Real* values;
  ptrdiff_t stride;
  Real *summary = s.levels[0].workspace, *next = summary + s.workspace_half;

  void append(sketch_level<Real>& block, int64_t taken) {
    Real* const to = block.values + block.count;
    if (stride == 1)
      std::copy_n(values, taken, to);
    else
      for (ptrdiff_t i = 0; i < taken; ++i) to[i] = values[i * stride];
    values += taken * stride;
  }
  void sort() { sort_block(s); }
  void thin_block(const sketch_level<Real>& block, bool keeps_first) {
    include_extremes(s, s.count == block.count, block.values[0], block.values[block.count - 1]);
    Real* to = summary;
    for (int32_t i = keeps_first ? 0 : 1; i < block.count; i += 2) *to++ = block.values[i];
  }
  void join(sketch_level<Real>& level, int32_t, int64_t count) {
    merge_in_place(level.values, level.count, summary, count);
  }
  void thin(const sketch_level<Real>& level, int64_t count, bool keeps_first) {
    merge_every_second(level.values, level.count, summary, count, keeps_first, next);
    std::swap(summary, next);
  }
};

template <class Real>
bool only_raw(const sketch<Real>& s) {
  return s.level_count == 0 || s.count == s.levels[0].count;
}

// The levels of `other` join those of s: no value is lost, so the errors add up.
template <class Real>
bool join_levels(sketch<Real>& s, const sketch<Real>& other) {
  for (int32_t h = 1; h < other.level_count; ++h) {
    const sketch_level<Real>& from = other.levels[h];
    if (!reserve_level(s, h, (h < s.level_count ? int64_t{s.levels[h].count} : 0) + from.count)) return false;
    sketch_level<Real>& level = s.levels[h];
    merge_in_place(level.values, level.count, from.values, from.count);
    level.count += from.count;
    level.thinnings += from.thinnings;
  }
  s.levels[0].thinnings += other.levels[0].thinnings;
  include_extremes(s, false, other.minimum, other.maximum);
  s.count += other.count - other.levels[0].count;
  s.counted_over += other.counted_over;
  s.counted_under += other.counted_under;
  s.merged = 1;
  return true;
}

template <class Real>
bool thin_long_levels(sketch<Real>& s, double epsilon) {
  for (int32_t h = 1; h < s.level_count; ++h) {
    const int64_t count = s.levels[h].count;
    if (!thins(s, s.levels[h], count, epsilon)) continue;
    const int64_t above = h + 1 < s.level_count ? s.levels[h + 1].count : 0;
    if (!reserve_workspace(s, count / 2 + 2) || !reserve_level(s, h + 1, above + count / 2 + 1)) return false;
    sketch_level<Real>& level = s.levels[h];
    const bool keeps_first = thinning_keeps_first(s, level);
    Real* const summary = s.levels[0].workspace;
    merge_every_second<Real>(level.values, count, nullptr, 0, keeps_first, summary);
    level.count = 0;
    merge_in_place(s.levels[h + 1].values, above, summary, thinned(count, keeps_first));
    s.levels[h + 1].count += static_cast<int32_t>(thinned(count, keeps_first));
  }
  return true;
}

}  // namespace

template <class Real>
void sort_block(sketch<Real>& s) {
  if (s.sorted != 0 || s.level_count == 0) return;
  if (s.levels[0].count > 1) sort(s.levels[0].values, s.levels[0].workspace, s.levels[0].count);
  s.sorted = 1;
}

template <class Real>
int32_t absorb(sketch<Real>& s, const Real* values, ptrdiff_t stride, int64_t n, double epsilon) {
  if (const int32_t status = reserve(s, n, epsilon); status != 0) return status;
  mover<Real> moves{.s = s, .values = values, .stride = stride};
  walk(s, n, epsilon, moves);
  return 0;
}

template <class Real>
int32_t merge(sketch<Real>& s, const sketch<Real>& other, double epsilon) {
  if (other.count == 0) return 0;
  const sketch_level<Real>& raw = other.levels[0];
  if (!only_raw(other)) {
    if (only_raw(s)) {
      sketch<Real> r;
      if (const int32_t status = copy(other, r); status != 0) return status;
      std::swap(s, r);
      const int32_t status = r.count == 0 ? 0 : absorb(s, r.levels[0].values, 1, r.levels[0].count, epsilon);
      release(r);
      return status;
    }
    if (!join_levels(s, other) || !thin_long_levels(s, epsilon)) return VTS_STATUS_SS_MEMORY;
    s.block = std::max(s.block, block_length(s, epsilon));
  }
  return absorb(s, raw.values, 1, raw.count, epsilon);
}

#define TMK_SKETCH(Real)                                                           \
  template void sort_block(sketch<Real>&);                                         \
  template int32_t absorb(sketch<Real>&, const Real*, ptrdiff_t, int64_t, double); \
  template int32_t merge(sketch<Real>&, const sketch<Real>&, double);
TMK_SKETCH(double)
TMK_SKETCH(float)
#undef TMK_SKETCH

}  // namespace tmk::stats
