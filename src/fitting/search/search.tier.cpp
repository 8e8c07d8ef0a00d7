// SPDX-License-Identifier: Apache-2.0
// Cells of blocks of sites. Sites are searched a few registers at a time; a site whose cell the vector
// comparisons do not settle is found by a scalar walk.
#include <algorithm>

#include "fitting/search/cell_kernels.hpp"
#include "fitting/search/walk.hpp"
#include "simd/integer.hpp"
#include "simd/rows.hpp"

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

// trunc((t - x[0]) * rate) + 1, but 0 below x[0], at most nx, and nx - 1 at x[1], the last point.
template <class Real>
void uniform(ptrdiff_t nx, const Real* x, ptrdiff_t n, const Real* sites, search_state<Real>* state,
             int32_t* cells) {
  using real = batch<Real>;
  constexpr int width = lanes<Real>;
  const auto last_cell = static_cast<int32_t>(nx - 1);
  // Products of any size come into the range of integers first; the order makes a NaN 0.
  const real limit(std::min(static_cast<Real>(nx), static_cast<Real>(0x7FFFFF80)));
  const auto find = [&](const real& t, int32_t* to) {
    const real position = xsimd::min(xsimd::max((t - x[0]) * state->rate, real(0)), limit);
    const auto below = t < real(x[0]), at_end = t == real(x[1]);
    if constexpr (sizeof(Real) == 4) {
      // A single cannot represent every cell.
      const i32 cell = xsimd::min(xsimd::to_int(position) + 1, i32(last_cell + 1));
      store(to, xsimd::select(mask_as<int32_t>(at_end), i32(last_cell),
                              xsimd::select(mask_as<int32_t>(below), i32(0), cell)));
    } else {
      const real inside = xsimd::select(below, real(-1), xsimd::min(position, real(last_cell)));
      store_truncated(to, xsimd::select(at_end, real(last_cell - 1), inside), 1);
    }
  };
  ptrdiff_t i = 0;
  for (; n - i >= width; i += width) find(load(sites + i), cells + i);
  if (i == n) return;
  int32_t rest[width];
  find(load_partial(sites + i, static_cast<int>(n - i), x[0]), rest);
  for (int k = 0; k < n - i; ++k) cells[i + k] = rest[k];
}

// The start is in proportion to the site's place. It is the cell itself where the points are known to be even
// and the site is not too near to one of them, or where a comparison with the two points shows it: a group of
// such sites is done. The others move by one cell either way, without a branch, since the direction is a
// matter of chance; sites that are not in their cell then, among them those outside and on the last point,
// walk.
template <class Real>
void quasi_uniform(ptrdiff_t nx, const Real* x, ptrdiff_t n, const Real* sites, search_state<Real>* state,
                   int32_t* cells) {
  using real = batch<Real>;
  // A single cannot represent every count; one that is rounded down keeps starts within 1 and nx - 1.
  const ptrdiff_t low_bits = sizeof(Real) == 4 && nx > (1 << 24) ? 0xFF : 0;
  const real top(static_cast<Real>((nx - 2) & ~low_bits)), middle(Real(-0.5)), trusted(state->trusted);
  for (ptrdiff_t i = 0; i < n; i += group<Real>) {
    const int count = static_cast<int>(std::min<ptrdiff_t>(n - i, group<Real>));
    int32_t start[group<Real>];
    auto home = lane_mask<Real>(true);
    for (int k = 0; k < count; k += lanes<Real>) {
      const real t = load_partial(sites + i + k, std::min(count - k, lanes<Real>), x[0]);
      const real place = xsimd::min(xsimd::max((t - x[0]) * state->rate, real(0)), top);
      store_truncated(start + k, place, 1);
      auto sure = xsimd::abs(place - load_as<Real>(start + k) - middle) < trusted;
      if (!every<Real>(sure)) sure = (load_at(x - 1, start + k) <= t) & (t < load_at(x, start + k));
      home = home & sure;
    }
    if (every<Real>(home)) {
      std::copy_n(start, count, cells + i);
      continue;
    }
    for (int k = 0; k < count; ++k) {
      const Real t = sites[i + k];
      ptrdiff_t cell = start[k];
      cell += x[cell] <= t ? 1 : 0;
      cell -= x[cell - 1] > t ? 1 : 0;
      cell = std::clamp<ptrdiff_t>(cell, 1, nx - 1);
      if (!(x[cell - 1] <= t && t < x[cell])) cell = walk(x, nx, cell, t);
      cells[i + k] = static_cast<int32_t>(cell);
    }
  }
}

// low[k] to the first point above t[k], or to low[k] + width where all before are not above. All sites are
// bisected together, without branches: which half is next is a matter of chance, and a branch would be
// mispredicted every other time. Of `width` + 1 candidates, a probe in the middle leaves at most width / 2 +
// 1 on either side.
constexpr int side_by_side = 16;
template <class Real, int Sites>
[[gnu::always_inline]] inline void bisect_together(const Real* (&low)[Sites], ptrdiff_t width,
                                                   const Real* t) {
  for (; width > 0; width /= 2) {
    const ptrdiff_t half = (width + 1) / 2;
#pragma GCC unroll 16
    for (int k = 0; k < Sites; ++k) {
      const Real* const next = low[k] + half;
      low[k] = __builtin_expect_with_probability(next[-1] <= t[k], 1, 0.5) ? next : low[k];
    }
  }
}

// Merges sites and points. A group between two points is one comparison; within reach of the running cell
// each point counts for the sites of a group at or above it; groups that reach farther are bisected, a batch
// of sites at a time, between the running cell and a point past their end.
template <class Real>
void sorted(ptrdiff_t nx, const Real* x, ptrdiff_t n, const Real* sites, search_state<Real>* state,
            int32_t* cells) {
  using real = batch<Real>;
  constexpr int count = group<Real>, reach = count + count / 2, together = std::min(count, side_by_side);
  const Real last = x[nx - 1];
  ptrdiff_t cell = state->cell, i = 0, passed_before = reach;
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
    // Also where the end of the group is a NaN. Only sites in disorder lead to nx and end below the last
    // point.
    if (!(t_end < last) || cell == nx) {
      walk_to(i + count);
      continue;
    }
    if (cell + reach < nx && x[cell + reach] <= t_end) {
      for (const ptrdiff_t end = i + count; i < end; i += together) {
        ptrdiff_t width = passed_before + passed_before / 2;
        while (width < nx - cell && x[cell + width] <= sites[i + together - 1]) width *= 2;
        const Real* low[together];
        std::fill_n(low, together, x + cell);
        bisect_together(low, std::min(width, nx - cell), sites + i);
        for (int k = 0; k < together; ++k) cells[i + k] = static_cast<int32_t>(low[k] - x);
        passed_before = std::max<ptrdiff_t>(cells[i + together - 1] - cell, together);
        cell = cells[i + together - 1];
      }
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

// Brackets by the bucket index, then bisections together. The widest bracket among the sites is used for all
// of them, moved down where it would reach past the last point.
template <class Real, int Sites>
void bracket_and_bisect(ptrdiff_t nx, const Real* x, const Real* t, const search_state<Real>& state,
                        const bucket* buckets, int32_t* cells) {
  using real = batch<Real>;
  static_assert(Sites % lanes<Real> == 0);
  const real last(x[nx - 1]), top(static_cast<Real>(state.nbuckets));
  int32_t index[Sites];
  auto outside = lane_mask<Real>(false);
  for (int k = 0; k < Sites; k += lanes<Real>) {
    const real site = load(t + k);
    outside = outside | (site >= last);
    store_truncated(index + k, xsimd::min(xsimd::max((site - x[0]) * state.bucket_scale, real(0)), top), 0);
  }
  const Real* low[Sites];
  ptrdiff_t width = 0;
#pragma GCC unroll 16
  for (int k = 0; k < Sites; ++k) {
    const bucket b = buckets[index[k]];
    low[k] = x + b.lo;
    width = std::max(width, static_cast<ptrdiff_t>(b.hi) - static_cast<ptrdiff_t>(b.lo));
  }
  const Real* const highest = x + (nx - 1 - width);
#pragma GCC unroll 16
  for (int k = 0; k < Sites; ++k) low[k] = std::min(low[k], highest);
  bisect_together(low, width, t);
#pragma GCC unroll 16
  for (int k = 0; k < Sites; ++k) cells[k] = static_cast<int32_t>(low[k] - x);
  if (xsimd::any(outside))
    for (int k = 0; k < Sites; ++k)
      if (t[k] >= x[nx - 1]) cells[k] = static_cast<int32_t>(t[k] > x[nx - 1] ? nx : nx - 1);
}

template <class Real>
void hybrid(ptrdiff_t nx, const Real* x, ptrdiff_t n, const Real* sites, search_state<Real>* state,
            int32_t* cells) {
  const bucket whole = {0, static_cast<uint32_t>(nx - 1)};
  const bucket* buckets = state->nbuckets > 0 ? state->buckets : &whole;
  ptrdiff_t i = 0;
  for (; n - i >= side_by_side; i += side_by_side)
    bracket_and_bisect<Real, side_by_side>(nx, x, sites + i, *state, buckets, cells + i);
  for (; i < n; i += lanes<Real>) {
    Real rest[lanes<Real>];
    int32_t found[lanes<Real>];
    const ptrdiff_t count = std::min<ptrdiff_t>(lanes<Real>, n - i);
    for (int k = 0; k < lanes<Real>; ++k) rest[k] = sites[std::min<ptrdiff_t>(i + k, n - 1)];
    bracket_and_bisect<Real, lanes<Real>>(nx, x, rest, *state, buckets, found);
    std::copy_n(found, count, cells + i);
  }
}

template <class Real>
constexpr cell_kernels<Real> table = {
    {uniform<Real>, quasi_uniform<Real>, sorted<Real>, peak<Real>, hybrid<Real>}};

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(cell_doubles) = {{table<double>}};
TMK_DEFINE_TIER_KERNELS(cell_singles) = {{table<float>}};

}  // namespace tmk::fitting
