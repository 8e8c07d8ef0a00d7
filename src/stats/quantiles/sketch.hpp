// SPDX-License-Identifier: Apache-2.0
// A summary of a stream of values, from which ranks are answered to a share epsilon of their count.
//
// Level 0 collects raw values. A full block is sorted and thinned to every second value of twice the weight;
// two summaries of level h merge and thin in the same way into one of level h + 1, like the carry of a binary
// counter. Thinning values of weight w moves the count of values not above any v by 0 or by w, up if the
// first, third, ... values stay, down if the second, fourth, ... do. So the sums of these weights bound the
// error at every moment:
//   counted(v) - counted_over <= #{x <= v} <= counted(v) + counted_under.
// docs/decisions/quantile-sketch.md derives block lengths that keep half their sum within epsilon times the
// count, and how sketches merge within it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tmk::stats {

template <class Real>
struct sketch_level {
  int64_t weight = 1;  // of each value
  int32_t capacity = 0;
  int32_t count = 0;
  int32_t keep_first = 0;     // whether the next thinning of this level's values keeps the first of each two
  Real* values = nullptr;     // in order, except those of level 0
  Real* workspace = nullptr;  // of level 0: for sorting it, and two summaries in halves
  int64_t thinnings = 0;
};
static_assert(sizeof(void*) != 4 ||
              (offsetof(sketch_level<double>, values) == 20 && sizeof(sketch_level<double>) == 36));

// A count of values above 2^53 is out of reach.
constexpr int32_t most_levels = 64;

// Of one variable.
template <class Real>
struct sketch {
  int32_t level_count = 0;
  int32_t stage = -1;  // of the block lengths: they are never shorter than those of this stage
  int32_t enabled = 1;
  sketch_level<Real>* levels = nullptr;
  int32_t variables = 0;  // sketches in the task's array of them
  int32_t sorted = 0;     // whether level 0 is in order
  int32_t merged = 0;     // whether levels may hold more or less than one block's summary
  int64_t block = 0;      // length of the block that level 0 collects
  int64_t count = 0;      // values seen
  int64_t counted_over = 0, counted_under = 0;
  Real minimum = 0, maximum = 0;  // of the blocks that left level 0
  int64_t workspace_half = 0;     // values in a half of the workspace
};

template <class Real>
struct sketch_answer {
  Real value;
  int64_t lowest, highest;  // bounds of the number of values not above it
};

// Room for n more values: absorbing up to so many afterwards, at once or in parts, cannot fail for memory.
// VTS_STATUS_SS_MEMORY leaves the sketch as it was.
template <class Real>
int32_t reserve(sketch<Real>& s, int64_t n, double epsilon);

// Takes in n values that are `stride` apart. VTS_STATUS_SS_MEMORY leaves the sketch as it was.
template <class Real>
int32_t absorb(sketch<Real>& s, const Real* values, ptrdiff_t stride, int64_t n, double epsilon);

// Takes in what `other` has seen; epsilon is the larger of the two. After VTS_STATUS_SS_MEMORY the sketch can
// only be released.
template <class Real>
int32_t merge(sketch<Real>& s, const sketch<Real>& other, double epsilon);

// A value whose rank is off order * count by at most half of counted_over + counted_under; orders 0 and 1
// give the extreme values. NaN when there are no values.
template <class Real>
sketch_answer<Real> answer(sketch<Real>& s, double order);

// Bounds of the number of values not above `value`, -0.0 being one with +0.0.
template <class Real>
sketch_answer<Real> rank(sketch<Real>& s, Real value);

// Level 0 in order.
template <class Real>
void sort_block(sketch<Real>& s);

// Levels 0 to h, with room for `count` values in level h; those it holds stay. False if there is no memory.
template <class Real>
bool reserve_level(sketch<Real>& s, int32_t h, int64_t count);
template <class Real>
bool reserve_workspace(sketch<Real>& s, int64_t half);

// Copies a sketch, with memory for the copy alone, into an empty one. VTS_STATUS_SS_MEMORY leaves that empty.
template <class Real>
int32_t copy(const sketch<Real>& from, sketch<Real>& to);

template <class Real>
void release(sketch<Real>& s);

}  // namespace tmk::stats
