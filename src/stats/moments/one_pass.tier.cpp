// SPDX-License-Identifier: Apache-2.0
// Moments that need no mean beforehand, by blocks that stay in the cache: the block's mean, central sums
// about it, and the pairwise formulas to fold them in. Memory is read once. The estimates are those of
// updating observation by observation, with fewer roundings and no division an observation.
#include "stats/moments/power_sums.hpp"
#include "stats/moments/products.hpp"
#include "tmk/abi/serv.h"
#include "tmk/abi/ss.h"

namespace tmk::stats {
inline namespace TMK_TIER {
namespace {

constexpr orders kept_by(int q) {
  constexpr orders kept[order_kinds] = {{0b10, 0}, {0b10, 0b100}, {0b110, 0b100}, {0b11110, 0b11100}};
  return kept[q];
}

template <class Real>
void merge(ptrdiff_t p, Real wa, Real wb, Real* const* a, Real* const* b) {
  if (wb == 0) return;
  if (wa == 0) {
    for (int k = 0; k < moment_arrays; ++k)
      if (b[k] != nullptr && b[k] != a[k]) std::copy_n(b[k], p, a[k]);
    return;
  }
  using lanes_of = batch<Real>;
  const Real f = 1 / (wa + wb);
  const lanes_of va(wa), vb(wb), vf(f), two(wa * wb * f), three(wa * wb * (wa - wb) * f * f),
      four(wa * wb * (wa * wa - wa * wb + wb * wb) * f * f * f);
  for (ptrdiff_t j = 0; j < p; j += lanes<Real>) {
    const int these = static_cast<int>(std::min<ptrdiff_t>(lanes<Real>, p - j));
    const auto get = [&](const Real* from) {
      return from == nullptr ? lanes_of(Real{0}) : load_partial(from + j, these, Real{0});
    };
    const auto put = [&](Real* to, const lanes_of& x) { store_partial(to + j, these, x); };
    const lanes_of c2a = get(a[4]), c2b = get(b[4]), c3a = get(a[5]), c3b = get(b[5]);
    const lanes_of d = get(b[0]) - get(a[0]), df = d * vf, d2 = d * d;
    if (b[6] != nullptr)
      put(a[6],
          get(a[6]) + (get(b[6]) + (d2 * d2 * four + (df * df * (c2b * va * va + c2a * vb * vb) * Real{6} +
                                                      df * (c3b * va - c3a * vb) * Real{4}))));
    if (b[5] != nullptr) put(a[5], c3a + (c3b + (d2 * d * three + df * (c2b * va - c2a * vb) * Real{3})));
    if (b[4] != nullptr) put(a[4], c2a + (c2b + d2 * two));
    for (int k = 0; k < raw_arrays; ++k)
      if (b[k] != nullptr && b[k] != a[k]) put(a[k], (va * get(a[k]) + vb * get(b[k])) * vf);
  }
}

// One observation of weight w, by the updating formulas: for blocks that have no mean, since their weights
// cancel or some are negative.
template <class Real, orders Kept, bool Columns>
void add_observation(const row_range<Real>& r, ptrdiff_t i, Real* d) {
  Real& weight = r.accum[sum_of_weights];
  const Real w = r.weights[i], before = weight, inverse = 1 / (before + w), a = w * inverse,
             b = before * inverse;
  for (ptrdiff_t j = 0; j < r.p; ++j) {
    const Real x = Columns ? r.data[i * r.p + j] : r.data[j * r.n + i];
    d[j] = x - r.work[0][j];
    const Real e = a * d[j], d2 = d[j] * d[j];
    if constexpr (has(Kept.central, 4))
      r.work[6][j] += d2 * d2 * (inverse * inverse * a * before * (before * before - (before - w) * w)) +
                      6 * e * e * r.work[4][j] - 4 * e * r.work[5][j];
    if constexpr (has(Kept.central, 3))
      r.work[5][j] += d2 * d[j] * (a * inverse * before * (before - w)) - 3 * e * r.work[4][j];
    if constexpr (has(Kept.central, 2)) r.work[4][j] += d2 * (before * a);
    Real power = a;
    for (int k = 1; k <= 4; ++k) {
      power *= x;
      if (has(Kept.raw, k)) r.work[k - 1][j] = r.work[k - 1][j] * b + power;
    }
  }
  if (r.cross != nullptr) add_outer_product(r.p, before * a, d, r.cross, true);
  weight += w;
  r.accum[sum_of_squared_weights] += w * w;
}

// Scratch of a kernel: a block's own estimates, the difference of two means, and the centred block.
template <class Real>
struct block_scratch {
  ptrdiff_t p, length;
  Real* memory;
  Real* array(int k) const { return memory + k * p; }
  Real* difference() const { return memory + moment_arrays * p; }
  Real* centred() const { return difference() + p; }
  Real* weighted() const { return centred() + p * length; }
};

template <class Real, bool Columns>
void centre(const row_range<Real>& r, const Real* mean, Real* place) {
  const ptrdiff_t n = r.end - r.first, outer = Columns ? n : r.p, inner = Columns ? r.p : n;
  for (ptrdiff_t k = 0; k < outer; ++k) {
    const Real* const x = r.data + (Columns ? (r.first + k) * r.p : k * r.n + r.first);
    for (ptrdiff_t e = 0; e < inner; e += lanes<Real>) {
      const int these = static_cast<int>(std::min<ptrdiff_t>(lanes<Real>, inner - e));
      const batch<Real> m = Columns ? load_partial(mean + e, these, Real{0}) : batch<Real>(mean[k]);
      store_partial(place + k * inner + e, these, load_partial(x + e, these, Real{0}) - m);
    }
  }
}

template <class Real, orders Kept, bool Columns, bool Weighted, bool Cross>
void add_block(const row_range<Real>& r, const Real* weights, const block_scratch<Real>& scratch) {
  const ptrdiff_t p = r.p;
  Real* own[moment_arrays] = {};
  for (int k = 0; k < moment_arrays; ++k)
    if (has(Kept.raw, k + 1) || (k >= raw_arrays && has(Kept.central, k - raw_arrays + 2))) {
      own[k] = scratch.array(k);
      std::fill_n(own[k], p, Real{0});
    }
  constexpr orders mean_only{.raw = 0b10, .central = 0},
      rest{.raw = Kept.raw & ~0b10u, .central = Kept.central};
  add_sums<Real, mean_only, Columns, Weighted>(r, nullptr, own);
  scale(p, 1 / weights[0], own[0]);
  if constexpr (count(rest) != 0) add_sums<Real, rest, Columns, Weighted>(r, own[0], own);
  for (int k = 2; k <= 4; ++k)
    if (has(Kept.raw, k)) scale(p, 1 / weights[0], own[k - 1]);

  const Real before = r.accum[sum_of_weights];
  if constexpr (Cross) {
    centre<Real, Columns>(r, own[0], scratch.centred());
    const ptrdiff_t n = r.end - r.first;
    const observations_block<Real> block = {Columns, n, p, n, scratch.centred()};
    if constexpr (Weighted)
      add_weighted_products(block, r.weights + r.first, scratch.weighted(), r.cross);
    else
      add_products(block, r.cross, true);
    if (before != 0) {
      for (ptrdiff_t j = 0; j < p; ++j) scratch.difference()[j] = own[0][j] - r.work[0][j];
      add_outer_product(p, before * weights[0] / (before + weights[0]), scratch.difference(), r.cross, true);
    }
  }
  merge<Real>(p, before, weights[0], r.work, own);
  r.accum[sum_of_weights] = before + weights[0];
  r.accum[sum_of_squared_weights] += weights[1];
}

// 0, or a negative weight. NaN does not count.
template <class Real>
Real least_or_zero(const Real* w, ptrdiff_t n) {
  batch<Real> least(Real{0});
  for (ptrdiff_t i = 0; i < n; i += lanes<Real>)
    // Of a NaN and a number the minimum is its second argument.
    least = xsimd::min(
        load_partial(w + i, static_cast<int>(std::min<ptrdiff_t>(lanes<Real>, n - i)), Real{0}), least);
  Real lane[lanes<Real>];
  store(lane, least);
  return *std::min_element(lane, lane + lanes<Real>);
}

template <class Real, orders Kept, bool Columns, bool Weighted, bool Cross>
void walk(row_range<Real> r, const block_scratch<Real>& scratch) {
  const ptrdiff_t end = r.end;
  for (; r.first < end; r.first = r.end) {
    r.end = std::min(r.first + scratch.length, end);
    Real weights[2] = {};
    add_weights<Real, Weighted>(r, weights);
    if (!Weighted ||
        (weights[sum_of_weights] != 0 && least_or_zero(r.weights + r.first, r.end - r.first) == 0))
      add_block<Real, Kept, Columns, Weighted, Cross>(r, weights, scratch);
    else
      for (ptrdiff_t i = r.first; i < r.end; ++i)
        add_observation<Real, Kept, Columns>(r, i, scratch.difference());
  }
}

template <class Real, bool Columns, bool Weighted, int Q, bool Cross>
int32_t one_pass(const row_range<Real>& range) {
  constexpr orders kept = kept_by(Q);
  constexpr ptrdiff_t cache_bytes = 32768;
  auto r = without_leading_zeros<Real, Weighted>(range);
  if (r.first >= r.end) return 0;
  if constexpr (!Cross) r.cross = nullptr;
  const bool apart = !Columns && !Cross;  // variable by variable
  const ptrdiff_t p = apart ? 1 : r.p, row_bytes = p * static_cast<ptrdiff_t>(sizeof(Real)),
                  length = std::min(std::max<ptrdiff_t>(64, cache_bytes / row_bytes), r.end - r.first);
  const ptrdiff_t reals = p * (moment_arrays + 1 + (Cross ? length * (1 + Weighted) : 0));
  const block_scratch<Real> scratch = {
      p, length, static_cast<Real*>(tmk_serv_allocate(static_cast<size_t>(reals) * sizeof(Real), 128))};
  if (scratch.memory == nullptr) return VTS_STATUS_SS_MEMORY;
  if (apart) {
    const Real before[accumulators] = {r.accum[0], r.accum[1], r.accum[2], r.accum[3]};
    row_range<Real> one = r;
    one.p = 1;
    for (ptrdiff_t j = 0; j < r.p; ++j) {
      one.data = r.data + j * r.n;
      for (int k = 0; k < moment_arrays; ++k) one.work[k] = r.work[k] == nullptr ? nullptr : r.work[k] + j;
      std::copy_n(before, accumulators, r.accum);
      walk<Real, kept, Columns, Weighted, false>(one, scratch);
    }
  } else {
    walk<Real, kept, Columns, Weighted, Cross>(r, scratch);
  }
  tmk_serv_deallocate(scratch.memory);
  return 0;
}

// Index is that of index_1pass.
template <class Real, int... Index>
constexpr one_pass_kernels<Real> table(std::integer_sequence<int, Index...>) {
  return {{one_pass<Real, (Index & 16) != 0, (Index & 8) != 0, (Index >> 1 & 3), (Index & 1) != 0>...},
          merge<Real>};
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(one_pass_doubles) = {table<double>(std::make_integer_sequence<int, 32>())};
TMK_DEFINE_TIER_KERNELS(one_pass_singles) = {table<float>(std::make_integer_sequence<int, 32>())};

}  // namespace tmk::stats
