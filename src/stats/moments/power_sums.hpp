// SPDX-License-Identifier: Apache-2.0
// Sums of w x^k and of w (x - mean)^k over observations, for every pass over the data.
//
// Several observations of few variables are packed into one long row, so that registers are full; a single
// variable (rows layout) is the case p = 1. A strip of vectors walks down the rows with its sums in
// registers, and at the end the lanes are folded into the variables they belong to. Many chains of additions
// hide latency, and round less than one chain would.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <numeric>
#include <utility>

#include "simd/batch.hpp"
#include "stats/moments/kernels.hpp"

namespace tmk::stats {
inline namespace TMK_TIER {
namespace {

// Orders whose sums are kept: bit k for order k.
struct orders {
  unsigned raw, central;
};
constexpr int count(orders kept) { return std::popcount(kept.raw) + std::popcount(kept.central); }
constexpr bool has(unsigned mask, int order) { return (mask >> order & 1) != 0; }

enum class weighting {
  none,
  row,     // one weight for all variables of an observation
  element  // a weight for every element
};

constexpr ptrdiff_t packed_variables = 32;      // more fill registers by themselves
constexpr ptrdiff_t strip_block_bytes = 32768;  // rows that stay in the first cache from strip to strip

template <class Real>
constexpr ptrdiff_t longest_packed_row = packed_variables* lanes<Real>;

// Vectors of a strip, so that their sums stay in registers.
template <orders Kept>
constexpr int most_vectors = std::min(6, 12 / count(Kept));

template <class Real, orders Kept>
struct lane_sums {
  static constexpr int size = count(Kept);
  batch<Real> sum[size];

  lane_sums() {
#pragma GCC unroll 8
    for (int i = 0; i < size; ++i) sum[i] = batch<Real>(Real{0});
  }

  template <bool Weighted>
  void add(const batch<Real>& x, const batch<Real>& w, const batch<Real>& mean) {
    if constexpr (Kept.raw != 0) add_powers<Kept.raw, Weighted, 0>(x, w);
    if constexpr (Kept.central != 0) add_powers<Kept.central, Weighted, std::popcount(Kept.raw)>(x - mean, w);
  }

 private:
  template <unsigned Mask, bool Weighted, int At>
  void add_powers(const batch<Real>& x, const batch<Real>& w) {
    constexpr int at2 = At + has(Mask, 1), at3 = at2 + has(Mask, 2), at4 = at3 + has(Mask, 3);
    const batch<Real> wx = Weighted ? w * x : x;
    if constexpr (has(Mask, 1)) sum[At] += wx;
    if constexpr (Mask == 2) return;
    if constexpr (Mask == 4 || Mask == 6) {
      sum[at2] = xsimd::fma(wx, x, sum[at2]);
    } else if constexpr (Mask > 6) {
      const batch<Real> wx2 = wx * x;
      if constexpr (has(Mask, 2)) sum[at2] += wx2;
      if constexpr (has(Mask, 3)) sum[at3] = xsimd::fma(wx2, x, sum[at3]);
      if constexpr (has(Mask, 4)) sum[at4] = xsimd::fma(wx2, x * x, sum[at4]);
    }
  }
};

// Working arrays of the kept orders, in the order of lane_sums.
template <orders Kept>
struct kept_arrays {
  int index[count(Kept)] = {};
  constexpr kept_arrays() {
    int at = 0;
    for (int k = 1; k <= 4; ++k)
      if (has(Kept.raw, k)) index[at++] = k - 1;
    for (int k = 2; k <= 4; ++k)
      if (has(Kept.central, k)) index[at++] = raw_arrays + k - 2;
  }
};

// Rows of `stride` elements under `Vectors` vectors, the last of which begins at element `last`.
template <class Real, orders Kept, weighting Weighting, int Vectors>
void walk_strip(ptrdiff_t rows, ptrdiff_t stride, ptrdiff_t last, const Real* x, const Real* w,
                const Real* mean, Real* r) {
  constexpr int width = lanes<Real>, size = count(Kept);
  lane_sums<Real, Kept> sums[Vectors];
  batch<Real> means[Vectors];
  const auto at = [last](int v) { return v + 1 == Vectors ? last : ptrdiff_t{v} * width; };
  if constexpr (Kept.central != 0) {
#pragma GCC unroll 8
    for (int v = 0; v < Vectors; ++v) means[v] = load(mean + at(v));
  }
  for (ptrdiff_t i = 0; i < rows; ++i, x += stride) {
    batch<Real> weight;
    if constexpr (Weighting == weighting::row) weight = batch<Real>(w[i]);
#pragma GCC unroll 8
    for (int v = 0; v < Vectors; ++v) {
      if constexpr (Weighting == weighting::element) weight = load(w + i * stride + at(v));
      sums[v].template add<Weighting != weighting::none>(load(x + at(v)), weight, means[v]);
    }
  }
#pragma GCC unroll 8
  for (int v = 0; v < Vectors; ++v)
    for (int k = 0; k < size; ++k) store(r + (k * Vectors + v) * width, sums[v].sum[k]);
}

// walk_strip for 1, 2, ... vectors.
template <class Real, orders Kept, weighting Weighting, int... Less>
constexpr auto strip_walks(std::integer_sequence<int, Less...>) {
  struct {
    void (*of[sizeof...(Less)])(ptrdiff_t, ptrdiff_t, ptrdiff_t, const Real*, const Real*, const Real*,
                                Real*);
  } walks = {{walk_strip<Real, Kept, Weighting, Less + 1>...}};
  return walks;
}

// Adds the sums over n observations of p variables, p apart, to elements j, j + 1, ... of the working arrays.
// `w` has a weight for each observation, or (element) for each element of x; `mean` is read for central
// orders.
template <class Real, orders Kept, weighting Weighting>
void add_power_sums(ptrdiff_t n, ptrdiff_t p, const Real* x, const Real* w, const Real* mean,
                    Real* const* work, ptrdiff_t j) {
  constexpr int width = lanes<Real>, most = most_vectors<Kept>, least = std::min(4, most), size = count(Kept);
  static constexpr auto walks = strip_walks<Real, Kept, Weighting>(std::make_integer_sequence<int, most>());
  static constexpr kept_arrays<Kept> arrays;

  // Observations to a row, which is whole vectors and at least a strip of them; else the last vector overlaps
  // the one before it.
  ptrdiff_t packed = 1;
  alignas(64) Real pattern[longest_packed_row<Real>];
  if (p <= packed_variables && Weighting != weighting::row) {
    packed = width / std::gcd(p, static_cast<ptrdiff_t>(width));
    const ptrdiff_t vectors = packed * p / width;
    if (vectors < least) packed *= (least + vectors - 1) / vectors;
    if constexpr (Kept.central != 0) {
      const ptrdiff_t used = std::min(packed, n) * p;
      for (ptrdiff_t e = 0; e < used; e += p)
        for (ptrdiff_t i = 0; i < p; ++i) pattern[e + i] = mean[i];
      mean = pattern;
    }
  }
  const ptrdiff_t row = packed * p, rows = n / packed, vectors = (row + width - 1) / width;
  const ptrdiff_t strips = (vectors + most - 1) / most;
  const ptrdiff_t block =
      strips == 1 ? rows
                  : std::max<ptrdiff_t>(16, strip_block_bytes / (row * static_cast<ptrdiff_t>(sizeof(Real))));

  alignas(64) Real lane[size * most * width];
  // Lanes first to end of `lane` go to the variables from element `position` of the row on.
  const auto fold = [&](ptrdiff_t used, ptrdiff_t first, ptrdiff_t end, ptrdiff_t position) {
    for (int k = 0; k < size; ++k) {
      Real* const sum = work[arrays.index[k]] + j;
      if (p == 1) {
        *sum += std::accumulate(lane + k * used + first, lane + k * used + end, Real{0});
        continue;
      }
      ptrdiff_t variable = position % p;
      for (ptrdiff_t e = first; e < end; ++e) {
        sum[variable] += lane[k * used + e];
        if (++variable == p) variable = 0;
      }
    }
  };
  for (ptrdiff_t i = 0; i < rows; i += block) {
    const ptrdiff_t these = std::min(block, rows - i);
    for (ptrdiff_t s = 0; s < strips; ++s) {
      const ptrdiff_t from = vectors * s / strips, to = vectors * (s + 1) / strips, wide = to - from;
      const ptrdiff_t start = from * width, last = std::min((to - 1) * width, row - width);
      const Real* const weight = Weighting == weighting::row       ? w + i
                                 : Weighting == weighting::element ? w + i * row + start
                                                                   : nullptr;
      walks.of[wide - 1](these, row, last - start, x + i * row + start, weight,
                         Kept.central != 0 ? mean + start : nullptr, lane);
      fold(wide * width, 0, (wide - 1) * width, start);
      const ptrdiff_t overlap = (to - 1) * width - last;
      fold(wide * width, (wide - 1) * width + overlap, wide * width, last + overlap);
    }
  }

  // The observations that fill no row. Lanes after them hold x = mean = 0.
  const ptrdiff_t done = rows * row, left = n * p - done;
  for (ptrdiff_t e = 0; e < left; e += width) {
    const int lanes_left = static_cast<int>(std::min<ptrdiff_t>(width, left - e));
    const auto tail = [&](const Real* from) { return load_partial(from + e, lanes_left, Real{0}); };
    lane_sums<Real, Kept> sums;
    batch<Real> weight, means;
    if constexpr (Weighting == weighting::element) weight = tail(w + done);
    if constexpr (Kept.central != 0) means = tail(mean);
    sums.template add<Weighting != weighting::none>(tail(x + done), weight, means);
    for (int k = 0; k < size; ++k) store(lane + k * width, sums.sum[k]);
    fold(width, 0, lanes_left, e);
  }
}

// Weighted observations of less than a register: each weight is repeated for its elements, so that they can
// be packed.
template <class Real, orders Kept>
void add_spread_sums(ptrdiff_t n, ptrdiff_t p, const Real* x, const Real* w, const Real* mean,
                     Real* const* work) {
  constexpr ptrdiff_t room = 2048, granule = 4 * lanes<Real>;
  const ptrdiff_t block = room / (p * granule) * granule;
  Real spread[room];
  for (ptrdiff_t i = 0; i < n; i += block) {
    const ptrdiff_t these = std::min(block, n - i);
    Real* place = spread;
    for (ptrdiff_t k = 0; k < these; ++k) place = std::fill_n(place, p, w[i + k]);
    add_power_sums<Real, Kept, weighting::element>(these, p, x + i * p, spread, mean, work, 0);
  }
}

// Adds the sums over a range to the working arrays, in either layout.
template <class Real, orders Kept, bool Columns, bool Weighted>
void add_sums(const row_range<Real>& r, const Real* mean, Real* const* work) {
  const ptrdiff_t n = r.end - r.first;
  const Real* const w = Weighted ? r.weights + r.first : nullptr;
  if constexpr (!Columns) {
    constexpr auto weighting = Weighted ? weighting::element : weighting::none;
    for (ptrdiff_t j = 0; j < r.p; ++j)
      add_power_sums<Real, Kept, weighting>(n, 1, r.data + j * r.n + r.first, w,
                                            Kept.central != 0 ? mean + j : nullptr, work, j);
  } else {
    const Real* const x = r.data + r.first * r.p;
    if constexpr (!Weighted)
      add_power_sums<Real, Kept, weighting::none>(n, r.p, x, w, mean, work, 0);
    else if (r.p < lanes<Real>)
      add_spread_sums<Real, Kept>(n, r.p, x, w, mean, work);
    else
      add_power_sums<Real, Kept, weighting::row>(n, r.p, x, w, mean, work, 0);
  }
}

// The weights of a range, and their squares, for the accumulator record. They are one variable's raw sums.
template <class Real, bool Weighted>
void add_weights(const row_range<Real>& r, Real* accum) {
  if constexpr (Weighted) {
    Real* const sums[] = {accum + sum_of_weights, accum + sum_of_squared_weights};
    add_power_sums<Real, orders{.raw = 0b110, .central = 0}, weighting::none>(
        r.end - r.first, 1, r.weights + r.first, nullptr, nullptr, sums, 0);
  } else {
    accum[sum_of_weights] += static_cast<Real>(r.end - r.first);
    accum[sum_of_squared_weights] += static_cast<Real>(r.end - r.first);
  }
}

// The range without the zero weights in front of it. NaN is not zero.
template <class Real, bool Weighted>
row_range<Real> without_leading_zeros(row_range<Real> r) {
  if constexpr (Weighted)
    while (r.first < r.end && r.weights[r.first] == 0) ++r.first;
  return r;
}

template <class Real>
void scale(ptrdiff_t p, Real factor, Real* r) {
  for (ptrdiff_t j = 0; j < p; ++j) r[j] *= factor;
}

}  // namespace
}  // namespace TMK_TIER
}  // namespace tmk::stats
