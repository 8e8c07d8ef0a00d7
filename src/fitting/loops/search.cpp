// Cells of blocks of sites. Sites are taken a few registers at a time; what a register cannot decide is
// walked to by one site.
#include <algorithm>

#include "fitting/search/loops.hpp"
#include "fitting/search/walk.hpp"
#include "platform/simd_integer.hpp"

namespace tmk::fitting {
inline namespace TMK_TIER {
namespace {

// A group of sites: registers enough to hide the latency of one.
constexpr int registers = 4;
template <class Real>
constexpr int group = registers* lanes<Real>;

template <class Real>
bool every(const lane_mask<Real>& m) {
  return xsimd::all(m);
}

void fill(int32_t* cells, int count, int32_t cell) {
  for (int i = 0; i < count; i += lanes<int32_t>) store(cells + i, i32(cell));
}

// trunc((t - first) * rate) + 1, from 0 for sites below the first to nx, and nx - 1 for the last.
template <class Real>
void proportional_cells(ptrdiff_t nx, Real first, Real last, Real rate, ptrdiff_t n, const Real* sites,
                        int32_t* cells) {
  using real = batch<Real>;
  constexpr int width = lanes<Real>;
  // Products of any size and NaNs come into the range of integers first.
  const real limit(std::min(static_cast<Real>(nx), static_cast<Real>(0x7FFFFF80)));
  const auto proportional = [&](const real& t, int32_t* to) {
    const real position = xsimd::max(xsimd::min((t - first) * rate, limit), real(0));
    const auto below = t < real(first), at_end = t == real(last);
    if constexpr (sizeof(Real) == 4) {
      // A single does not hold every cell.
      const i32 cell = xsimd::min(xsimd::to_int(position) + i32(1), i32(static_cast<int32_t>(nx)));
      store(to, xsimd::select(mask_as<int32_t>(at_end), i32(static_cast<int32_t>(nx - 1)),
                              xsimd::select(mask_as<int32_t>(below), i32(0), cell)));
    } else {
      const real inside = xsimd::select(below, real(-1), xsimd::min(position, real(nx - 1)));
      store_truncated(to, xsimd::select(at_end, real(nx - 2), inside), 1);
    }
  };
  ptrdiff_t i = 0;
  for (; n - i >= width; i += width) proportional(load(sites + i), cells + i);
  if (i == n) return;
  int32_t rest[width];
  proportional(load_partial(sites + i, static_cast<int>(n - i), first), rest);
  for (int k = 0; k < n - i; ++k) cells[i + k] = rest[k];
}

template <class Real>
void uniform(ptrdiff_t nx, const Real* x, ptrdiff_t n, const Real* sites, search_state<Real>* state,
             int32_t* cells) {
  proportional_cells(nx, x[0], x[1], state->rate, n, sites, cells);
}

template <class Real>
void quasi_uniform(ptrdiff_t nx, const Real* x, ptrdiff_t n, const Real* sites, search_state<Real>* state,
                   int32_t* cells) {
  proportional_cells(nx, x[0], x[nx - 1], state->rate, n, sites, cells);
  for (ptrdiff_t i = 0; i < n; ++i) {
    // One step either way without a branch: which one is needed is a matter of chance.
    const Real t = sites[i];
    ptrdiff_t cell = cells[i];
    cell += x[std::min(cell, nx - 1)] <= t ? 1 : 0;
    cell = std::min(cell, nx);
    cell -= x[std::max<ptrdiff_t>(cell, 1) - 1] > t ? 1 : 0;
    cell = std::max<ptrdiff_t>(cell, 0);
    const bool found = !(x[std::min(cell, nx - 1)] <= t) && !(x[std::max<ptrdiff_t>(cell, 1) - 1] > t);
    if (!found) cell = walk(x, nx, cell, t);
    cells[i] = static_cast<int32_t>(t == x[nx - 1] ? nx - 1 : cell);
  }
}

// Merges sites and points. A group between two points is one comparison; within reach of the running cell
// each point counts for the sites of a group at or above it; sparse sites walk.
template <class Real>
void sorted(ptrdiff_t nx, const Real* x, ptrdiff_t n, const Real* sites, search_state<Real>* state,
            int32_t* cells) {
  using real = batch<Real>;
  constexpr int count = group<Real>, reach = 2 * count;
  const Real last = x[nx - 1];
  ptrdiff_t cell = state->cell, i = 0;
  const auto walk_to = [&](ptrdiff_t end) {
    for (; i < end; ++i) {
      cell = sites[i] == last ? nx - 1 : walk_up(x, cell, nx, sites[i]);
      cells[i] = static_cast<int32_t>(cell);
    }
  };
  while (n - i >= count) {
    const Real t_end = sites[i + count - 1];
    if (cell < nx && t_end < x[cell]) {
      fill(cells + i, count, static_cast<int32_t>(cell));
      i += count;
      continue;
    }
    // Also where the end of the group is a NaN.
    if (!(t_end < last)) {
      walk_to(i + count);
      continue;
    }
    cell = walk_up(x, cell, nx, sites[i]);
    if (cell + reach < nx && x[cell + reach] <= t_end) {
      walk_to(i + count);
      continue;
    }
    real t[registers], passed[registers];
    for (int r = 0; r < registers; ++r) t[r] = load(sites + i + r * lanes<Real>), passed[r] = real(0);
    const auto base = static_cast<int32_t>(cell);
    for (; x[cell] <= t_end; ++cell)
      for (int r = 0; r < registers; ++r) passed[r] += xsimd::select(real(x[cell]) <= t[r], real(1), real(0));
    for (int r = 0; r < registers; ++r) store_truncated(cells + i + r * lanes<Real>, passed[r], base);
    i += count;
  }
  walk_to(n);
  state->cell = static_cast<int32_t>(cell);
}

template <class Real>
void peak(ptrdiff_t nx, const Real* x, ptrdiff_t n, const Real* sites, search_state<Real>* state,
          int32_t* cells) {
  using real = batch<Real>;
  const ptrdiff_t start = state->peak;
  const auto walk_to = [&](ptrdiff_t from, ptrdiff_t to) {
    for (ptrdiff_t k = from; k < to; ++k) cells[k] = static_cast<int32_t>(walk(x, nx, start, sites[k]));
  };
  if (start == 0 || start == nx) return walk_to(0, n);
  const real low(x[start - 1]), high(x[start]);
  ptrdiff_t i = 0;
  for (; n - i >= group<Real>; i += group<Real>) {
    auto inside = lane_mask<Real>(true);
    for (int r = 0; r < registers; ++r) {
      const real t = load(sites + i + r * lanes<Real>);
      inside = inside & (low <= t) & (t < high);
    }
    if (every<Real>(inside))
      fill(cells + i, group<Real>, static_cast<int32_t>(start));
    else
      walk_to(i, i + group<Real>);
  }
  walk_to(i, n);
}

// Brackets by the bucket index, then bisections side by side without branches: the widest bracket of a group
// serves all its sites, moved down where it would reach beyond the last point. In a bracket of `width` + 1
// candidates a probe at half its width leaves width / 2 + 1 on either side.
template <class Real>
void hybrid(ptrdiff_t nx, const Real* x, ptrdiff_t n, const Real* sites, search_state<Real>* state,
            int32_t* cells) {
  using real = batch<Real>;
  constexpr int count = std::max(8, lanes<Real>);

  const Real first = x[0], last = x[nx - 1];
  const bucket whole = {0, static_cast<uint32_t>(nx - 1)};
  const bucket* buckets = state->nbuckets > 0 ? state->buckets : &whole;
  const real top(static_cast<Real>(state->nbuckets));
  for (ptrdiff_t i = 0; i < n; i += count) {
    const int used = static_cast<int>(std::min<ptrdiff_t>(n - i, count));
    Real t[count];
    for (int k = 0; k < count; ++k) t[k] = sites[i + std::min(k, used - 1)];
    int32_t index[count];
    for (int k = 0; k < count; k += lanes<Real>)
      store_truncated(index + k,
                      xsimd::max(xsimd::min((load(t + k) - first) * state->bucket_scale, top), real(0)), 0);
    ptrdiff_t cell[count], width = 0;
    for (int k = 0; k < count; ++k) {
      const bucket b = buckets[index[k]];
      cell[k] = b.lo;
      width = std::max(width, static_cast<ptrdiff_t>(b.hi) - static_cast<ptrdiff_t>(b.lo));
    }
    for (int k = 0; k < count; ++k) cell[k] = std::min(cell[k], nx - 1 - width);
    for (; width > 0; width /= 2) {
      const ptrdiff_t half = (width + 1) / 2;
      const Real* probe = x + half - 1;
#pragma GCC unroll 8
      for (int k = 0; k < count; ++k) cell[k] = probe[cell[k]] <= t[k] ? cell[k] + half : cell[k];
    }
    for (int k = 0; k < used; ++k) {
      const ptrdiff_t end = t[k] > last ? nx : nx - 1;
      cells[i + k] = static_cast<int32_t>(t[k] >= last ? end : cell[k]);
    }
  }
}

template <class Real>
constexpr search_loops<Real> table = {
    {uniform<Real>, quasi_uniform<Real>, sorted<Real>, peak<Real>, hybrid<Real>}};

}  // namespace
}  // namespace TMK_TIER
}  // namespace tmk::fitting

TMK_DEFINE_LOOPS(search_doubles) = {{tmk::fitting::table<double>}};
TMK_DEFINE_LOOPS(search_singles) = {{tmk::fitting::table<float>}};
