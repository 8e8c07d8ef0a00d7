// Values taken into a sketch.

#include <algorithm>
#include <cmath>
#include <utility>

#include "stats/quantiles/sketch_keys.hpp"
#include "tmk/abi/serv.h"
#include "tmk/abi/ss.h"

namespace tmk::stats {

namespace {

template <class T>
T* allocate(int64_t count) {
  if (count > PTRDIFF_MAX / static_cast<ptrdiff_t>(sizeof(T))) return nullptr;
  return static_cast<T*>(tmk_serv_allocate(static_cast<size_t>(count) * sizeof(T), 128));
}

constexpr int64_t longest_block = 1 << 30;

// Stage s holds 2^(s + 1) / epsilon values, in blocks of (s + 1) / epsilon.
template <class Real>
void begin_block(sketch<Real>& s, double epsilon) {
  const double inverse = 1 / epsilon;
  const auto end_of_stage = [&] {
    return std::trunc((std::exp2(s.stage + 2) - 1) * inverse) - std::trunc(inverse);
  };
  while (s.stage < 0 || static_cast<double>(s.count) >= end_of_stage()) ++s.stage;
  s.block = static_cast<int64_t>(std::min<double>(std::ceil((s.stage + 1) * inverse), longest_block));
}

template <class Real>
bool ensure_levels(sketch<Real>& s, int32_t count) {
  if (count <= s.level_count) return true;
  auto* levels = allocate<sketch_level<Real>>(count);
  if (levels == nullptr) return false;
  std::copy_n(s.levels, s.level_count, levels);
  for (int32_t h = s.level_count; h < count; ++h) levels[h] = {.weight = int64_t{1} << h};
  tmk_serv_deallocate(s.levels);
  s.levels = levels;
  s.level_count = count;
  return true;
}

template <class Real>
int64_t half_of_workspace(int64_t capacity) {
  return capacity / 2 + 1;
}

// Room for `needed` values of the block; it grows with the data, not to the block's full length at once.
template <class Real>
bool reserve_block(sketch_level<Real>& level, int64_t needed, int64_t block) {
  if (needed <= level.capacity) return true;
  const int64_t capacity = std::clamp<int64_t>(2 * int64_t{level.capacity}, needed, block);
  Real* values = allocate<Real>(capacity);
  Real* workspace = allocate<Real>(2 * half_of_workspace<Real>(capacity));
  if (values == nullptr || workspace == nullptr) {
    tmk_serv_deallocate(values);
    tmk_serv_deallocate(workspace);
    return false;
  }
  std::copy_n(level.values, level.count, values);
  tmk_serv_deallocate(level.values);
  tmk_serv_deallocate(level.workspace);
  level.values = values;
  level.workspace = workspace;
  level.capacity = static_cast<int32_t>(capacity);
  return true;
}

// Room in an empty level.
template <class Real>
bool reserve(sketch_level<Real>& level, int64_t needed) {
  if (needed <= level.capacity) return true;
  Real* values = allocate<Real>(needed);
  if (values == nullptr) return false;
  tmk_serv_deallocate(level.values);
  level.values = values;
  level.capacity = static_cast<int32_t>(needed);
  return true;
}

// Which of two values the next thinning of this level keeps, its error booked.
template <class Real>
bool thinning_keeps_first(sketch<Real>& s, sketch_level<Real>& level) {
  const bool first = level.keep_first != 0;
  (first ? s.counted_over : s.counted_under) += level.weight;
  level.keep_first = first ? 0 : 1;
  ++level.thinnings;
  return first;
}

// Every second value of the merged sequence. Each step stores and moves on by 0 or 1, so that nothing
// branches on the data; one value behind the result may be written.
template <class Real>
int32_t merge_every_second(const Real* a, int32_t a_count, const Real* b, int32_t b_count, bool keep,
                           Real* r) {
  const Real *const a_end = a + a_count, *const b_end = b + b_count;
  Real* const begin = r;
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
  return static_cast<int32_t>(r - begin);
}

// A full block goes up: thinned, then merged with the summary of each level until one is empty. All memory is
// found before anything changes.
template <class Real>
int32_t carry_block(sketch<Real>& s) {
  int32_t top = 1;
  int64_t longest = (s.block + 1) / 2;
  for (; top < s.level_count && s.levels[top].count != 0; ++top)
    longest = std::max<int64_t>(longest, s.levels[top].count);
  if (!ensure_levels(s, std::max(top, s.stage + 3) + 1) || !reserve(s.levels[top], longest + 1))
    return VTS_STATUS_SS_MEMORY;

  sort_block(s);
  sketch_level<Real>& block = s.levels[0];
  const bool first_block = s.count == block.count;
  const Real low = block.values[0], high = block.values[block.count - 1];
  if (first_block || key_of(low) < key_of(s.minimum)) s.minimum = low;
  if (first_block || key_of(high) > key_of(s.maximum)) s.maximum = high;

  Real *summary = block.workspace, *next = summary + half_of_workspace<Real>(block.capacity);
  int32_t count = 0;
  for (int32_t i = thinning_keeps_first(s, block) ? 0 : 1; i < block.count; i += 2)
    summary[count++] = block.values[i];
  block.count = 0;
  for (int32_t h = 1; h < top; ++h) {
    sketch_level<Real>& level = s.levels[h];
    const bool keep_first = thinning_keeps_first(s, level);
    count = merge_every_second(level.values, level.count, summary, count, keep_first, next);
    level.count = 0;
    std::swap(summary, next);
  }
  std::copy_n(summary, count, s.levels[top].values);
  s.levels[top].count = count;
  return 0;
}

template <class Real>
void append(Real* to, const Real* values, ptrdiff_t stride, int64_t n) {
  if (stride == 1)
    std::copy_n(values, n, to);
  else
    for (ptrdiff_t i = 0; i < n; ++i) to[i] = values[i * stride];
}

}  // namespace

template <class Real>
int32_t absorb(sketch<Real>& s, const Real* values, ptrdiff_t stride, int64_t n, double epsilon) {
  if (!ensure_levels(s, 1)) return VTS_STATUS_SS_MEMORY;
  while (n > 0) {
    // After a failure the block may have been left full.
    if (s.levels[0].count == 0) begin_block(s, epsilon);
    if (const int64_t taken = std::min(n, s.block - s.levels[0].count); taken > 0) {
      sketch_level<Real>& block = s.levels[0];
      if (!reserve_block(block, block.count + taken, s.block)) return VTS_STATUS_SS_MEMORY;
      append(block.values + block.count, values, stride, taken);
      block.count += static_cast<int32_t>(taken);
      s.count += taken;
      s.sorted = 0;
      values += taken * stride;
      n -= taken;
    }
    if (s.levels[0].count == s.block)
      if (const int32_t status = carry_block(s)) return status;
  }
  return 0;
}

template <class Real>
void release(sketch<Real>& s) {
  for (int32_t h = 0; h < s.level_count; ++h) {
    tmk_serv_deallocate(s.levels[h].values);
    tmk_serv_deallocate(s.levels[h].workspace);
  }
  tmk_serv_deallocate(s.levels);
}

#define TMK_SKETCH(Real)                                                                             \
  template int32_t absorb(sketch<Real>& s, const Real* values, ptrdiff_t stride, int64_t n, double); \
  template void release(sketch<Real>& s);
TMK_SKETCH(double)
TMK_SKETCH(float)
#undef TMK_SKETCH

}  // namespace tmk::stats
