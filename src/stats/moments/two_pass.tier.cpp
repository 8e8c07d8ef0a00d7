// SPDX-License-Identifier: Apache-2.0
// Central sums about means that are known, and raw moments in the same pass.
#include "stats/moments/power_sums.hpp"

namespace tmk::stats {
inline namespace TMK_TIER {
namespace {

constexpr orders kept_by(int q) {
  constexpr orders kept[order_kinds] = {{0, 0b00100}, {0, 0b01100}, {0, 0b11100}, {0b11100, 0b11100}};
  return kept[q];
}

template <class Real, bool Columns, bool Weighted, int Q>
int32_t two_pass(const row_range<Real>& range) {
  constexpr orders kept = kept_by(Q);
  const auto r = without_leading_zeros<Real, Weighted>(range);
  if (r.first >= r.end) return 0;
  Real& weight = r.accum[sum_of_weights];
  const auto scale_raw = [&](Real factor) {
    for (int k = 2; k <= 4; ++k)
      if (has(kept.raw, k)) scale(r.p, factor, r.work[k - 1]);
  };
  if (weight > 0) scale_raw(weight);
  add_sums<Real, kept, Columns, Weighted>(r, r.work[0], r.work);
  add_weights<Real, Weighted>(r, r.accum);
  scale_raw(1 / weight);
  return 0;
}

// Index is that of index_2pass.
template <class Real, int... Index>
constexpr two_pass_kernels<Real> table(std::integer_sequence<int, Index...>) {
  return {{two_pass<Real, (Index & 8) != 0, (Index & 4) != 0, Index & 3>...}};
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(two_pass_doubles) = {table<double>(std::make_integer_sequence<int, 16>())};
TMK_DEFINE_TIER_KERNELS(two_pass_singles) = {table<float>(std::make_integer_sequence<int, 16>())};

}  // namespace tmk::stats
