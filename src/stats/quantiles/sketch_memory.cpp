// SPDX-License-Identifier: Apache-2.0
// A sketch's memory: its levels, its workspace, a copy of both, and what values to come will need.
#include <algorithm>
#include <iterator>

#include "stats/quantiles/sketch_walk.hpp"
#include "tmk/abi/serv.h"
#include "tmk/abi/ss.h"

namespace tmk::stats {

namespace {

template <class T>
T* allocate(int64_t count) {
  if (count > PTRDIFF_MAX / static_cast<ptrdiff_t>(sizeof(T))) return nullptr;
  return static_cast<T*>(tmk_serv_allocate(static_cast<size_t>(count) * sizeof(T), 128));
}

// Notes how long each level and summary becomes on the walk.
struct room {
  int32_t levels = 1;
  int64_t values[most_levels] = {};
  int64_t summary = 0;

  template <class Level>
  void append(const Level& block, int64_t taken) {
    values[0] = std::max(values[0], block.count + taken);
  }
  void sort() {}
  template <class Level>
  void thin_block(const Level&, bool) {}
  template <class Level>
  void join(const Level& level, int32_t h, int64_t count) {
    levels = std::max(levels, h + 1);
    values[h] = std::max(values[h], level.count + count);
  }
  template <class Level>
  void thin(const Level& level, int64_t count, bool) {
    summary = std::max(summary, (level.count + count + 1) / 2);
  }
};

template <class Real>
bool reserve_levels(sketch<Real>& s, int32_t count) {
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

}  // namespace

template <class Real>
bool reserve_level(sketch<Real>& s, int32_t h, int64_t count) {
  if (!reserve_levels(s, h + 1)) return false;
  sketch_level<Real>& level = s.levels[h];
  if (count <= level.capacity) return true;
  if (count > INT32_MAX) return false;
  Real* values = allocate<Real>(count);
  if (values == nullptr) return false;
  std::copy_n(level.values, level.count, values);
  tmk_serv_deallocate(level.values);
  level.values = values;
  level.capacity = static_cast<int32_t>(count);
  return true;
}

template <class Real>
bool reserve_workspace(sketch<Real>& s, int64_t half) {
  if (half <= s.workspace_half) return true;
  if (!reserve_levels(s, 1)) return false;
  Real* workspace = allocate<Real>(2 * half);
  if (workspace == nullptr) return false;
  tmk_serv_deallocate(s.levels[0].workspace);
  s.levels[0].workspace = workspace;
  s.workspace_half = half;
  return true;
}

// The block's memory grows with the data, not to its full length at once.
template <class Real>
int32_t reserve(sketch<Real>& s, int64_t n, double epsilon) {
  sketch_level<Real> levels[most_levels];
  for (int32_t h = 0; h < most_levels; ++h) levels[h].weight = int64_t{1} << std::min(h, 62);
  std::copy_n(s.levels, s.level_count, levels);
  sketch<Real> counts = s;
  counts.levels = levels;
  room needed;
  walk(counts, n, epsilon, needed);

  if (int64_t& block = needed.values[0]; s.level_count == 0 || block > s.levels[0].capacity) {
    const int64_t doubled = s.level_count == 0 ? 0 : 2 * int64_t{s.levels[0].capacity};
    block = std::clamp(doubled, block, std::max(block, counts.block));
  }
  // One value more than the result: merging may store one that it does not keep.
  const int64_t half = std::max(needed.values[0] / 2, needed.summary) + 1;
  bool found = reserve_workspace(s, half);
  for (int32_t h = 0; found && h < needed.levels; ++h) found = reserve_level(s, h, needed.values[h]);
  return found ? 0 : VTS_STATUS_SS_MEMORY;
}

template <class Real>
int32_t copy(const sketch<Real>& from, sketch<Real>& to) {
  to = from;
  to.level_count = 0;
  to.levels = nullptr;
  to.workspace_half = 0;
  bool found = from.level_count == 0 || reserve_workspace(to, from.levels[0].count / 2 + 1);
  for (int32_t h = 0; found && h < from.level_count; ++h) {
    const sketch_level<Real>& level = from.levels[h];
    found = reserve_level(to, h, level.count);
    if (!found) break;
    std::copy_n(level.values, level.count, to.levels[h].values);
    to.levels[h].count = level.count;
    to.levels[h].keep_first = level.keep_first;
    to.levels[h].thinnings = level.thinnings;
  }
  if (found) return 0;
  release(to);
  return VTS_STATUS_SS_MEMORY;
}

template <class Real>
void release(sketch<Real>& s) {
  for (int32_t h = 0; h < s.level_count; ++h) {
    tmk_serv_deallocate(s.levels[h].values);
    tmk_serv_deallocate(s.levels[h].workspace);
  }
  tmk_serv_deallocate(s.levels);
  s = {};
}

#define TMK_SKETCH(Real)                                        \
  template bool reserve_level(sketch<Real>&, int32_t, int64_t); \
  template bool reserve_workspace(sketch<Real>&, int64_t);      \
  template int32_t reserve(sketch<Real>&, int64_t, double);     \
  template int32_t copy(const sketch<Real>&, sketch<Real>&);    \
  template void release(sketch<Real>& s);
TMK_SKETCH(double)
TMK_SKETCH(float)
#undef TMK_SKETCH

}  // namespace tmk::stats
